// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/ActiveSubscriptions.h"

#include "host/cimxml/indications/QueryCondition.h"
#include "host/cimxml/indications/SubscriptionRules.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/MessageWriter.h"
#include "host/schema/Names.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

void check(const Outcome& outcome) {
  if (!outcome.ok()) {
    throw CimFailure(outcome.rc, outcome.message);
  }
}

CallOptions optionsOf(const std::string& user) {
  CallOptions options;
  options.principal = user;
  return options;
}

/** The classes of indications that a query selects. */
std::vector<std::string> selectedClasses(const Query& query, const Schema& schema) {
  std::vector<std::string> names;
  for (const SchemaClass* candidate : schema.classes()) {
    if (candidate->isIndication() && isKindOf(schema, candidate->name, query.className())) {
      names.push_back(candidate->name);
    }
  }
  return names;
}

}  // namespace

struct ActiveSubscriptions::Active {
  SubscriptionParts parts;
  Query query;
  std::vector<IndicationFilter> filters;  ///< one per class of indications, for the provider
  std::shared_ptr<ExportQueue> queue;     ///< shared by the subscriptions of one handler
};

ActiveSubscriptions::ActiveSubscriptions(
    Provider& provider, std::string nameSpace, DeliveryOptions delivery,
    std::function<void(const std::string&)> log)
    : m_provider(provider), m_nameSpace(std::move(nameSpace)), m_delivery(std::move(delivery)),
      m_log(std::move(log)) {}

Query ActiveSubscriptions::query(const Instance& filter) const {
  return queryOf(filter, m_provider.broker().schema(), m_nameSpace);
}

void ActiveSubscriptions::start(const SubscriptionParts& parts) {
  auto added = std::make_shared<Active>(Active{parts, query(parts.filter), {}, nullptr});
  for (const std::string& className : selectedClasses(added->query, m_provider.broker().schema())) {
    IndicationFilter filter;
    filter.query = textOf(parts.filter, "Query");
    filter.language = textOf(parts.filter, "QueryLanguage");
    filter.className = className;
    filter.path.nameSpace = m_nameSpace;
    filter.path.className = className;
    filter.owner = parts.owner;
    added->filters.push_back(std::move(filter));
  }
  added->queue = queueFor(parts.handler);
  activate(*added);
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_active.push_back(std::move(added));
}

void ActiveSubscriptions::end(const ObjectPath& subscription) {
  List ended;  // destroyed after the lock, since a queue waits for its thread
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_active.begin(), m_active.end(), [&](const auto& active) {
      return active->parts.subscription == subscription;
    });
    if (found == m_active.end()) {
      return;
    }
    ended.splice(ended.begin(), m_active, found);
  }
  deactivate(*ended.front());
}

void ActiveSubscriptions::clear() {
  List ended;
  const std::lock_guard<std::mutex> lock(m_mutex);
  ended.swap(m_active);
}

void ActiveSubscriptions::deliver(const Instance& indication) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::shared_ptr<Active>& active : m_active) {
    try {
      if (active->query.selects(indication)) {
        active->queue->add(exportRequest(std::to_string(++m_exports), active->query.project(indication)));
      }
    } catch (const std::exception& error) {
      report(
          "an indication for " + textOf(active->parts.handler, "Destination") +
          " was dropped: " + error.what());
    }
  }
}

/** Whether there is an active subscription for a class; for an empty name, one at all. */
bool ActiveSubscriptions::isUsed(const std::string& className) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return std::any_of(m_active.begin(), m_active.end(), [&](const auto& active) {
    return className.empty() ||
           std::any_of(active->filters.begin(), active->filters.end(), [&](const IndicationFilter& filter) {
             return filter.className == className;
           });
  });
}

std::shared_ptr<ExportQueue> ActiveSubscriptions::queueFor(const Instance& handler) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::shared_ptr<Active>& active : m_active) {
    if (active->parts.handler.path == handler.path) {
      return active->queue;
    }
  }
  return std::make_shared<ExportQueue>(textOf(handler, "Destination"), m_delivery, m_log);
}

/** Asks the provider as an object manager does; takes back what it has accepted when it refuses the rest. */
void ActiveSubscriptions::activate(const Active& active) {
  const CallOptions options = optionsOf(active.parts.owner);
  std::size_t accepted = 0;
  try {
    for (const IndicationFilter& filter : active.filters) {
      check(m_provider.authorizeFilter(filter, &options));
      check(m_provider.mustPoll(filter, &options));
      check(m_provider.activateFilter(filter, !isUsed(filter.className), &options));
      ++accepted;
    }
    if (!isUsed("")) {
      check(m_provider.enableIndications(&options));
    }
  } catch (const CimFailure&) {
    deactivateFilters(active, accepted);
    throw;
  }
}

void ActiveSubscriptions::deactivate(const Active& active) {
  deactivateFilters(active, active.filters.size());
  if (!isUsed("")) {
    const CallOptions options = optionsOf(active.parts.owner);
    report(m_provider.disableIndications(&options), "disabled its indications");
  }
}

/** Deactivates the first filters of a subscription. */
void ActiveSubscriptions::deactivateFilters(const Active& active, std::size_t count) {
  const CallOptions options = optionsOf(active.parts.owner);
  for (std::size_t i = 0; i < count; ++i) {
    const IndicationFilter& filter = active.filters[i];
    report(m_provider.deActivateFilter(filter, !isUsed(filter.className), &options), "deactivated a filter");
  }
}

/** What ends is ended, whatever the provider says: its failure is only reported. */
void ActiveSubscriptions::report(const Outcome& outcome, const std::string& what) const {
  if (!outcome.ok()) {
    report("the provider has not " + what + ": " + statusName(outcome.rc) + ": " + outcome.message);
  }
}

void ActiveSubscriptions::report(const std::string& line) const {
  if (m_log) {
    m_log(line);
  }
}

}  // namespace tvp::host::cimxml
