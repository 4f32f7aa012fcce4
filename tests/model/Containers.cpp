// SPDX-License-Identifier: Apache-2.0
// Object paths, instances and argument lists.
#include "model/Describe.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

using namespace tvp::cim::fwf;
using namespace tvp::test;

using Keys = std::vector<CIMProperty>;

CIMObjectPath
path(const std::string& nameSpace, const std::string& className, Keys keys, const std::string& host = "h") {
  return {host, nameSpace, className, std::move(keys)};
}

/** Two keys of different kinds: assigned element-wise, each would keep something of the other. */
const Keys FILLED = {number("A", 5, true), text("B", "old", true)};
const Keys OTHER = {
    text("A", "new", true), CIMProperty("B", CIMValue<unsigned int>(), true, PDT_UINT32, false)};

template <typename T>
void expectAssignmentIsWhole(const T& filled, const T& other) {
  T copied = filled;
  copied = other;
  EXPECT_EQ(describe(copied), describe(other));
  T moved = filled;
  moved = T(other);
  EXPECT_EQ(describe(moved), describe(other));
  moved = T();
  EXPECT_EQ(describe(moved), describe(T()));
  T self = filled;
  T& same = self;
  self = same;
  EXPECT_EQ(describe(self), describe(filled));
  self = std::move(same);
  EXPECT_EQ(describe(self), describe(filled));
}

template <typename T>
T listOf(const Keys& properties) {
  T list;
  for (const CIMProperty& property : properties) {
    if constexpr (std::is_same_v<T, CIMInstance>) {
      list.addProperty(property);
    } else {
      list.addArgument(property);
    }
  }
  return list;
}

TEST(Containers, AssignmentEndsEqualToTheSource) {
  expectAssignmentIsWhole(path("n", "Old", FILLED), path("m", "New", OTHER, "g"));
  expectAssignmentIsWhole(listOf<CIMInstance>(FILLED), listOf<CIMInstance>(OTHER));
  expectAssignmentIsWhole(listOf<CIMMethodParam>(FILLED), listOf<CIMMethodParam>(OTHER));

  CIMObjectPath target = path("n", "Old", FILLED);
  target.setKeyBindings(OTHER);
  EXPECT_EQ(describe(target.getKeyBindings()), describe(OTHER));
  CIMValue<CIMObjectPath> references(path("n", "Old", FILLED), false, false);
  references = CIMValue<CIMObjectPath>(path("m", "New", OTHER), false, false);
  EXPECT_EQ(describe(references.m_values[0]), describe(path("m", "New", OTHER)));
}

TEST(ObjectPath, EqualityIgnoresHostsAndTheOrderOfKeysButNotTheirCase) {
  const CIMProperty id = text("DeviceID", "7", true);
  const CIMProperty size = number("Number", 3, true);
  struct Case {
    const char* what;
    CIMObjectPath left;
    CIMObjectPath right;
    bool equal;
  };
  const Case cases[] = {
      {"case of namespace and class", path("ROOT/X", "Cls", {id}), path("root/x", "cls", {id}), true},
      {"host", path("n", "C", {id}, "one"), path("n", "C", {id}, "two"), true},
      {"namespace", path("n", "C", {id}), path("m", "C", {id}), false},
      {"class", path("n", "C", {id}), path("n", "CC", {id}), false},
      {"order of keys", path("n", "C", {id, size}), path("n", "C", {size, id}), true},
      {"number of keys", path("n", "C", {id}), path("n", "C", {id, size}), false},
      {"case of a key", path("n", "C", {id}), path("n", "C", {text("deviceid", "7", true)}), false},
      {"value of a key", path("n", "C", {id}), path("n", "C", {text("DeviceID", "8", true)}), false},
      {"key flag", path("n", "C", {id}), path("n", "C", {text("DeviceID", "7", false)}), false},
      {"type of a key", path("n", "C", {id}), path("n", "C", {number("DeviceID", 7, true)}), false},
      {"no keys", path("n", "C", {}), path("n", "C", {}), true},
      {"only the first of a name is looked at", path("n", "C", {id, id}),
       path("n", "C", {text("DeviceID", "8", true), id}), false},
      {"one key may match twice", path("n", "C", {id, id}), path("n", "C", {id, size}), true},
  };
  for (const Case& item : cases) {
    EXPECT_EQ(item.left == item.right, item.equal) << item.what;
    EXPECT_EQ(item.left != item.right, !item.equal) << item.what;
  }
}

