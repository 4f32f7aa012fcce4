// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_RAIDOBJECT_H
#define VOLTVK_INCLUDE_VOLTVK_RAIDOBJECT_H

#include "voltvk/Export.h"

#include <vector>

/**
 * A node of the storage tree: the root, the tiering adapter, a drive, pool, volume or chunk.
 *
 * The root and the adapter live as long as the TvkLib they come from. All other objects belong to an
 * immutable snapshot of the configuration and stay valid, and unchanged, while the FilterCollection through
 * which they were reached exists. No function here needs a lock.
 */
class VOLTVK_EXPORT RaidObject {
public:
  virtual ~RaidObject();

  /** "Root", "Adapter", "LogicalDevice", "VirtualPool", "VirtualVolume" or "Chunk". */
  virtual const char* getTypeName() const = 0;

  /**
   * The child with the given index. Only the root has one that is reached like this: index 0 is the
   * TvkAdapter. Drives, pools and volumes are reached through a FilterCollection over the adapter.
   * @return null if there is no such child. Not owned by the caller.
   */
  virtual RaidObject* getObject(unsigned long index);

  /**
   * Appends the children of the named type to out: of the root its adapter, of a pool or volume its chunks;
   * nothing has children of other types.
   * @param deep also children of children; there are none
   * @param ordered in the order of their addresses, which is how they are kept
   */
  virtual void getChildren(std::vector<RaidObject*>& out, const char* type, bool deep, bool ordered);

  /** True while the policy engine runs; meaningful on the root, false elsewhere. */
  virtual bool isPolicyEngineRunning();

protected:
  RaidObject() = default;
  RaidObject(const RaidObject&) = default;
  RaidObject& operator=(const RaidObject&) = default;
};

#endif
