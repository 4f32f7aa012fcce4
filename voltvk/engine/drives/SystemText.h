// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H
#define VOLTVK_ENGINE_DRIVES_SYSTEMTEXT_H

#include <string>
#include <string_view>
#include <vector>

namespace voltvk {

/** A small system file, as a rule of one line, as cleanText leaves it; empty when it cannot be read. */
std::string readSystemText(const std::string& path);

/** The whole of a system file as it is; empty when it cannot be read. */
std::string readSystemFile(const std::string& path);

/** Names in a directory without "." and "..", sorted; empty when it cannot be read. */
std::vector<std::string> listDirectory(const std::string& path);

/** The text without blanks around it, with '?' for bytes that are not UTF-8 and for control characters. */
std::string cleanText(std::string_view text);

/** The path of something in a directory. */
std::string pathOf(const std::string& directory, const std::string& name);

/** The last part of a path. */
std::string baseName(const std::string& path);

}  // namespace voltvk

#endif
