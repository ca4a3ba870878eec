# Warnings as errors for the project's own code only.
function(sorvik_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
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

# sorvik_test(<name> SOURCES ... [DEPS ...] [SERIAL])
# One GoogleTest executable; every test case becomes a CTest test. SERIAL tests
# touch the machine-wide lock file or shared-memory key and run one at a time.
function(sorvik_test name)
  if(NOT SORVIK_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "SERIAL" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gmock GTest::gtest_main Threads::Threads)
  sorvik_warnings(${name})
  set(props TIMEOUT 120)
  if(ARG_SERIAL)
    list(APPEND props RESOURCE_LOCK sorvik_machine_state)
  endif()
  gtest_discover_tests(${name}
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
    DISCOVERY_MODE PRE_TEST
    PROPERTIES ${props})
endfunction()
