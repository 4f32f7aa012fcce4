// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/PageData.h"

#include "host/cimxml/server/OpenUsers.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/InstanceJson.h"
#include "host/tvpcim/output/Listing.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/HealthReport.h"
#include "host/tvpcim/storage/StorageMetrics.h"

#include <array>
#include <chrono>
#include <ctime>
#include <utility>

#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

using Json = nlohmann::ordered_json;

std::string hostName() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

/** The time for differences between two readings. */
std::int64_t millisecondsNow() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/** What pools have on drives: by pool, a list of drives. */
Json extentsJson(const Overview& overview) {
  Json pools = Json::object();
  for (const auto& [pool, extents] : overview.extents) {
    Json& list = pools[std::to_string(pool)] = Json::array();
    for (const DriveExtent& extent : extents) {
      list.push_back(
          {{"DeviceNumber", extent.drive}, {"Name", toUtf8(extent.driveName)}, {"Sectors", extent.size}});
    }
  }
  return pools;
}

/** Which pools volumes use: by volume, a list of pools. */
Json usesJson(const Overview& overview) {
  Json volumes = Json::object();
  for (const auto& [volume, uses] : overview.uses) {
    Json& list = volumes[std::to_string(volume)] = Json::array();
    for (const PoolUse& use : uses) {
      list.push_back({{"VirtualPoolId", use.pool}, {"Name", toUtf8(use.poolName)}});
    }
  }
  return volumes;
}

Json countersJson(const Overview& overview) {
  Json volumes = Json::object();
  for (const auto& [volume, counters] : overview.counters) {
    volumes[std::to_string(volume)] = toJson(counters);
  }
  return volumes;
}

}  // namespace

std::string isoNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  std::array<char, 64> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local);
  return std::string(text.data(), length).insert(length - 2, ":");
}

PageData::PageData(Tool& tool, const RecentEvents& events)
    : m_tool(tool), m_events(events), m_started(isoNow()),
      m_complete(cimxml::isAdministrator(tool.options.user)) {}

Json PageData::header() const {
  return {{"host", toUtf8(hostName())},
          {"version", TVP_VERSION},
          {"started", m_started},
          {"time", isoNow()},
          {"milliseconds", millisecondsNow()},
          {"error", nullptr}};
}

/** The names that the schema has for the codes in the objects: by property and code. */
Json PageData::namesOfCodes(const Overview& overview) {
  Json names = Json::object();
  const auto add = [&](const ObjectKind& kind, const std::vector<Instance>& instances,
                       const std::vector<const char*>& properties) {
    const SchemaClass& schemaClass = m_tool.session().classNamed(kind.className);
    for (const char* property : properties) {
      Json& codes = names[property] = Json::object();
      for (const Instance& instance : instances) {
        const std::uint64_t code = numberOf(instance, property);
        codes[std::to_string(code)] = codeName(schemaClass, property, code);
      }
    }
  };
  add(Drive::KIND, overview.drives, {"DeviceType", "LD_Status", "InterfaceType"});
  add(Pool::KIND, overview.pools, {"TierLevel", "PoolStatus"});
  add(Volume::KIND, overview.volumes, {"VolumeType", "State", "CacheMode", "KnobSetting"});
  return names;
}

void PageData::addFindings(Json& page, PageTexts& texts) {
  page["findings"] = nullptr;
  try {
    const HealthReport report = HealthReport::of(m_tool);
    addFindingMetrics(report, texts.metrics);
    page["findings"] = Json::array();
    for (const Finding& finding : report.findings()) {
      page["findings"].push_back(
          {{"object", toUtf8(finding.object)},
           {"kind", finding.kind},
           {"severity", finding.severity()},
           {"cause", toUtf8(finding.cause)},
           {"remedy", toUtf8(finding.remedy)}});
    }
  } catch (const OperationError&) {  // the page has the status of each object all the same
  }
}

void PageData::addStorage(Json& page, PageTexts& texts) {
  const Overview overview =
      readOverview(m_tool.inventory(), m_complete ? OverviewDepth::All : OverviewDepth::Objects);
  addStorageMetrics(overview, texts.metrics);
  page["identity"] = toJson(overview.identity);
  page["names"] = namesOfCodes(overview);
  page["drives"] = toJson(overview.drives);
  page["pools"] = toJson(overview.pools);
  page["volumes"] = toJson(overview.volumes);
  for (const Volume& volume : std::vector<Volume>(overview.volumes.begin(), overview.volumes.end())) {
    texts.volumes.insert(volume.number);
  }
  addFindings(page, texts);
  texts.forOthers = text::printableJson(page.dump());
  if (overview.complete) {
    page["poolDrives"] = extentsJson(overview);
    page["volumePools"] = usesJson(overview);
    page["counters"] = countersJson(overview);
  }
  texts.forAdministrators = text::printableJson(page.dump());
}

PageTexts PageData::read() {
  PageTexts texts;
  Json page = header();
  page["events"] = m_events.latest();
  std::string message;
  std::string hint;
  try {
    addStorage(page, texts);
    return texts;
  } catch (const OperationError& error) {
    message = error.what();
    hint = error.hint();
  } catch (const std::exception& error) {
    message = error.what();
  }
  page["error"] = {{"message", printable(message)}, {"hint", printable(hint)}};
  texts.forOthers = texts.forAdministrators = text::printableJson(page.dump());
  texts.metrics = {};
  texts.volumes.clear();
  texts.isReadable = false;
  addStorageFailure(texts.metrics);
  return texts;
}

}  // namespace tvp::host::tvpcim
