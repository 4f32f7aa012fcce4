// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_COMMONFUNCTIONS_H
#define CIM_FRAMEWORK_COMMONFUNCTIONS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/** The text written by the last debug_smis_log. */
extern char log_smis_buff[128];

/**
 * Writes prefix, a blank and text into log_smis_buff, truncated to 127 characters. Not safe for concurrent
 * callers: they share the buffer.
 * @return log_smis_buff
 */
char* debug_smis_log(const char* text, const char* prefix);

namespace tvp::cim::fwf {

class CIMObjectPath;

/** Small helpers for texts and times. They keep no state and may be called from any thread. */
class CommonFunctions {
public:
  /**
   * Looks up which failures a RAID level survives.
   * @param first 1 for level 1, else 0
   * @param packageRedundancy number of member failures that the level survives
   * @return whether the level is known (0, 1, 5 or 6); otherwise both outputs are unchanged.
   */
  static bool getRedundancy(unsigned int raidLevel, unsigned short& first, unsigned short& packageRedundancy);

  /** @return the decimal number at the start of the text; 0 if it does not start with one. */
  static int str2int(const std::string& text);

  /**
   * Splits a text at its first two underscores.
   * @param part 1 the text before the first, 2 after the first, 3 after the second; any other value the whole
   *   text.
   * @return the part; if an underscore is missing, the rest that was reached.
   */
  static std::string getStringAt(std::string text, unsigned int part);

  /**
   * @return the field at the position, counted from 1, of the text split at the delimiter; empty if there are
   *   fewer.
   */
  static std::string getStringAtPosition(std::string text, unsigned int position, char delimiter);

  /** @return the text with every byte converted to lower case by the rules of the C locale. */
  static std::string toLower(const std::string& text);

  /** @return whether toLower gives the same for both. */
  static bool equalsIgnoringCase(const std::string& left, const std::string& right);

  /**
   * Removes blanks, tabs and line feeds at both ends, in place. COMPAT: carriage returns stay, as callers
   * expect.
   * @return the new length
   */
  static std::size_t trim(char* text);

  /** @return true only for a path with keys but without a class name. */
  static bool ObjectIsNull(const CIMObjectPath& path);

  /**
   * Appends a time as yyyymmddhhmmss.000000 in local time with the platform's time-zone text.
   * @param seconds since the epoch
   * @return 0; 1 if the time cannot be represented, with out unchanged.
   */
  static int getUTCStringTimeFromUint64Time(std::string& out, unsigned long seconds);

  /** @return the text without its first and last character, whatever they are. */
  static std::string stripExtraSemicolons(std::string text);

  /** Appends every text of a null-terminated list, which may be null. @return true */
  static bool convertToStringVector(const char* const* list, std::vector<std::string>& out);

  /** @return the text between the first and the second underscore; empty if nothing follows the first. */
  static std::optional<std::string> getControllerId(std::string text);
};

}  // namespace tvp::cim::fwf

#endif
