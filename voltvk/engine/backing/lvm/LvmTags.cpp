// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmTags.h"

#include "text/Utf8.h"
#include "voltvk/Limits.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/state/PlainText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <sstream>
#include <string_view>

namespace voltvk {

namespace {

constexpr std::string_view PREFIX = "tvp.";
constexpr std::string_view DIGITS = "0123456789abcdef";

std::string tag(std::string_view name, std::uint64_t value) {
  return std::string(PREFIX) + std::string(name) + "=" + std::to_string(value);
}

std::string textTag(std::string_view name, const std::string& text) {
  std::string made = std::string(PREFIX) + std::string(name) + "=";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    made += DIGITS[byte >> 4U];
    made += DIGITS[byte & 15U];
  }
  return made;
}

/** Reads tags; the first value that is missing or wrong makes all of them worthless. */
class TagReader {
public:
  explicit TagReader(const LvmTags& tags) : m_tags(tags) {}

  bool isGood() const { return m_isGood; }

  template <typename Number>
  void number(std::string_view name, Number& into, std::uint64_t least, std::uint64_t most) {
    std::uint64_t value = 0;
    const std::string_view text = find(name);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    m_isGood = m_isGood && error == std::errc() && end == text.data() + text.size() && value >= least &&
               value <= most && value <= static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
    into = m_isGood ? static_cast<Number>(value) : Number{};
  }

  /** @param isValid what the text has to fulfil */
  void text(std::string_view name, std::string& into, bool (*isValid)(const std::string&)) {
    const std::string_view digits = find(name);
    into.clear();
    m_isGood = m_isGood && digits.size() % 2 == 0;
    for (std::size_t i = 0; m_isGood && i < digits.size(); i += 2) {
      const std::size_t high = DIGITS.find(digits[i]);
      const std::size_t low = DIGITS.find(digits[i + 1]);
      m_isGood = high != std::string_view::npos && low != std::string_view::npos;
      into += static_cast<char>(high * 16 + low);
    }
    m_isGood = m_isGood && isValid(into);
  }

private:
  std::string_view find(std::string_view name) {
    const std::string start = std::string(PREFIX) + std::string(name) + "=";
    const auto found = std::find_if(m_tags.begin(), m_tags.end(), [&](const std::string& candidate) {
      return candidate.compare(0, start.size(), start) == 0;
    });
    m_isGood = m_isGood && found != m_tags.end();
    return m_isGood ? std::string_view(*found).substr(start.size()) : std::string_view();
  }

  const LvmTags& m_tags;
  bool m_isGood = true;
};

constexpr std::uint64_t MAX_ID = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t MAX_CHUNKS = std::uint64_t{1} << 52U;
constexpr std::uint64_t MAX_VOLUME_PART = std::uint64_t{1} << 32U;
constexpr std::uint64_t MAX_MEMBERS = 256;

bool isPowerOfTwo(std::uint64_t number) {
  return number != 0 && (number & (number - 1)) == 0;
}

template <typename Record>
void addCommonTags(LvmTags& tags, const Record& record) {
  tags.push_back(textTag("name", record.name));
  tags.push_back(textTag("description", record.description));
  tags.push_back(tag("chunk", record.chunkSectors));
}

bool isName(const std::string& text) {
  return !text.empty() && isPlainText(text, TVK_LONGEST_NAME);
}

/** Unlike a name, it may have several lines. */
bool isDescription(const std::string& text) {
  return text.size() <= TVK_LONGEST_DESCRIPTION && tvp::text::isUtf8(text);
}

template <typename Record>
void readCommonTags(TagReader& reader, Record& record) {
  reader.text("name", record.name, isName);
  reader.text("description", record.description, isDescription);
  reader.number("chunk", record.chunkSectors, 8, 65536);
}

std::uint32_t idIn(const LvmTags& tags, std::string_view name) {
  TagReader reader(tags);
  std::uint32_t id = 0;
  reader.number(name, id, 1, MAX_ID);
  return id;
}

bool isOurs(const std::string& tag) {
  return tag.compare(0, PREFIX.size(), PREFIX) == 0;
}

}  // namespace

