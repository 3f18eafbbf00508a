# The Debian packages that CPack makes: the libraries, what is needed to build against them, and kwsh.
# scripts/package builds them with the prefix /usr, which also decides for the folder of the libraries.
set(KORVEX_PACKAGE_CONTACT "KORVEX file commands <korvex@localhost>" CACHE STRING "Who answers for the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kwfilemanip)
set(CPACK_PACKAGE_VENDOR KORVEX)
set(CPACK_PACKAGE_CONTACT "${KORVEX_PACKAGE_CONTACT}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# Where the tools' own library is found when their dependencies are made out: it goes into another package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "libkwfilemanip${KORVEX_ABI_VERSION}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "File-system commands of KORVEX: the libraries
The eleven commands as a library, and the services of the environment that
they call: storage, messages, search path, packages.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkwfilemanip-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libboost-dev (>= 1.74)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "File-system commands of KORVEX: for building hosts
Headers, the commands as a static library, packages for CMake and
pkg-config, the guide for hosts and its examples.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kwsh)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "File-system commands of KORVEX at a prompt
kwsh runs the commands as they are typed, from scripts, and for other
programs with JSON on its standard output.")

include(CPack)
