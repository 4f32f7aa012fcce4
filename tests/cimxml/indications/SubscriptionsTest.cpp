// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/InteropNames.h"
#include "tests/cimxml/SampleServer.h"
#include "tests/support/TemporaryDirectory.h"

#include <sys/stat.h>

namespace tvp::host::cimxml::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using tvp::test::TemporaryDirectory;

class SubscriptionsTest : public SampleServer {
protected:
  static std::string text(const Instance& instance, const char* property) {
    return instance.property(property)->toText();
  }

  const TemporaryDirectory m_directory;
  const std::string m_file = m_directory.file("subscriptions.json");
};

TEST_F(SubscriptionsTest, WhatAClientLeavesOutGetsItsUsualValue) {
  const auto held = subscriptions(options());
  const ObjectPath path = held->create(filter("f"), "ann");
  EXPECT_EQ(path.nameSpace, "root/interop");
  EXPECT_EQ(*path.key("CreationClassName"), Value::string("CIM_IndicationFilter"));
  EXPECT_EQ(*path.key("SystemCreationClassName"), Value::string("CIM_ComputerSystem"));
  EXPECT_EQ(*path.key("SystemName"), Value::string(systemName()));
  const Instance stored = held->get(path);
  EXPECT_EQ(text(stored, "SourceNamespace"), "\"root/interop\"");
  EXPECT_EQ(text(stored, "QueryLanguage"), "\"WQL\"");

  const Instance enabled =
      held->get(held->create(subscription(path, held->create(handler("h"), "ann")), "ann"));
  EXPECT_EQ(text(enabled, "SubscriptionState"), "2");
  EXPECT_FALSE(enabled.property("SubscriptionStartTime")->isNull());
  EXPECT_THAT(held->instances("CIM_ManagedElement"), SizeIs(2));
  EXPECT_THAT(held->instances("CIM_ListenerDestination"), SizeIs(1));
  EXPECT_THAT(held->instances("CIM_IndicationHandlerCIMXML"), IsEmpty());
}

TEST_F(SubscriptionsTest, APathFindsItsInstanceHoweverAClientSpellsIt) {
  const auto held = subscriptions(options());
  const ObjectPath filterPath = held->create(filter("f"), "ann");
  ObjectPath spelt = filterPath;
  spelt.nameSpace = "root/PG_InterOp";
  spelt.className = "cim_indicationfilter";
  spelt.host = "example";
  std::swap(spelt.keys.front(), spelt.keys.back());
  EXPECT_EQ(held->get(spelt).path, filterPath);

  // References come as texts from some clients, with another name of the namespace or none.
  const ObjectPath handlerPath = held->create(handler("h"), "ann");
  Instance link = subscription(spelt, handlerPath);
  std::string withoutNamespace = toPathText(handlerPath);
  withoutNamespace.erase(0, withoutNamespace.find(':') + 1);
  setValue(link.properties, "Handler", Value::string(withoutNamespace));
  const ObjectPath path = held->create(link, "ann");
  EXPECT_EQ(path.key("Filter")->asReference(), filterPath);
  EXPECT_EQ(path.key("Handler")->asReference(), handlerPath);
}

