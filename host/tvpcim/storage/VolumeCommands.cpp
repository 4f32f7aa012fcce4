// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/VolumeCommands.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/Size.h"
#include "text/Utf8.h"

#include <algorithm>
#include <array>

namespace tvp::host::tvpcim {
namespace {

const std::array<std::string, 3> KNOBS = {"aggressive", "normal", "passive"};

/** The code of a knob setting, which counts from 1; 0 for an empty text. */
std::uint32_t knobOf(const std::string& word) {
  const auto found = std::find(KNOBS.begin(), KNOBS.end(), word);
  return found == KNOBS.end() ? 0 : static_cast<std::uint32_t>(found - KNOBS.begin()) + 1;
}

/** What the cached kind keeps of a longer name: at most 31 bytes, and no part of a character. */
std::string keptOf(const std::string& name) {
  return std::string(text::cutToSize(name, LONGEST_NAME));
}

}  // namespace

void VolumeCommands::addTo(CLI::App& app) {
  addVerb(app, "volumes", "List the volumes", "", [this] { list(); });
  CLI::App& family =
      addFamily(app, "volume", "Create, modify, delete, flush or measure a volume or list its members");
  addCreation(family);
  addCaching(family);
  addModification(family);
  addVolumeVerb(
      family, "delete", "Delete a volume; one made with 'volume cache' frees its drive too",
      &VolumeCommands::remove);
  addVolumeVerb(family, "flush", "Write the cache of a cached volume back", &VolumeCommands::flush);
  addVolumeVerb(family, "stats", "Show the statistics of a volume", &VolumeCommands::statistics);
  addVolumeVerb(
      family, "reset-stats", "Set the statistics of a volume to 0", &VolumeCommands::resetStatistics);
  addVolumeVerb(family, "members", "List the extents of a volume on its pools", &VolumeCommands::members);
}

void VolumeCommands::addVolumeVerb(
    CLI::App& family, const char* name, const char* summary, void (VolumeCommands::*action)()) {
  addVerb(family, name, summary, "", [this, action] { (this->*action)(); })
      .add_option("VOLUME", m_volume, "Name or identifier of the volume")
      ->required();
}

void VolumeCommands::addTexts(CLI::App& verb) {
  verb.add_option("--description", m_description, "Description, up to 63 bytes")->type_name("WORDS");
  verb.add_option("--knob", m_knob, "How eagerly chunks move: aggressive, normal or passive")
      ->check(CLI::IsMember(std::vector<std::string>(KNOBS.begin(), KNOBS.end())));
}

void VolumeCommands::addCreation(CLI::App& family) {
  CLI::App& verb = addVerb(
      family, "create", "Create a volume on one or two pools",
      "Example: tvpcim volume create data --pool slow:100GiB --pool fast:10GiB", [this] { create(); });
  verb.add_option("NAME", m_name, "Name of the volume, 1 to 31 bytes")->required();
  verb.add_option("--pool", m_pools, "A pool and what to take from it; once or twice")
      ->type_name("NAME_OR_ID:SIZE")
      ->required()
      ->allow_extra_args(false);
  verb.add_option("--type", m_type, "tiered (the capacities add up) or cached (the SSD pool is the cache)")
      ->capture_default_str()
      ->check(CLI::IsMember({"tiered", "cached"}));
  addTexts(verb);
}

void VolumeCommands::addCaching(CLI::App& family) {
  CLI::App& verb = addVerb(
      family, "cache", "Create a cached volume on one hard disk, with an SSD pool as its cache",
      "Example: tvpcim volume cache data --drive 3 --size 100GiB --ssd-pool fast --ssd-size 10GiB",
      [this] { cache(); });
  verb.add_option("NAME", m_name, "Name of the volume, 1 to 31 bytes")->required();
  verb.add_option("--drive", m_drive, "Number or device name of the hard disk")
      ->type_name("DRIVE")
      ->required();
  verb.add_option("--size", m_size, "What to take from the hard disk")->type_name("SIZE")->required();
  verb.add_option("--ssd-pool", m_ssdPool, "Name or identifier of the SSD pool")
      ->type_name("POOL")
      ->required();
  verb.add_option("--ssd-size", m_ssdSize, "What to take from the SSD pool")->type_name("SIZE")->required();
  verb.add_option("--chunk", m_chunk, "Size of a chunk")->type_name("SIZE")->capture_default_str();
  addTexts(verb);
}

void VolumeCommands::addModification(CLI::App& family) {
  CLI::App& verb =
      addVerb(family, "modify", "Change the name, description or knob of a volume", "", [this] { modify(); });
  verb.add_option("VOLUME", m_volume, "Name or identifier of the volume")->required();
  verb.add_option("--name", m_name, "New name")->type_name("WORDS");
  addTexts(verb);
}

void VolumeCommands::list() {
  const SchemaClass& volumes = classOf(VOLUME);
  printAll(
      VOLUME,
      {plainColumn("ID", "VirtualVolumeId", true), plainColumn("NAME", "VolumeName"),
       codeColumn("TYPE", volumes, "VolumeType"), sizeColumn("CAPACITY", "CapacityInSectors"),
       plainColumn("POOLS", "VirtualPoolsCount", true), codeColumn("KNOB", volumes, "KnobSetting"),
       codeColumn("STATE", volumes, "State"), codeColumn("CACHE", volumes, "CacheMode"),
       plainColumn("DESCRIPTION", "Description"), onlyWide(plainColumn("DEVICE", "DeviceNumber", true)),
       onlyWide(plainColumn("MOVE CHUNKS", "MaxMoveChunks", true)),
       onlyWide(plainColumn("MOVE THRESHOLD", "MoveThreshold", true)),
       onlyWide(plainColumn("FEATURES", "Features"))});
}

PoolShare VolumeCommands::shareOf(const std::string& text) {
  const std::size_t colon = text.rfind(':');  // names may hold colons, sizes do not
  if (colon == std::string::npos || colon == 0) {
    throw UsageError(
        "--pool takes NAME_OR_ID:SIZE, such as gold:10GiB; '" + printable(text) + "' is not that");
  }
  const std::uint64_t size = parseSectors(text.substr(colon + 1));
  return {inventory().resolve(POOL, text.substr(0, colon)), size};
}

void VolumeCommands::printCreated(Instance answer) {
  const std::string name = keptOf(m_name);
  const Instance* volume = inventory().byName(VOLUME, name);
  confirm(volume != nullptr, "there is no volume " + printable(name));
  answer.properties.push_back({"VirtualVolumeId", *volume->property("VirtualVolumeId")});
  answer.properties.push_back({"VolumeName", Value::string(name)});
  tool().print(formatter().record(answer));
}

void VolumeCommands::create() {
  if (m_pools.size() > 2) {
    throw UsageError(
        "a volume stands on one or two pools; --pool is given " + std::to_string(m_pools.size()) + " times");
  }
  Value::List pools;
  Value::List sizes;
  for (const std::string& text : m_pools) {
    const PoolShare share = shareOf(text);
    pools.push_back(Value::uint32(share.pool));
    sizes.push_back(Value::uint64(share.size));
  }
  Arguments arguments;
  arguments.add("VolumeName", Value::string(m_name))
      .add("Description", Value::string(m_description))
      .add("VolumeType", Value::uint8(m_type == "cached" ? VOLUME_CACHED : VOLUME_TIERED))
      .add("VirtualPoolsCount", Value::uint8(static_cast<std::uint8_t>(pools.size())))
      .add("ListOfVirtualPoolIds", Value::array(CMPI_uint32, pools))
      .add("UsedSizeInSectors", Value::array(CMPI_uint64, sizes))
      .add("KnobSetting", Value::uint32(knobOf(m_knob.empty() ? "normal" : m_knob)));
  printCreated(call("CreateVirtualVolume", arguments));
}

void VolumeCommands::cache() {
  const std::uint64_t size = parseSectors(m_size);
  const std::uint64_t chunk = parseSectors(m_chunk);
  const std::uint64_t ssdSize = parseSectors(m_ssdSize);
  const std::uint32_t drive = inventory().resolve(DRIVE, m_drive);
  if (drive > 255) {
    throw UsageError("drives have numbers from 0 to 255; '" + printable(m_drive) + "' is none");
  }
  Arguments arguments;
  arguments.add("VolumeName", Value::string(m_name))
      .add("Description", Value::string(m_description))
      .add("VolumeType", Value::uint8(VOLUME_CACHED))
      .add("SSDPoolId", Value::uint32(inventory().resolve(POOL, m_ssdPool)))
      .add("reqCapacityFromSSDPool", Value::uint64(ssdSize))
      .add("LDDeviceNumber", Value::array(CMPI_uint8, {Value::uint8(static_cast<std::uint8_t>(drive))}))
      .add("LDCapacityInSectors", Value::uint64(size))
      .add("ChunkSize", Value::uint64(chunk))
      .add("KnobSetting", Value::uint32(knobOf(m_knob.empty() ? "normal" : m_knob)));
  printCreated(call("CreateDataCacheVolume", arguments));
}

void VolumeCommands::modify() {
  if (m_name.empty() && m_knob.empty() && m_description.empty()) {
    throw UsageError("say what to change: --name, --description or --knob; an empty text changes nothing");
  }
  // The library leaves as it is what is empty or 0.
  const std::uint32_t knob = knobOf(m_knob);
  const std::uint32_t number = inventory().resolve(VOLUME, m_volume);
  Arguments arguments;
  arguments.add("VirtualVolumeId", Value::uint32(number))
      .add("VolumeName", Value::string(m_name))
      .add("Description", Value::string(m_description))
      .add("KnobSetting", Value::uint32(knob));
  Instance answer = call("ModifyVirtualVolume", arguments);
  const Instance* volume = inventory().byNumber(VOLUME, number);
  confirm(
      volume != nullptr && (m_name.empty() || textOf(*volume, "VolumeName") == m_name) &&
          (m_description.empty() || textOf(*volume, "Description") == m_description) &&
          (knob == 0 || numberOf(*volume, "KnobSetting") == knob),
      "the volume is as it was");
  answer.properties.push_back({"VirtualVolumeId", Value::uint32(number)});
  tool().print(formatter().record(answer));
}

Instance VolumeCommands::callOnVolume(const std::string& method) {
  const std::uint32_t number = inventory().resolve(VOLUME, m_volume);
  Arguments arguments;
  arguments.add("VirtualVolumeId", Value::uint32(number));
  Instance answer = call(method, arguments);
  answer.properties.push_back({"VirtualVolumeId", Value::uint32(number)});
  return answer;
}

void VolumeCommands::remove() {
  const Instance answer = callOnVolume("DeleteVirtualVolume");
  const std::uint64_t number = numberOf(answer, "VirtualVolumeId");
  confirm(
      inventory().byNumber(VOLUME, number) == nullptr,
      "volume " + std::to_string(number) + " is still there");
  tool().print(formatter().record(answer));
}

void VolumeCommands::flush() {
  tool().print(formatter().record(callOnVolume("FlushVirtualVolume")));
}

void VolumeCommands::statistics() {
  tool().print(formatter().record(callOnVolume("GetVirtualVolumeStats")));
}

void VolumeCommands::resetStatistics() {
  tool().print(formatter().record(callOnVolume("ResetVirtualVolumeStats")));
}

void VolumeCommands::members() {
  printMembers(
      VOLUME, m_volume,
      {plainColumn("POOL", "VirtualPoolId", true), plainColumn("NAME", "VolumeName"),
       plainColumn("MAX CHUNKS", "MaxAllowedChunks", true)});
}

}  // namespace tvp::host::tvpcim
