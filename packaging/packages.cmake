# Debian packages: `cpack` in a build folder that was configured with the preset "package".

string(REGEX REPLACE "^[a-z]+://(www\\.)?([^/]+).*$" "\\2" site_host "${VORNIC_SITE_ADDRESS}")
set(VORNIC_MAINTAINER "Quillmark <support@${site_host}>" CACHE STRING
    "Who answers for the packages: NAME <ADDRESS>")
set(VORNIC_PACKAGE_RELEASE 1 CACHE STRING "Number of the packages made of one version")

# Files that only packages have; PrepareTree.cmake puts them in place.
configure_file(debian/changelog.in debian/changelog @ONLY)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vornic)
set(CPACK_PACKAGE_VENDOR Quillmark)
set(CPACK_PACKAGE_CONTACT "${VORNIC_MAINTAINER}")
set(CPACK_PACKAGE_HOMEPAGE_URL "${VORNIC_SITE_ADDRESS}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_OUTPUT_FILE_PREFIX "${CPACK_PACKAGE_DIRECTORY}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
# What is installed knows the prefix, which is not the folder that it is collected in.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_BINARY_DIR}/cpack-settings.cmake")
file(WRITE "${CPACK_PROJECT_CONFIG_FILE}" "set(ENV{SOURCE_DATE_EPOCH} \"${VORNIC_SOURCE_EPOCH}\")\n")
configure_file(cpack/PrepareTree.cmake.in PrepareTree.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_BINARY_DIR}/PrepareTree.cmake")

set(CPACK_COMPONENTS_ALL tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${VORNIC_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(version "${PROJECT_VERSION}-${VORNIC_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vornic-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS shared-mime-info)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "pkexec, vornic, vornic-doc")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
"repair and convert Final Cut Pro project exchange files
Finds what is wrong with XMEML and FCPXML files, mends what can be mended, says
in plain words what it did, and keeps the original. Checks, converts between
versions, relinks media, and salvages files that were cut off.
.
This package has the programs for the command line.")

if(VORNIC_DESKTOP)
    list(APPEND CPACK_COMPONENTS_ALL desktop)
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME vornic)
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_DEPENDS
        "vornic-tools (= ${version}), hicolor-icon-theme, shared-mime-info, xdg-utils, xkb-data")
    set(CPACK_DEBIAN_DESKTOP_PACKAGE_RECOMMENDS "vornic-doc, pkexec")
    set(CPACK_COMPONENT_DESKTOP_DESCRIPTION
"repair and convert Final Cut Pro project files (desktop program)
Opens damaged XMEML and FCPXML files in a window, shows what is wrong and
where, mends what can be mended, and keeps the original. Converts between
versions.
.
This package has the desktop program and what desktops know its files by.")
endif()
if(VORNIC_MANUAL)
    list(APPEND CPACK_COMPONENTS_ALL doc)
    set(CPACK_DEBIAN_DOC_PACKAGE_NAME vornic-doc)
    set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
    set(CPACK_DEBIAN_DOC_PACKAGE_SHLIBDEPS OFF)
    set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
    set(CPACK_COMPONENT_DOC_DESCRIPTION
"repair and convert Final Cut Pro project exchange files (manual)
Finds what is wrong with XMEML and FCPXML files, mends what can be mended, says
in plain words what it did, and keeps the original.
.
This package has the user manual, as PDF and HTML.")
endif()
include(CPack)