TEST_F(SubscriptionsTest, WhatCannotWorkIsRefusedWhenItIsCreated) {
  const auto held = subscriptions(options());
  const ObjectPath filterPath = held->create(filter("f"), "ann");
  const ObjectPath handlerPath = held->create(handler("h"), "ann");
  const auto with = [](Instance instance, const char* property, Value value) {
    setValue(instance.properties, property, std::move(value));
    return instance;
  };
  const Instance link = subscription(filterPath, handlerPath);
  const struct {
    Instance instance;
    const char* failure;
  } cases[] = {
      {filter("f"), "CIM_ERR_ALREADY_EXISTS: root/interop:CIM_IndicationFilter."},
      {filter(""), "CIM_ERR_INVALID_PARAMETER: Name is a key and has no value"},
      {filter("g", "SELECT"), "CIM_ERR_INVALID_PARAMETER: the query cannot be read: expected"},
      {filter("g", "SELECT * FROM Missing"), "CIM_ERR_INVALID_PARAMETER: the query names a class"},
      {filter("g", "SELECT * FROM Sample_Disk"), "Sample_Disk is not a class of indications"},
      {with(filter("g"), "QueryLanguage", Value::string("SQL")), "CIM_ERR_NOT_SUPPORTED: 'SQL'"},
      {with(filter("g"), "SourceNamespace", Value::string("root/other")),
       "'root/other' has no indications; use root/interop or root/sample"},
      {with(
           filter("g"), "SourceNamespaces",
           Value::array(CMPI_string, {Value::string("root/sample"), Value::string("root/other")})),
       "'root/other' has no indications"},
      {with(filter("g"), "Name", Value::uint32(1)), "CIM_ERR_INVALID_PARAMETER: Name is string, not uint32"},
      {with(filter("g"), "Colour", Value::string("red")), "CIM_IndicationFilter has no property 'Colour'"},
      {with(filter("g"), "CreationClassName", Value::string("X")), "is not the name of the class"},
      {handler("i", "nowhere"), "CIM_ERR_INVALID_PARAMETER: 'nowhere' is not a valid destination"},
      {with(handler("i"), "PersistenceType", Value::uint16(7)), "PersistenceType 7 is not supported"},
      {subscription(handlerPath, filterPath), "the Filter of the subscription does not exist"},
      {with(link, "SubscriptionState", Value::uint16(9)), "it can be 2 or 4"},
      {with(link, "OnFatalErrorPolicy", Value::uint16(4)), "CIM_ERR_NOT_SUPPORTED: OnFatalErrorPolicy 4"},
      {with(link, "SubscriptionDuration", Value::uint64(1)), "CIM_ERR_NOT_SUPPORTED"},
      {interopInstance("CIM_ListenerDestination", {}), "instances of CIM_ListenerDestination cannot"},
      {interopInstance("CIM_Namespace", {}), "instances of CIM_Namespace cannot be created"}};
  for (const auto& each : cases) {
    EXPECT_THAT(failureOf([&] { held->create(each.instance, "ann"); }), HasSubstr(each.failure));
  }
  EXPECT_THAT(held->instances("CIM_ManagedElement"), SizeIs(2));
  EXPECT_THAT(held->instances("CIM_IndicationSubscription"), IsEmpty());
}

TEST_F(SubscriptionsTest, TheProviderIsAskedAsAnObjectManagerAsksAndMayRefuse) {
  const auto held = subscriptions(options());
  const ObjectPath first = subscribe(*held, "one", "http://127.0.0.1:1/");
  const ObjectPath second = subscribe(*held, "two", "http://127.0.0.1:1/", "SELECT * FROM CIM_Indication");
  held->remove(first, "ann");
  held->remove(second, "ann");
  EXPECT_THAT(
      filterCalls().seen,
      ElementsAre(
          "authorize ann", "activate Sample_Alarm first", "enable", "authorize ann", "activate Sample_Alarm",
          "deactivate Sample_Alarm", "deactivate Sample_Alarm last", "disable"));

  filterCalls().refused = "ann";
  EXPECT_EQ(failureOf([&] { subscribe(*held, "three", "http://127.0.0.1:1/"); }), "CIM_ERR_ACCESS_DENIED: ");
  EXPECT_THAT(held->instances("CIM_IndicationSubscription"), IsEmpty());
}

TEST_F(SubscriptionsTest, OnlyTheStateOfASubscriptionIsModifiedAndNothingInUseIsDeleted) {
  const auto held = subscriptions(options());
  const ObjectPath path = subscribe(*held, "s", "http://127.0.0.1:1/");
  Instance other = held->get(path.key("Filter")->asReference());
  setValue(other.properties, "Query", Value::string("SELECT * FROM CIM_Indication"));
  EXPECT_THAT(
      failureOf([&] { held->modify(other, std::nullopt, "ann"); }),
      HasSubstr("CIM_ERR_NOT_SUPPORTED: only the SubscriptionState of a subscription can be modified"));

  Instance wrong = held->get(path);
  setValue(wrong.properties, "SubscriptionState", Value::uint16(3));
  EXPECT_THAT(failureOf([&] { held->modify(wrong, std::nullopt, "ann"); }), HasSubstr("it can be 2 or 4"));
  held->modify(wrong, PropertyList({"Filter"}), "ann");  // not in the list: not meant
  for (const char* end : {"Filter", "Handler"}) {
    EXPECT_THAT(
        failureOf([&] { held->remove(path.key(end)->asReference(), "ann"); }),
        HasSubstr("CIM_ERR_FAILED: it is used by the subscription"));
  }
  held->remove(path, "ann");
  held->remove(path.key("Filter")->asReference(), "ann");
  EXPECT_THAT(failureOf([&] { held->remove(path, "ann"); }), HasSubstr("CIM_ERR_NOT_FOUND: root/interop:"));
}

TEST_F(SubscriptionsTest, ThereAreOnlySoMany) {
  const auto held = subscriptions(options());
  for (std::size_t i = 0; i < Subscriptions::LIMIT; ++i) {
    held->create(filter(std::to_string(i)), "ann");
  }
  EXPECT_THAT(
      failureOf([&] { held->create(filter("more"), "ann"); }), HasSubstr("there are 256 instances of"));
  held->create(handler("of another kind"), "ann");
}

