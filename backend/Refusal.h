// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_REFUSAL_H
#define BACKEND_REFUSAL_H

namespace tvp::cim::fwf {

/**
 * Writes why the storage library refused something: one line at level 2 after the lines that the
 * operation has anyway, and the reason of the running request. Nothing happens without a reason.
 * @param operation the name in the line
 * @param reason one line of UTF-8; may be empty
 */
void reportRefusal(const char* operation, const char* reason);

}  // namespace tvp::cim::fwf

#endif
