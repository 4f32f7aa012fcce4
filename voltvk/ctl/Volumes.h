// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_VOLUMES_H
#define VOLTVK_CTL_VOLUMES_H

#include "voltvk/engine/state/Records.h"

#include <string>

namespace voltvk {
class Connection;
class State;
}  // namespace voltvk

namespace voltvk::ctl {

/**
 * The volume with an identifier or, when there is none, with a name.
 * @param connection in a transaction of the caller
 * @throws Refusal TVK_NO_SUCH_VOLUME
 */
VolumeRecord findVolume(Connection& connection, const std::string& wanted);

/** The same for a pool. @throws Refusal TVK_NO_SUCH_POOL */
PoolRecord findPool(Connection& connection, const std::string& wanted);

/** The device node of a volume, to be formatted and mounted; empty if it has none. */
std::string devicePathOf(State& state, const VolumeRecord& volume);

}  // namespace voltvk::ctl

#endif
