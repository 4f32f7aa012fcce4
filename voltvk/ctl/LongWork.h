// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_LONGWORK_H
#define VOLTVK_CTL_LONGWORK_H

#include <array>
#include <string>

namespace voltvk::ctl {

/**
 * Work that takes long: it shows its progress on a terminal, and while this exists, Ctrl-C and a request to
 * end are kept for the work, which then ends in order. One at a time, for the main thread.
 */
class LongWork {
public:
  LongWork();
  ~LongWork();
  LongWork(const LongWork&) = delete;
  LongWork& operator=(const LongWork&) = delete;

  /** Shows how far the work is. @return whether it is to go on */
  bool goesOn(const std::string& progress) const;
  bool isInterrupted() const;

private:
  std::array<void (*)(int), 2> m_before{};
  const bool m_showsProgress;
};

}  // namespace voltvk::ctl

#endif
