// SPDX-License-Identifier: Apache-2.0
#include "ShortMemory.h"

#include <cstddef>
#include <new>

bool tvp::test::ShortMemory::isShort = false;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (tvp::test::ShortMemory::isShort) {
    return nullptr;
  }
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
