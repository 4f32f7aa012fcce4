// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CHANGES_LAYOUTADOPTION_H
#define VOLTVK_ENGINE_CHANGES_LAYOUTADOPTION_H

#include "voltvk/engine/state/Records.h"

#include <vector>

namespace voltvk {

class Connection;

/**
 * Makes the state say where the chunks of a volume really are: rewrites its extents, adjacent ones in one,
 * and for a tiered volume records which chunks are on SSD. A chunk that is only partly on SSD counts as one
 * that is not. Works within the caller's transaction, and writes only what is different.
 * @param layout what the backing reports, in the order of the volume's addresses
 * @return whether anything was different
 * @throws Refusal TVK_BACKING_FAILED if the layout is not one of this volume: it has another size, or uses a
 *   pool that does not exist; DatabaseError
 */
bool adoptLayout(
    Connection& connection, const VolumeRecord& volume, const std::vector<VolumeExtentRecord>& layout);

}  // namespace voltvk

#endif
