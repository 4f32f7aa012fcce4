// The two rules by which values are assigned, copying and moving, and what values are made of.
#include "model/Describe.h"

#include <gtest/gtest.h>
#include <type_traits>
#include <utility>

namespace {

using namespace tvp::test;

/** Two elements that differ. */
template <typename T>
std::vector<T> sample() {
  if constexpr (std::is_same_v<T, std::string>) {
    return {"five", "six"};
  } else if constexpr (std::is_same_v<T, CIMObjectPath>) {
    return {CIMObjectPath("", "", "Five", {text("Key", "5")}), CIMObjectPath("", "", "Six", {})};
  } else if constexpr (std::is_same_v<T, CIMInstance>) {
    return {CIMInstance("Five"), CIMInstance("Six")};
  } else {
    return {static_cast<T>(1), static_cast<T>(0)};
  }
}

template <typename T>
CIMValue<T> makeValue(const std::vector<T>& elements, bool isArray, bool isNull) {
  CIMValue<T> value;
  value.m_values = elements;
  value.m_isArray = isArray ? 1 : 0;
  value.m_isNull = isNull;
  return value;
}

template <typename T>
class Value : public ::testing::Test {};

using AllTypes =
    ::testing::Types<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long long,
                     unsigned long long, float, double, std::string, CIMObjectPath, CIMInstance>;
TYPED_TEST_SUITE(Value, AllTypes);

TYPED_TEST(Value, AssignmentFollowsTheRuleOfItsType) {
  using T = TypeParam;
  constexpr bool everything = isOneOf<T, short, bool, CIMInstance>;
  const std::vector<T> both = sample<T>();
  const std::vector<T> one(1, both[1]);
  struct Case {
    std::vector<T> source;
    std::vector<T> expected;
  };
  const Case cases[] = {{{}, everything ? std::vector<T>() : both}, {one, one}, {both, both}};
  for (const Case& item : cases) {
    for (const bool isArray : {false, true}) {
      const CIMValue<T> source = makeValue(item.source, isArray, true);
      const std::string expected = describe(makeValue(item.expected, everything && isArray, true));
      CIMValue<T> copied = makeValue(both, false, false);
      copied = source;
      EXPECT_EQ(describe(copied), expected);
      CIMValue<T> moved = makeValue(both, false, false);
      moved = CIMValue<T>(source);
      EXPECT_EQ(describe(moved), expected);
    }
  }
}

TYPED_TEST(Value, ConstructionCopiesEverythingAndSelfAssignmentNothing) {
  using T = TypeParam;
  const CIMValue<T> source = makeValue(sample<T>(), true, true);
  CIMValue<T> copy(source);
  EXPECT_EQ(describe(copy), describe(source));
  const CIMValue<T>& same = copy;
  copy = same;
  EXPECT_EQ(describe(copy), describe(source));
  copy = std::move(const_cast<CIMValue<T>&>(same));
  EXPECT_EQ(describe(copy), describe(source));
  const CIMValue<T> taken(std::move(copy));
  EXPECT_EQ(describe(taken), describe(source));
  EXPECT_EQ(describe(CIMValue<T>()), "00[]");
}

static_assert(std::is_nothrow_move_constructible_v<CIMProperty> &&
              std::is_nothrow_move_assignable_v<CIMProperty>);
static_assert(std::is_nothrow_move_constructible_v<CIMInstance> &&
              std::is_nothrow_move_assignable_v<CIMInstance>);
static_assert(
    !std::is_constructible_v<CIMProperty, std::string, CIMValue<long long>, bool, Primitive_DataType, bool>,
    "a sint64 property is only ever copied in");
static_assert(!std::is_constructible_v<CIMValue<int>, int, bool, bool>);
static_assert(!std::is_constructible_v<CIMValue<bool>, std::vector<bool>, bool, bool>);

TEST(ValueReaders, ReplaceTheCallersList) {
  std::vector<std::string> texts = {"old"};
  CIMValue<std::string>(std::vector<std::string>{"a", "b"}, true, false).getStringData(texts);
  EXPECT_EQ(texts, (std::vector<std::string>{"a", "b"}));
  std::vector<bool> flags = {true, true, true};
  CIMValue<bool>(true, false, false).getBooleanData(flags);
  EXPECT_EQ(flags, std::vector<bool>{true});
  std::vector<long long> numbers = {1};
  CIMValue<long long>().getsint64Data(numbers);
  EXPECT_TRUE(numbers.empty());
  EXPECT_EQ(CIMValue<unsigned int>({5, 6}, true, false).getuint32Data(), (std::vector<unsigned int>{5, 6}));
  EXPECT_EQ(CIMValue<unsigned long long>(7ULL, false, false).getuint64Data(),
            (std::vector<unsigned long long>{7}));
  std::vector<CIMInstance> instances(1, CIMInstance("Old"));
  instances[0].addProperty(number("Kept", 1));
  CIMInstance fresh("New");
  fresh.addProperty(text("Kept", ""));
  CIMValue<CIMInstance>(fresh, false, false).getInstanceData(instances);
  ASSERT_EQ(instances.size(), 1U);
  EXPECT_EQ(describe(instances[0]), describe(fresh));
}

}  // namespace
