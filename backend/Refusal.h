// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_REFUSAL_H
#define BACKEND_REFUSAL_H

namespace tvp::cim::fwf {

/**
 * Writes why the storage library refused something: one line at level 2 after the operation's usual lines,
 * and sets the reason of the current request. Does nothing if the reason is empty.
 * @param operation the name in the line
 * @param reason one line of UTF-8; may be empty
 */
void reportRefusal(const char* operation, const char* reason);

}  // namespace tvp::cim::fwf

#endif
