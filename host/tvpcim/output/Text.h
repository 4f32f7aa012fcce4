// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_TEXT_H
#define HOST_TVPCIM_OUTPUT_TEXT_H

#include "text/Quote.h"
#include "text/Utf8.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

using text::printable;
using text::toUtf8;

/** The texts with the separator between them. */
std::string join(const std::vector<std::string>& texts, const std::string& separator);

/** The parts of a text between separators, of which there is one more than separators; none of an empty text.
 */
std::vector<std::string> split(const std::string& text, char separator);

/** The names of named things: properties, parameters, classes. */
template <typename Things>
std::vector<std::string> namesOf(const Things& things) {
  std::vector<std::string> names;
  names.reserve(things.size());
  for (const auto& thing : things) {
    names.push_back(thing.name);
  }
  return names;
}

/** "; did you mean 'x' or 'y'?" for up to three near candidates, best first; empty when nothing is near. */
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace tvp::host::tvpcim

#endif
