// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_SUBSCRIPTIONSFILE_H
#define HOST_CIMXML_INDICATIONS_SUBSCRIPTIONSFILE_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <string>
#include <vector>

namespace tvp::host::cimxml {

/** A filter, a destination or a subscription, and who created it. */
struct StoredInstance {
  Instance instance;  ///< with its complete path
  std::string owner;
};

/**
 * The file of the filters, destinations and subscriptions, in JSON. Only its owner can read it. It belongs to
 * one server at a time: a lock on a file beside it is held as long as this object lives. One thread.
 */
class SubscriptionsFile {
public:
  /**
   * @param name empty: nothing is ever stored
   * @throws std::runtime_error when another server has it, or its directory cannot be written
   */
  explicit SubscriptionsFile(std::string name);
  ~SubscriptionsFile();
  SubscriptionsFile(const SubscriptionsFile&) = delete;
  SubscriptionsFile& operator=(const SubscriptionsFile&) = delete;

  /** What is stored; nothing if there is no file yet. @throws std::runtime_error for a damaged file */
  std::vector<StoredInstance> read(const Schema& schema) const;
  /** Replaces the file as a whole: a crash leaves the old one or the new one. @throws std::runtime_error */
  void write(const std::vector<const StoredInstance*>& stored) const;

private:
  const std::string m_name;
  int m_lock = -1;
};

}  // namespace tvp::host::cimxml

#endif
