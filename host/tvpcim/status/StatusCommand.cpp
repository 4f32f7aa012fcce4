// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/remote/LocalServer.h"
#include "host/tvpcim/remote/SubscriptionList.h"
#include "host/tvpcim/storage/HealthReport.h"
#include "host/tvpcim/storage/StorageTool.h"
#include "host/tvpcim/storage/StorageVerbs.h"
#include "terminal/Width.h"
#include "text/Size.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace tvp::host::tvpcim {
namespace {

constexpr const char* SHOWN_EVENTS = "3";

/** "3 pools" */
std::string counted(std::uint64_t number, const ObjectKind& kind) {
  return std::to_string(number) + " " + (number == 1 ? kind.noun : kind.nouns);
}

/** How many there are, and how many of them are not in order. */
struct Count {
  std::uint64_t all = 0;
  std::uint64_t troubled = 0;

  /** "4, 1 degraded" */
  std::string text(const char* trouble) const {
    return std::to_string(all) + (troubled == 0 ? "" : ", " + std::to_string(troubled) + " " + trouble);
  }
};

/** The pools of one kind of drive. */
struct Tier {
  std::uint64_t capacity = 0;
  std::uint64_t used = 0;

  std::string text() const {
    return capacity == 0 ? "no pool"
                         : text::formatSectors(used) + " of " + text::formatSectors(capacity) + " used, " +
                               std::to_string(percentOf(used, capacity)) + "%";
  }
  Value value() const {
    Instance record;
    record.properties = {
        {"CapacityInSectors", Value::uint64(capacity)}, {"UsedInSectors", Value::uint64(used)}};
    return Value::instance(std::move(record));
  }
};

/** What there is. */
struct Stock {
  Count drives;
  std::uint64_t freeDrives = 0;
  Count pools;
  Count volumes;
  std::uint64_t volumeSectors = 0;
  Tier ssd;
  Tier hardDisk;
  std::string policy;

  template <typename Object>
  static void add(Count& count, const Object& object) {
    ++count.all;
    count.troubled += object.status == IN_ORDER ? 0 : 1;
  }

  /** @throws OperationError when it cannot be asked */
  static Stock of(Tool& tool) {
    Stock stock;
    Inventory& inventory = tool.inventory();
    const std::uint64_t policyStatus = numberOf(inventory.requireIdentity(), "PolicyEngineStatus");
    const SchemaClass& identityClass = tool.session().classNamed(Inventory::IDENTITY_CLASS);
    stock.policy = codeName(identityClass, "PolicyEngineStatus", policyStatus);
    for (const Instance& drive : inventory.instances(Drive::KIND)) {
      add(stock.drives, Drive(drive));
      stock.freeDrives += freedomOf(drive) == "yes" ? 1 : 0;
    }
    for (const Pool& pool : inventory.all<Pool>()) {
      add(stock.pools, pool);
      Tier& tier = pool.tier == Pool::SSD_TIER ? stock.ssd : stock.hardDisk;
      tier.capacity += pool.capacity;
      tier.used += pool.used;
    }
    for (const Volume& volume : inventory.all<Volume>()) {
      add(stock.volumes, volume);
      stock.volumeSectors += volume.capacity;
    }
    return stock;
  }
};

/** The server that clients ask, and what it sends to them. */
struct Service {
  std::string server;  ///< its URL, or the number of its process; empty: none is known to run
  std::optional<std::size_t> subscriptions;

