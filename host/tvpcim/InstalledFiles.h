// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_INSTALLEDFILES_H
#define HOST_TVPCIM_INSTALLEDFILES_H

#include <string>

namespace tvp::host::tvpcim {

/**
 * The provider that belongs to this command: the one beside the command's own directory, else the installed
 * one. @throws OperationError when there is none; it names the places and the option.
 */
std::string installedProvider();

/** The command of the storage library that belongs to this command; its name alone, for the search path, when
 * there is none. */
std::string installedStorageTool();

/** The file of the classes that belongs to this command; as installedProvider(). */
std::string installedSchema();

/** The file of the classes of the interop namespace; as installedProvider(). */
std::string installedInteropSchema();

}  // namespace tvp::host::tvpcim

#endif
