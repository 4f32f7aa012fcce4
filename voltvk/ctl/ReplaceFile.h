// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_REPLACEFILE_H
#define VOLTVK_CTL_REPLACEFILE_H

#include <string>

namespace voltvk::ctl {

/**
 * Writes a file as a whole: whoever reads it finds the contents from before or the new ones. A file that
 * exists keeps its mode.
 * @throws std::runtime_error when it cannot be written, and for what exists and is not a regular file: links,
 *   devices, directories
 */
void replaceFile(const std::string& path, const std::string& contents);

}  // namespace voltvk::ctl

#endif
