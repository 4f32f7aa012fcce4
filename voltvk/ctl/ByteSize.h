// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_BYTESIZE_H
#define VOLTVK_CTL_BYTESIZE_H

#include <cstdint>
#include <string>

namespace voltvk::ctl {

/**
 * Reads a size such as "100GiB", "100G", "1MiB", "4096B" or "4096". All units are powers of 1024.
 * @return bytes
 * @throws std::invalid_argument with a sentence when the text is no size or beyond 64 bits
 */
std::uint64_t parseByteSize(const std::string& text);

/** Sectors of 512 bytes in the largest unit that leaves at least 1, with two decimals at most: "1.5 TiB". */
std::string showSectors(std::uint64_t sectors);

}  // namespace voltvk::ctl

#endif
