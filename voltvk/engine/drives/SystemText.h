// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H
#define VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H

#include <string>
#include <vector>

namespace voltvk {

/** What the paths of the machine begin with: $VOLTVK_HOST_ROOT, or nothing for the running machine. */
std::string hostRoot();

/** A small system file, usually of one line, cleaned by cleanText; empty if it cannot be read. */
std::string readSystemText(const std::string& path);

/** A whole system file, unchanged; empty if it cannot be read. */
std::string readSystemFile(const std::string& path);

/** Names in a directory without "." and "..", sorted; empty if it cannot be read. */
std::vector<std::string> listDirectory(const std::string& path);

/** The path of an entry in a directory. */
std::string pathOf(const std::string& directory, const std::string& name);

/** The path with all links resolved; empty if there is nothing. */
std::string realPath(const std::string& path);

/** The last part of a path. */
std::string baseName(const std::string& path);

/** The name in sysfs of a device node below "/dev": "cciss!c0d0" for "/dev/cciss/c0d0". */
std::string kernelNameOf(const std::string& node);

}  // namespace voltvk

#endif
