// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_FORMATTER_H
#define HOST_TVPCIM_OUTPUT_FORMATTER_H

#include "host/schema/Value.h"
#include "host/tvpcim/Options.h"
#include "host/tvpcim/output/Terminal.h"
#include "host/tvpcim/storage/Listing.h"

#include <memory>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/**
 * Writes answers in one form. Every function gives complete text, with its last newline.
 * Immutable, and so safe for several threads.
 */
class Formatter {
public:
  virtual ~Formatter() = default;

  /** Instances of one kind, none included. */
  virtual std::string listing(const Listing& listing) const = 0;
  /** One object: an instance, or the answer of a change, whose class name is the operation. */
  virtual std::string record(const Instance& instance) const = 0;
  /** The answer to a question for one object when there is none. */
  virtual std::string nothing() const = 0;
  /** Object paths. @param noun what they are, in the plural */
  virtual std::string paths(const std::string& noun, const std::vector<ObjectPath>& paths) const = 0;
  /** One object of a stream of them. */
  virtual std::string event(const Instance& instance) const = 0;
  /**
   * Objects that stand under one another. A node's property "Children" is an array of instances;
   * "Kind", "Number", "Name", "Detail", "SizeInSectors" and "UsedInSectors" are what people see of it.
   */
  virtual std::string tree(const std::vector<Instance>& roots) const = 0;

  /** Makes the formatter of a form. */
  static std::unique_ptr<const Formatter> make(const Options& options, const Terminal& terminal);
};

}  // namespace tvp::host::tvpcim

#endif
