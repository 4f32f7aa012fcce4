// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Formatter.h"

#include "host/schema/MofWriter.h"

#include <stdexcept>

namespace tvp::host::tvpcim {

// Each is defined in the source of its formatter, which needs no header: only this table knows them.
std::unique_ptr<const Formatter> makeTableFormatter(const Appearance& appearance);
std::unique_ptr<const Formatter> makeJsonFormatter(const Appearance& appearance);
std::unique_ptr<const Formatter> makeMofFormatter(const Appearance& appearance);

const std::vector<OutputFormat>& outputFormats() {
  static const std::vector<OutputFormat> formats = {
      {"table", makeTableFormatter}, {"json", makeJsonFormatter}, {"mof", makeMofFormatter}};
  return formats;
}

std::unique_ptr<const Formatter> makeFormatter(const std::string& format, const Appearance& appearance) {
  for (const OutputFormat& candidate : outputFormats()) {
    if (format == candidate.name) {
      return candidate.make(appearance);
    }
  }
  throw std::out_of_range("there is no output format '" + format + "'");
}

std::string Formatter::declaration(const SchemaClass& schemaClass, const Instance& /*details*/) const {
  return mofClass(schemaClass);
}

std::string
Formatter::declarations(const std::vector<const SchemaClass*>& /*classes*/, const Listing& summaries) const {
  return listing(summaries);
}

}  // namespace tvp::host::tvpcim
