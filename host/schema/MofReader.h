// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_MOFREADER_H
#define HOST_SCHEMA_MOFREADER_H

#include "host/schema/Schema.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace tvp::host {

/** A MOF text that cannot be read. what() is "FILE:LINE: ..." and says what was expected. */
class MofError : public std::runtime_error {
public:
  MofError(const std::string& file, unsigned int line, const std::string& problem);

  unsigned int line() const { return m_line; }

private:
  unsigned int m_line;
};

/**
 * Reads class declarations in MOF: comments, #pragma lines and qualifier declarations (skipped), classes with
 * qualifiers, properties (arrays, references; initial values are skipped), methods with parameters, joined
 * string literals. EmbeddedInstance and EmbeddedObject turn a string property into an instance. Instance
 * declarations are not supported: schema files have none.
 */
class MofReader {
public:
  /** @throws MofError, also if the file cannot be opened (line 0). */
  static std::shared_ptr<const Schema> readFile(const std::string& fileName);
  /** @param fileName used only in messages. @throws MofError */
  static std::shared_ptr<const Schema> readText(const std::string& text, const std::string& fileName);
};

}  // namespace tvp::host

#endif
