// SPDX-License-Identifier: Apache-2.0
// The words of tvpcim's command line: values of every type, arguments of every method, sizes.
#include "fuzz/FuzzTarget.h"
#include "host/schema/MofReader.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/ArgumentText.h"
#include "host/tvpcim/output/Size.h"

#include <vector>

namespace {

using namespace tvp::host;

constexpr char EVERY_TYPE[] = R"mof(
class FUZZ_Part { [Key] string Id; uint32 Number; };
class FUZZ_All {
  [Key] string Id; boolean Flag; boolean Flags[]; datetime When; datetime Whens[]; sint8 S8; sint16 S16s[];
  sint32 S32; sint64 S64; sint64 S64s[]; uint8 U8; uint8 U8s[]; uint16 U16; uint32 U32; uint64 U64;
  uint64 U64s[]; string Text; string Texts[]; real32 Real; real64 Reals[]; char16 Sign; FUZZ_Part REF Other;
  [EmbeddedInstance("FUZZ_Part")] string Inside;
  uint32 Do([In] uint32 Number, [In] string Texts[], [In] FUZZ_Part REF Part);
};
)mof";

template <typename Work>
void refusalsAside(Work work) {
  try {
    work();
  } catch (const tvpcim::UsageError& error) {
    tvp::fuzz::require(*error.what() != '\0', "a refusal says why");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto schema = MofReader::readText(EVERY_TYPE, "fuzz.mof");
  static const SchemaClass& all = *schema->find("FUZZ_All");
  tvp::fuzz::Bytes bytes(data, size);
  const SchemaProperty& property = all.properties[bytes.byte() % all.properties.size()];
  std::vector<std::string> words;
  while (!bytes.empty()) {
    words.push_back(bytes.until('\0'));
  }
  for (const std::string& word : words) {
    refusalsAside([&] {
      const Value value = tvpcim::parseValue(property, word);
      tvp::fuzz::require(value.isNull() || value.type() == property.type, "the value has the declared type");
      value.toText();
    });
    refusalsAside([&] { tvpcim::parseSectors(word); });
  }
  refusalsAside([&] { tvpcim::parseProperties(all, words); });
  refusalsAside([&] { tvpcim::parseArguments(*all.method("Do"), words); });
  return 0;
}
