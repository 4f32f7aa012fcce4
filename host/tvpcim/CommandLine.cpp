// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/CommandLine.h"

#include "host/tvpcim/Completion.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/remote/Connection.h"
#include "text/Size.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

constexpr int FAILED = 1;
constexpr int WRONG_USAGE = 2;

const char* const SUMMARY =
    "Talks to the storage provider as a CIM object manager does: storage verbs, CIM verbs and indications.";
const char* const FOOTER =
    "\nExit status: 0 done, 1 the operation failed, 2 wrong usage; of status also 3 degraded, 4 failed.\n"
    "'tvpcim VERB --help' describes a verb.";

std::vector<std::string> verbsOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(verb->get_name());
  }
  return names;
}

bool takesValue(const std::string& option) {
  static const std::vector<std::string> OPTIONS = {"-o",       "--output",        "--provider",
                                                   "--schema", "--user",          "--namespace",
                                                   "--url",    "--password-file", "--cert"};
  return std::find(OPTIONS.begin(), OPTIONS.end(), option) != OPTIONS.end();
}

/** The variable of the storage library that has it work on a copy. */
constexpr const char* DRY_RUN = "VOLTVK_DRY_RUN";

/** Whether the environment asks for it already, as the storage library reads it. */
bool isDryRunPrescribed() {
  const char* wanted = std::getenv(DRY_RUN);
  return wanted != nullptr && *wanted != '\0' && std::string(wanted) != "0";
}

void printError(const Tool& tool, const std::string& text) {
  Tool::complain(tool.verb() + (tool.verb().empty() ? "" : ": ") + text);
}

/** Does what the command line asks for. */
int perform(Tool& tool, CommandLine& commandLine, const std::vector<std::string>& arguments) {
  try {
    tool.print(commandLine.parse(arguments));
    tool.run();
    tool.flush();
    return tool.exitStatus();
  } catch (const UsageError& error) {
    printError(tool, error.what());
    return WRONG_USAGE;
  } catch (const text::SizeError& error) {
    printError(tool, error.what());
    return WRONG_USAGE;
  } catch (const OperationError& error) {
    printError(tool, error.what());
    if (!error.hint().empty()) {
      Tool::complain("hint: " + error.hint());
    }
  } catch (const std::bad_alloc&) {
    printError(tool, "there is not enough memory");
  } catch (const std::exception& error) {
    printError(tool, error.what());
  }
  return FAILED;
}

/** Warns of rules that the provider broke. @return whether that makes the command fail */
bool reportBreaches(Tool& tool) {
  const std::vector<std::string> breaches = tool.session().breaches();
  for (const std::string& text : breaches) {
    Tool::complain("warning: the provider broke a rule of the interface: " + text);
  }
  return !breaches.empty() && std::getenv("TVPCIM_STRICT") != nullptr;
}

}  // namespace

CommandLine::CommandLine(Tool& tool) : m_tool(tool), m_app(SUMMARY, "tvpcim") {
  m_app.fallthrough();
  m_app.require_subcommand(1);
  m_app.footer(FOOTER);
  m_app.get_formatter()->label("TEXT", "");
  m_app.get_formatter()->label("SUBCOMMAND", "VERB");
  m_app.get_formatter()->label("Subcommands", "Verbs");
  m_app.get_formatter()->label("REQUIRED", "(required)");
  m_app.set_version_flag("--version", "tvpcim " TVP_VERSION);
  addGlobalOptions();
  for (const auto add :
       {addIdentityCommand, addStatusCommand, addDriveCommands, addPoolCommands, addVolumeCommands,
        addStatisticsCommand, addTreeCommand, addMetricsCommand, addWatchCommand, addInstanceCommands,
        addMethodCommand, addAssociationCommands, addSchemaCommands, addServeCommand, addListenCommand,
        addSubscriptionCommands}) {
    add(m_app, m_tool);
  }
  addHelp();
}

