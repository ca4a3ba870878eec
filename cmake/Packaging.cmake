# Debian package of the collector, its modules, the manual page and the docs.
# Include after every install() rule:
#   include(cmake/Packaging.cmake)
# then `cpack -G DEB` (or `ninja package`) in the build directory.
set(CPACK_GENERATOR "DEB")
set(CPACK_PACKAGE_NAME "sorvik")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "sorvik")
set(CPACK_PACKAGE_CONTACT "sorvik maintainers <sorvik@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Hardware and firmware inventory collector for Linux servers")
set(CPACK_PACKAGE_DESCRIPTION "sorvik runs inventory modules (PCI devices and drivers, network adapter \
and storage firmware, BIOS, processor microcode, operating system, management controller) and writes \
one XML or JSON inventory of the machine's updatable components.")
set(CPACK_PACKAGING_INSTALL_PREFIX "/usr")
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_PACKAGE_NAME "sorvik")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION "admin")
set(CPACK_DEBIAN_PACKAGE_PRIORITY "optional")
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libxml2, libcjson1")
# pci.ids gives the PCI module its device names; without it the class name is used.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pci.ids")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "ansible-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
