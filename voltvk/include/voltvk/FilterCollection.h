// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_FILTERCOLLECTION_H
#define VOLTVK_INCLUDE_VOLTVK_FILTERCOLLECTION_H

#include "voltvk/RaidObject.h"

#include <memory>

/**
 * A list of the objects under a root, taken from the snapshot that is current when the collection is made.
 * The collection keeps its snapshot: the objects stay valid and unchanged until it and the collections
 * filtered from it are deleted, whatever other threads and processes change in the meantime. A collection
 * belongs to one thread and is deleted through its virtual destructor.
 */
class VOLTVK_EXPORT FilterCollection {
public:
  /** @param root the adapter; null makes an empty collection whose filter returns null. */
  explicit FilterCollection(RaidObject* root);
  virtual ~FilterCollection();
  FilterCollection(const FilterCollection&) = delete;
  FilterCollection& operator=(const FilterCollection&) = delete;

  /**
   * The objects of one type: "LogicalDevice", "VirtualPool" or "VirtualVolume", in ascending order of their
   * numbers.
   * @return a new collection that the caller deletes; null when the driver cannot be read.
   */
  virtual FilterCollection* filterByType(const char* type, unsigned long flags);

  /** Number of objects. */
  int size() const;
  /** The object at index, owned by the snapshot; null when the index is out of range. */
  RaidObject* elementAt(int index) const;

private:
  struct Content;
  explicit FilterCollection(std::unique_ptr<Content> content);
  std::unique_ptr<Content> m_content;
};

#endif
