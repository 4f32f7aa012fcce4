// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_PLAINTEXT_H
#define VOLTVK_ENGINE_STATE_PLAINTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace voltvk {

/** True for UTF-8 of at most limit bytes without control characters, including the empty text. */
bool isPlainText(std::string_view text, std::size_t limit);

/** The text without surrounding blanks, with '?' for bytes that are not UTF-8 and for control characters. */
std::string cleanText(std::string_view text);

}  // namespace voltvk

#endif
