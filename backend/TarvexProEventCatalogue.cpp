// SPDX-License-Identifier: Apache-2.0
#include "backend/LibraryAccess.h"
#include "backend/TarvexProEventManager.h"
#include "backend/TvkUtil.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSPaths.h"
#include "voltvk/Specs.h"
#include "voltvk/VirtualPool.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <new>
#include <optional>

#include <sys/stat.h>

namespace tvp::cim::fwf {

namespace {

constexpr char CATALOGUE_NAME[] = "TVPEvents.properties";
constexpr int DECIMAL = 10;

/**
 * Maximum number of substitutions in one text: far more than a description can show, and a limit for
 * arguments that refer to each other.
 */
constexpr int MOST_SUBSTITUTIONS = 1000;

long toNumber(const std::string& text) {
  return std::strtol(text.c_str(), nullptr, DECIMAL);
}

std::string tierLevelShown(const std::string& level) {
  switch (toNumber(level)) {
  case TVK_TIER_HDD:
    return "0";
  case TVK_TIER_SSD:
    return "1";
  default:
    return level;
  }
}

std::string sizeShown(const std::string& sectors) {
  constexpr double SECTOR = 512.0;
  constexpr double UNIT = 1024.0;
  const double bytes = static_cast<double>(std::strtoull(sectors.c_str(), nullptr, DECIMAL)) * SECTOR;
  char text[64];
  std::snprintf(text, sizeof text, "%.2f GB", bytes / UNIT / UNIT / UNIT);
  return text;
}

std::string volumeTypeShown(const std::string& type) {
  return TvkUtil::getVolumeTypeByFeatureBit(static_cast<unsigned int>(toNumber(type)));
}

std::string modeShown(const std::string& mode) {
  return TvkUtil::getFetchFlushModeStr(static_cast<unsigned int>(toNumber(mode)));
}

/** How one argument of an event is rewritten. */
struct ArgumentRule {
  std::size_t index = 0;
  const char* label = nullptr;                                    ///< used in the log line
  std::string (*rewrite)(const std::string& argument) = nullptr;  ///< null: a pool type, which is kept
  int level = KVS_LOG_DEBUG;
};

/** How the arguments of an event are rewritten. */
struct EventRule {
  std::uint32_t firstCode;
  std::uint32_t lastCode;
  const char* name;
  std::size_t expected;
  std::array<ArgumentRule, 3> arguments;  ///< entries without a label are unused
};

constexpr ArgumentRule TIER_LEVEL = {1, "Tier Level", tierLevelShown};
constexpr ArgumentRule VOLUME_TYPE = {1, "Volume Type", volumeTypeShown};
constexpr ArgumentRule SIZE = {2, "Size in GB", sizeShown};
constexpr ArgumentRule PREVIOUS_MODE = {1, "Previous FFMode", modeShown};
constexpr ArgumentRule CURRENT_MODE = {2, "Current FFMode", modeShown};
constexpr ArgumentRule POOL_TYPE = {1, "Pool Type"};
// One beyond the expected count, since only events of internal pools have it. COMPAT: logged as an error.
constexpr ArgumentRule POOL_TYPE_OF_CREATION = {3, "Pool Type", nullptr, KVS_LOG_ERROR};

constexpr EventRule RULES[] = {
    {513, 514, "SVS_EVENT_POOL_DEV_CREATED", 3, {TIER_LEVEL, SIZE, POOL_TYPE_OF_CREATION}},
    {515, 516, "SVS_EVENT_POOL_DEV_CREATION_FAILED", 2, {POOL_TYPE}},
    {517, 518, "SVS_EVENT_POOL_DEV_DELETED", 2, {POOL_TYPE}},
    {522, 522, "SVS_EVENT_POOL_MOD_LEVEL_CHANGED", 2, {TIER_LEVEL}},
    {1025, 1026, "SVS_EVENT_VV_DEV_CREATED", 3, {VOLUME_TYPE, SIZE}},
    {1034, 1034, "SVS_EVENT_VV_MOD_PROP_KNOB_CHANGED", 3, {PREVIOUS_MODE, CURRENT_MODE}},
};

void rewriteArguments(const EventRule& rule, std::vector<std::string>& args, bool& skip) {
  if (args.size() != rule.expected) {
    KvsLogMsg(
        KVS_LOG_ERROR,
        "TvproEventManager::rephraseEventDescription: %s \t\t\t\t\t\t\t\t    Not enough event arguments "
        "from the driver ",
        rule.name);
  }
  if (args.size() < rule.expected) {
    args.resize(rule.expected);  // the missing ones are empty, and rewritten as such
  }
  for (const ArgumentRule& part : rule.arguments) {
    if (part.label == nullptr || part.index >= args.size()) {
      continue;
    }
    std::string& argument = args[part.index];
    if (part.rewrite != nullptr) {
      argument = part.rewrite(argument);
    } else {
      skip = skip || toNumber(argument) == TVK_POOL_INTERNAL;
    }
    KvsLogMsg(
        part.level, "TvproEventManager::rephraseEventDescription: %s : %s = %s ", rule.name, part.label,
        argument.c_str());
  }
}

/** The texts between brackets, in order. */
std::vector<std::string> bracketedArguments(const std::string& description) {
  std::vector<std::string> args;
  std::size_t position = 0;
  while ((position = description.find('[', position)) != std::string::npos) {
    const std::size_t end = description.find(']', position);
    if (end == std::string::npos) {
      break;
    }
    args.push_back(description.substr(position + 1, end - position - 1));
    position = end + 1;
  }
  return args;
}

std::string catalogueKey(std::uint32_t code) {
  char key[sizeof code * 2 + 1];
  std::snprintf(key, sizeof key, "%X", code);
  return key;
}

/**
 * What follows the "=" in the first line for the key; nothing if no line has the key, or that line has no
 * "=".
 */
std::optional<std::string> findEntry(const std::string& path, const std::string& key) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;  // reading a pipe would block the listener, and with it the provider's shutdown
  }
  std::ifstream catalogue(path, std::ios::binary);
  std::string line;
  while (std::getline(catalogue, line)) {
    const bool hasKey = line.compare(0, key.size(), key) == 0 && line.size() > key.size();
    if (!hasKey || std::string(" \t=").find(line[key.size()]) == std::string::npos) {
      continue;
    }
    // Files edited elsewhere may end their lines with CR LF; trim() removes only blanks and tabs.
    if (line.back() == '\r') {
      line.pop_back();
    }
    const std::size_t equals = line.find('=', key.size());
    if (equals == std::string::npos) {
      return std::nullopt;
    }
    return line.substr(equals + 1);
  }
  return std::nullopt;
}

}  // namespace

