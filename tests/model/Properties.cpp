// SPDX-License-Identifier: Apache-2.0
// Properties: their slots, their odd assignment, their comparison.
#include "model/Describe.h"
#include "support/Failure.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <utility>

namespace {

using namespace tvp::cim::fwf;
using namespace tvp::test;

Primitive_DataType code(unsigned int number) {
  return static_cast<Primitive_DataType>(number);
}

/** A property of a kind and one of another value. */
struct Kind {
  CIMProperty property;
  CIMProperty different;
};

template <typename T>
CIMProperty make(const std::vector<T>& elements) {
  CIMValue<T> value;
  value.m_values = elements;
  return {"Name", value, false, PDT_BOOLEAN, false};
}

/** Every type code that is served, with its kind. Nothing but copying fills the slot of sint64. */
std::map<unsigned int, Kind> servedCodes() {
  const CIMObjectPath five("h", "n", "Five", {text("Key", "5", true)});
  const CIMObjectPath six("h", "n", "Five", {text("Key", "6", true)});
  const Kind texts{make<std::string>({"a"}), make<std::string>({"A"})};
  Kind signed64{make<bool>({}), make<bool>({})};
  CIMValue<long long> minusFive;
  minusFive.m_values = {-5};
  SlotFiller::assign(signed64.property, minusFive);
  const std::pair<unsigned int, Kind> scalars[] = {
      {0, {make<bool>({true}), make<bool>({false})}},
      {10, {make<short>({-5}), make<short>({-5, -5})}},
      {12, {make<int>({-5}), make<int>({5})}},
      {14, signed64},
      {16, {make<signed char>({-5}), make<signed char>({5})}},
      {18, texts},
      {20, {make<unsigned short>({5}), make<unsigned short>({})}},
      {22, {make<unsigned int>({5, 6}), make<unsigned int>({6, 5})}},
      {24, {make<unsigned long long>({5}), make<unsigned long long>({6})}},
      {26, {make<unsigned char>({5}), make<unsigned char>({6})}}};
  std::map<unsigned int, Kind> served = {
      {4, texts}, {28, {make<CIMObjectPath>({five}), make<CIMObjectPath>({six})}}};
  for (const auto& [scalar, kind] : scalars) {
    served.emplace(scalar, kind);
    served.emplace(scalar + 1, kind);
  }
  return served;
}

TEST(Property, ConstructorAssignsByTheRuleOfTheSlot) {
  const CIMProperty array(
      "List", CIMValue<std::string>(std::vector<std::string>{"a", "b"}, true, true), true, PDT_STRING_ARRAY,
      true);
  EXPECT_EQ(array.getName(), "List");
  EXPECT_EQ(array.getType(), PDT_STRING_ARRAY);
  EXPECT_TRUE(array.isKey());
  EXPECT_TRUE(array.extraFlag());
  EXPECT_EQ(describe(array.getStringValue()), "01[\"a\" \"b\" ]");
  const CIMProperty flag("Flag", CIMValue<bool>(true, true, false), false, PDT_BOOLEAN_ARRAY, false);
  EXPECT_EQ(describe(flag.getBoolValue()), "10[1 ]");

  const CIMProperty mislabelled("Text", CIMValue<std::string>("a", false, false), false, PDT_UINT32, false);
  EXPECT_TRUE(mislabelled.getUint32Value().m_values.empty());
  EXPECT_EQ(mislabelled.getStringValue().m_values.size(), 1U);
  EXPECT_EQ(describe(CIMProperty()), describe(CIMProperty("", CIMValue<bool>(), false, code(0), false)));
}

TEST(Property, EmptySlotsOfTheSourceLeaveElements) {
  const CIMProperty source("Source", CIMValue<short>(), true, PDT_SINT16, true);
  for (const bool move : {false, true}) {
    CIMProperty target = number("Target", 5);
    target.setPropValue(PDT_SINT16, make<short>({5, 6}));
    target.setPropValue(PDT_STRING, text("", "kept"));
    if (move) {
      target = CIMProperty(source);
    } else {
      target = source;
    }
    EXPECT_EQ(target.name(), "Source");
    EXPECT_EQ(target.getType(), PDT_SINT16);
    EXPECT_TRUE(target.isKey() && target.extraFlag());
    EXPECT_EQ(target.getUint32Value().m_values, std::vector<unsigned int>{5});
    EXPECT_EQ(target.getStringValue().m_values, std::vector<std::string>{"kept"});
    EXPECT_TRUE(target.getSint16Value().m_values.empty());
  }
}

TEST(Property, AssignmentFromItselfOrFromWithinItselfIsSafe) {
  const CIMProperty inner = text("Inner", "value", true);
  for (const bool move : {false, true}) {
    CIMProperty outer = make<CIMObjectPath>({CIMObjectPath("", "", "Class", {inner})});
    const std::string before = describe(outer);
    CIMProperty& same = outer;
    auto& nested = const_cast<CIMProperty&>(outer.objectPathSlot().m_values[0].keyBindings()[0]);
    if (move) {
      // NOLINTNEXTLINE(performance-move-const-arg): a copy as long as assignment has a single form
      outer = std::move(same);
      EXPECT_EQ(describe(outer), before);
      outer = std::move(nested);  // NOLINT(performance-move-const-arg)
    } else {
      outer = same;
      EXPECT_EQ(describe(outer), before);
      outer = nested;
    }
    EXPECT_EQ(outer.name(), "Inner");
    EXPECT_EQ(outer.getStringValue().m_values, std::vector<std::string>{"value"});
  }
}

TEST(Property, ASint64ArrivesByAssignmentAndLeavesWhatIsThere) {
  CIMProperty source = text("Source", "a");
  CIMValue<long long> value;
  value.m_values = {-5, 1LL << 40U};
  value.m_isNull = true;
  SlotFiller::assign(source, value);
  CIMProperty target = number("Target", 7);
  target = source;
  EXPECT_EQ(describe(target.getSint64Value()), "01[-5 1099511627776 ]");
  EXPECT_EQ(target.getStringValue().m_values, std::vector<std::string>{"a"});
  EXPECT_EQ(target.getUint32Value().m_values, std::vector<unsigned int>{7});
  target = number("Empty", 8);
  EXPECT_EQ(describe(target.getSint64Value()), "00[-5 1099511627776 ]");
}

TEST(Property, EachTypeCodeCopiesItsOwnSlotOnly) {
  const std::map<unsigned int, Kind> served = servedCodes();
  for (unsigned int number = 0; number <= 40; ++number) {
    SCOPED_TRACE(number);
    CIMProperty target("Name", CIMValue<bool>(), false, PDT_BOOLEAN, false);
    if (served.count(number) == 0) {
      EXPECT_EQ(
          failureOf([&] { return target.setPropValue(code(number), text("any", "a")); }),
          "1 setPropValue ::  :: Operation Failed.");
      continue;
    }
    const CIMProperty& source = served.at(number).property;
    const std::string before = describe(target);
    target.setPropValue(number / 2 == 11 ? PDT_UINT64 : PDT_UINT32, source);
    EXPECT_EQ(describe(target), before) << "a foreign slot was copied";
    EXPECT_EQ(target.setPropValue(code(number), source), 1);
    EXPECT_EQ(describe(target), describe(source));
    std::size_t elements = 0;  // as the readers give them, each of its own slot
    for (const std::size_t count :
         {target.getBoolValue().m_values.size(), target.getSint8Value().m_values.size(),
          target.getUint8Value().m_values.size(), target.getSint16Value().m_values.size(),
          target.getUint16Value().m_values.size(), target.getSint32Value().m_values.size(),
          target.getUint32Value().m_values.size(), target.getSint64Value().m_values.size(),
          target.getUint64Value().m_values.size(), target.getStringValue().m_values.size(),
          target.getObjectPathValue().m_values.size(), target.getInstanceValue().m_values.size()}) {
      EXPECT_TRUE(count == 0 || elements == 0);
      elements += count;
    }
    EXPECT_EQ(elements, number / 2 == 11 ? 2U : 1U);
  }
}

TEST(Property, PropertiesOfSupportedTypesAreEqualWhenTheirElementsAre) {
  const std::map<unsigned int, Kind> served = servedCodes();
  for (unsigned int number = 0; number <= 40; ++number) {
    SCOPED_TRACE(number);
    const bool supported = number <= 28 && !(number >= 2 && number <= 9);
    Kind kind = supported ? served.at(number) : served.at(18);
    kind.property.setType(code(number));
    kind.different.setType(code(number));
    const CIMProperty copy = kind.property;
    EXPECT_EQ(kind.property.equals(copy), supported);
    EXPECT_EQ(kind.property.subclassEqualsViewclass(copy), supported);
    EXPECT_FALSE(kind.property.equals(kind.different));
    EXPECT_FALSE(kind.property.subclassEqualsViewclass(kind.different));
  }
}

TEST(Property, EqualityLooksAtNameTypeKeyFlagAndElementsOnly) {
  struct Case {
    const char* what;
    std::function<void(CIMProperty&)> change;
    bool equal;
    bool equalView;
  };
  const Case cases[] = {
      {"name", [](CIMProperty& p) { p.setName("name"); }, false, true},
      {"key flag", [](CIMProperty& p) { p.setKey(false); }, false, true},
      {"type", [](CIMProperty& p) { p.setType(PDT_STRING_ARRAY); }, false, false},
      {"extra flag",
       [](CIMProperty& p) {
         p = {"Name", p.getStringValue(), true, PDT_STRING, true};
       },
       true, true},
      {"null flag",
       [](CIMProperty& p) {
         p = {"Name", CIMValue<std::string>("a", true, true), true, PDT_STRING, false};
       },
       true, true},
      {"another slot", [](CIMProperty& p) { p.setPropValue(PDT_UINT32, number("", 7)); }, true, true},
  };
  for (const Case& item : cases) {
    const CIMProperty left = text("Name", "a", true);
    CIMProperty right = left;
    item.change(right);
    EXPECT_EQ(left.equals(right), item.equal) << item.what;
    EXPECT_EQ(right.subclassEqualsViewclass(left), item.equalView) << item.what;
  }
}

}  // namespace