LvmTags tagsOf(const PoolRecord& pool, std::size_t position) {
  LvmTags tags = {tag("pool", pool.id)};
  addCommonTags(tags, pool);
  tags.push_back(tag("chunks", pool.chunks));
  tags.push_back(tag("tier", pool.tierLevel));
  tags.push_back(tag("internal", pool.internal ? 1 : 0));
  tags.push_back(tag("members", pool.members.size()));
  tags.push_back(tag("member", position));
  tags.push_back(tag("member-chunks", pool.members.at(position).chunks));
  return tags;
}

std::optional<PoolTag> poolTagIn(const LvmTags& tags) {
  TagReader reader(tags);
  PoolTag found;
  reader.number("pool", found.pool.id, 1, MAX_ID);
  readCommonTags(reader, found.pool);
  reader.number("chunks", found.pool.chunks, 1, MAX_CHUNKS);
  reader.number("tier", found.pool.tierLevel, TVK_TIER_HDD, TVK_TIER_SSD);
  std::uint8_t internal = 0;
  reader.number("internal", internal, 0, 1);
  found.pool.internal = internal == 1;
  reader.number("members", found.members, 1, MAX_MEMBERS);
  reader.number("member", found.position, 0, found.members - (found.members > 0 ? 1 : 0));
  reader.number("member-chunks", found.chunks, 0, MAX_CHUNKS);
  const bool isTier = found.pool.tierLevel == TVK_TIER_HDD || found.pool.tierLevel == TVK_TIER_SSD;
  return reader.isGood() && isTier && isPowerOfTwo(found.pool.chunkSectors) ? std::optional(found)
                                                                            : std::nullopt;
}

LvmTags tagsOf(const VolumeRecord& volume) {
  LvmTags tags = {tag("volume", volume.id)};
  addCommonTags(tags, volume);
  tags.push_back(tag("type", volume.type));
  tags.push_back(tag("hdd", volume.hddChunks));
  tags.push_back(tag("ssd", volume.ssdChunks));
  tags.push_back(tag("knob", volume.knob));
  tags.push_back(tag("device", volume.deviceNumber));
  return tags;
}

std::optional<VolumeRecord> volumeIn(const LvmTags& tags) {
  TagReader reader(tags);
  VolumeRecord volume;
  reader.number("volume", volume.id, 1, MAX_ID);
  readCommonTags(reader, volume);
  reader.number("type", volume.type, TVK_VOLUME_TIERED, TVK_VOLUME_CACHED);
  reader.number("hdd", volume.hddChunks, 0, MAX_VOLUME_PART);
  reader.number("ssd", volume.ssdChunks, 0, MAX_VOLUME_PART);
  reader.number("knob", volume.knob, TVK_KNOB_AGGRESSIVE, TVK_KNOB_PASSIVE);
  reader.number("device", volume.deviceNumber, 0, 65535);
  // How it grew is not recorded: chunks that are laid elsewhere are taken as moved.
  volume.layAsNew();
  return reader.isGood() && isPowerOfTwo(volume.chunkSectors) && volume.hddChunks + volume.ssdChunks > 0
             ? std::optional(volume)
             : std::nullopt;
}

std::uint32_t volumeIdIn(const LvmTags& tags) {
  return idIn(tags, "volume");
}

std::uint32_t poolIdIn(const LvmTags& tags) {
  return idIn(tags, "pool");
}

bool hasOurTags(const LvmTags& tags) {
  return std::any_of(tags.begin(), tags.end(), isOurs);
}

std::vector<std::string> tagChanges(const LvmTags& from, const LvmTags& to) {
  std::vector<std::string> arguments;
  for (const std::string& old : from) {
    if (isOurs(old) && std::find(to.begin(), to.end(), old) == to.end()) {
      arguments.insert(arguments.end(), {"--deltag", old});
    }
  }
  for (const std::string& wanted : to) {
    if (std::find(from.begin(), from.end(), wanted) == from.end()) {
      arguments.insert(arguments.end(), {"--addtag", wanted});
    }
  }
  return arguments;
}

LvmTags splitTags(const std::string& text) {
  LvmTags tags;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, ',');) {
    if (!part.empty()) {
      tags.push_back(part);
    }
  }
  return tags;
}

}  // namespace voltvk
