// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_TEMPORARYFOLDER_H
#define TESTS_SUPPORT_TEMPORARYFOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tvp::test {

/** A folder of its own for one test, removed with all that is in it when the object goes. */
class TemporaryFolder {
public:
  /** @throws std::runtime_error when the folder cannot be made. */
  TemporaryFolder() {
    const std::string letters(6, 'X');  // mkdtemp asks for them, and puts others in their place
    std::string pattern = (std::filesystem::temp_directory_path() / ("tvp-test-" + letters)).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("cannot make a folder like " + pattern);
    }
    m_path = pattern;
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return m_path; }

  /** Absolute path of something in the folder, as text. */
  std::string file(const std::string& relative) const { return (m_path / relative).string(); }

  /** Writes a file, and the folders above it. @return its absolute path. */
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
