// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_REFUSALREASON_H
#define CIM_FRAMEWORK_REFUSALREASON_H

namespace tvp::cim::fwf {

/**
 * Why something was refused in the request that the calling thread carries out: what a storage library
 * says about it has no place in the answers of the plugins, yet the object manager's log wants it.
 *
 * Every thread has a reason of its own, since a request stays on its thread from begin to end. Who
 * carries requests out clears it before each, so nothing passes from one request to the next; on other
 * threads nobody reads it. Nothing here allocates or throws.
 */
class RefusalReason {
public:
  /** Begins a request: there is no reason yet. */
  static void clear();
  /** @param text one line of UTF-8, copied and cut to 511 bytes; a later reason replaces an earlier one */
  static void set(const char* text);
  /** Empty when there is none; valid until this thread calls set or clear. */
  static const char* get();
};

}  // namespace tvp::cim::fwf

#endif
