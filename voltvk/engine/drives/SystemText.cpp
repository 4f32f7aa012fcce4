// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/SystemText.h"

#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/PlainText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <new>

#include <dirent.h>
#include <fcntl.h>

namespace voltvk {

std::string hostRoot() {
  const char* root = secure_getenv("VOLTVK_HOST_ROOT");
  return root == nullptr ? "" : root;
}

std::string readSystemFile(const std::string& path) {
  FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  std::string content;
  std::array<char, 4096> buffer{};
  ssize_t count = 0;
  while (file && (count = read(file.get(), buffer.data(), buffer.size())) > 0) {
    content.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return content;
}

std::string readSystemText(const std::string& path) {
  return cleanText(readSystemFile(path));
}

std::vector<std::string> listDirectory(const std::string& path) {
  std::vector<std::string> names;
  std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir(path.c_str()), closedir);
  if (directory == nullptr && errno == ENOMEM) {
    throw std::bad_alloc();  // an empty list would mean that the drives are gone
  }
  while (directory != nullptr) {
    const dirent* entry = readdir(directory.get());
    if (entry == nullptr) {
      break;
    }
    std::string name = entry->d_name;
    if (name != "." && name != "..") {
      names.push_back(std::move(name));
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string pathOf(const std::string& directory, const std::string& name) {
  std::string path = directory;
  path += '/';
  path += name;
  return path;
}

std::string realPath(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
  if (real == nullptr && errno == ENOMEM) {
    throw std::bad_alloc();  // drives are told apart by their places
  }
  return real == nullptr ? "" : real.get();
}

std::string baseName(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

std::string kernelNameOf(const std::string& node) {
  std::string name = node.substr(std::string_view("/dev/").size());
  std::replace(name.begin(), name.end(), '/', '!');  // as sysfs writes a slash
  return name;
}

}  // namespace voltvk
