include(${CMAKE_CURRENT_LIST_DIR}/SorvikVersion.cmake)
sorvik_version_header()

# Warnings as errors for the project's own code only; packagers building with
# another compiler may turn the errors off with -DSORVIK_WERROR=OFF.
option(SORVIK_WERROR "Treat the project's compiler warnings as errors" ON)
function(sorvik_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${SORVIK_WERROR}>:-Werror>)
  target_compile_features(${target} PUBLIC cxx_std_17)
endfunction()

# sorvik_library(<name> SOURCES ... [DEPS ...])
# A static library whose public headers sit in the calling folder's include/.
function(sorvik_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/include)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  sorvik_warnings(${name})
endfunction()

# Test programs that take the collector's lock file or progress segment link
# this: their process gets a /var/lock and an IPC space of its own.
set(SORVIK_ISOLATION_SOURCE ${CMAKE_SOURCE_DIR}/tests/isolation/MachineIsolation.cpp)

# sorvik_discover_tests(<target> [ISOLATED] [LABEL <label>])
# Every test case of a GoogleTest program becomes a CTest test with one label:
# the one given, else "root" for ISOLATED programs (they need root), else "unit".
# End-to-end programs ("e2e") run the built collector and need root as well.
function(sorvik_discover_tests target)
  cmake_parse_arguments(ARG "ISOLATED" "LABEL" "" ${ARGN})
  if(ARG_ISOLATED)
    target_sources(${target} PRIVATE ${SORVIK_ISOLATION_SOURCE})
  endif()
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
    if(ARG_ISOLATED)
      set(ARG_LABEL root)
    endif()
  endif()
  gtest_discover_tests(${target}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES TIMEOUT 120 LABELS ${ARG_LABEL})
endfunction()

# sorvik_test(<name> SOURCES ... [DEPS ...] [ISOLATED])
# One GoogleTest executable of unit tests.
function(sorvik_test name)
  if(NOT SORVIK_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "ISOLATED" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gmock GTest::gtest_main Threads::Threads)
  sorvik_warnings(${name})
  if(ARG_ISOLATED)
    sorvik_discover_tests(${name} ISOLATED)
  else()
    sorvik_discover_tests(${name})
  endif()
endfunction()