TEST_F(SubscriptionsTest, ARestartFindsThemAndActivatesThemForTheirOwners) {
  ObjectPath enabled;
  std::vector<Instance> before;
  {
    const auto held = subscriptions(options(m_file));
    enabled = subscribe(*held, "gr\xc3\xbc\xc3\x9f\"e\\\n", "http://127.0.0.1:1/");
    const ObjectPath disabled = subscribe(*held, "disabled", "http://127.0.0.1:1/");
    Instance change = held->get(disabled);
    setValue(change.properties, "SubscriptionState", Value::uint16(4));
    held->modify(change, PropertyList({"SubscriptionState"}), "ann");
    before = held->instances("CIM_IndicationSubscription");
    EXPECT_THAT(
        failureOf([this] { subscriptions(options(m_file)); }), HasSubstr("are used by another server"));
  }
  struct stat status {};
  ASSERT_EQ(::stat(m_file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  filterCalls() = {};
  {
    const auto held = subscriptions(options(m_file));
    EXPECT_THAT(filterCalls().seen, ElementsAre("authorize ann", "activate Sample_Alarm first", "enable"));
    EXPECT_EQ(held->instances("CIM_IndicationSubscription"), before);
    EXPECT_EQ(held->get(enabled).path, enabled);
  }
  filterCalls().refused = "ann";
  const auto held = subscriptions(options(m_file));
  ASSERT_THAT(lines(), SizeIs(1));
  EXPECT_THAT(lines().front(), HasSubstr("is not active: CIM_ERR_ACCESS_DENIED"));
  held->remove(enabled, "ann");
}

TEST_F(SubscriptionsTest, ADamagedFileIsReportedAndKept) {
  { subscribe(*subscriptions(options(m_file)), "s", "http://127.0.0.1:1/"); }
  std::ifstream stream(m_file);
  const std::string good((std::istreambuf_iterator<char>(stream)), {});
  const auto changed = [&good](const std::string& from, const std::string& to) {
    std::string content = good;
    return content.replace(content.find(from), from.size(), to);
  };
  const struct {
    std::string content;
    const char* problem;
  } cases[] = {
      {good.substr(0, good.size() / 2), "parse error"},
      {"", "parse error"},
      {"[]", "cannot be read"},
      {changed("\"layout\": 1", "\"layout\": 2"), "its layout is 2, which is not known"},
      {changed("CIM_IndicationFilter", "CIM_Nothing"), "there is no class \"CIM_Nothing\""},
      {changed("\"Query\"", "\"Quest\""), "has no property 'Quest'"},
      {changed("\"SubscriptionState\": 2", "\"SubscriptionState\": \"on\""), "type must be number"},
      {changed("\"Filter\": \"root", "\"Filter\": \"\\\"root"), "cannot be read"}};
  for (const auto& each : cases) {
    m_directory.write("subscriptions.json", each.content);
    const std::string failure = failureOf([this] { subscriptions(options(m_file)); });
    EXPECT_THAT(failure, HasSubstr("subscriptions.json' cannot be read: ")) << each.content;
    EXPECT_THAT(failure, HasSubstr(each.problem));
    EXPECT_THAT(failure, HasSubstr("restore the file, or move it away"));
    std::ifstream kept(m_file);
    EXPECT_EQ(std::string((std::istreambuf_iterator<char>(kept)), {}), each.content);
  }
}

TEST_F(SubscriptionsTest, WhatCannotBeStoredIsNotCreated) {
  const std::string directory = m_directory.file("state");
  std::filesystem::create_directory(directory);
  const auto held = subscriptions(options(directory + "/subscriptions.json"));
  const ObjectPath filterPath = held->create(filter("f"), "ann");
  const ObjectPath handlerPath = held->create(handler("h"), "ann");
  std::filesystem::remove_all(directory);
  filterCalls() = {};
  EXPECT_THAT(
      failureOf([&] { held->create(subscription(filterPath, handlerPath), "ann"); }),
      HasSubstr("CIM_ERR_FAILED: the subscriptions cannot be stored in"));
  EXPECT_THAT(held->instances("CIM_IndicationSubscription"), IsEmpty());
  EXPECT_THAT(
      filterCalls().seen, ElementsAre(
                              "authorize ann", "activate Sample_Alarm first", "enable",
                              "deactivate Sample_Alarm last", "disable"));
  EXPECT_THAT(failureOf([&] { held->remove(filterPath, "ann"); }), HasSubstr("cannot be stored"));
  EXPECT_THAT(held->instances("CIM_IndicationFilter"), SizeIs(1));
}

}  // namespace
}  // namespace tvp::host::cimxml::testing
