// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_RET_H
#define VOLTVK_INCLUDE_VOLTVK_RET_H

#include "voltvk/Export.h"

#include <cstdint>

/**
 * Why the storage library refused a call. Every refusal has its own code and changes nothing. The numbers are
 * part of the interface: clients see them as "RetStat". Status.def lists them.
 */
enum TvkStatus : std::uint32_t {
#define TVK_STATUS(name, number, clientName, text) name = (number),
#include "voltvk/Status.def"
};

/** Size of the text that says why a call was refused, with the terminating NUL. */
constexpr unsigned int TVK_DETAIL_SIZE = 512;

/**
 * Outcome of a library call: the status code, its text, and what exactly was wrong. A plain value that owns
 * nothing; copies are independent. Safe to use from any thread.
 */
class VOLTVK_EXPORT Ret {
public:
  /** Success. */
  Ret();
  /**
   * @param status a TvkStatus, or any code requested by an injected fault
   * @param detail a sentence in UTF-8, copied; cut between two characters if it does not fit. Null is the
   *   same as empty
   */
  explicit Ret(std::uint32_t status, const char* detail = nullptr);
  Ret(const Ret& other);
  Ret& operator=(const Ret& other);

  /** The status code; 0 is success. */
  std::uint32_t getReturn() const { return m_status; }
  /** An English sentence for the code, without a full stop; never null, always valid. */
  const char* getText() const;
  /**
   * What was wrong, with what, and what to do: one line of UTF-8 with the names and numbers concerned, of at
   * most TVK_DETAIL_SIZE - 1 bytes. Empty for success, and when nothing is known beyond the code. Never null;
   * valid as long as this object exists.
   */
  const char* getDetail() const { return m_detail; }

private:
  std::uint32_t m_status;  // first, so that callers built without the detail find it
  char m_detail[TVK_DETAIL_SIZE];
};

/** The text of a status code; never null, even for a code that is not in TvkStatus. */
VOLTVK_EXPORT const char* tvkStatusText(std::uint32_t status);

#endif
