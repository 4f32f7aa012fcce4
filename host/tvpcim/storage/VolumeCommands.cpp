// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/StorageVerbs.h"
#include "text/Size.h"

#include <algorithm>
#include <memory>

namespace tvp::host::tvpcim {
namespace {

const std::vector<std::string> KNOBS = {"aggressive", "normal", "passive"};

struct VolumeOptions {
  std::string volume;  ///< of a volume that is there: its name or identifier
  std::string name;
  std::string description;
  std::string knob;
  std::vector<std::string> pools;
  std::string type = "tiered";
  std::string drive;
  std::string size;
  std::string ssdPool;
  std::string ssdSize;
  std::string chunk = "1MiB";
};

/** The code of a knob setting, which counts from 1; 0 for an empty text. */
std::uint32_t knobOf(const std::string& word) {
  const auto found = std::find(KNOBS.begin(), KNOBS.end(), word);
  return found == KNOBS.end() ? 0 : static_cast<std::uint32_t>(found - KNOBS.begin()) + 1;
}

/** The knob setting of a new volume. */
Value knobOfNew(const VolumeOptions& options) {
  return Value::uint32(knobOf(options.knob.empty() ? "normal" : options.knob));
}

std::vector<Column> columnsOfVolumes(Tool& tool) {
  const SchemaClass& volumes = tool.session().classNamed(Volume::KIND.className);
  return {
      plainColumn("ID", "VirtualVolumeId", true),
      staying(plainColumn("NAME", "VolumeName")),
      staying(codeColumn("TYPE", volumes, "VolumeType")),
      staying(sizeColumn("CAPACITY", "CapacityInSectors")),
      plainColumn("POOLS", "VirtualPoolsCount", true),
      codeColumn("KNOB", volumes, "KnobSetting"),
      staying(codeColumn("STATE", volumes, "State")),
      codeColumn("CACHE", volumes, "CacheMode"),
      plainColumn("DESCRIPTION", "Description"),
      onlyWide(plainColumn("DEVICE", "DeviceNumber", true)),
      onlyWide(plainColumn("MOVE CHUNKS", "MaxMoveChunks", true)),
      onlyWide(plainColumn("MOVE THRESHOLD", "MoveThreshold", true)),
      onlyWide(plainColumn("FEATURES", "Features"))};
}

void listVolumes(Tool& tool) {
  printAll(tool, Volume::KIND, columnsOfVolumes(tool));
}

/** Prints the answer of a creation with what the new volume is called. */
void printCreated(Tool& tool, ServiceAnswer answer, const VolumeOptions& options) {
  // A cached volume gets what fits of a longer name.
  const std::string name(keptName(options.name));
  const std::optional<Volume> volume = tool.inventory().named<Volume>(name);
  answer.record.properties.push_back({"VirtualVolumeId", Value::uint32(volume ? volume->number : 0)});
  answer.record.properties.push_back({"VolumeName", Value::string(name)});
  printChange(
      tool, answer, {Volume::KIND, volume ? volume->number : 0, "created", columnsOfVolumes(tool)},
      volume.has_value(), "there is no volume " + text::quoted(name));
}

std::uint64_t chunkOfPool(Tool& tool, std::uint32_t number) {
  const Instance* pool = tool.inventory().byNumber(Pool::KIND, number);
  return pool == nullptr ? 0 : numberOf(*pool, "ChunkSize");
}

/** What a volume takes from a pool. @param share a size, "max" or a percentage @param chunk of the volume */
std::uint64_t
sectorsFromPool(Tool& tool, std::uint32_t number, const std::string& share, std::uint64_t chunk) {
  const std::optional<Pool> pool = tool.inventory().find<Pool>(number);
  const std::uint64_t room = pool ? pool->capacity - std::min(pool->capacity, pool->used) : 0;
  return sectorsOfShare(share, room, chunk, titleOf(tool, Pool::KIND, number));
}

void createVolume(Tool& tool, const VolumeOptions& options) {
  if (options.pools.size() > 2) {
    throw UsageError(
        "a volume uses one or two pools; --pool is given " + std::to_string(options.pools.size()) + " times");
  }
  std::vector<std::string> shares;
  Value::List pools;
  Value::List sizes;
  std::uint64_t chunk = 0;  // the larger one is the volume's
  for (const std::string& share : options.pools) {
    const std::size_t colon = share.rfind(':');  // names may hold colons, sizes do not
    if (colon == std::string::npos || colon == 0) {
      throw UsageError("--pool takes NAME_OR_ID:SIZE, such as gold:10GiB, not " + text::quoted(share));
    }
    shares.push_back(share.substr(colon + 1));
    if (!isShare(shares.back())) {
      text::parseSectors(shares.back());  // what is wrong by itself is refused before anything is asked
    }
    const std::uint32_t pool = tool.inventory().resolve(Pool::KIND, share.substr(0, colon));
    chunk = std::max(chunk, chunkOfPool(tool, pool));
    pools.push_back(Value::uint32(pool));
  }
  for (std::size_t i = 0; i < shares.size(); ++i) {
    const auto pool = static_cast<std::uint32_t>(pools[i].asUnsigned());
    sizes.push_back(Value::uint64(sectorsFromPool(tool, pool, shares[i], chunk)));
  }
  Arguments arguments;
  arguments.add("VolumeName", Value::string(options.name))
      .add("Description", Value::string(options.description))
      .add("VolumeType", Value::uint8(options.type == "cached" ? Volume::CACHED : Volume::TIERED))
      .add("VirtualPoolsCount", Value::uint8(static_cast<std::uint8_t>(pools.size())))
      .add("ListOfVirtualPoolIds", Value::array(CMPI_uint32, pools))
      .add("UsedSizeInSectors", Value::array(CMPI_uint64, sizes))
      .add("KnobSetting", knobOfNew(options));
  printCreated(tool, callService(tool, "CreateVirtualVolume", arguments), options);
}

void cacheDrive(Tool& tool, const VolumeOptions& options) {
  const std::uint64_t chunk = text::parseSectors(options.chunk);
  for (const std::string* size : {&options.size, &options.ssdSize}) {
    if (!isShare(*size)) {
      text::parseSectors(*size);
    }
  }
  const std::uint8_t drive = driveNumber(tool, options.drive);
  const std::optional<Drive> hardDisk = tool.inventory().find<Drive>(drive);
  const std::uint64_t size = sectorsOfShare(
      options.size, hardDisk ? hardDisk->capacity : 0, chunk, titleOf(tool, Drive::KIND, drive));
  const std::uint32_t ssdPool = tool.inventory().resolve(Pool::KIND, options.ssdPool);
  const std::uint64_t ssdSize =
      sectorsFromPool(tool, ssdPool, options.ssdSize, std::max(chunk, chunkOfPool(tool, ssdPool)));
  Arguments arguments;
  arguments.add("VolumeName", Value::string(options.name))
      .add("Description", Value::string(options.description))
      .add("VolumeType", Value::uint8(Volume::CACHED))
      .add("SSDPoolId", Value::uint32(ssdPool))
      .add("reqCapacityFromSSDPool", Value::uint64(ssdSize))
      .add("LDDeviceNumber", Value::array(CMPI_uint8, {Value::uint8(drive)}))
      .add("LDCapacityInSectors", Value::uint64(size))
      .add("ChunkSize", Value::uint64(chunk))
      .add("KnobSetting", knobOfNew(options));
  printCreated(tool, callService(tool, "CreateDataCacheVolume", arguments), options);
}

void modifyVolume(Tool& tool, const VolumeOptions& options) {
  if (options.name.empty() && options.knob.empty() && options.description.empty()) {
    throw UsageError("say what to change: --name, --description or --knob; an empty text changes nothing");
  }
  const std::uint32_t number = tool.inventory().resolve(Volume::KIND, options.volume);
  const std::uint32_t knob = knobOf(options.knob);
  Arguments changes;  // the library leaves as it is what is empty or 0
  changes.add("VolumeName", Value::string(options.name))
      .add("Description", Value::string(options.description))
      .add("KnobSetting", Value::uint32(knob));
  const ServiceAnswer answer = callService(tool, "ModifyVirtualVolume", Volume::KIND, number, changes);
  const std::optional<Volume> volume = tool.inventory().find<Volume>(number);
  printChange(
      tool, answer, {Volume::KIND, number, "changed", columnsOfVolumes(tool)},
      volume && (options.name.empty() || volume->name == options.name) &&
          (options.description.empty() || volume->description == options.description) &&
          (knob == 0 || volume->knob == knob),
      "the volume is unchanged");
}

/** "Delete volume 1 (data), 108 MiB, and all data in it? That frees its part of pool 1 (slow)." */
std::string deletionOf(Tool& tool, std::uint32_t number) {
  const std::optional<Volume> volume = tool.inventory().find<Volume>(number);
  std::vector<std::string> freed;
  const auto add = [&freed](const std::string& title) {
    if (std::find(freed.begin(), freed.end(), title) == freed.end()) {  // a volume may have several extents
      freed.push_back(title);
    }
  };
  for (const PoolUse& use : tool.inventory().membersOf<PoolUse>(Volume::KIND, number)) {
    if (tool.inventory().exists(Pool::KIND, use.pool)) {
      add("its part of " + titleOf(tool, Pool::KIND, use.pool));
      continue;
    }
    // Made for this volume, of the drive that it caches.
    for (const DriveExtent& extent : tool.inventory().membersOf<DriveExtent>(Pool::KIND, use.pool)) {
      add(titleOf(tool, Drive::KIND, extent.drive));
    }
  }
  return "Delete " + titleOf(tool, Volume::KIND, number) +
         (volume ? ", " + text::formatSectors(volume->capacity) + "," : "") + " and all data in it" +
         (freed.empty() ? "" : ", which frees " + join(freed, " and ")) + "?";
}

void listMembers(Tool& tool, const std::string& object) {
  printMembers(
      tool, Volume::KIND, object,
      {plainColumn("POOL", "VirtualPoolId", true), plainColumn("NAME", "VolumeName"),
       plainColumn("MAX CHUNKS", "MaxAllowedChunks", true)});
}

void addTexts(CLI::App& verb, VolumeOptions& options) {
  verb.add_option("--description", options.description, helpOnDescription())->type_name("WORDS");
  verb.add_option("--knob", options.knob, "How eagerly chunks move: aggressive, normal or passive")
      ->check(CLI::IsMember(KNOBS));
}

void addCreation(CLI::App& family, Tool& tool) {
  auto options = std::make_shared<VolumeOptions>();
  CLI::App& verb = addVerb(
      family, tool, "create", "Create a volume on one or two pools",
      std::string("Example: tvpcim volume create data --pool slow:100GiB --pool fast:max\n") + SHARE_HELP,
      [&tool, options] { createVolume(tool, *options); });
  verb.add_option("NAME", options->name, helpOnName("volume"))->required();
  verb.add_option("--pool", options->pools, "A pool and what to take from it; once or twice")
      ->type_name("NAME_OR_ID:SIZE")
      ->required()
      ->allow_extra_args(false);
  verb.add_option(
          "--type", options->type, "tiered (the capacities add up) or cached (the SSD pool is the cache)")
      ->capture_default_str()
      ->check(CLI::IsMember({"tiered", "cached"}));
  addTexts(verb, *options);
}

void addCaching(CLI::App& family, Tool& tool) {
  auto options = std::make_shared<VolumeOptions>();
  CLI::App& verb = addVerb(
      family, tool, "cache", "Create a cached volume on one hard disk, with an SSD pool as its cache",
      std::string("Example: tvpcim volume cache data --drive 3 --size max --ssd-pool fast --ssd-size 25%\n") +
          SHARE_HELP,
      [&tool, options] { cacheDrive(tool, *options); });
  verb.add_option("NAME", options->name, helpOnName("volume"))->required();
  const auto required = [&verb](const char* name, std::string& value, const char* type, const char* text) {
    verb.add_option(name, value, text)->type_name(type)->required();
  };
  required("--drive", options->drive, "DRIVE", "Number or device name of the hard disk");
  required("--size", options->size, "SIZE", "What to take from the hard disk");
  required("--ssd-pool", options->ssdPool, "POOL", "Name or identifier of the SSD pool");
  required("--ssd-size", options->ssdSize, "SIZE", "What to take from the SSD pool");
  verb.add_option("--chunk", options->chunk, "Size of a chunk")->type_name("SIZE")->capture_default_str();
  addTexts(verb, *options);
}

void addModification(CLI::App& family, Tool& tool) {
  auto options = std::make_shared<VolumeOptions>();
  CLI::App& verb = addVerb(
      family, tool, "modify", "Change the name, description or knob of a volume", "",
      [&tool, options] { modifyVolume(tool, *options); });
  verb.add_option("VOLUME", options->volume, "Name or identifier of the volume")->required();
  verb.add_option("--name", options->name, "New name")->type_name("WORDS");
  addTexts(verb, *options);
}

}  // namespace

void addVolumeCommands(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "volumes", "List the volumes", "", [&tool] { listVolumes(tool); });
  CLI::App& family = addFamily(
      app, "volume", "Create, modify, delete, flush, measure or show a volume, or list its members");
  addVerb(
      family, tool, "list", "List the volumes, as 'tvpcim volumes' does", "", [&tool] { listVolumes(tool); });
  addObjectVerb(
      family, tool, Volume::KIND, "show", "Show a volume and its members",
      [](Tool& own, const std::string& object) {
        printOne(own, Volume::KIND, object, columnsOfVolumes(own));
      });
  addCreation(family, tool);
  addCaching(family, tool);
  addModification(family, tool);
  addDeletion(
      family, tool, Volume::KIND, "Delete a volume; one made with 'volume cache' frees its drive too",
      "DeleteVirtualVolume", deletionOf);
  const auto addCall = [&](const char* name, const char* summary, const char* method,
                           const char* participle) {
    addObjectVerb(
        family, tool, Volume::KIND, name, summary,
        [method, participle](Tool& own, const std::string& object) {
          const std::uint32_t number = own.inventory().resolve(Volume::KIND, object);
          const ServiceAnswer answer = callService(own, method, Volume::KIND, number);
          printChange(own, answer, {Volume::KIND, number, participle, {}}, true, "");
        });
  };
  addCall("flush", "Write the cache of a cached volume back", "FlushVirtualVolume", "flushed");
  addCall(
      "reset-stats", "Set the statistics of a volume to 0", "ResetVirtualVolumeStats",
      "given statistics of 0");
  addObjectVerb(
      family, tool, Volume::KIND, "members", "List the extents of a volume on its pools", listMembers);
}

}  // namespace tvp::host::tvpcim
