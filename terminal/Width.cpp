// SPDX-License-Identifier: Apache-2.0
#include "terminal/Width.h"

#include "text/Utf8.h"

#include <cstdint>
#include <cwchar>
#include <limits>

namespace tvp::terminal {
namespace {

std::size_t widthOf(std::uint32_t code) {
  const int width = ::wcwidth(static_cast<wchar_t>(code));
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

struct Fit {
  std::size_t bytes = 0;
  std::size_t width = 0;
};

/** The longest beginning of the text that takes no more than so many columns. */
Fit fit(const std::string& text, std::size_t columns) {
  const Utf8Locale locale;
  Fit result;
  while (result.bytes < text.size()) {
    const text::Character next = text::characterAt(text, result.bytes);
    const std::size_t width = next.length == 0 ? 1 : widthOf(next.code);
    if (result.width + width > columns) {
      break;
    }
    result.bytes += next.step();
    result.width += width;
  }
  return result;
}

}  // namespace

Utf8Locale::Utf8Locale() {
  static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  m_before = ::uselocale(utf8);
}

Utf8Locale::~Utf8Locale() {
  ::uselocale(m_before);
}

std::size_t displayWidth(const std::string& text) {
  return fit(text, std::numeric_limits<std::size_t>::max()).width;
}

std::string cutToWidth(const std::string& text, std::size_t columns) {
  if (columns == 0 || displayWidth(text) <= columns) {
    return columns == 0 ? "" : text;
  }
  return text.substr(0, fit(text, columns - 1).bytes) + "…";
}

std::string wrapped(const std::string& text, std::size_t columns) {
  std::string lines;
  std::string rest = text;
  while (displayWidth(rest) > columns) {
    const std::size_t fitting = fit(rest, columns).bytes;
    const std::size_t blank = rest.rfind(' ', fitting);
    const bool broken = blank != std::string::npos && blank > 0;
    lines += rest.substr(0, broken ? blank : fitting) + "\n";
    rest.erase(0, broken ? blank + 1 : fitting);
  }
  return lines + rest + "\n";
}

}  // namespace tvp::terminal
