// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Completion.h"

#include "host/tvpcim/output/Listing.h"
#include "host/tvpcim/output/Text.h"

#include <algorithm>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

/** What is being typed: the verb, what it was given so far, and what the next word is for. */
struct Place {
  CLI::App* verb = nullptr;
  std::vector<std::string> positionals;
  std::string wanted;  ///< "POOL", "DRIVE,...", "METHOD"; empty where an option or a verb belongs
};

CLI::App* verbNamed(CLI::App& app, const std::string& word) {
  const std::vector<CLI::App*> found =
      app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == word; });
  return found.empty() ? nullptr : found.front();
}

const CLI::Option* optionNamed(const CLI::App& verb, const std::string& word) {
  for (const CLI::App* app = &verb; app != nullptr; app = app->get_parent()) {
    if (const CLI::Option* option = app->get_option_no_throw(word)) {
      return option;
    }
  }
  return nullptr;
}

/** The name of the positional in that place; the last one may be repeated. */
std::string positionalAt(const CLI::App& verb, std::size_t index) {
  std::string name;
  for (const CLI::Option* option : verb.get_options()) {
    if (option->get_positional()) {
      name = option->get_name(true);
      if (index-- == 0) {
        return name;
      }
    }
  }
  return name == "NAME=VALUE" ? name : "";
}

Place placeAfter(CLI::App& app, const std::vector<std::string>& words) {
  Place place;
  place.verb = &app;
  const CLI::Option* open = nullptr;  // the option whose value comes next
  bool split = false;
  for (const std::string& word : words) {
    // bash passes NAME=VALUE and NAME:SIZE as three words.
    const bool separator = word == "=" || word == ":";
    if (std::exchange(split, separator) || open != nullptr) {
      open = separator ? open : nullptr;
    } else if (separator) {
      continue;
    } else if (word.size() > 1 && word[0] == '-') {
      const CLI::Option* option = optionNamed(*place.verb, word);
      open = option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
    } else if (CLI::App* verb = verbNamed(*place.verb, word)) {
      place.verb = verb;
    } else {
      place.positionals.push_back(word);
    }
  }
  if (open != nullptr) {
    place.wanted = open->get_name() + " " + open->get_type_name();
  } else if (!split) {
    place.wanted = positionalAt(*place.verb, place.positionals.size());
  }
  return place;
}

std::vector<std::string> namesOfKind(Tool& tool, const ObjectKind& kind) {
  std::vector<std::string> names;
  if (tool.session().isRemote()) {
    return names;
  }
  for (const Instance& instance : tool.inventory().instances(kind)) {
    names.push_back(textOf(instance, kind.name));
  }
  return names;
}

std::vector<std::string> withEnd(std::vector<std::string> words, const std::string& end) {
  for (std::string& word : words) {
    word += end;
  }
  return words;
}

/** The class of "NAMESPACE:CLASS.Key=..." */
const SchemaClass& classOfPath(Tool& tool, const std::string& text) {
  return tool.session().classNamed(tool.session().parsePath(text).className);
}

std::vector<std::string> inputsOf(const SchemaMethod& method) {
  std::vector<std::string> names;
  for (const SchemaParameter& parameter : method.parameters) {
    if (parameter.in) {
      names.push_back(parameter.name);
    }
  }
  return names;
}

/** Names of a class's features, for the place of a method, an argument or a property. */
std::vector<std::string> featuresAt(Tool& tool, const Place& place) {
  const SchemaClass& schemaClass = classOfPath(tool, place.positionals.front());
  if (place.wanted == "METHOD") {
    return namesOf(schemaClass.methods);
  }
  if (place.wanted != "NAME=VALUE") {
    return namesOf(schemaClass.properties);
  }
  if (place.verb->get_name() != "im") {
    return withEnd(namesOf(schemaClass.properties), "=");
  }
  const SchemaMethod* method = schemaClass.method(place.positionals.at(1));
  return method == nullptr ? std::vector<std::string>() : withEnd(inputsOf(*method), "=");
}

/** Whether a server is asked: its names would take a password, and as long as the network does. */
bool namesServer(const std::vector<std::string>& words) {
  return std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "--url" || word.compare(0, 6, "--url=") == 0;
  });
}

std::vector<std::string> candidatesAt(Tool& tool, const Place& place, const std::string& word) {
  const auto isOneOf = [&](std::initializer_list<const char*> names) {
    return std::find(names.begin(), names.end(), place.wanted) != names.end();
  };
  if (isOneOf({"POOL", "--ssd-pool POOL"})) {
    return namesOfKind(tool, Pool::KIND);
  }
  if (isOneOf({"--pool NAME_OR_ID:SIZE"})) {
    return withEnd(namesOfKind(tool, Pool::KIND), ":");
  }
  if (isOneOf({"VOLUME"})) {
    return namesOfKind(tool, Volume::KIND);
  }
  if (isOneOf({"--drive DRIVE"})) {
    return namesOfKind(tool, Drive::KIND);
  }
  if (isOneOf({"--drives DRIVE,..."})) {
    std::vector<std::string> names = namesOfKind(tool, Drive::KIND);
    for (std::string& name : names) {
      name.insert(0, word, 0, word.rfind(',') + 1);  // what was named before; npos + 1 is 0
    }
    return names;
  }
  if (isOneOf({"CLASS", "PATH", "CLASS_OR_PATH", "--assoc-class NAME", "--result-class NAME"})) {
    std::vector<std::string> names;
    for (const SchemaClass* schemaClass : tool.session().schema().classes()) {
      names.push_back(schemaClass->name);
    }
    return names;
  }
  const bool ofClass = isOneOf({"METHOD", "NAME=VALUE", "--property NAME"});
  return ofClass && !place.positionals.empty() ? featuresAt(tool, place) : std::vector<std::string>();
}

}  // namespace

std::vector<std::string> completionsOf(Tool& tool, CLI::App& app, const std::vector<std::string>& words) {
  const std::string word = words.empty() ? "" : words.back();
  const Place place =
      placeAfter(app, words.empty() ? words : std::vector<std::string>(words.begin(), words.end() - 1));
  if (namesServer(words)) {
    tool.options.url = "http://localhost";
  }
  std::vector<std::string> matching;
  for (const std::string& candidate : candidatesAt(tool, place, word)) {
    // A name with control characters could not be typed, and would obey the terminal.
    if (candidate.compare(0, word.size(), word) == 0 && printable(candidate) == candidate) {
      matching.push_back(candidate);
    }
  }
  return matching;
}

}  // namespace tvp::host::tvpcim
