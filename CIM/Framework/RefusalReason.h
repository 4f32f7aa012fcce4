// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_REFUSALREASON_H
#define CIM_FRAMEWORK_REFUSALREASON_H

namespace tvp::cim::fwf {

/**
 * Why something was refused during the request that the calling thread is executing: what a storage library
 * says about it has no place in the plugins' results, but belongs in the object manager's log.
 *
 * The code that executes a request has an object of this class on the stack; the code it calls, on the same
 * thread, sets the reason without knowing the object. A nested request has its own reason. On threads without
 * an object nothing is kept. Nothing here throws or depends on an allocation: a thread_local variable would,
 * since it is allocated when a thread first accesses it, and glibc aborts the process if that fails.
 */
class RefusalReason {
public:
  /** Begins a request, which has no reason yet. */
  RefusalReason() noexcept;
  /** Ends the request; the enclosing request, if any, becomes the current one again. */
  ~RefusalReason();
  RefusalReason(const RefusalReason&) = delete;
  RefusalReason& operator=(const RefusalReason&) = delete;

  /** The reason of this request; empty if there is none. */
  const char* text() const noexcept { return m_text; }

  /**
   * @param text one line of UTF-8, copied and truncated to 511 bytes; a later reason replaces an earlier one
   */
  static void set(const char* text) noexcept;

private:
  RefusalReason* m_outer;
  char m_text[512] = "";
};

}  // namespace tvp::cim::fwf

#endif
