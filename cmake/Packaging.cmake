# SPDX-License-Identifier: Apache-2.0
# The Debian package tarvexpro-provider. Built by `./dev package`.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarvexpro)
set(CPACK_PACKAGE_VENDOR tarvexPro)
set(CPACK_PACKAGE_CONTACT "tarvexPro maintainers <maintainers@tarvexpro.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_COMPONENTS_ALL provider)
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
command voltvkctl, the CIM schema, tvp-register, which registers the provider
with an object manager, and tvpcim, which loads the provider without one: it
makes CIM calls and prints the results, for administration, for developing
management clients and for demonstrations.
.
Pools and volumes are book-keeping until an administrator makes them real;
they then are on the drives of the machine, through the Linux volume manager.")
# Version 1.0.0 had tvpcim in a package of its own.
set(CPACK_DEBIAN_PROVIDER_PACKAGE_CONFLICTS tarvexpro-dev)
set(CPACK_DEBIAN_PROVIDER_PACKAGE_REPLACES tarvexpro-dev)
set(CPACK_DEBIAN_PROVIDER_PACKAGE_PROVIDES tarvexpro-dev)
# Real volumes need these programs; pools and volumes that are book-keeping only do not.
set(CPACK_DEBIAN_PROVIDER_PACKAGE_RECOMMENDS "lvm2, thin-provisioning-tools")
set(CPACK_DEBIAN_PROVIDER_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/postrm ${PROJECT_SOURCE_DIR}/packaging/debian/triggers
  ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles)

include(CPack)
