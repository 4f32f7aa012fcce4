// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_PAGEDOCUMENT_H
#define HOST_TVPCIM_REMOTE_PAGEDOCUMENT_H

#include <string>

namespace tvp::host::tvpcim {

/** The page to look at: one HTML document that needs nothing but its data, which it asks the server for. */
class PageDocument {
public:
  PageDocument();

  const std::string& text() const { return m_text; }
  /** The value of the header Content-Security-Policy: the document's own script and style, and nothing else,
   * whatever got into it. */
  const std::string& policy() const { return m_policy; }

private:
  std::string m_text;
  std::string m_policy;
};

}  // namespace tvp::host::tvpcim

#endif
