// SPDX-License-Identifier: Apache-2.0
#include "bench/Work.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <stdexcept>

namespace bench {

using tvp::host::Arguments;
using tvp::host::ObjectPath;
using tvp::host::Request;
using tvp::host::Value;

namespace {

constexpr char NAME_SPACE[] = "root/kvs/tvp/smi_15";
constexpr std::uint32_t POOL = 1;  ///< the number of the first pool of a state

/** Times one call of an interface function in its own request. */
template <typename Call>
double timed(Subject& subject, Answer* answer, const ObjectPath& path, Call call) {
  Request request(subject.broker());
  const CMPIObjectPath* op = request.objectPath(path);
  CMPIStatus status{};
  const double seconds = subject.time([&] { status = call(request, op); });
  if (answer != nullptr) {
    answer->rc = status.rc;
    answer->instances = request.instances();
    answer->paths = request.paths();
    answer->data = request.data();
  }
  return seconds;
}

Work names(const std::string& what, const std::string& className) {
  return {what, [path = ObjectPath{NAME_SPACE, className, {}, ""}](Subject& subject, Answer* answer) {
            return timed(subject, answer, path, [&](Request& request, const CMPIObjectPath* op) {
              CMPIInstanceMI* mi = subject.provider().instanceMI();
              return mi->ft->enumerateInstanceNames(mi, request.context(), request.result(), op);
            });
          }};
}

Work retrieval(const std::string& what, const ObjectPath& path) {
  return {what, [path](Subject& subject, Answer* answer) {
            return timed(subject, answer, path, [&](Request& request, const CMPIObjectPath* op) {
              CMPIInstanceMI* mi = subject.provider().instanceMI();
              return mi->ft->getInstance(mi, request.context(), request.result(), op, nullptr);
            });
          }};
}

double
invoke(Subject& subject, Answer* answer, const ObjectPath& path, const char* method, const Arguments& input) {
  const auto& schema = subject.broker().schema();
  CMPIArgs* output = nullptr;
  return timed(subject, answer, path, [&](Request& request, const CMPIObjectPath* op) {
    CMPIMethodMI* mi = subject.provider().methodMI();
    const CMPIArgs* in = request.arguments(input);
    output = request.outputArguments(schema.find(path.className)->method(method));
    const CMPIStatus status =
        mi->ft->invokeMethod(mi, request.context(), request.result(), op, method, in, output);
    if (answer != nullptr) {
      answer->output = Request::read(output);
    }
    return status;
  });
}

Work members(const std::string& what) {
  const ObjectPath path{
      NAME_SPACE,
      "TVP_VirtualPool",
      {{"CreationClassName", Value::string("TVP_VirtualPool")}, {"Name", Value::string("Pool0")}},
      ""};
  return {what, [path](Subject& subject, Answer* answer) {
            return invoke(
                subject, answer, path, "GetVirtualPoolMembers",
                Arguments().add("VirtualPoolId", Value::uint32(POOL)));
          }};
}

double describePool(Subject& subject, Answer* answer) {
  static const ObjectPath path{
      NAME_SPACE,
      "TVP_TierService",
      {{"CreationClassName", Value::string("TVP_TierService")},
       {"Name", Value::string("TVP_TierServiceInstance1")}},
      ""};
  static std::atomic<unsigned int> number{0};  // setting the same description again would change nothing
  return invoke(
      subject, answer, path, "ModifyVirtualPool",
      Arguments()
          .add("VirtualPoolId", Value::uint32(POOL))
          .add("Name", Value::string("Pool0"))
          .add("TierLevel", Value::uint8(1))
          .add("Description", Value::string("description " + std::to_string(++number))));
}

std::vector<std::string> recordedCalls(tvp::host::Broker& broker) {
  std::vector<std::string> calls;
  for (std::size_t i = 0; i < broker.callCount(); ++i) {
    calls.push_back(broker.callName(i));
  }
  broker.resetCalls();
  return calls;
}

std::vector<std::string> callsOf(const Work& work, Subject& subject, Answer& answer) {
  subject.broker().resetCalls(true);
  work.run(subject, &answer);
  return recordedCalls(subject.broker());
}

}  // namespace

bool Answer::operator==(const Answer& other) const {
  return rc == other.rc && instances == other.instances && paths == other.paths && data == other.data &&
         output == other.output;
}

Work enumeration(const std::string& what, const std::string& className) {
  return {what, [path = ObjectPath{NAME_SPACE, className, {}, ""}](Subject& subject, Answer* answer) {
            return timed(subject, answer, path, [&](Request& request, const CMPIObjectPath* op) {
              CMPIInstanceMI* mi = subject.provider().instanceMI();
              return mi->ft->enumerateInstances(mi, request.context(), request.result(), op, nullptr);
            });
          }};
}

Work eventDelivery() {
  return {"event, from record to delivery", [](Subject& subject, Answer*) {
            // The product's five-second listener may fetch an event first; then another event is made.
            constexpr int ATTEMPTS = 10;
            for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
              describePool(subject, nullptr);
              const std::uint64_t before = subject.indications();
              const double seconds = subject.pollOnce();
              if (subject.indications() == before + 1) {
                return seconds;
              }
            }
            throw std::runtime_error("no event was delivered by a round of the listener");
          }};
}

