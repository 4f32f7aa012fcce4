// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_LOGCAPTURE_H
#define TESTS_SUPPORT_LOGCAPTURE_H

#include "oslib/KVSLog.h"
#include "oslib/KVSPaths.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <vector>

namespace tvp::test {

/**
 * Points the product's files at a temporary root, switches the log on there for the module "TVP", and
 * returns the lines that have been written since. Everything is undone on destruction.
 *
 * Lines begin with their tag, without time stamp and thread: compare them with what trace() and message()
 * return.
 */
class LogCapture {
public:
  LogCapture() {
    KvsLogUninit();
    m_root.write("var/log/TVP.txt", "");
    kvsSetPathRoot(m_root.path().string());
    KvsLogInit("TVP");
    clear();
  }
  ~LogCapture() {
    KvsLogUninit();
    kvsSetPathRoot("");
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  /** The directory that stands for "/": tests may put other files of the product into it. */
  const TemporaryDirectory& root() const { return m_root; }

  /** Forgets what was written so far. */
  void clear() const { m_root.write("var/log/TVP.txt", ""); }

  /** All lines, oldest first. */
  std::vector<std::string> lines() const {
    std::vector<std::string> result;
    std::ifstream stream(m_root.file("var/log/TVP.txt"));
    for (std::string line; std::getline(stream, line);) {
      const std::size_t header = line.find(']');
      const std::size_t tag = line.find(':', header == std::string::npos ? 0 : header);
      result.push_back(tag == std::string::npos ? line : line.substr(tag));
    }
    return result;
  }

  /** How often a line was written. */
  std::size_t count(const std::string& line) const {
    const std::vector<std::string> all = lines();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), line));
  }
  bool has(const std::string& line) const { return count(line) != 0; }

  /** The line that KvsTrace(text) writes. */
  static std::string trace(const std::string& text) { return ":LOG_INFO :: " + text; }

  /** The line that KvsLogMsg writes for a level from 1 to 5 and a formatted text. */
  static std::string message(unsigned int level, const std::string& text) {
    static const std::array<const char*, 6> tags = {"INFO", "FATAL", "ERROR", "WARN", "DEBUG", "INFO"};
    return std::string(":LOG_") + tags.at(level) + "::" + text;
  }

private:
  TemporaryDirectory m_root;
};

}  // namespace tvp::test

#endif
