# SPDX-License-Identifier: Apache-2.0
# The package tarvexpro-provider, for Debian and for distributions with RPM. Built by `./dev package`.

set(CPACK_GENERATOR DEB RPM)
set(CPACK_PACKAGE_NAME tarvexpro)
set(CPACK_PACKAGE_VENDOR tarvexPro)
set(CPACK_PACKAGE_CONTACT "tarvexPro maintainers <maintainers@tarvexpro.invalid>" CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/PackageKind.cmake)
configure_file(cmake/PackageKind.cmake.in ${CPACK_PROJECT_CONFIG_FILE} @ONLY)
set(CPACK_STRIP_FILES ON)
# Installed under DESTDIR, since the event catalogue has an absolute path.
set(CPACK_SET_DESTDIR ON)
set(CPACK_PACKAGE_RELOCATABLE OFF)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(summary "management provider for SSD caching and storage tiering (CMPI)")
set(description "A provider for CIM object managers such as OpenPegasus and SFCB, which load it
through CMPI 2.0. It lets management clients inspect and change the tiering
stack of the machine: drives, pools, tiered and cached volumes and their
statistics, with an indication for every change.

This package contains the provider, the embedded storage library with its
command voltvkctl, the CIM schema, tvp-register, which registers the provider
with an object manager, and tvpcim, which loads the provider without one: it
makes CIM calls and prints the results, for administration, for developing
management clients and for demonstrations.

Pools and volumes are book-keeping until an administrator makes them real;
they then are on the drives of the machine, through the Linux volume manager.")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_NAME tarvexpro-provider)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "${summary}\n${description}")
# Version 1.0.0 had tvpcim in a package of its own.
set(CPACK_DEBIAN_PACKAGE_CONFLICTS tarvexpro-dev)
set(CPACK_DEBIAN_PACKAGE_REPLACES tarvexpro-dev)
set(CPACK_DEBIAN_PACKAGE_PROVIDES tarvexpro-dev)
# Real volumes need these programs; pools and volumes that are book-keeping only do not.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "lvm2, thin-provisioning-tools")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst ${PROJECT_SOURCE_DIR}/packaging/debian/prerm
  ${PROJECT_SOURCE_DIR}/packaging/debian/postrm ${PROJECT_SOURCE_DIR}/packaging/debian/triggers
  ${PROJECT_SOURCE_DIR}/packaging/debian/conffiles)

# tvp_scriptlet(NAME SCRIPT ARGUMENTS): a scriptlet of the RPM that does what a maintainer script of the Debian package
# does. Both get told by their arguments what happens, each in its own way: ARGUMENTS translates.
function(tvp_scriptlet name script arguments)
  file(READ packaging/debian/${script} text)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/debian/${script})
  string(REPLACE "set -e\n" "set -e\n${arguments}\n" text "${text}")
  file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/rpm/${name} CONTENT "@text@" @ONLY)
endfunction()

tvp_scriptlet(post postinst [[if [ "$1" = 1 ]; then set -- configure ""; else set -- configure earlier; fi]])
tvp_scriptlet(preun prerm [[if [ "$1" = 0 ]; then set -- remove; else set -- upgrade; fi]])

set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_COMPRESSION_TYPE xz)
set(CPACK_RPM_PACKAGE_NAME tarvexpro-provider)
set(CPACK_RPM_PACKAGE_LICENSE "Apache-2.0 AND BSD-3-Clause AND MIT")
set(CPACK_RPM_PACKAGE_GROUP "System/Management")
set(CPACK_RPM_PACKAGE_SUMMARY "Management provider for SSD caching and storage tiering (CMPI)")
set(CPACK_RPM_PACKAGE_DESCRIPTION "${description}")
set(CPACK_RPM_CHANGELOG_FILE ${PROJECT_SOURCE_DIR}/packaging/rpm/changelog)
set(CPACK_RPM_POST_INSTALL_SCRIPT_FILE ${CMAKE_BINARY_DIR}/rpm/post)
set(CPACK_RPM_PRE_UNINSTALL_SCRIPT_FILE ${CMAKE_BINARY_DIR}/rpm/preun)
# What is outside of the prefix would otherwise be taken for configuration.
set(CPACK_RPM_USER_FILELIST "%config(noreplace) /etc/pam.d/tvpcim" "%attr(0644,root,root) /usr/VolMan/TVPEvents.properties"
  "%license /usr/${CMAKE_INSTALL_DATADIR}/licenses/tarvexpro-provider/LICENSE")
# Directories that belong to the system.
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /etc /etc/pam.d)
foreach(directory IN ITEMS sbin lib/systemd lib/systemd/system share/man share/man/man1 share/man/man8 share/licenses
    share/bash-completion share/bash-completion/completions share/zsh ${TVP_ZSH_COMPLETION_DIRECTORY} ${CMAKE_INSTALL_LIBDIR})
  list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr/${directory})
endforeach()
# What is linked is found by rpmbuild, as the names of libraries, which are the same in all distributions. Names of packages
# are needed for the programs of real volumes alone; two distributions have two names for one of them.
set(CPACK_RPM_SPEC_MORE_DEFINE "Packager: ${CPACK_PACKAGE_CONTACT}
Recommends: lvm2
Recommends: (device-mapper-persistent-data or thin-provisioning-tools)
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _buildhost localhost
%define __os_install_post %{nil}
%define _build_id_links none")

include(CPack)