std::vector<Work> worksFor(const Scenario& scenario) {
  const std::string count = std::to_string(scenario.count);
  if (scenario.sort == "volumes") {
    return {enumeration("EnumInstances, " + count + " volumes", "TVP_VirtualVolume")};
  }
  if (scenario.sort == "pools") {
    std::vector<Work> works = {enumeration("EnumInstances, " + count + " pools", "TVP_VirtualPool")};
    if (scenario.count == 8) {
      works.push_back(members("InvokeMethod, read (members of a pool)"));
      works.push_back({"InvokeMethod, change (description of a pool)", describePool});
    }
    return works;
  }
  std::vector<Work> works = {enumeration(
      "EnumInstances, " + count + (scenario.count == 1 ? " drive" : " drives"), "TVP_LogicalDevice")};
  if (scenario.count == 8) {
    const ObjectPath drive{
        NAME_SPACE,
        "TVP_LogicalDevice",
        {{"CreationClassName", Value::string("TVP_LogicalDevice")},
         {"DeviceName", Value::string("/dev/sda")}},
        ""};
    works.push_back(names("EnumInstanceNames, 8 drives", "TVP_LogicalDevice"));
    works.push_back(retrieval("GetInstance, a drive", drive));
  }
  return works;
}

void requireSame(const Work& work, Subject& product, Subject& baseline) {
  Answer productAnswer;
  Answer baselineAnswer;
  const std::vector<std::string> calls = callsOf(work, product, productAnswer);
  const std::vector<std::string> baselineCalls = callsOf(work, baseline, baselineAnswer);
  for (std::size_t i = 0; i < std::max(calls.size(), baselineCalls.size()); ++i) {
    const std::string call = i < calls.size() ? calls[i] : "nothing";
    const std::string baselineCall = i < baselineCalls.size() ? baselineCalls[i] : "nothing";
    if (call != baselineCall) {
      throw std::runtime_error(std::string(work.what)
                                   .append(": broker call " + std::to_string(i) + " is ")
                                   .append(call)
                                   .append(" of the provider, ")
                                   .append(baselineCall)
                                   .append(" of the baseline; bring the baseline up to date"));
    }
  }
  if (!(productAnswer == baselineAnswer)) {
    throw std::runtime_error(
        work.what + ": provider and baseline answer differently; bring the baseline up to date");
  }
  if (calls.empty()) {
    throw std::runtime_error(work.what + ": no broker call was recorded");
  }
}

std::uint64_t looksOf(const Work& work, Subject& counter) {
  constexpr int ATTEMPTS = 3;  // the provider's listener may check in between, every five seconds
  std::uint64_t fewest = std::numeric_limits<std::uint64_t>::max();
  for (int attempt = 0; attempt < ATTEMPTS; ++attempt) {
    work.run(counter, nullptr);
    fewest = std::min(fewest, counter.looksOfLastCall());
  }
  return fewest;
}

}  // namespace bench
