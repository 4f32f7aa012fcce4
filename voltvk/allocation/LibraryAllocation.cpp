// SPDX-License-Identifier: Apache-2.0
// The storage library's own allocator. Left out of unsealed builds, whose allocations the sanitizers watch.
#ifdef TVP_SEALED
#include "voltvk/Allocation.h"

extern "C" void voltvkLibraryRelease(void* field);
void voltvkLibraryRelease(void* field) {
  voltvkFree(field);
}

#define VOLTVK_MODULE_RELEASE voltvkLibraryRelease
#include "voltvk/AllocationOperators.h"
#endif
