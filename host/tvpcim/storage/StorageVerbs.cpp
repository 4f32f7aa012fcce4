// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "text/Size.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>

#include <unistd.h>

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

CLI::App& addObjectVerb(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* name, const char* summary,
    std::function<void(Tool& tool, const std::string& object)> action) {
  auto object = std::make_shared<std::string>();
  std::string argument = kind.noun;
  std::transform(argument.begin(), argument.end(), argument.begin(), [](unsigned char letter) {
    return static_cast<char>(std::toupper(letter));
  });
  CLI::App& verb = addVerb(family, tool, name, summary, "", [&tool, object, action = std::move(action)] {
    action(tool, *object);
  });
  verb.add_option(argument, *object, std::string("Name or identifier of the ") + kind.noun)->required();
  return verb;
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

namespace {

/** An object with its members, for people as the columns show it. @throws OperationError when there is none
 */
Instance describedObject(
    Tool& tool, const ObjectKind& kind, std::uint32_t number, const std::vector<Column>& columns) {
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
  return shown;
}

}  // namespace

void printOne(
    Tool& tool, const ObjectKind& kind, const std::string& object, const std::vector<Column>& columns) {
  const std::uint32_t number = tool.inventory().resolve(kind, object);
  tool.print(tool.formatter().record(describedObject(tool, kind, number, columns)));
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

namespace {

/** Prints what a change would have made, as the copy has it that it was tried on. */
void printTrial(Tool& tool, const ServiceAnswer& answer, const ChangedObject& object) {
  const bool isShown = !object.columns.empty() && tool.inventory().exists(object.kind, object.number);
  Instance shown =
      isShown ? describedObject(tool, object.kind, object.number, object.columns) : answer.record;
  if (tool.formatter().forPeople()) {
    tool.print(
        printable(
            "Nothing was changed; " +
            (object.title.empty() ? titleOf(tool, object.kind, object.number) : object.title) + " would be " +
            object.participle + (isShown ? ":" : ".")) +
        "\n");
    if (!isShown) {
      return;
    }
  } else {
    shown.properties.push_back({"DryRun", Value::boolean(true)});
  }
  tool.print(tool.formatter().record(shown));
}

}  // namespace

std::string titleOf(Tool& tool, const ObjectKind& kind, std::uint32_t number) {
  const Instance* found = tool.inventory().byNumber(kind, number);
  return std::string(kind.noun) + " " + std::to_string(number) +
         (found == nullptr ? "" : " (" + textOf(*found, kind.name) + ")");
}

namespace {

/** Asks a person on a terminal whether to delete something. @throws OperationError unless it is confirmed */
void confirmDeletion(Tool& tool, const ObjectKind& kind, std::uint32_t number, DeletionQuestion question) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0) {
    return;
  }
  std::fprintf(stderr, "%s [y/N] ", printable(question(tool, number)).c_str());
  std::fflush(stderr);
  const std::string title = titleOf(tool, kind, number);
  std::string answer;
  std::getline(std::cin, answer);
  if (answer != "y" && answer != "Y" && answer != "yes") {
    throw OperationError("not confirmed, so nothing was deleted");
  }
  tool.inventory().forget();
  if (titleOf(tool, kind, number) != title) {
    throw OperationError(title + " was changed meanwhile, so nothing was deleted; look at it again");
  }
}

}  // namespace

void addDeletion(
    CLI::App& family, Tool& tool, const ObjectKind& kind, const char* summary, const char* method,
    DeletionQuestion question) {
  const auto confirmed = std::make_shared<bool>(false);
  addObjectVerb(
      family, tool, kind, "delete", summary,
      [&kind, confirmed, method, question](Tool& own, const std::string& object) {
        const std::uint32_t number = own.inventory().resolve(kind, object);
        // Nothing more is asked than is needed: where nothing answers, the change itself says why.
        const std::string title = own.options.dryRun ? titleOf(own, kind, number) : "";
        if (!*confirmed && !own.options.dryRun) {
          confirmDeletion(own, kind, number, question);
        }
        const ServiceAnswer answer = callService(own, method, kind, number);
        printChange(
            own, answer, {kind, number, "deleted", {}, title}, !own.inventory().exists(kind, number),
            std::string(kind.noun) + " " + std::to_string(number) + " still exists");
      })
      .add_flag("-y,--yes", *confirmed, "Do not ask; only terminals are asked at all");
}

bool isShare(const std::string& text) {
  return text == "max" || text::percentage(text).has_value();
}

std::uint64_t
sectorsOfShare(const std::string& text, std::uint64_t room, std::uint64_t chunk, const std::string& where) {
  if (!isShare(text)) {
    return text::parseSectors(text);
  }
  constexpr std::uint64_t WHOLE = 100;
  const std::uint64_t share = text == "max" ? WHOLE : *text::percentage(text);
  const std::uint64_t sectors = room / WHOLE * share + room % WHOLE * share / WHOLE;
  const std::uint64_t whole = chunk == 0 ? sectors : sectors / chunk * chunk;
  if (whole == 0) {
    throw OperationError(
        where + " has " + text::formatSectors(room) + " free, of which " + text::quoted(text) +
        " is less than a chunk; free some of it, or choose another");
  }
  return whole;
}

void printChange(
    Tool& tool, const ServiceAnswer& answer, const ChangedObject& object, bool done,
    const std::string& expectation) {
  if (!done) {
    throw OperationError(
        "the provider reported success, but the change did not take effect",
        answer.hint.empty() ? expectation + "; look at 'voltvkctl status' and try again" : answer.hint);
  }
  if (tool.options.dryRun) {
    printTrial(tool, answer, object);
    return;
  }
  tool.print(tool.formatter().record(answer.record));
}

}  // namespace tvp::host::tvpcim
