// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_SAMPLESERVER_H
#define TESTS_CIMXML_SAMPLESERVER_H

#include "host/cimxml/indications/Subscriptions.h"
#include "host/cimxml/message/Failure.h"
#include "host/schema/ObjectPathText.h"
#include "tests/host/SampleProvider.h"

#include <gmock/gmock.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tvp::host::cimxml::testing {

using host::testing::ok;
using host::testing::sampleBehaviour;
using host::testing::sampleFactories;
using host::testing::sampleIndicationTable;
using host::testing::sampleInstanceTable;
using host::testing::sampleMethodTable;
using host::testing::samplePath;
using host::testing::sampleSchema;

inline std::shared_ptr<const Schema> interopSchema() {
  static const std::shared_ptr<const Schema> schema =
      MofReader::readFile(TVP_SOURCE_DIR "/schema/Interop.mof");
  return schema;
}

/** What the indication interface of the provider was asked, in order, and the user whose requests it refuses.
 */
struct FilterCalls {
  std::vector<std::string> seen;
  std::string refused = "nobody";
};

inline FilterCalls& filterCalls() {
  static FilterCalls calls;
  return calls;
}

inline CMPIStatus noteFilterCall(const std::string& call) {
  filterCalls().seen.push_back(call);
  return ok();
}

/** The sample provider with the calls that subscriptions need. */
inline ProviderFactories factoriesWithIndications() {
  ProviderFactories factories = sampleFactories();
  sampleIndicationTable.authorizeFilter = [](auto, auto, auto, auto, auto, const char* owner) {
    noteFilterCall(std::string("authorize ") + owner);
    return CMPIStatus{owner == filterCalls().refused ? CMPI_RC_ERR_ACCESS_DENIED : CMPI_RC_OK, nullptr};
  };
  sampleIndicationTable.mustPoll = [](auto...) { return ok(); };
  sampleIndicationTable.activateFilter = [](auto, auto, auto, const char* className, auto, auto first) {
    return noteFilterCall(std::string("activate ") + className + (first != 0 ? " first" : ""));
  };
  sampleIndicationTable.deActivateFilter = [](auto, auto, auto, const char* className, auto, auto last) {
    return noteFilterCall(std::string("deactivate ") + className + (last != 0 ? " last" : ""));
  };
  sampleIndicationTable.enableIndications = [](auto...) { return noteFilterCall("enable"); };
  sampleIndicationTable.disableIndications = [](auto...) { return noteFilterCall("disable"); };
  return factories;
}

/** A provider, and the lines that the subscriptions log. */
class SampleServer : public ::testing::Test {
protected:
  SampleServer() {
    sampleBehaviour() = {};
    filterCalls() = {};
  }

  Subscriptions::Options options(const std::string& file = {}) {
    Subscriptions::Options result;
    result.file = file;
    result.nameSpace = "root/sample";
    result.log = [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_lines.push_back(line);
    };
    result.delivery.firstPause = std::chrono::milliseconds(1);
    result.delivery.longestPause = std::chrono::milliseconds(20);
    return result;
  }

  std::unique_ptr<Subscriptions> subscriptions(Subscriptions::Options options) {
    auto made = std::make_unique<Subscriptions>(interopSchema(), std::move(options));
    made->attach(m_provider);
    return made;
  }

  std::vector<std::string> lines() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lines;
  }

  static Instance interopInstance(const std::string& className, std::vector<NamedValue> properties) {
    Instance instance;
    instance.path.className = className;
    instance.properties = std::move(properties);
    return instance;
  }

  static Instance filter(const std::string& name, const std::string& query = "SELECT * FROM Sample_Alarm") {
    return interopInstance(
        "CIM_IndicationFilter", {{"Name", Value::string(name)}, {"Query", Value::string(query)}});
  }

  static Instance handler(const std::string& name, const std::string& url = "http://127.0.0.1:1/x") {
    return interopInstance(
        "CIM_ListenerDestinationCIMXML",
        {{"Name", Value::string(name)}, {"Destination", Value::string(url)}});
  }

  static Instance subscription(const ObjectPath& filter, const ObjectPath& handler) {
    return interopInstance(
        "CIM_IndicationSubscription",
        {{"Filter", Value::reference(filter)}, {"Handler", Value::reference(handler)}});
  }

  /** A subscription with a filter and a handler of its own. @return its path */
  static ObjectPath subscribe(
      Subscriptions& subscriptions, const std::string& name, const std::string& url,
      const std::string& query = "SELECT * FROM Sample_Alarm") {
    const ObjectPath filterPath = subscriptions.create(filter(name, query), "ann");
    return subscriptions.create(
        subscription(filterPath, subscriptions.create(handler(name, url), "ann")), "ann");
  }

  static Instance alarm(const std::string& text) {
    Instance instance = sampleSchema()->emptyInstance(samplePath("Sample_Alarm"));
    setValue(instance.properties, "Text", Value::string(text));
    return instance;
  }

  Broker m_broker{sampleSchema()};
  Provider m_provider{m_broker, factoriesWithIndications()};

private:
  std::mutex m_mutex;
  std::vector<std::string> m_lines;
};

/** Does something that has to fail. @return the status and the message; empty when it succeeds */
template <class Work>
std::string failureOf(Work work) {
  try {
    work();
  } catch (const CimFailure& failure) {
    return statusName(failure.code()) + ": " + failure.what();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "";
}

}  // namespace tvp::host::cimxml::testing

#endif