void CommandLine::addGlobalOptions() {
  std::vector<std::string> formats;
  for (const OutputFormat& format : outputFormats()) {
    formats.emplace_back(format.name);
  }
  Options& options = m_tool.options;
  // The last one counts, so that a shell's alias may have options of its own.
  m_app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  m_app.add_option("-o,--output", options.output, "Output format")
      ->type_name("FORMAT")
      ->capture_default_str()
      ->check(CLI::IsMember(formats));
  m_app.add_flag("--wide", options.wide, "Show every column of a table, whatever the width of the terminal");
  m_app.add_flag(
      "-n,--dry-run", options.dryRun, "Change nothing: show what a change would make, or why it is refused");
  m_app
      .add_option(
          "--url", options.url, "Ask a server, http://USER@HOST:PORT, and not the provider of this machine")
      ->type_name("URL");
  m_app
      .add_option(
          "--password-file", options.passwordFile,
          "File of the password of the server's user; without it, the terminal is asked")
      ->type_name("FILE");
  m_app
      .add_option(
          "--cert", options.certificates,
          "File of the certificates that a server may have; default: the system's")
      ->type_name("FILE");
  m_app.add_option("--user", options.user, "User name of the requests; default: yours")->type_name("NAME");
  m_app
      .add_option(
          "--provider", options.provider, "The provider's library; default: the one that belongs to tvpcim")
      ->type_name("FILE");
  m_app
      .add_option("--schema", options.schema, "File of the classes; default: the one that belongs to tvpcim")
      ->type_name("FILE");
  m_app.add_option("--namespace", options.nameSpace, "Namespace of the requests")
      ->type_name("NAME")
      ->capture_default_str();
  m_app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

void CommandLine::checkVerbs(const std::vector<std::string>& arguments) {
  CLI::App* parent = &m_app;
  std::string words;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& word = arguments[index];
    if (word == "--") {
      return;
    }
    if (word.size() > 1 && word[0] == '-') {
      index += takesValue(word) ? 1 : 0;
      continue;
    }
    const std::vector<std::string> verbs = verbsOf(*parent);
    if (verbs.empty()) {
      return;
    }
    if (std::find(verbs.begin(), verbs.end(), word) == verbs.end()) {
      const std::string near = suggestion(word, verbs);
      throw UsageError(
          "there is no verb " + text::quoted(words + word) +
          (near.empty() ? "; see 'tvpcim " + words + "--help'" : near));
    }
    parent = parent->get_subcommand(word);
    words += word + " ";
  }
}

void CommandLine::checkUrl() {
  if (m_app.count("--url") == 0) {
    return;
  }
  parseUrl(m_tool.options.url);
  for (const char* local : {"--user", "--provider"}) {
    if (m_app.count(local) > 0) {
      throw UsageError(
          std::string(local) + " is for the provider of this machine; leave it or --url out" +
          (local == std::string("--user") ? ", whose user is part of it: http://USER@HOST:PORT" : ""));
    }
  }
}

void CommandLine::prepareDryRun() {
  static const std::vector<std::string> CHANGES = {
      "pool create",   "pool modify",   "pool delete",  "volume create",      "volume cache",
      "volume modify", "volume delete", "volume flush", "volume reset-stats", "im"};
  const bool isChange = std::find(CHANGES.begin(), CHANGES.end(), m_tool.verb()) != CHANGES.end();
  if (isDryRunPrescribed() && !m_tool.session().isRemote()) {
    if (m_tool.verb() == "serve") {
      throw UsageError(std::string(DRY_RUN) + " is set, so no client's change would be kept; unset it");
    }
    m_tool.options.dryRun = m_tool.options.dryRun || isChange;
  }
  if (!m_tool.options.dryRun || m_tool.verb().empty()) {
    return;
  }
  if (!isChange) {
    throw UsageError("--dry-run is for verbs that change something: " + join(CHANGES, ", "));
  }
  if (m_tool.session().isRemote()) {
    throw UsageError("--dry-run tries a change on a copy, which a server cannot do; leave it or --url out");
  }
  ::setenv(DRY_RUN, "1", 1);  // before the provider brings the storage library
}

void CommandLine::addHelp() {
  const auto verbs = std::make_shared<std::vector<std::string>>();
  addVerb(
      m_app, m_tool, "help", "Describe the verbs, or one of them", "Example: tvpcim help pool create",
      [this, verbs] {
        std::vector<std::string> words = *verbs;
        words.emplace_back("--help");
        m_tool.print(CommandLine(m_tool).parse(words));
      })
      .add_option("VERB", *verbs, "The verb to describe, of one or two words");
}

std::string CommandLine::parse(const std::vector<std::string>& arguments) {
  // For the shells' completions, which pass any words: not a verb, as none of them must be read as options.
  if (!arguments.empty() && arguments.front() == "__complete") {
    m_tool.choose(
        "__complete", [this, words = std::vector<std::string>(arguments.begin() + 1, arguments.end())] {
          for (const std::string& name : completionsOf(m_tool, m_app, words)) {
            m_tool.print(name + "\n");
          }
        });
    return "";
  }
  checkVerbs(arguments);
  try {
    m_app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForHelp&) {
    return m_app.help();
  } catch (const CLI::CallForVersion& version) {
    return std::string(version.what()) + "\n";
  } catch (const CLI::ParseError& error) {
    std::string words;
    for (const CLI::App* verb = &m_app; !verb->get_subcommands().empty();) {
      verb = verb->get_subcommands().front();
      words += verb->get_name() + " ";
    }
    throw UsageError(
        (words.empty() ? "" : words.substr(0, words.size() - 1) + ": ") + printable(error.what()) +
        "; see 'tvpcim " + words + "--help'");
  }
  checkUrl();
  prepareDryRun();
  return "";
}

void runAndExit(int argumentCount, char** arguments) {
  Tool tool;
  CommandLine commandLine(tool);
  int status = perform(
      tool, commandLine,
      std::vector<std::string>(arguments + std::min(argumentCount, 1), arguments + argumentCount));
  if (reportBreaches(tool) && status == tool.exitStatus()) {
    status = FAILED;
  }
  // The provider's listener sleeps for seconds at a time; nobody waits for it when the answer is out.
  std::fflush(stdout);
  std::fflush(stderr);
  ::_exit(status);
}

}  // namespace tvp::host::tvpcim
