// SPDX-License-Identifier: Apache-2.0
#include "voltvk/VolEvent.h"

VolEvent::VolEvent() : time(0), code(0), type(0), description{}, id(0), actionId(0) {}

VolEventCollection::VolEventCollection(unsigned long, unsigned long, unsigned long) {}

VolEventCollection::~VolEventCollection() = default;
