// SPDX-License-Identifier: Apache-2.0
// The provider's own allocator. Left out of unsealed builds, whose allocations the sanitizers watch.
#ifdef TVP_SEALED
#include "voltvk/Allocation.h"

extern "C" void dllSafeDeleteVolTvk(void* field);
void dllSafeDeleteVolTvk(void* field) {
  voltvkFree(field);
}

#define VOLTVK_MODULE_RELEASE dllSafeDeleteVolTvk
#include "voltvk/AllocationOperators.h"
#endif
