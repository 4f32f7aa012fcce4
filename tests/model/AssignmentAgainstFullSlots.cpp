// SPDX-License-Identifier: Apache-2.0
// A property takes room only for the slots that it uses. Whatever is done to it, it must read like one that
// has all fourteen, each assigned by the rule of its type.
#include "model/Describe.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace tvp::cim::fwf;
using namespace tvp::test;

template <typename T>
struct Type {
  using Element = T;
};

template <typename... T>
struct FullSlots {
  static constexpr unsigned int COUNT = sizeof...(T);

  std::tuple<CIMValue<T>...> values;

  std::string text() const {
    std::string all;
    ((all += describe(std::get<CIMValue<T>>(values))), ...);
    return all;
  }
  /** Calls visit with the type of one slot. */
  template <typename Visit>
  static void visitType(unsigned int which, Visit visit) {
    unsigned int position = 0;
    ((position++ == which ? visit(Type<T>()) : void()), ...);
  }
};

using Slots = FullSlots<
    std::string, unsigned char, signed char, unsigned short, short, unsigned int, int, float, double,
    unsigned long long, long long, bool, CIMObjectPath, CIMInstance>;

/** The type codes under which setPropValue copies a slot, with the place of that slot. */
constexpr std::pair<unsigned int, unsigned int> COPIED[] = {{0, 11},  {4, 0},  {11, 4}, {12, 6},
                                                            {15, 10}, {16, 2}, {18, 0}, {21, 3},
                                                            {22, 5},  {25, 9}, {26, 1}, {28, 12}};

struct Subject {
  CIMProperty property;
  Slots full;
};

class Steps {
public:
  explicit Steps(unsigned int seed) : m_engine(seed) {}

  /** Does one thing at random to the target, and to its full slots what that means there. */
  void change(Subject& target, const Subject& source) {
    switch (below(4)) {
    case 0:
      target.property = source.property;
      target.full = source.full;
      break;
    case 1:
      copySlot(target, source);
      break;
    default:
      Slots::visitType(below(Slots::COUNT), [&](auto type) {
        using Element = typename decltype(type)::Element;
        const CIMValue<Element> value = randomValue<Element>();
        SlotFiller::assign(target.property, value);
        std::get<CIMValue<Element>>(target.full.values) = value;
      });
    }
  }

  unsigned int below(std::size_t limit) { return static_cast<unsigned int>(m_engine() % limit); }

private:
  void copySlot(Subject& target, const Subject& source) {
    const auto& [code, slot] = COPIED[below(std::size(COPIED))];
    target.property.setPropValue(static_cast<Primitive_DataType>(code), source.property);
    Slots::visitType(slot, [&](auto type) {
      using Value = CIMValue<typename decltype(type)::Element>;
      std::get<Value>(target.full.values) = std::get<Value>(source.full.values);
    });
  }

  template <typename T>
  CIMValue<T> randomValue() {
    CIMValue<T> value;
    for (std::size_t count = below(4); count > 1; --count) {
      value.m_values.push_back(element<T>());
    }
    value.m_values.resize(value.m_values.size() + below(2), element<T>());
    value.m_isArray = static_cast<std::uint32_t>(below(2));
    value.m_isNull = below(3) == 0;
    return value;
  }

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

TEST(Property, ReadsAsIfItHadAllItsSlots) {
  for (const unsigned int seed : {1U, 2U, 3U, 4U, 5U}) {
    Steps steps(seed);
    std::vector<Subject> subjects(4);
    for (int step = 0; step < 1000; ++step) {
      Subject& target = subjects[steps.below(subjects.size())];
      steps.change(target, subjects[steps.below(subjects.size())]);
      ASSERT_EQ(describeSlots(target.property), target.full.text()) << "seed " << seed << ", step " << step;
      CIMProperty copy = target.property;
      ASSERT_EQ(describeSlots(CIMProperty(std::move(copy))), target.full.text());
    }
  }
}

}  // namespace
