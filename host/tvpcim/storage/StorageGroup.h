// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_STORAGEGROUP_H
#define HOST_TVPCIM_STORAGE_STORAGEGROUP_H

#include "host/tvpcim/CommandGroup.h"
#include "host/tvpcim/storage/Inventory.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** A group whose verbs speak of drives, pools and volumes. */
class StorageGroup : public CommandGroup {
public:
  explicit StorageGroup(Tool& tool) : CommandGroup(tool), m_inventory(tool.session()) {}

protected:
  Inventory& inventory() { return m_inventory; }
  const SchemaClass& classOf(const ObjectKind& kind) { return session().classNamed(kind.className); }

  /** Prints all objects of a kind, and says so when there are none because no driver answers. */
  void printAll(const ObjectKind& kind, std::vector<Column> columns);

  /** Says so when no driver answers. */
  void noticeMissingDriver();

  /** Prints the members of a pool or a volume. @throws OperationError when there is no such object. */
  void printMembers(const ObjectKind& kind, const std::string& text, std::vector<Column> columns);

  /**
   * Calls a method of the service. @return the answer as one object
   * @throws OperationError when it fails, with what the provider says about the reason as its hint
   */
  Instance call(const std::string& method, const Arguments& arguments);

  /**
   * Makes sure that a change which was reported as done is there: an exception inside the storage library
   * reaches a client as success. @throws OperationError when done is false
   */
  static void confirm(bool done, const std::string& expected);

private:
  Inventory m_inventory;
};

}  // namespace tvp::host::tvpcim

#endif
