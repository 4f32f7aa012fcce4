// SPDX-License-Identifier: Apache-2.0
#include "text/Case.h"

#include <algorithm>

namespace tvp::text {

std::string lowerCase(std::string_view text) {
  std::string lowered(text);
  std::transform(
      lowered.begin(), lowered.end(), lowered.begin(), [](char character) { return lowerCase(character); });
  return lowered;
}

bool equalsIgnoringCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(), [](char one, char other) {
           return lowerCase(one) == lowerCase(other);
         });
}

}  // namespace tvp::text
