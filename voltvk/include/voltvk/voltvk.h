// SPDX-License-Identifier: Apache-2.0
/** The complete interface of the storage library. */
#ifndef VOLTVK_INCLUDE_VOLTVK_VOLTVK_H
#define VOLTVK_INCLUDE_VOLTVK_VOLTVK_H

#include "voltvk/Chunk.h"
#include "voltvk/FilterCollection.h"
#include "voltvk/Limits.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/Ret.h"
#include "voltvk/Specs.h"
#include "voltvk/TvkAdapter.h"
#include "voltvk/TvkLib.h"
#include "voltvk/UserStatistics.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/VolEvent.h"

#endif
