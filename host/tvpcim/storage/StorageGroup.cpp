// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageGroup.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"

namespace tvp::host::tvpcim {
namespace {

/** The status that the storage library gave, by its name; empty when it was success. */
std::string refusal(const SchemaMethod* method, const MethodOutcome& outcome) {
  for (const char* name : {"RetStat", "ReturnCode"}) {
    const Value* status = outcome.output.find(name);
    if (status == nullptr || status->isNull() || status->asUnsigned() == 0) {
      continue;
    }
    const std::string number = std::to_string(status->asUnsigned());
    const SchemaParameter* parameter = method == nullptr ? nullptr : method->parameter(name);
    const std::string text = parameter == nullptr ? "" : parameter->valueName(number);
    return std::string(name) + " " + number + (text.empty() ? "" : " (" + text + ")");
  }
  return "";
}

}  // namespace

void StorageGroup::printAll(const ObjectKind& kind, std::vector<Column> columns) {
  const std::vector<Instance>& instances = inventory().all(kind);
  tool().print(formatter().listing({kind.nouns, instances, std::move(columns)}));
  if (instances.empty()) {
    noticeMissingDriver();
  }
}

void StorageGroup::noticeMissingDriver() {
  if (inventory().identity() == nullptr) {
    tool().notice(NO_DRIVER);
  }
}

void StorageGroup::printMembers(
    const ObjectKind& kind, const std::string& text, std::vector<Column> columns) {
  const std::uint32_t number = inventory().resolve(kind, text);
  std::vector<Instance> members = inventory().members(kind, number);
  if (members.empty() && inventory().byNumber(kind, number) == nullptr) {
    throw OperationError(
        statusName(CMPI_RC_ERR_NOT_FOUND) + ": there is no " + kind.noun + " " + std::to_string(number) +
        "; see 'tvpcim " + kind.nouns + "'");
  }
  tool().print(formatter().listing({"members", std::move(members), std::move(columns)}));
}

Instance StorageGroup::call(const std::string& method, const Arguments& arguments) {
  const MethodOutcome outcome = inventory().callService(method, arguments);
  inventory().forget();
  const std::string refused = refusal(session().classNamed("TVP_TierService").method(method), outcome);
  if (!refused.empty()) {
    throw OperationError(method + " answered " + refused, remarksOf(outcome));
  }
  return answerOf(method, outcome);
}

void StorageGroup::confirm(bool done, const std::string& expected) {
  if (!done) {
    throw OperationError(
        "the provider reported success, but nothing came of it",
        expected + "; look at 'voltvkctl status' and try again");
  }
}

}  // namespace tvp::host::tvpcim
