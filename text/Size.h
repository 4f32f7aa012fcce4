// SPDX-License-Identifier: Apache-2.0
#ifndef TEXT_SIZE_H
#define TEXT_SIZE_H

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tvp::text {

/** Bytes of a sector, in which drives, pools and volumes are measured. */
constexpr std::uint64_t SECTOR_SIZE = 512;

/** A text that cannot be taken as a size; what() says which and why. */
class SizeError : public std::invalid_argument {
public:
  using std::invalid_argument::invalid_argument;
};

/**
 * Reads a size as people write it.
 *
 * A number, with up to three decimals, and a unit in any case: none or B for bytes; K, M, G, T, P, E and KiB,
 * MiB, GiB, TiB, PiB, EiB for powers of 1024; KB, MB, GB, TB, PB, EB for powers of 1000; s for sectors.
 * Blanks may stand between them.
 * @return the size in sectors
 * @throws SizeError when the text is not a size, is 16 EiB or more, or is not a whole number of sectors
 */
std::uint64_t parseSectors(std::string_view text);

/**
 * Reads a share as people write it: a whole number from 1 to 100 and a percent sign, with blanks between them
 * if they like: "25%".
 * @return nothing for any other text, which may be a size
 */
std::optional<unsigned> percentage(std::string_view text);

/** A size for people, in the largest binary unit that gives at least 1, with two decimals at most: "100 GiB",
 *  "1.5 TiB", "512 B". */
std::string formatSectors(std::uint64_t sectors);

}  // namespace tvp::text

#endif
