// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/ChangeNote.h"

#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Refusal.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <fcntl.h>

namespace voltvk {

namespace {

std::string textOf(const std::vector<Intent>& intents) {
  std::string text;
  for (const Intent& intent : intents) {
    text +=
        std::to_string(static_cast<unsigned int>(intent.step)) + " " + std::to_string(intent.object) + "\n";
  }
  return text;
}

/** Makes sure that a file is on the disk, as well as the entry of its directory. */
bool isStored(const FileDescriptor& file, const std::string& path) {
  const std::string directory = std::filesystem::path(path).parent_path();
  const FileDescriptor entries(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return ::fsync(file.get()) == 0 && entries && ::fsync(entries.get()) == 0;
}

}  // namespace

void ChangeNote::write(const std::vector<Intent>& intents) const {
  const std::string text = textOf(intents);
  const FileDescriptor file(::open(m_path.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
  const bool isWritten = file &&
                         ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         isStored(file, m_path);
  require(isWritten, TVK_INTERNAL, [&] {
    return "the file " + m_path + " cannot be written (" + std::strerror(errno) +
           "); make room on its file system, or see 'ls -l " + m_path + "'";
  });
}

bool ChangeNote::isOf(const std::vector<Intent>& intents) const {
  std::ifstream file(m_path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {}) == textOf(intents);
}

void ChangeNote::erase() const noexcept {
  const FileDescriptor file(::open(m_path.c_str(), O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY));
}

}  // namespace voltvk
