// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_TEXTRULES_H
#define VOLTVK_ENGINE_RULES_TEXTRULES_H

#include "voltvk/Specs.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace voltvk {

/** A text of a request as received: what fitted into the field, and what is known of the rest. */
struct GivenText {
  std::string_view field;   ///< the whole field, with or without a terminating NUL
  bool tooLong = false;     ///< the caller's text did not fit
  std::uint32_t bytes = 0;  ///< of the caller's text; 0 if not known
};

/** The name in a pool's or volume's request. */
template <typename Spec>
GivenText givenName(const Spec& spec) {
  return {{spec.name, sizeof spec.name}, spec.nameTooLong, spec.nameBytes};
}
/** The description in a pool's or volume's request. */
template <typename Spec>
GivenText givenDescription(const Spec& spec) {
  return {{spec.description, sizeof spec.description}, spec.descriptionTooLong, spec.descriptionBytes};
}

/**
 * The name in a request; may be empty.
 * @throws Refusal TVK_INVALID_NAME if it is too long, not UTF-8, has control or invisible characters, or only
 * blanks
 */
std::string checkedName(const GivenText& given);

/** The same for a name that must not be empty. */
std::string requiredName(const GivenText& given);

/** The description in a request. @throws Refusal TVK_INVALID_DESCRIPTION if too long or not UTF-8 */
std::string checkedDescription(const GivenText& given);

/** The name in a request, which may be invalid, made presentable for an event. */
std::string shownName(const char (&field)[TVK_NAME_SIZE]);

}  // namespace voltvk

#endif
