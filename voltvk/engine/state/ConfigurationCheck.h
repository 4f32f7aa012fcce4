// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_CONFIGURATIONCHECK_H
#define VOLTVK_ENGINE_STATE_CONFIGURATIONCHECK_H

namespace voltvk {

struct Configuration;

/**
 * Checks that numbers are in their ranges, that everything that is referred to exists, and that extents and
 * sums agree, so that no other code has to expect anything else.
 * @throws DatabaseError of damage that names the first row that is wrong
 */
void checkConfiguration(const Configuration& configuration);

}  // namespace voltvk

#endif
