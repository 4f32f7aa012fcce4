// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/XmlDocument.h"

#include "host/cimxml/message/Failure.h"
#include "text/Case.h"
#include "text/Trim.h"
#include "text/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <vector>

namespace tvp::host::cimxml {
namespace {

constexpr std::size_t DEEPEST = 64;
constexpr std::size_t MOST_ATTRIBUTES = 32;  ///< of one element; those of CIM-XML have fewer than ten
constexpr std::string_view BLANKS = " \t\r\n";
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

[[noreturn]] void fail(std::size_t position, const std::string& problem) {
  throw BadMessage(
      "request-not-well-formed",
      "the message is not well-formed XML: " + problem + " at byte " + std::to_string(position));
}

bool isCharacter(std::uint32_t code) {
  return code >= 0x20
             ? code <= 0x10FFFF && code != 0xFFFE && code != 0xFFFF && (code < 0xD800 || code > 0xDFFF)
             : code == '\t' || code == '\n' || code == '\r';
}

void checkCharacters(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte >= 0x20 && byte < 0x80) {
      ++position;
      continue;
    }
    const text::Character character = text::characterAt(text, position);
    if (character.length == 0) {
      fail(position, "a byte that is not UTF-8");
    }
    if (!isCharacter(character.code)) {
      fail(position, "a character that XML does not allow");
    }
    position += character.length;
  }
}

constexpr std::array<bool, 256> bytesOf(std::string_view characters) {
  std::array<bool, 256> bytes{};
  for (const char character : characters) {
    bytes[static_cast<unsigned char>(character)] = true;
  }
  return bytes;
}

/** Checks the markup of a document from front to back; that end tags match is left to the parser. */
class MarkupCheck {
public:
  MarkupCheck(std::string_view text, std::size_t largestCount) : m_text(text), m_left(largestCount) {}

  void run() {
    if (at(BYTE_ORDER_MARK)) {
      m_position += BYTE_ORDER_MARK.size();
    }
    if (at("<?xml") && BLANKS.find(m_text.substr(m_position + 5, 1)) != std::string_view::npos) {
      declaration();
    }
    while (m_position < m_text.size()) {
      if (m_text[m_position] == '<') {
        markup();
      } else {
        characterData();
      }
    }
    if (!m_hasRoot || m_depth > 0) {
      stop("the end of the text before the end of the document");
    }
  }

private:
  void declaration() {
    const std::string_view content = upTo("?>", "a declaration that does not end");
    const std::size_t found = content.find("encoding");
    if (found == std::string_view::npos) {
      return;
    }
    const std::string_view value =
        content.substr(std::min(content.find_first_of("\"'", found), content.size()));
    const std::size_t end = value.empty() ? std::string_view::npos : value.find(value.front(), 1);
    if (end == std::string_view::npos || !text::equalsIgnoringCase(value.substr(1, end - 1), "utf-8")) {
      stop("an encoding other than UTF-8");
    }
  }

  void markup() {
    if (at("<!--")) {
      m_position += 4;
      upTo("-->", "a comment that does not end");
    } else if (at("<![CDATA[")) {
      requireInside();
      upTo("]]>", "a CDATA section that does not end");
    } else if (at("<!")) {
      stop("a document type definition or another declaration, which messages cannot have,");
    } else if (at("<?")) {
      if (text::equalsIgnoringCase(m_text.substr(m_position + 2, 3), "xml")) {
        stop("a declaration after the beginning");
      }
      upTo("?>", "a processing instruction that does not end");
    } else if (at("</")) {
      requireInside();
      upTo(">", "an end tag that does not end");
      --m_depth;
    } else {
      startTag();
    }
  }

  void characterData() {
    const std::size_t end = std::min(m_text.find('<', m_position), m_text.size());
    const std::string_view content = m_text.substr(m_position, end - m_position);
    if (m_depth == 0 && !text::trimmed(content, BLANKS).empty()) {
      stop("text outside of the document's element");
    }
    checkReferences(content);
    m_position = end;
  }

  void startTag() {
    if (m_depth == 0 && m_hasRoot) {
      stop("a second document");
    }
    if (m_depth == DEEPEST) {
      stop("elements nested deeper than " + std::to_string(DEEPEST));
    }
    m_hasRoot = true;
    ++m_depth;
    count();
    ++m_position;
    takeName();
    m_attributes.clear();
    for (;;) {
      const bool separated = skipBlanks();
      if (at("/>")) {
        m_position += 2;
        --m_depth;
        return;
      }
      if (at(">")) {
        ++m_position;
        return;
      }
      if (!separated) {
        stop("a tag that does not end");
      }
      attribute();
    }
  }

