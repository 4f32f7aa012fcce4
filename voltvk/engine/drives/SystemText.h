// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H
#define VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H

#include <string>
#include <vector>

namespace voltvk {

/** A small system file, as a rule of one line, as cleanText leaves it; empty when it cannot be read. */
std::string readSystemText(const std::string& path);

/** The whole of a system file as it is; empty when it cannot be read. */
std::string readSystemFile(const std::string& path);

/** Names in a directory without "." and "..", sorted; empty when it cannot be read. */
std::vector<std::string> listDirectory(const std::string& path);

/** The path of something in a directory. */
std::string pathOf(const std::string& directory, const std::string& name);

/** The last part of a path. */
std::string baseName(const std::string& path);

}  // namespace voltvk

#endif
