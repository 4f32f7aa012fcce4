// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/drives/ContentProbe.h"

#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/PlainText.h"
#include "voltvk/engine/state/Wording.h"

#include <blkid/blkid.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>

namespace voltvk {

namespace {

using Probe = std::unique_ptr<blkid_struct_probe, decltype(&blkid_free_probe)>;

std::string failure(int error) {
  if (error == ENOMEM) {
    throw std::bad_alloc();
  }
  return unreadable(error == 0 ? EIO : error);
}

/** A value that the last search has found; empty if it has none of that name. */
std::string valueOf(const Probe& probe, const char* name) {
  const char* text = nullptr;
  return blkid_probe_lookup_value(probe.get(), name, &text, nullptr) == 0 ? cleanText(text) : "";
}

std::string fileSystem(const std::string& type) {
  // The names that begin with a vowel when they are read aloud.
  constexpr std::array<std::string_view, 5> SPELLED = {"f2fs", "hfs", "hfsplus", "ntfs", "xfs"};
  const bool hasVowel = type.find_first_of("aeio") == 0 ||
                        std::find(SPELLED.begin(), SPELLED.end(), std::string_view(type)) != SPELLED.end();
  return (hasVowel ? "holds an " : "holds a ") + type + " file system";
}

/** What the last search has found. */
std::string finding(const Probe& probe) {
  static constexpr std::array<std::pair<std::string_view, const char*>, 8> KNOWN = {{
      {"LVM1_member", PHYSICAL_VOLUME},
      {"LVM2_member", PHYSICAL_VOLUME},
      {"linux_raid_member", "is a member of a software RAID"},
      {"zfs_member", "is a member of a ZFS pool"},
      {"BitLocker", "is encrypted (BitLocker)"},
      {"crypto_LUKS", "is encrypted (LUKS)"},
      {"swap", "holds swap space"},
      {"swsuspend", "holds swap space with a suspended system"},
  }};
  const std::string table = valueOf(probe, "PTTYPE");
  if (!table.empty()) {
    return "holds a partition table (" + table + ")";
  }
  const std::string type = valueOf(probe, "TYPE");
  const std::string usage = valueOf(probe, "USAGE");
  const auto* const known =
      std::find_if(KNOWN.begin(), KNOWN.end(), [&](const auto& entry) { return entry.first == type; });
  if (known != KNOWN.end()) {
    return known->second;
  }
  if (usage == "filesystem") {
    return fileSystem(type);
  }
  return (usage == "raid"     ? "is a member of a RAID ("
          : usage == "crypto" ? "is encrypted ("
                              : "holds data (") +
         (type.empty() ? "of an unknown kind" : type) + ")";
}

}  // namespace

std::string contentOf(int device) {
  const Probe probe(blkid_new_probe(), blkid_free_probe);
  if (probe == nullptr) {
    throw std::bad_alloc();
  }
  errno = 0;
  if (blkid_probe_set_device(probe.get(), device, 0, 0) != 0) {
    return failure(errno);
  }
  blkid_probe_enable_superblocks(probe.get(), 1);
  blkid_probe_set_superblocks_flags(
      probe.get(), BLKID_SUBLKS_TYPE | BLKID_SUBLKS_USAGE | BLKID_SUBLKS_BADCSUM);
  blkid_probe_enable_partitions(probe.get(), 1);
  blkid_probe_set_partitions_flags(probe.get(), BLKID_PARTS_FORCE_GPT);
  // One search after the other, since the search for a single answer gives none where there are several.
  std::vector<std::string> findings;
  int result = 0;
  while ((result = blkid_do_probe(probe.get())) == 0) {
    std::string text = finding(probe);
    if (std::find(findings.begin(), findings.end(), text) == findings.end()) {
      findings.push_back(std::move(text));
    }
  }
  if (result < 0 && findings.empty()) {
    return failure(errno);
  }
  return findings.empty() ? "" : enumerated(findings);
}

std::string contentOf(const std::string& path) {
  // A medium that is being changed is not waited for.
  const FileDescriptor device(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return device ? contentOf(device.get()) : failure(errno);
}

}  // namespace voltvk
