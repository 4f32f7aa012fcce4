// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CommonFunctions.h"

#include "CIM/Framework/CIMObjectPath.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSystem.h"
#include "text/Case.h"
#include "text/Trim.h"

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
  return text::lowerCase(text);
}

bool CommonFunctions::equalsIgnoringCase(const std::string& left, const std::string& right) {
  return text::equalsIgnoringCase(left, right);
}

std::size_t CommonFunctions::trim(char* text) {
  if (text == nullptr) {
    return 0;
  }
  const std::string_view kept = text::trimmed(text, " \t\n");
  std::memmove(text, kept.data(), kept.size());
  text[kept.size()] = '\0';
  return kept.size();
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
