// SPDX-License-Identifier: Apache-2.0
#include "ShortMemory.h"

#include <cstddef>
#include <new>
#include <utility>

bool tvp::test::ShortMemory::isShort = false;
std::function<void()> tvp::test::ShortMemory::beforeAllocation;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (tvp::test::ShortMemory::beforeAllocation) {
    std::exchange(tvp::test::ShortMemory::beforeAllocation, nullptr)();
  }
  if (tvp::test::ShortMemory::isShort) {
    return nullptr;
  }
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
