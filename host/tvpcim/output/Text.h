// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_TEXT_H
#define HOST_TVPCIM_OUTPUT_TEXT_H

#include "text/Utf8.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** The texts with the separator between them. */
std::string join(const std::vector<std::string>& texts, const std::string& separator);

/** The text without blanks at both ends. */
std::string trimmed(const std::string& text);

using text::printable;
using text::toUtf8;

/** Columns of a terminal that a printable text takes. */
std::size_t displayWidth(const std::string& text);

/** The text cut to so many columns, an ellipsis in the last one when something was cut. */
std::string cutToWidth(const std::string& text, std::size_t columns);

/** Up to three of the candidates that look most like the word, best first; none when nothing is near. */
std::vector<std::string> nearest(const std::string& word, const std::vector<std::string>& candidates);

/** "; did you mean 'x' or 'y'?" for the nearest candidates, empty when nothing is near. */
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace tvp::host::tvpcim

#endif
