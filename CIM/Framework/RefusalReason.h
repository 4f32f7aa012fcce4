// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_REFUSALREASON_H
#define CIM_FRAMEWORK_REFUSALREASON_H

namespace tvp::cim::fwf {

/**
 * Why something was refused during the request that the calling thread carries out: what a storage library
 * says about it has no place in the answers of the plugins, yet the object manager's log wants it.
 *
 * Whoever carries out a request has an object of this class on the stack; the code below it, on the same
 * thread, sets the reason without knowing the object. A request within a request has a reason of its own.
 * On threads without an object nothing is kept. Nothing here throws or needs memory that may not be there:
 * a thread_local variable would, since it is allocated when a thread first touches it, and glibc aborts the
 * process when that fails.
 */
class RefusalReason {
public:
  /** Begins a request: there is no reason yet. */
  RefusalReason() noexcept;
  /** Ends it; the reason of the request around it, if there is one, is the current one again. */
  ~RefusalReason();
  RefusalReason(const RefusalReason&) = delete;
  RefusalReason& operator=(const RefusalReason&) = delete;

  /** The reason of this request; empty when there is none. */
  const char* text() const noexcept { return m_text; }

  /** @param text one line of UTF-8, copied and cut to 511 bytes; a later reason replaces an earlier one */
  static void set(const char* text) noexcept;

private:
  RefusalReason* m_outer;
  char m_text[512] = "";
};

}  // namespace tvp::cim::fwf

#endif
