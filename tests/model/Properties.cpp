// Properties: their slots, their odd assignment, their comparison.
#include "CIM/Framework/CIMException.h"
#include "model/Describe.h"

#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <utility>

namespace {

using namespace tvp::test;

Primitive_DataType code(unsigned int number) {
  return static_cast<Primitive_DataType>(number);
}

/** A property of each kind, with every type code that its slot serves. */
struct Kind {
  std::vector<unsigned int> codes;
  CIMProperty property;
  CIMProperty different;
};

template <typename T>
CIMProperty make(const std::vector<T>& elements, Primitive_DataType type) {
  CIMValue<T> value;
  value.m_values = elements;
  return {"Name", value, true, type, false};
}

std::vector<Kind> kinds() {
  const CIMObjectPath five("h", "n", "Five", {text("Key", "5", true)});
  const CIMObjectPath six("h", "n", "Five", {text("Key", "6", true)});
  return {{{0, 1}, make<bool>({true}, PDT_BOOLEAN), make<bool>({false}, PDT_BOOLEAN)},
          {{10, 11}, make<short>({-5}, PDT_SINT16), make<short>({-5, -5}, PDT_SINT16)},
          {{12, 13}, make<int>({-5}, PDT_SINT32), make<int>({5}, PDT_SINT32)},
          {{16, 17}, make<signed char>({-5}, PDT_SINT8), make<signed char>({5}, PDT_SINT8)},
          {{18, 19, 4}, make<std::string>({"a"}, PDT_STRING), make<std::string>({"A"}, PDT_STRING)},
          {{20, 21}, make<unsigned short>({5}, PDT_UINT16), make<unsigned short>({}, PDT_UINT16)},
          {{22, 23}, make<unsigned int>({5, 6}, PDT_UINT32), make<unsigned int>({6, 5}, PDT_UINT32)},
          {{24, 25}, make<unsigned long long>({5}, PDT_UINT64), make<unsigned long long>({6}, PDT_UINT64)},
          {{26, 27}, make<unsigned char>({5}, PDT_UINT8), make<unsigned char>({6}, PDT_UINT8)},
          {{28}, make<CIMObjectPath>({five}, PDT_REFERENCE), make<CIMObjectPath>({six}, PDT_REFERENCE)}};
}

TEST(Property, ConstructorAssignsByTheRuleOfTheSlot) {
  const CIMProperty array("List", CIMValue<std::string>(std::vector<std::string>{"a", "b"}, true, true), true,
                          PDT_STRING_ARRAY, true);
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
    target.setPropValue(PDT_SINT16, make<short>({5, 6}, PDT_SINT16));
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

TEST(Property, AssignmentFromItselfAndFromWithinItself) {
  const CIMProperty inner = text("Inner", "value", true);
  for (const bool move : {false, true}) {
    CIMProperty outer = make<CIMObjectPath>({CIMObjectPath("", "", "Class", {inner})}, PDT_REFERENCE);
    const std::string before = describe(outer);
    CIMProperty& same = outer;
    auto& nested = const_cast<CIMProperty&>(outer.objectPathSlot().m_values[0].keyBindings()[0]);
    if (move) {
      outer = std::move(same);
      EXPECT_EQ(describe(outer), before);
      outer = std::move(nested);
    } else {
      outer = same;
      EXPECT_EQ(describe(outer), before);
      outer = nested;
    }
    EXPECT_EQ(outer.name(), "Inner");
    EXPECT_EQ(outer.getStringValue().m_values, std::vector<std::string>{"value"});
  }
}

TEST(Property, EachTypeCodeCopiesItsOwnSlotOnly) {
  std::map<unsigned int, CIMProperty> sources;
  for (const Kind& kind : kinds()) {
    for (const unsigned int number : kind.codes) {
      sources.emplace(number, kind.property);
    }
  }
  CIMProperty long64;
  const_cast<CIMValue<long long>&>(long64.sint64Slot()).m_values = {-5};
  sources.emplace(14, long64);
  sources.emplace(15, long64);
  for (unsigned int number = 0; number <= 40; ++number) {
    SCOPED_TRACE(number);
    CIMProperty target;
    if (sources.count(number) == 0) {
      try {
        target.setPropValue(code(number), text("any", "a"));
        ADD_FAILURE() << "accepted";
      } catch (const CIMException& failure) {
        EXPECT_EQ(failure.getErrCode(), 1U);
        EXPECT_EQ(failure.getErrMessage(), "setPropValue ::  :: Operation Failed.");
      }
      continue;
    }
    CIMProperty source = sources.at(number);
    EXPECT_EQ(target.setPropValue(code(number), source), 1);
    source.setName("");
    source.setType(PDT_BOOLEAN);
    source.setKey(false);
    EXPECT_EQ(describe(target), describe(source));
    CIMProperty other;
    other.setPropValue(number / 2 == 11 ? PDT_UINT64 : PDT_UINT32, source);
    EXPECT_EQ(describe(other), describe(CIMProperty())) << "a foreign slot was copied";
  }
}

TEST(Property, EqualityOfEveryTypeCode) {
  std::map<unsigned int, Kind> served;
  for (const Kind& kind : kinds()) {
    for (const unsigned int number : kind.codes) {
      served.emplace(number, kind);
    }
  }
  CIMProperty signed64("Name", CIMValue<bool>(), true, PDT_SINT64, false);
  served.emplace(14, Kind{{14}, signed64, number("Name", 1)});
  for (unsigned int number = 0; number <= 40; ++number) {
    SCOPED_TRACE(number);
    const auto found = served.find(number);
    CIMProperty left = found == served.end() ? kinds()[0].property : found->second.property;
    left.setType(code(number));
    CIMProperty right = left;
    const bool supported = number <= 28 && !(number >= 2 && number <= 9);
    EXPECT_EQ(left.equals(right), supported);
    EXPECT_EQ(left.subclassEqualsViewclass(right), supported);
    if (found != served.end()) {
      CIMProperty different = found->second.different;
      different.setType(number == 14 ? PDT_UINT32 : code(number));
      EXPECT_FALSE(left.equals(different));
      EXPECT_FALSE(left.subclassEqualsViewclass(different));
    }
  }
}

TEST(Property, EqualityLooksAtNameTypeAndKeyOnly) {
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
