// SPDX-License-Identifier: Apache-2.0
#ifndef FUZZ_CIMXMLSAMPLE_H
#define FUZZ_CIMXMLSAMPLE_H

#include "host/schema/MofReader.h"

#include <memory>

namespace tvp::fuzz {

/** The classes that the corpus of CIM-XML names. */
inline std::shared_ptr<const host::Schema> sampleSchema() {
  static const std::shared_ptr<const host::Schema> schema = host::MofReader::readText(
      R"(class T_Base { [Key] string Name; uint8 Level; };
         class T_Pool : T_Base { [Key] uint16 Number; uint32 Sizes[]; datetime Made; T_Base REF Parent;
           [EmbeddedInstance("T_Base")] string Part; real32 Share; char16 Sign; boolean Full;
           uint32 Grow(uint8 Steps[], [In(false), Out] T_Base REF Result, string Note); };)",
      "fuzz.mof");
  return schema;
}

}  // namespace tvp::fuzz

#endif
