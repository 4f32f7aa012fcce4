// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/Backing.h"

#include "voltvk/engine/backing/books/BooksBacking.h"
#include "voltvk/engine/backing/lvm/LvmBacking.h"

namespace voltvk {

std::unique_ptr<Backing> Backing::of(const BackingChoice& choice) {
  if (choice.kind == BackingKind::Lvm) {
    return std::make_unique<LvmBacking>(choice.group);
  }
  return std::make_unique<BooksBacking>();
}

}  // namespace voltvk
