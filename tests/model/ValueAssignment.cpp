// SPDX-License-Identifier: Apache-2.0
// The two rules by which values are assigned, copying and moving, and what values are made of. A property
// takes room only for the slots that it uses. Whatever is done to it, it must read like one that has all
// fourteen, each assigned by the rule of its type.
#include "model/Describe.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <tuple>
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

/** A property, and the same with all slots. */
struct Subject {
  CIMProperty property;
  std::tuple<
      CIMValue<std::string>, CIMValue<unsigned char>, CIMValue<signed char>, CIMValue<unsigned short>,
      CIMValue<short>, CIMValue<unsigned int>, CIMValue<int>, CIMValue<float>, CIMValue<double>,
      CIMValue<unsigned long long>, CIMValue<long long>, CIMValue<bool>, CIMValue<CIMObjectPath>,
      CIMValue<CIMInstance>>
      full;

  std::string text() const {
    return std::apply([](const auto&... values) { return (describe(values) + ...); }, full);
  }
};

class Random {
public:
  explicit Random(unsigned int seed) : m_engine(seed) {}

  unsigned int below(std::size_t limit) { return static_cast<unsigned int>(m_engine() % limit); }

  template <typename T>
  CIMValue<T> value() {
    CIMValue<T> value;
    for (std::size_t count = below(4); count > 1; --count) {
      value.m_values.push_back(element<T>());
    }
    value.m_values.resize(value.m_values.size() + below(2), element<T>());
    value.m_isArray = static_cast<std::uint32_t>(below(2));
    value.m_isNull = below(3) == 0;
    return value;
  }

private:
  template <typename T>
  T element() {
    if constexpr (std::is_same_v<T, std::string>) {
      return std::to_string(m_engine()) + std::string(below(40), 'x');
    } else if constexpr (std::is_same_v<T, CIMObjectPath>) {
      return CIMObjectPath("h", "n", "Class", {text("Key", element<std::string>(), true)});
    } else if constexpr (std::is_same_v<T, CIMInstance>) {
      CIMInstance instance("Class");
      instance.addProperty(text("Key", element<std::string>(), true));
      return instance;
    } else {
      return static_cast<T>(below(100));
    }
  }

  std::mt19937 m_engine;
};

using Change = std::function<void(Random&, Subject& target, const Subject& source)>;

/** What can be done to a slot. @param codes of types under which setPropValue copies it */
template <typename T>
void addChanges(std::vector<Change>& changes, const std::vector<unsigned int>& codes) {
  changes.push_back([](Random& random, Subject& target, const Subject&) {
    const CIMValue<T> value = random.value<T>();
    SlotFiller::assign(target.property, value);
    std::get<CIMValue<T>>(target.full) = value;
  });
  for (const unsigned int code : codes) {
    changes.push_back([code](Random&, Subject& target, const Subject& source) {
      target.property.setPropValue(static_cast<Primitive_DataType>(code), source.property);
      std::get<CIMValue<T>>(target.full) = std::get<CIMValue<T>>(source.full);
    });
  }
}

std::vector<Change> everyChange() {
  std::vector<Change> changes(10, [](Random&, Subject& target, const Subject& source) {
    target.property = source.property;
    target.full = source.full;
  });
  addChanges<std::string>(changes, {4, 18});
  addChanges<unsigned char>(changes, {26});
  addChanges<signed char>(changes, {16});
  addChanges<unsigned short>(changes, {21});
  addChanges<short>(changes, {11});
  addChanges<unsigned int>(changes, {22});
  addChanges<int>(changes, {12});
  addChanges<float>(changes, {});
  addChanges<double>(changes, {});
  addChanges<unsigned long long>(changes, {25});
  addChanges<long long>(changes, {15});
  addChanges<bool>(changes, {0});
  addChanges<CIMObjectPath>(changes, {28});
  addChanges<CIMInstance>(changes, {});
  return changes;
}

TEST(Property, ReadsAsIfItHadAllItsSlots) {
  const std::vector<Change> changes = everyChange();
  for (const unsigned int seed : {1U, 2U, 3U, 4U, 5U}) {
    Random random(seed);
    std::vector<Subject> subjects(4);
    for (int step = 0; step < 1000; ++step) {
      Subject& target = subjects[random.below(subjects.size())];
      const Subject& source = subjects[random.below(subjects.size())];
      changes[random.below(changes.size())](random, target, source);
      ASSERT_EQ(describeSlots(target.property), target.text()) << "seed " << seed << ", step " << step;
      CIMProperty copy = target.property;
      ASSERT_EQ(describeSlots(CIMProperty(std::move(copy))), target.text());
    }
  }
}

}  // namespace