  void attribute() {
    const std::string_view name = takeName();
    if (std::find(m_attributes.begin(), m_attributes.end(), name) != m_attributes.end()) {
      stop("an attribute that comes twice");
    }
    if (m_attributes.size() == MOST_ATTRIBUTES) {
      stop("too many attributes");
    }
    m_attributes.push_back(name);
    count();
    skipBlanks();
    if (!at("=")) {
      stop("an attribute without a value");
    }
    ++m_position;
    skipBlanks();
    if (!at("\"") && !at("'")) {
      stop("an attribute whose value has no quotes");
    }
    const std::string_view quote = m_text.substr(m_position, 1);
    ++m_position;
    const std::string_view value = upTo(quote, "an attribute whose value does not end");
    if (value.find('<') != std::string_view::npos) {
      stop("a < in the value of an attribute");
    }
    checkReferences(value);
  }

  /** Every & begins a reference to a character or to one of the entities that XML itself has. */
  void checkReferences(std::string_view content) const {
    constexpr std::array<std::string_view, 5> ENTITIES = {"amp", "lt", "gt", "quot", "apos"};
    constexpr std::size_t LONGEST = 12;
    for (std::size_t begin = content.find('&'); begin != std::string_view::npos;
         begin = content.find('&', begin + 1)) {
      const std::string_view after = content.substr(begin + 1, LONGEST);
      const std::size_t length = after.find(';');
      const std::string_view name = after.substr(0, length);
      const bool known =
          length != std::string_view::npos &&
          (std::find(ENTITIES.begin(), ENTITIES.end(), name) != ENTITIES.end() || isCharacterReference(name));
      if (!known) {
        stop("an & that is not a reference to a character");
      }
    }
  }

  static bool isCharacterReference(std::string_view name) {
    if (name.size() < 2 || name[0] != '#') {
      return false;
    }
    const bool hexadecimal = name[1] == 'x';
    name.remove_prefix(hexadecimal ? 2 : 1);
    std::uint32_t code = 0;
    const char* end = name.data() + name.size();
    const auto [last, error] = std::from_chars(name.data(), end, code, hexadecimal ? 16 : 10);
    return error == std::errc() && last == end && isCharacter(code);
  }

  /** Moves behind the next occurrence of a text. @return what is before it */
  std::string_view upTo(std::string_view end, const char* problem) {
    const std::size_t found = m_text.find(end, m_position);
    if (found == std::string_view::npos) {
      stop(problem);
    }
    const std::string_view content = m_text.substr(m_position, found - m_position);
    m_position = found + end.size();
    return content;
  }

  std::string_view takeName() {
    static constexpr std::array<bool, 256> ENDS = bytesOf(" \t\r\n=/><\"'&");
    std::size_t end = m_position;
    while (end < m_text.size() && !ENDS[static_cast<unsigned char>(m_text[end])]) {
      ++end;
    }
    const std::string_view name = m_text.substr(m_position, end - m_position);
    if (name.empty()) {
      stop("a tag or an attribute without a name");
    }
    m_position = end;
    return name;
  }

  bool skipBlanks() {
    const std::size_t begin = m_position;
    m_position = std::min(m_text.find_first_not_of(BLANKS, m_position), m_text.size());
    return m_position > begin;
  }

  void requireInside() const {
    if (m_depth == 0) {
      stop("an end tag or a CDATA section outside of the document's element");
    }
  }

  void count() {
    if (m_left == 0) {
      stop("too many elements");
    }
    --m_left;
  }

  bool at(std::string_view expected) const {
    return m_text.compare(m_position, expected.size(), expected) == 0;
  }
  [[noreturn]] void stop(const std::string& problem) const { fail(m_position, problem); }

  const std::string_view m_text;
  std::size_t m_position = 0;
  std::size_t m_depth = 0;
  std::size_t m_left;
  bool m_hasRoot = false;
  std::vector<std::string_view> m_attributes;  ///< of the current tag
};

}  // namespace

void parseXml(pugi::xml_document& document, std::string_view xml, std::size_t largestCount) {
  checkCharacters(xml);
  MarkupCheck(xml, largestCount).run();
  // Blanks alone are a text where they are all that an element has: <VALUE> </VALUE>.
  constexpr unsigned int OPTIONS = pugi::parse_default | pugi::parse_ws_pcdata_single;
  const pugi::xml_parse_result result =
      document.load_buffer(xml.data(), xml.size(), OPTIONS, pugi::encoding_utf8);
  if (!result) {
    fail(static_cast<std::size_t>(result.offset), result.description());
  }
}

std::string textOf(const pugi::xml_node& element) {
  std::string text;
  for (const pugi::xml_node& child : element) {
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
      text += child.value();
    }
  }
  return text;
}

pugi::xml_node firstElement(const pugi::xml_node& parent) {
  const pugi::xml_node child = parent.first_child();
  return child.type() == pugi::node_element || child.empty() ? child : nextElement(child);
}

pugi::xml_node nextElement(const pugi::xml_node& element) {
  pugi::xml_node next = element.next_sibling();
  while (!next.empty() && next.type() != pugi::node_element) {
    next = next.next_sibling();
  }
  return next;
}

}  // namespace tvp::host::cimxml
