# SPDX-License-Identifier: Apache-2.0
# The Debian packages: tarvexpro-provider and tarvexpro-dev. Built by `./dev package`.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvexpro)
set(CPACK_PACKAGE_VENDOR tarvexPro)
set(CPACK_PACKAGE_CONTACT "tarvexPro maintainers <maintainers@tarvexpro.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL provider dev)
set(CPACK_STRIP_FILES ON)
# Installed under DESTDIR, since the event catalogue has an absolute path.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_PROVIDER_PACKAGE_NAME tarvexpro-provider)
set(CPACK_DEBIAN_PROVIDER_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PROVIDER_DESCRIPTION "management provider for SSD caching and storage tiering (CMPI)
A provider for CIM object managers such as OpenPegasus and SFCB, which load it
through CMPI 2.0. It lets management clients inspect and change the tiering
stack of the machine: drives, pools, tiered and cached volumes and their
statistics, with an indication for every change.

This package contains the provider, the embedded storage library with its
command voltvkctl, the CIM schema, and tvp-register, which registers the
provider with an object manager.")
set(CPACK_DEBIAN_PROVIDER_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/postrm ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME tarvexpro-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "tarvexpro-provider (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION "command-line CMPI host for the tarvexPro management provider
The command tvpcim loads the provider without an object manager, makes CIM
calls to it and prints the results as a table, as JSON or as MOF. It is meant
for developing management clients, for tests and for demonstrations.")

include(CPack)
