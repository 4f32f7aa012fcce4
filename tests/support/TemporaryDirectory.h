// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tvp::test {

/** A directory of its own for one test, removed with its content on destruction. */
class TemporaryDirectory {
public:
  /** @throws std::runtime_error when the directory cannot be made. */
  TemporaryDirectory() {
    const std::string letters(6, 'X');  // mkdtemp replaces them
    std::string pattern = (std::filesystem::temp_directory_path() / ("tvp-test-" + letters)).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("cannot create a directory like " + pattern);
    }
    m_path = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return m_path; }

  /** Absolute path of something in the directory, as text. */
  std::string file(const std::string& relative) const { return (m_path / relative).string(); }

  /** Writes a file and creates the directories above it. @return its absolute path. */
  std::string write(const std::string& relative, const std::string& content) const {
    const std::filesystem::path target = m_path / relative;
    std::filesystem::create_directories(target.parent_path());
    std::ofstream stream(target, std::ios::binary);
    stream << content;
    stream.close();
    if (!stream) {
      throw std::runtime_error("cannot write " + target.string());
    }
    return target.string();
  }

private:
  std::filesystem::path m_path;
};

}  // namespace tvp::test

#endif
