// SPDX-License-Identifier: Apache-2.0
// The two rules by which values are assigned, copying and moving, and what values are made of.
#include "model/Describe.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

using namespace tvp::cim::fwf;
using namespace tvp::test;

template <typename T>
CIMValue<T> makeValue(const std::vector<T>& elements, bool isArray, bool isNull) {
  CIMValue<T> value;
  value.m_values = elements;
  value.m_isArray = isArray ? 1 : 0;
  value.m_isNull = isNull;
  return value;
}

/** Not inlined: at -O3 the compiler follows the buffers through it and warns of ones that cannot be. */
template <typename T>
[[gnu::noinline]] void assign(CIMValue<T>& target, const CIMValue<T>& source) {
  target = source;
}

/** Assigns lists of 0 to 2 elements over the two given ones. */
template <typename T>
void checkAssignment(const T& first, const T& second) {
  SCOPED_TRACE(typeid(T).name());
  constexpr bool everything = isOneOf<T, short, bool, CIMInstance>;
  const std::vector<T> both = {first, second};
  const std::vector<T> none;
  const std::vector<T> one = {second};
  for (const std::vector<T>* elements : {&none, &one, &both}) {
    for (const bool isArray : {false, true}) {
      const CIMValue<T> source = makeValue(*elements, isArray, true);
      const bool kept = elements->empty() && !everything;
      const std::string expected = describe(makeValue(kept ? both : *elements, everything && isArray, true));
      CIMValue<T> copied = makeValue(both, false, false);
      assign(copied, source);
      EXPECT_EQ(describe(copied), expected);
      CIMValue<T> moved = makeValue(both, false, false);
      moved = CIMValue<T>(source);
      EXPECT_EQ(describe(moved), expected);

      CIMValue<T> whole(source);
      CIMValue<T>& same = whole;
      whole = same;
      whole = std::move(same);
      EXPECT_EQ(describe(CIMValue<T>(std::move(whole))), describe(source));
    }
  }
}

template <typename... T>
void checkNumbers() {
  (checkAssignment(static_cast<T>(1), static_cast<T>(0)), ...);
}

TEST(Value, AssignmentFollowsTheRuleOfItsType) {
  checkNumbers<
      bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long long,
      unsigned long long, float, double>();
  checkAssignment<std::string>("five", "six");
  checkAssignment(CIMObjectPath("", "", "Five", {text("Key", "5")}), CIMObjectPath("", "", "Six", {}));
  checkAssignment(CIMInstance("Five"), CIMInstance("Six"));
}

static_assert(std::is_nothrow_move_constructible_v<CIMProperty>, "lists of properties grow by moving");
static_assert(
    !std::is_constructible_v<CIMProperty, std::string, CIMValue<long long>, bool, Primitive_DataType, bool>,
    "a sint64 property is only ever copied in");

TEST(Value, ReadersReplaceTheCallersList) {
  std::vector<std::string> texts = {"old"};
  CIMValue<std::string>().getStringData(texts);
  EXPECT_TRUE(texts.empty());
  std::vector<CIMInstance> instances(1, CIMInstance("Old"));
  instances[0].addProperty(number("Kept", 1));
  CIMInstance fresh("New");
  fresh.addProperty(text("Kept", ""));
  CIMValue<CIMInstance>(fresh, false, false).getInstanceData(instances);
  ASSERT_EQ(instances.size(), 1U);
  EXPECT_EQ(describe(instances[0]), describe(fresh));
}

}  // namespace