std::string getEvtdescPath() {
  KvsLogMsg(KVS_LOG_INFORMATION, "evtDescPath = %s", KVS_EVENT_CATALOGUE_DIRECTORY);
  return kvsEventCatalogueDirectory();
}

bool TvproEventManager::getEventdescription(VolEvent* event, bool& skip) {
  KvsTrace("Entering TvproEventManager::getEventdescription()");
  const std::string key = catalogueKey(event->code);
  const std::string path = getEvtdescPath() + CATALOGUE_NAME;
  std::vector<std::string> args = bracketedArguments(event->description);
  std::optional<std::string> text = findEntry(path, key);
  if (text) {
    *text = trim(*text);
    parse(*text, args, event->code, skip);
    tvkSetText(
        event->description, TVK_EVENT_DESCRIPTION_SIZE,
        cutToSize(std::move(*text), TVK_EVENT_DESCRIPTION_SIZE - 1).c_str());
  }
  KvsTrace("Exiting TvproEventManager::getEventdescription()");
  return text.has_value();
}

void TvproEventManager::parse(
    std::string& text, std::vector<std::string>& args, unsigned int code, bool& skip) {
  KvsTrace("Entering TvproEventManager::parse()");
  rephraseEventDescription(args, code, skip);
  if (skip) {
    return;
  }
  constexpr std::size_t PLACEHOLDER_SIZE = 3;
  std::size_t brace = text.find('{');
  for (int count = 0; brace != std::string::npos && count < MOST_SUBSTITUTIONS; ++count) {
    const long number = std::strtol(text.c_str() + brace + 1, nullptr, DECIMAL);
    // COMPAT: always three characters, even if the number is longer; catalogues use one digit.
    text.erase(brace, PLACEHOLDER_SIZE);
    if (number >= 0 && static_cast<unsigned long>(number) < args.size()) {
      text.insert(brace, args[static_cast<std::size_t>(number)]);
      brace = text.find('{', brace);
    } else {
      brace = text.find('{', brace + 1);
    }
  }
  KvsTrace("Exiting TvproEventManager::parse()");
}

void TvproEventManager::rephraseEventDescription(
    std::vector<std::string>& args, unsigned int code, bool& skip) {
  skip = false;
  try {
    const auto* rule = std::find_if(std::begin(RULES), std::end(RULES), [code](const EventRule& candidate) {
      return candidate.firstCode <= code && code <= candidate.lastCode;
    });
    if (rule != std::end(RULES)) {
      rewriteArguments(*rule, args, skip);
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    KvsLogMsg(
        KVS_LOG_ERROR,
        "TvproEventManager::rephraseEventDescription: Caught exception while rephrasing Event desc message");
  }
}

std::string TvproEventManager::trim(std::string text) {
  std::size_t begin = 0;
  std::size_t end = text.size();
  const auto dropFromEnd = [&](char character) {
    while (end > begin && text[end - 1] == character) {
      --end;
    }
  };
  const auto dropFromBegin = [&](char character) {
    while (begin < end && text[begin] == character) {
      ++begin;
    }
  };
  do {
    dropFromEnd(' ');
    dropFromBegin(' ');
    dropFromEnd('\t');
    dropFromBegin('\t');
  } while (begin < end && (text[begin] == ' ' || text[begin] == '\t'));
  return text.substr(begin, end - begin);
}

}  // namespace tvp::cim::fwf
