// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_FRAMEWORK_SHORTMEMORY_H
#define TESTS_FRAMEWORK_SHORTMEMORY_H

#include <functional>

namespace tvp::test {

/** During its lifetime, new (std::nothrow) fails, with which singletons are created. */
class ShortMemory {
public:
  ShortMemory() { isShort = true; }
  ~ShortMemory() { isShort = false; }
  ShortMemory(const ShortMemory&) = delete;
  ShortMemory& operator=(const ShortMemory&) = delete;

  /** Called once by the next new (std::nothrow), before it allocates; then it is forgotten. */
  static std::function<void()> beforeAllocation;

  static bool isShort;
};

}  // namespace tvp::test

#endif
