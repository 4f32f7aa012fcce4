// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_MESSAGE_XMLWRITER_H
#define HOST_CIMXML_MESSAGE_XMLWRITER_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace tvp::host::cimxml {

/**
 * Appends the text of an element such that an XML reader gets it back. Control characters that XML 1.0 cannot
 * have and bytes that are not UTF-8 become U+FFFD. Blanks, tabs and line feeds stay as they are, since
 * clients are known that do not read references to characters.
 */
void appendEscaped(std::string& output, std::string_view text);

/** An attribute of an element. It is left out when its value is a view without data (not an empty text). */
struct XmlAttribute {
  std::string_view name;
  std::string_view value;
};
using XmlAttributes = std::initializer_list<XmlAttribute>;

/** Appends "<TAG NAME="VALUE"" and the given end. */
void appendTag(std::string& output, std::string_view tag, XmlAttributes attributes, std::string_view end);

/** An element while its content is written: its start tag is appended at once, its end tag on destruction. */
class XmlElement {
public:
  /** @param output, tag must outlive the element */
  XmlElement(std::string& output, std::string_view tag, XmlAttributes attributes = {})
      : m_output(output), m_tag(tag) {
    appendTag(output, tag, attributes, ">\n");
  }
  ~XmlElement() { m_output.append("</").append(m_tag).append(">\n"); }
  XmlElement(const XmlElement&) = delete;
  XmlElement& operator=(const XmlElement&) = delete;

private:
  std::string& m_output;
  const std::string_view m_tag;
};

/** Appends an element that has a text, on one line. */
void appendText(std::string& output, std::string_view tag, XmlAttributes attributes, std::string_view text);

}  // namespace tvp::host::cimxml

#endif