  static Service of(Tool& tool) {
    Service service;
    if (!tool.session().isRemote()) {
      try {
        const LocalServer local = LocalServer::with(defaultSubscriptions());
        service.server = local.process ? "process " + std::to_string(*local.process) : "";
        service.subscriptions = local.subscriptions;
      } catch (const UsageError&) {
        // Without a home directory this user has no server, and the rest is worth showing.
      }
      return service;
    }
    service.server = tool.options.url;
    try {
      service.subscriptions = SubscriptionList(tool.session()).all().size();
    } catch (const OperationError&) {
      // Not every server lets everybody see them, and the rest is worth showing.
    }
    return service;
  }
};

/** The newest events, oldest first; none where they cannot be had: the classes have only those to come. */
std::vector<Instance> lastEvents(Tool& tool) {
  std::vector<Instance> events;
  const auto found =
      tool.session().isRemote() ? std::nullopt : StorageTool().ask({"events", "--count", SHOWN_EVENTS});
  if (!found || !found->is_array()) {
    return events;
  }
  try {
    for (const StorageTool::Json& each : *found) {
      Instance event;
      event.properties = {
          {"Time", Value::string(each.at("time").get<std::string>())},
          {"Code", Value::uint32(each.at("code").get<std::uint32_t>())},
          {"Description", Value::string(each.at("description").get<std::string>())}};
      events.push_back(std::move(event));
    }
  } catch (const StorageTool::Json::exception&) {  // of a voltvkctl of another version
    events.clear();
  }
  return events;
}

Value listOf(std::vector<Instance> instances) {
  Value::List list;
  for (Instance& instance : instances) {
    list.push_back(Value::instance(std::move(instance)));
  }
  return Value::array(CMPI_instance, std::move(list));
}

/** Health and findings for programs. */
Instance recordOf(const HealthReport& report) {
  Instance record;
  record.path.className = "Status";
  std::vector<Instance> findings;
  for (const Finding& finding : report.findings()) {
    Instance instance;
    instance.path.className = "Finding";
    instance.properties = {
        {"Object", Value::string(finding.object)},
        {"Kind", Value::string(finding.kind)},
        {"Severity", Value::string(finding.severity())},
        {"Cause", Value::string(finding.cause)},
        {"Remedy", Value::string(finding.remedy)}};
    findings.push_back(std::move(instance));
  }
  record.properties = {{"Health", Value::string(report.health())}, {"Findings", listOf(std::move(findings))}};
  return record;
}

/** All of it for programs. @param stock empty if what there is is not known */
Instance recordOf(
    const HealthReport& report, const std::optional<Stock>& stock, const Service& service,
    std::vector<Instance> events) {
  Instance record = recordOf(report);
  const Stock known = stock.value_or(Stock());
  const auto number = [&](std::uint64_t value) {
    return stock ? Value::uint64(value) : Value::null(CMPI_uint64);
  };
  const auto tier = [&](const Tier& value) { return stock ? value.value() : Value::null(CMPI_instance); };
  const NamedValue others[] = {
      {"Drives", number(known.drives.all)},
      {"MissingDrives", number(known.drives.troubled)},
      {"FreeDrives", number(known.freeDrives)},
      {"Pools", number(known.pools.all)},
      {"DegradedPools", number(known.pools.troubled)},
      {"Volumes", number(known.volumes.all)},
      {"DegradedVolumes", number(known.volumes.troubled)},
      {"VolumeSizeInSectors", number(known.volumeSectors)},
      {"SSDTier", tier(known.ssd)},
      {"HardDiskTier", tier(known.hardDisk)},
      {"PolicyEngine", stock ? Value::string(known.policy) : Value::null(CMPI_string)},
      {"Server", service.server.empty() ? Value::null(CMPI_string) : Value::string(service.server)},
      {"Subscriptions",
       service.subscriptions ? Value::uint64(*service.subscriptions) : Value::null(CMPI_uint64)},
      {"Events", listOf(std::move(events))}};
  record.properties.insert(record.properties.end(), std::begin(others), std::end(others));
  return record;
}

std::string healthText(const HealthReport& report) {
  const std::size_t count = report.findings().size();
  return report.health() + (count == 0
                                ? std::string()
                                : ", " + std::to_string(count) + (count == 1 ? " finding" : " findings"));
}

/** The same on one screen. */
Instance screenOf(
    const HealthReport& report, const std::optional<Stock>& stock, const Service& service,
    const std::vector<Instance>& events) {
  const Stock known = stock.value_or(Stock());
  const auto shown = [&](const std::string& value) { return Value::string(stock ? value : "unknown"); };
  Value::List eventLines;
  for (const Instance& event : events) {
    eventLines.push_back(Value::string(textOf(event, "Time") + "  " + textOf(event, "Description")));
  }
  Instance screen;
  screen.path.className = "Status";
  screen.properties = {{"Health", Value::string(healthText(report))}};
  if (!report.findings().empty()) {
    screen.properties.push_back({"What to do", Value::string("tvpcim status -x")});
  }
  const NamedValue others[] = {
      {"Drives", shown(known.drives.text("missing") + ", " + std::to_string(known.freeDrives) + " free")},
      {"Pools", shown(known.pools.text("degraded"))},
      {"Volumes", shown(
                      known.volumes.text("degraded") +
                      (known.volumes.all == 0 ? "" : ", " + text::formatSectors(known.volumeSectors)))},
      {"SSD tier", shown(known.ssd.text())},
      {"Hard disk tier", shown(known.hardDisk.text())},
      {"Policy engine", shown(known.policy)},
      {"Server", Value::string(service.server.empty() ? "none runs" : service.server)},
      {"Subscriptions",
       Value::string(service.subscriptions ? std::to_string(*service.subscriptions) : "unknown")}};
  screen.properties.insert(screen.properties.end(), std::begin(others), std::end(others));
  if (!eventLines.empty()) {
    screen.properties.push_back({"Last events", Value::array(CMPI_string, std::move(eventLines))});
  }
  return screen;
}

/** A line if all is well, else each finding with what to do; wrapped, as nothing of it may be cut. */
std::string explained(Tool& tool, const HealthReport& report) {
  if (report.findings().empty()) {
    const Stock stock = Stock::of(tool);
    return "all is well: " + counted(stock.drives.all, Drive::KIND) + ", " +
           counted(stock.pools.all, Pool::KIND) + ", " + counted(stock.volumes.all, Volume::KIND) + "\n";
  }
  const std::size_t columns = std::max<std::size_t>(terminal::Terminal::ofStandardOutput().columns, 2);
  std::string text;
  for (const Finding& finding : report.findings()) {
    text += terminal::wrapped(
        printable(finding.object + " " + finding.severity() + ": " + finding.cause), columns);
    text += terminal::wrapped(printable("  remedy: " + finding.remedy), columns);
  }
  return text;
}

void showStatus(Tool& tool, bool explains) {
  const HealthReport report = HealthReport::of(tool);
  const bool forPeople = tool.formatter().forPeople();
  if (explains) {
    tool.print(forPeople ? explained(tool, report) : tool.formatter().record(recordOf(report)));
  } else {
    std::optional<Stock> stock;  // what failed cannot be asked what it has
    if (report.exitStatus() != HealthReport::FAILED) {
      stock = Stock::of(tool);
    }
    const Service service = Service::of(tool);
    const std::vector<Instance> events = lastEvents(tool);
    tool.print(tool.formatter().record(
        forPeople ? screenOf(report, stock, service, events) : recordOf(report, stock, service, events)));
  }
  tool.endWith(report.exitStatus());
}

}  // namespace

void addStatusCommand(CLI::App& app, Tool& tool) {
  const auto explains = std::make_shared<bool>(false);
  addVerb(
      app, tool, "status", "Show on one screen whether all is well, and what there is",
      "Exit status: 0 all is well, 3 something is degraded, 4 the storage cannot be used.",
      [&tool, explains] { showStatus(tool, *explains); })
      .add_flag("-x,--explain", *explains, "Show only what is wrong, why, and what to do");
}

}  // namespace tvp::host::tvpcim
