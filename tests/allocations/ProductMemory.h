// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_ALLOCATIONS_PRODUCTMEMORY_H
#define TESTS_ALLOCATIONS_PRODUCTMEMORY_H

#include <cstddef>
#include <cstdint>

namespace tvp::test {

/**
 * The memory of the provider, the storage library and SQLite: this program defines malloc and its like, which
 * count what these modules allocate, also by way of the C library, and can let it fail. What the host
 * allocates always succeeds.
 */
class ProductMemory {
public:
  enum class Failing {
    One,       ///< only the n-th allocation
    AllAfter,  ///< the n-th and all that follow
  };
  enum class Of { Everything, AllButDatabase };
  /** Begins to count; n from 1, 0 lets nothing fail. */
  static void fail(std::uint64_t n, Failing failing, Of of = Of::Everything);
  /** Lets everything succeed again. @return the allocations since fail() */
  static std::uint64_t stop();

  /** Blocks of the provider and the storage library that have not been freed. */
  static std::size_t blocks();
};

}  // namespace tvp::test

#endif
