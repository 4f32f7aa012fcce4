// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_TEXTRULES_H
#define VOLTVK_ENGINE_RULES_TEXTRULES_H

#include "voltvk/Specs.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace voltvk {

/** True for UTF-8 of at most limit bytes without control characters; the empty text is fine. */
bool isPlainText(std::string_view text, std::size_t limit);

/**
 * The name in a request.
 * @param tooLong the caller's text did not fit the field
 * @throws Refusal TVK_INVALID_NAME when it is too long, not UTF-8, or has control characters
 */
std::string checkedName(const char (&field)[TVK_NAME_SIZE], bool tooLong);

/** The description in a request. @throws Refusal TVK_INVALID_DESCRIPTION when too long or not UTF-8 */
std::string checkedDescription(const char (&field)[TVK_DESCRIPTION_SIZE], bool tooLong);

/** The name in a request that may be unfit, made fit to be shown in an event. */
std::string shownName(const char (&field)[TVK_NAME_SIZE]);

}  // namespace voltvk

#endif