TEST(ObjectPath, TextShowsTheValuesOfStringsAndReferencesOnly) {
  const CIMObjectPath target = path("root", "Target", {text("Name", "a \"b\"", true)}, "there");
  struct Case {
    CIMObjectPath path;
    const char* expected;
  };
  const Case cases[] = {
      {path("root/kvs/tvp/smi_15", "TVP_VirtualPool", {text("InstanceID", "7"), number("Number", 3)}),
       "//h/root/kvs/tvp/smi_15:TVP_VirtualPool.InstanceID=\"7\",Number="},
      {path("ns", "Class", {}, "host"), "//host/ns:Class."},
      {CIMObjectPath(), "///:."},
      {path(
           "n", "C",
           {CIMProperty("Ref", CIMValue<CIMObjectPath>(target, false, false), true, PDT_REFERENCE, false),
            CIMProperty(
                "List", CIMValue<std::string>(std::vector<std::string>{"a"}, true, false), true,
                PDT_STRING_ARRAY, false),
            CIMProperty(
                "Two", CIMValue<std::string>(std::vector<std::string>{"x", "y"}, false, false), true,
                PDT_STRING, false)}),
       "//h/n:C.Ref=//there/root:Target.Name=\"a \"b\"\",List=,Two=\"x\""},
      {path(
           "n", "C",
           {CIMProperty("Text", CIMValue<std::string>(), true, PDT_STRING, false),
            CIMProperty("Ref", CIMValue<CIMObjectPath>(), true, PDT_REFERENCE, false)}),
       "//h/n:C.Text=\"\",Ref="},
  };
  for (const Case& item : cases) {
    EXPECT_EQ(item.path.toString(), item.expected);
  }
}

TEST(ObjectPath, KeysAreReplacedFoundAndCleared) {
  CIMObjectPath object = path("ns", "Class", {});
  object.setKeyBindings({text("Old", "1")});
  object.setKeyBindings({text("Key", "1"), text("Key", "2")});
  EXPECT_EQ(object.getKeyBindings().size(), 2U);
  EXPECT_EQ(describe(object.getKey("Key")), describe(text("Key", "1")));
  EXPECT_EQ(describe(object.getKey("key")), describe(CIMProperty()));
  object.clearObjectPath();
  EXPECT_EQ(describe(object), describe(CIMObjectPath()));
}

TEST(Instance, EveryKeyIsAPropertyToo) {
  CIMInstance instance("Class");
  const CIMProperty plain = text("Plain", "p");
  const CIMProperty key = text("Key", "k", true);
  const CIMProperty bound = text("Bound", "b");
  instance.addProperty(plain);
  instance.addProperty(key);
  instance.addCimKeyBinding(bound);
  EXPECT_FALSE(bound.isKey());
  instance.addProperty(text("Key", "second", true));
  const CIMProperty boundKey = text("Bound", "b", true);
  const CIMProperty second = text("Key", "second", true);
  EXPECT_EQ(describe(instance.getPropertyList()), describe(Keys{plain, key, boundKey, second}));
  EXPECT_EQ(describe(instance.getKeyPropertyList()), describe(Keys{key, boundKey, second}));

  EXPECT_EQ(instance.getPropertyCount(), 4U);
  EXPECT_EQ(describe(instance.getProperty(3)), describe(second));
  EXPECT_THROW(instance.getProperty(4), std::out_of_range);
  EXPECT_EQ(instance.getPropertyByName("Key"), &instance.properties()[1]);
  EXPECT_EQ(instance.getKeyPropertyByName("Key"), &instance.keyProperties()[0]);
  EXPECT_EQ(instance.getPropertyByName("plain"), nullptr);
  EXPECT_EQ(instance.getKeyPropertyByName("Plain"), nullptr);
  instance.getPropertyByName("Key")->setName("Renamed");
  EXPECT_NE(std::as_const(instance).getPropertyByName("Renamed"), nullptr);
  EXPECT_NE(std::as_const(instance).getKeyPropertyByName("Key"), nullptr) << "the key is a copy of its own";

  instance.removeAllProperties();
  EXPECT_EQ(describe(instance), describe(CIMInstance("Class")));
}

TEST(Instance, PathGivesItsPartsButNotItsKeys) {
  CIMInstance instance("Old");
  instance.addCimKeyBinding(text("Own", "1"));
  instance.setPath(path("ns", "New", {text("Foreign", "2", true)}, "host"));
  EXPECT_EQ(instance.getClassName(), "New");
  EXPECT_EQ(describe(instance.getPath()), describe(path("ns", "New", {text("Own", "1", true)}, "host")));
}

TEST(MethodParam, KeepsArgumentsInOrder) {
  CIMMethodParam arguments = listOf<CIMMethodParam>({text("A", "1"), number("B", 2), text("A", "3")});
  EXPECT_EQ(arguments.toString(), "ABA");
  EXPECT_EQ(arguments.getArgumentCount(), 3U);
  EXPECT_EQ(describe(arguments.getArgument(1)), describe(number("B", 2)));
  EXPECT_THROW(arguments.getArgument(3), std::out_of_range);
  EXPECT_EQ(arguments.getArgumentByName("A"), &arguments.arguments()[0]);
  EXPECT_EQ(std::as_const(arguments).getArgumentByName("a"), nullptr);
  arguments.clearArgument();
  EXPECT_EQ(describe(arguments), describe(CIMMethodParam()));
}

}  // namespace
