// SPDX-License-Identifier: Apache-2.0
/**
 * Defines the global allocation operators of a module by the convention of Allocation.h. Included by exactly
 * one source of the module, after it has defined
 *   extern "C" void MODULE_RELEASE(void* field);
 * and VOLTVK_MODULE_RELEASE as that function's name. On allocation failure the plain operator new throws
 * std::bad_alloc, since containers write through what it returns; the nothrow form returns null.
 */
#ifndef VOLTVK_INCLUDE_VOLTVK_ALLOCATIONOPERATORS_H
#define VOLTVK_INCLUDE_VOLTVK_ALLOCATIONOPERATORS_H

#include "voltvk/Allocation.h"

#include <new>

// NOLINTBEGIN(misc-definitions-in-headers): exactly one source of each module includes this file, once.

/**
 * Has the loader place everything that the module keeps per thread into the threads' static area, because one
 * such variable is accessed by the initial-exec model. Otherwise the C library would allocate the state of
 * the module's exceptions when a thread first throws one, and would end the process if there is no memory for
 * it: std::bad_alloc could not be thrown.
 */
[[gnu::tls_model("initial-exec")]] thread_local bool voltvkMemoryRanOut = false;

void* operator new(std::size_t size) {
  void* block = voltvkAllocate(size, VOLTVK_MODULE_RELEASE);
  if (block == nullptr) {
    voltvkMemoryRanOut = true;
    throw std::bad_alloc();
  }
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return voltvkAllocate(size, VOLTVK_MODULE_RELEASE);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}

void operator delete(void* block) noexcept {
  voltvkRelease(block);
}
void operator delete[](void* block) noexcept {
  operator delete(block);
}
void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  operator delete(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  operator delete(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  operator delete(block);
}
// NOLINTEND(misc-definitions-in-headers)

#endif
