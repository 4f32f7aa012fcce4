// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"

#include <algorithm>
#include <cctype>
#include <memory>

namespace tvp::host::tvpcim {
namespace {

constexpr std::size_t LONGEST_NAME = TVP_LONGEST_NAME;                // bytes
constexpr std::size_t LONGEST_DESCRIPTION = TVP_LONGEST_DESCRIPTION;  // bytes

/** The status that the storage library gave, with its name; empty when it was success. */
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

[[noreturn]] void refuseUnknown(Tool& tool, const ObjectKind& kind, std::uint32_t number) {
  tool.inventory().requireIdentity();
  throw OperationError(
      statusName(CMPI_RC_ERR_NOT_FOUND) + ": there is no " + kind.noun + " " + std::to_string(number) +
      "; see 'tvpcim " + kind.nouns + "'");
}

}  // namespace

void addObjectVerb(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* name, const char* summary,
    std::function<void(Tool& tool, const std::string& object)> action) {
  auto object = std::make_shared<std::string>();
  std::string argument = kind.noun;
  std::transform(argument.begin(), argument.end(), argument.begin(), [](unsigned char letter) {
    return static_cast<char>(std::toupper(letter));
  });
  addVerb(
      family, tool, name, summary, "", [&tool, object, action = std::move(action)] { action(tool, *object); })
      .add_option(argument, *object, std::string("Name or identifier of the ") + kind.noun)
      ->required();
}

std::string helpOnName(const std::string& noun) {
  return "Name of the " + noun + ", 1 to " + std::to_string(LONGEST_NAME) + " bytes";
}

std::string helpOnDescription() {
  return "Description, up to " + std::to_string(LONGEST_DESCRIPTION) + " bytes";
}

std::string_view keptName(const std::string& name) {
  return text::cutToSize(name, LONGEST_NAME);
}

std::uint8_t driveNumber(Tool& tool, const std::string& text) {
  const std::uint32_t number = tool.inventory().resolve(Drive::KIND, text);
  if (number > LARGEST_DRIVE) {
    throw UsageError(
        text::quoted(text) + " is not a drive number; drive numbers are 0 to " +
        std::to_string(LARGEST_DRIVE));
  }
  return static_cast<std::uint8_t>(number);
}

void printAll(Tool& tool, const ObjectKind& kind, std::vector<Column> columns) {
  tool.print(tool.formatter().listing({kind.nouns, tool.inventory().instances(kind), std::move(columns)}));
}

void printOne(
    Tool& tool, const ObjectKind& kind, const std::string& object, const std::vector<Column>& columns) {
  const std::uint32_t number = tool.inventory().resolve(kind, object);
  const Instance* found = tool.inventory().byNumber(kind, number);
  if (found == nullptr) {
    refuseUnknown(tool, kind, number);
  }
  Instance shown = *found;
  if (tool.formatter().forPeople()) {
    shown.properties.clear();
    for (const Column& column : columns) {
      shown.properties.push_back({column.title, Value::string(column.cell(*found))});
    }
  }
  Value::List members;
  for (Instance& member : tool.inventory().members(kind, number)) {
    members.push_back(Value::instance(std::move(member)));
  }
  shown.properties.push_back({"Members", Value::array(CMPI_instance, std::move(members))});
  tool.print(tool.formatter().record(shown));
}

void printMembers(
    Tool& tool, const ObjectKind& kind, const std::string& object, std::vector<Column> columns) {
  const std::uint32_t number = tool.inventory().resolve(kind, object);
  std::vector<Instance> members = tool.inventory().members(kind, number);
  if (members.empty() && !tool.inventory().exists(kind, number)) {
    refuseUnknown(tool, kind, number);
  }
  tool.print(tool.formatter().listing({"members", std::move(members), std::move(columns)}));
}

ServiceAnswer callService(Tool& tool, const std::string& method, const Arguments& arguments) {
  const MethodOutcome outcome = tool.inventory().callService(method, arguments);
  tool.inventory().forget();
  const std::string refused =
      outcome.ok() ? refusal(tool.session().classNamed("TVP_TierService").method(method), outcome) : "";
  if (!outcome.ok() || !refused.empty()) {
    throw OperationError(outcome.ok() ? method + " answered " + refused : describe(outcome), hintOf(outcome));
  }
  return {answerOf(method, outcome), remarksOf(outcome)};
}

ServiceAnswer callService(
    Tool& tool, const std::string& method, const ObjectKind& kind, std::uint32_t number,
    const Arguments& others) {
  Arguments arguments;
  arguments.add(kind.number, Value::uint32(number));
  arguments.values.insert(arguments.values.end(), others.values.begin(), others.values.end());
  ServiceAnswer answer = callService(tool, method, arguments);
  answer.record.properties.push_back({kind.number, Value::uint32(number)});
  return answer;
}

void printChange(Tool& tool, const ServiceAnswer& answer, bool done, const std::string& expectation) {
  if (!done) {
    throw OperationError(
        "the provider reported success, but the change did not take effect",
        answer.hint.empty() ? expectation + "; look at 'voltvkctl status' and try again" : answer.hint);
  }
  tool.print(tool.formatter().record(answer.record));
}

}  // namespace tvp::host::tvpcim
