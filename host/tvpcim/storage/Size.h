// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_SIZE_H
#define HOST_TVPCIM_STORAGE_SIZE_H

#include <cstdint>
#include <string>

namespace tvp::host::tvpcim {

/** Sizes travel in sectors of this many bytes. */
constexpr std::uint64_t SECTOR_SIZE = 512;

/**
 * Reads a size as people write it and gives it in sectors.
 *
 * A number, with up to three decimals, and a unit in any case: none or B for bytes; K, M, G, T, P and KiB,
 * MiB, GiB, TiB, PiB for powers of 1024; KB, MB, GB, TB, PB for powers of 1000; s for sectors. A blank may
 * stand between them.
 * @throws UsageError when the text is no size, is too large for 64 bits of bytes or is no whole number of
 *         sectors
 */
std::uint64_t parseSectors(const std::string& text);

/** A size for people, in the largest binary unit that gives at least 1: "100 GiB", "1.5 TiB", "512 B". */
std::string formatSectors(std::uint64_t sectors);

/** How much of a whole is used, in percent and rounded; 0 of a whole of 0. */
unsigned percentOf(std::uint64_t used, std::uint64_t whole);

}  // namespace tvp::host::tvpcim

#endif
