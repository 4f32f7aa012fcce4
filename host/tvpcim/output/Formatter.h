// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_FORMATTER_H
#define HOST_TVPCIM_OUTPUT_FORMATTER_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"
#include "host/tvpcim/output/Listing.h"
#include "terminal/Terminal.h"

#include <memory>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** What a formatter for people takes into account. */
struct Appearance {
  terminal::Terminal terminal;
  bool wide = false;  ///< show every column, whatever the width of the terminal
};

/**
 * Formats results for one output format. Every function returns complete text, with its last newline.
 * Immutable, and so safe for several threads.
 */
class Formatter {
public:
  virtual ~Formatter() = default;

  /** Whether people read the output: what programs get is then put into words. */
  virtual bool forPeople() const { return false; }
  /** Instances of one kind, possibly none. */
  virtual std::string listing(const Listing& listing) const = 0;
  /** One object: an instance, or the answer of a change, whose class name is the operation. */
  virtual std::string record(const Instance& instance) const = 0;
  /** The answer to a request for one object when there is none. */
  virtual std::string nothing() const = 0;
  /** Object paths. @param noun what they are, in the plural */
  virtual std::string paths(const std::string& noun, const std::vector<ObjectPath>& paths) const = 0;
  /** One object of a stream of them. */
  virtual std::string event(const Instance& instance) const = 0;
  /**
   * Objects that contain one another. A node's property "Children" is an array of instances;
   * "Kind", "Number", "Name", "Detail", "Trouble" (null for what is in order), "SizeInSectors" and
   * "UsedInSectors" are what people see of it.
   */
  virtual std::string tree(const std::vector<Instance>& roots) const = 0;
  /** A class. @param details its features as an object; without a use for them, its MOF is the answer */
  virtual std::string declaration(const SchemaClass& schemaClass, const Instance& details) const;
  /** All classes. @param summaries one object for each */
  virtual std::string
  declarations(const std::vector<const SchemaClass*>& classes, const Listing& summaries) const;
};

/** An output format: its name on the command line and what makes its formatter. */
struct OutputFormat {
  const char* name;
  std::unique_ptr<const Formatter> (*make)(const Appearance& appearance);
};

/** All output formats, the default first. Option -o, its help and the completions follow this table. */
const std::vector<OutputFormat>& outputFormats();
/** Makes the formatter of a format. @throws std::out_of_range for an unknown name */
std::unique_ptr<const Formatter> makeFormatter(const std::string& format, const Appearance& appearance);

}  // namespace tvp::host::tvpcim

#endif
