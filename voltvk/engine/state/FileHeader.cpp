// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/FileHeader.h"

#include <array>
#include <cstring>

#include <unistd.h>

namespace voltvk {

namespace {

constexpr std::size_t HEADER_SIZE = 100;
constexpr const char MAGIC[] = "SQLite format 3";  // 16 bytes with its NUL

std::uint32_t bigEndian(const unsigned char* bytes) {
  return std::uint32_t{bytes[0]} << 24U | std::uint32_t{bytes[1]} << 16U | std::uint32_t{bytes[2]} << 8U |
         std::uint32_t{bytes[3]};
}

}  // namespace

std::optional<FileHeader> FileHeader::read(int descriptor) {
  std::array<unsigned char, HEADER_SIZE> header{};
  const ssize_t count = pread(descriptor, header.data(), header.size(), 0);
  if (count != static_cast<ssize_t>(header.size()) || std::memcmp(header.data(), MAGIC, sizeof MAGIC) != 0) {
    return std::nullopt;
  }
  std::uint64_t pageSize = std::uint64_t{header[16]} << 8U | header[17];
  pageSize = pageSize == 1 ? 65536 : pageSize;
  return FileHeader{bigEndian(&header[68]), bigEndian(&header[60]), pageSize * bigEndian(&header[28])};
}

}  // namespace voltvk
