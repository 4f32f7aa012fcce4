// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_LIMITS_H
#define VOLTVK_INCLUDE_VOLTVK_LIMITS_H

/**
 * Limits that every request must respect. cmake/Contract.cmake reads these lines too, so that the schema and
 * tvpcim state the same numbers. Limits that depend on the library are in its identity instead, see
 * TvkAdapterIdentity.
 */

/** Longest name of a pool or a volume, in bytes of UTF-8. */
constexpr unsigned int TVK_LONGEST_NAME = 31;
/** Longest description of a pool or a volume, in bytes of UTF-8. */
constexpr unsigned int TVK_LONGEST_DESCRIPTION = 63;
/** Largest number of a drive; the smallest is 0. Methods name drives in 8 bits. */
constexpr unsigned int TVK_LARGEST_DEVICE_NUMBER = 255;

#endif
