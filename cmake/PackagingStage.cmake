# Run by CPack (CPACK_PRE_BUILD_SCRIPTS) on the staged files, before the .deb
# is made: what Debian's tools would do to a package's files, for whatever the
# install rules put there.

# Other generators (a tarball, the source package) get the files as installed.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()

set(root "${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}")
if(NOT IS_DIRECTORY "${root}")
  message(FATAL_ERROR "package staging: no directory ${root}")
endif()

function(sorvik_run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "package staging: `${command}` failed: ${result}")
  endif()
endfunction()

# gzip -9n: best compression, and no name or time stamp so the same file
# gives the same bytes.
function(sorvik_gzip file)
  sorvik_run(${CPACK_SORVIK_GZIP} -9nf "${file}")
endfunction()

# Manual pages are compressed (Debian Policy 12.1); a page that is a link
# points at its compressed target.
file(GLOB_RECURSE pages LIST_DIRECTORIES false "${root}/${CPACK_SORVIK_MANDIR}/*")
foreach(page IN LISTS pages)
  if(page MATCHES "\\.gz$")
    continue()
  endif()
  if(IS_SYMLINK "${page}")
    file(READ_SYMLINK "${page}" target)
    file(REMOVE "${page}")
    file(CREATE_LINK "${target}.gz" "${page}.gz" SYMBOLIC)
  else()
    sorvik_gzip("${page}")
  endif()
endforeach()

# strip keeps the compiler's .comment and .note sections, which say nothing
# at run time.
file(GLOB_RECURSE files LIST_DIRECTORIES false "${root}/*")
foreach(file IN LISTS files)
  if(IS_SYMLINK "${file}")
    continue()
  endif()
  file(READ "${file}" magic LIMIT 4 HEX)
  if(magic STREQUAL "7f454c46")
    sorvik_run(${CPACK_SORVIK_STRIP} --remove-section=.comment --remove-section=.note "${file}")
  endif()
endforeach()

# What lintian is told to accept, each with its reason in the file.
set(overrides "${root}/share/lintian/overrides")
file(MAKE_DIRECTORY "${overrides}")
file(COPY_FILE "${CPACK_SORVIK_PACKAGING_DIR}/lintian-overrides" "${overrides}/${CPACK_DEBIAN_PACKAGE_NAME}")
file(CHMOD "${overrides}/${CPACK_DEBIAN_PACKAGE_NAME}" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

# The copyright file and the changelog (Debian Policy 12.5 and 12.7).
set(docdir "${root}/${CPACK_SORVIK_DOCDIR}")
file(MAKE_DIRECTORY "${docdir}")
file(COPY_FILE "${CPACK_SORVIK_PACKAGING_DIR}/copyright" "${docdir}/copyright")
file(CHMOD "${docdir}/copyright" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)

if(NOT "$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  # string(TIMESTAMP) reads SOURCE_DATE_EPOCH itself.
elseif(NOT "${CPACK_SORVIK_SOURCE_DATE}" STREQUAL "")
  set(ENV{SOURCE_DATE_EPOCH} "${CPACK_SORVIK_SOURCE_DATE}")
endif()
string(TIMESTAMP SORVIK_DEB_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(SORVIK_DEB_NAME "${CPACK_DEBIAN_PACKAGE_NAME}")
set(SORVIK_VERSION "${CPACK_PACKAGE_VERSION}")
set(SORVIK_BUILD_NUMBER "${CPACK_SORVIK_BUILD_NUMBER}")
set(SORVIK_DEB_MAINTAINER "${CPACK_DEBIAN_PACKAGE_MAINTAINER}")
if("${CPACK_DEBIAN_PACKAGE_RELEASE}" STREQUAL "")
  set(SORVIK_DEB_VERSION "${CPACK_PACKAGE_VERSION}")
  set(changelog "${docdir}/changelog")
else()
  set(SORVIK_DEB_VERSION "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
  set(changelog "${docdir}/changelog.Debian")
endif()
configure_file("${CPACK_SORVIK_PACKAGING_DIR}/changelog.in" "${changelog}" @ONLY)
sorvik_gzip("${changelog}")
file(CHMOD "${changelog}.gz" PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
