# Debian package of everything the build installs: the collector, its modules,
# sorvik-audit when the build has it, the manual pages and the docs.
# Include after every install() rule:
#   include(cmake/Packaging.cmake)
# then `cpack -G DEB` (or `ninja package`) in the build directory.
# scripts/package-check.sh builds it with Debian's hardening flags and checks
# it with lintian.
set(SORVIK_PACKAGING_DIR ${CMAKE_CURRENT_LIST_DIR}/../packaging)

set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "sorvik")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "sorvik")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Hardware and firmware inventory collector for Linux servers")
# The extended description, wrapped for Debian's 80 columns; the audit
# program's paragraph only when this build has it.
file(READ ${SORVIK_PACKAGING_DIR}/description CPACK_PACKAGE_DESCRIPTION)
if(TARGET sorvik-audit)
  file(READ ${SORVIK_PACKAGING_DIR}/description-audit _sorvik_audit_description)
  string(APPEND CPACK_PACKAGE_DESCRIPTION "\n${_sorvik_audit_description}")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
             ${SORVIK_PACKAGING_DIR}/description ${SORVIK_PACKAGING_DIR}/description-audit)
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_NAME "sorvik")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The package's own revision: 21.09.200-1, then -2 for a package fix of the
# same sources. Empty makes a native package (its changelog is then changelog.gz).
set(CPACK_DEBIAN_PACKAGE_RELEASE 1 CACHE STRING "Debian revision of the package")
set(CPACK_DEBIAN_PACKAGE_SECTION "admin")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
# Library dependencies come from dpkg-shlibdeps, for every installed binary.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The collector checks and loads the IPMI drivers with lsmod and modprobe.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "kmod")
# pci.ids gives the PCI module its device names; without it the class name is used.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pci.ids")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ansible-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The maintainer is a real person or group, never an invented address: the
# value given with -DCPACK_DEBIAN_PACKAGE_MAINTAINER="Name <address>", else
# Debian's DEBFULLNAME and DEBEMAIL, else the author of the commit being
# packaged. With none of them cpack stops and names the variable to set.
find_package(Git QUIET)
set(_sorvik_git_author "")
set(_sorvik_git_date "")
if(GIT_FOUND AND EXISTS ${CMAKE_SOURCE_DIR}/.git)
  execute_process(COMMAND ${GIT_EXECUTABLE} -C ${CMAKE_SOURCE_DIR} -c safe.directory=${CMAKE_SOURCE_DIR}
                          log -1 "--format=%an <%ae>%n%ct"
                  OUTPUT_VARIABLE _sorvik_git_log RESULT_VARIABLE _sorvik_git_result ERROR_QUIET
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(_sorvik_git_result EQUAL 0 AND _sorvik_git_log MATCHES "^([^\n]+)\n([0-9]+)$")
    set(_sorvik_git_author "${CMAKE_MATCH_1}")
    set(_sorvik_git_date "${CMAKE_MATCH_2}")
  endif()
endif()
if(NOT "$ENV{DEBFULLNAME}" STREQUAL "" AND NOT "$ENV{DEBEMAIL}" STREQUAL "")
  set(_sorvik_maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
  set(_sorvik_maintainer "${_sorvik_git_author}")
endif()
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${_sorvik_maintainer}" CACHE STRING
    "Maintainer field of the package: \"Name <address>\"")
set(CPACK_PACKAGE_CONTACT "${CPACK_DEBIAN_PACKAGE_MAINTAINER}")

# What the staging step (cmake/PackagingStage.cmake) needs: it adds the
# copyright file and the changelog, compresses the manual pages and removes
# the sections strip leaves in the binaries.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/PackagingStage.cmake)
set(CPACK_SORVIK_PACKAGING_DIR ${SORVIK_PACKAGING_DIR})
set(CPACK_SORVIK_BUILD_NUMBER ${SORVIK_BUILD_NUMBER})
# The changelog's date: SOURCE_DATE_EPOCH when the packager sets it, else the
# packaged commit's, so the same sources give the same package.
set(CPACK_SORVIK_SOURCE_DATE "${_sorvik_git_date}")
set(CPACK_SORVIK_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_PACKAGE_NAME})
set(CPACK_SORVIK_MANDIR ${CMAKE_INSTALL_MANDIR})
set(CPACK_SORVIK_STRIP ${CMAKE_STRIP})
find_program(SORVIK_GZIP gzip)
set(CPACK_SORVIK_GZIP ${SORVIK_GZIP})

include(CPack)
