// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CommonFunctions.h"

#include "CIM/Framework/CIMObjectPath.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSystem.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sstream>

char log_smis_buff[128];

char* debug_smis_log(const char* text, const char* prefix) {
  std::memset(log_smis_buff, 0, sizeof log_smis_buff);
  std::snprintf(log_smis_buff, sizeof log_smis_buff, "%s %s", prefix, text);
  return log_smis_buff;
}

namespace tvp::cim::fwf {

namespace {

// By the C locale's table, not by std::tolower: the locale of the process is the object manager's choice.
char lower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

bool CommonFunctions::getRedundancy(
    unsigned int raidLevel, unsigned short& first, unsigned short& packageRedundancy) {
  struct Level {
    unsigned int raidLevel;
    unsigned short first;
    unsigned short packageRedundancy;
  };
  static constexpr std::array<Level, 4> LEVELS = {{{0, 0, 0}, {1, 1, 1}, {5, 0, 1}, {6, 0, 2}}};
  const auto* level = std::find_if(
      LEVELS.begin(), LEVELS.end(), [raidLevel](const Level& row) { return row.raidLevel == raidLevel; });
  if (level == LEVELS.end()) {
    return false;
  }
  first = level->first;
  packageRedundancy = level->packageRedundancy;
  return true;
}

int CommonFunctions::str2int(const std::string& text) {
  int number = 0;
  std::istringstream(text) >> number;
  return number;
}

std::string CommonFunctions::getStringAt(std::string text, unsigned int part) {
  const auto afterUnderscore = [](const std::string& whole) {
    const std::size_t underscore = whole.find('_');
    return underscore == std::string::npos ? whole : whole.substr(underscore + 1);
  };
  switch (part) {
  case 1:
    return text.substr(0, text.find('_'));
  case 2:
    return afterUnderscore(text);
  case 3:
    return afterUnderscore(afterUnderscore(text));
  default:
    return text;
  }
}

std::string CommonFunctions::getStringAtPosition(std::string text, unsigned int position, char delimiter) {
  std::istringstream fields(text);
  std::string field;
  for (unsigned int current = 0; current < position; ++current) {
    if (!std::getline(fields, field, delimiter)) {
      return {};
    }
  }
  return field;
}

std::string CommonFunctions::toLower(const std::string& text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), lower);
  return lowered;
}

bool CommonFunctions::equalsIgnoringCase(const std::string& left, const std::string& right) {
  return left.size() == right.size() &&
         std::equal(left.begin(), left.end(), right.begin(), [](char one, char other) {
           return lower(one) == lower(other);
         });
}

std::size_t CommonFunctions::trim(char* text) {
  constexpr char REMOVED[] = " \t\n";
  if (text == nullptr) {
    return 0;
  }
  const std::size_t leading = std::strspn(text, REMOVED);
  std::size_t length = std::strlen(text) - leading;
  while (length > 0 && std::strchr(REMOVED, text[leading + length - 1]) != nullptr) {
    --length;
  }
  std::memmove(text, text + leading, length);
  text[length] = '\0';
  return length;
}

bool CommonFunctions::ObjectIsNull(const CIMObjectPath& path) {
  return path.className().empty() && !path.keyBindings().empty();
}

int CommonFunctions::getUTCStringTimeFromUint64Time(std::string& out, unsigned long seconds) {
  std::tm local{};
  char text[128] = "";
  if (KvsGetTimeInTM(std::uint64_t{seconds} * 1000, &local) != 0 ||
      std::strftime(text, sizeof text, "%Y%m%d%H%M%S.000000", &local) == 0) {
    return 1;
  }
  char timeZone[KVS_TIME_ZONE_SIZE] = "";
  KvsGetTimeZone(timeZone);
  out += text;
  out += timeZone;
  KvsLogMsg(KVS_LOG_DEBUG, "Time = %s", out.c_str());
  return 0;
}

std::string CommonFunctions::stripExtraSemicolons(std::string text) {
  return text.size() < 2 ? std::string() : text.substr(1, text.size() - 2);
}

bool CommonFunctions::convertToStringVector(const char* const* list, std::vector<std::string>& out) {
  for (; list != nullptr && *list != nullptr; ++list) {
    out.emplace_back(*list);
  }
  return true;
}

std::optional<std::string> CommonFunctions::getControllerId(std::string text) {
  const std::size_t underscore = text.find('_');
  if (underscore == std::string::npos || underscore + 1 == text.size()) {
    return std::nullopt;
  }
  return text.substr(underscore + 1, text.find('_', underscore + 1) - underscore - 1);
}

}  // namespace tvp::cim::fwf
