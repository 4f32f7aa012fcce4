// SPDX-License-Identifier: Apache-2.0
#include "bench/Baseline.h"
#include "voltvk/Chunk.h"
#include "voltvk/FilterCollection.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/Specs.h"
#include "voltvk/TvkAdapter.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"

#include <cstring>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace bench {

const CMPIBroker* broker = nullptr;

TvkLib& library() {
  static TvkLib* const instance = new TvkLib;
  return *instance;
}

namespace {

/** Namespace and class of a request, and its keys if they are read. */
struct Path {
  std::string nameSpace;
  std::string className;

  Path(const CMPIObjectPath* op, bool withKeys) {
    CMPIString* space = CMGetNameSpace(op, nullptr);
    nameSpace = CMGetCharsPtr(space, nullptr);
    CMPIString* name = CMGetClassName(op, nullptr);
    className = CMGetCharsPtr(name, nullptr);
    CMRelease(name);
    CMRelease(space);
    const CMPICount count = withKeys ? CMGetKeyCount(op, nullptr) : 0;
    for (CMPICount i = 0; i < count; ++i) {
      CMPIString* key = nullptr;
      const CMPIData data = CMGetKeyAt(op, i, &key, nullptr);
      CMGetCharsPtr(key, nullptr);
      if (data.type == CMPI_string) {
        CMGetCharsPtr(data.value.string, nullptr);
      }
    }
  }

  bool is(const char* name) const { return className == name; }
};

void addKeys(CMPIObjectPath* path, LogicalDevice& drive) {
  addKey(path, "CreationClassName", "TVP_LogicalDevice");
  addKey(path, "DeviceName", drive.getDeviceName());
}

void setProperties(CMPIInstance* instance, LogicalDevice& drive) {
  setText(instance, "CreationClassName", "TVP_LogicalDevice");
  setText(instance, "DeviceName", drive.getDeviceName());
  setText(instance, "SerialNumber", drive.getSerialNumber());
  setText(instance, "WWID", drive.getWwid());
  setText(instance, "Vendor", drive.getVendor());
  setText(instance, "Model", drive.getModel());
  setUint64(instance, "CapacityInSectors", drive.getCapacityInSectors());
  setUint16(instance, "DeviceNumber", drive.getDeviceNumber());
  setUint8(instance, "DeviceType", drive.getDeviceType());
  setUint8(instance, "DeviceProperty", drive.getDeviceProperty());
  setBoolean(instance, "IsBootable", drive.isBootable());
  setBoolean(instance, "HasPartition", drive.hasPartition());
  setBoolean(instance, "isUsedByTarvexPro", drive.isUsed());
  setUint8(instance, "InterfaceType", drive.getInterfaceType());
  setUint8(instance, "LD_Status", drive.getStatus());
}

void addKeys(CMPIObjectPath* path, VirtualPool& pool) {
  addKey(path, "CreationClassName", "TVP_VirtualPool");
  addKey(path, "Name", pool.getName());
}

void setProperties(CMPIInstance* instance, VirtualPool& pool) {
  setText(instance, "CreationClassName", "TVP_VirtualPool");
  setText(instance, "Name", pool.getName());
  setUint32(instance, "PoolStatus", pool.getPoolStatus());
  setText(instance, "Description", pool.getDescription());
  setUint32(instance, "VirtualPoolId", pool.getPoolId());
  setUint8(instance, "NumberOfLogicalDevice", pool.getNumberOfLogicalDevices());
  setUint8(instance, "NumberOfVirtualVolume", pool.getNumberOfVirtualVolumes());
  setUint64(instance, "ChunkSize", pool.getChunkSize());
  setUint8(instance, "TierLevel", pool.getTierLevel());
  setUint64(instance, "CapacityInSectors", pool.getCapacityInSectors());
  setUint64(instance, "UsedCapacityInSectors", pool.getUsedCapacityInSectors());
}

void addKeys(CMPIObjectPath* path, VirtualVolume& volume) {
  addKey(path, "CreationClassName", "TVP_VirtualVolume");
  addKey(path, "VolumeName", volume.getName());
}

void setFeatures(CMPIInstance* instance, std::uint32_t mask) {
  CMPIUint8 features[4];
  CMPICount count = 0;
  for (const auto& [bits, feature] : {std::pair{1U, 1}, {2U, 2}, {3U, 3}, {4U, 4}}) {
    if ((mask & bits) != 0) {
      features[count++] = static_cast<CMPIUint8>(feature);
    }
  }
  CMPIValue value{};
  value.array = CMNewArray(broker, count, CMPI_uint8, nullptr);
  for (CMPICount i = 0; i < count; ++i) {
    CMPIValue element{};
    element.uint8 = features[i];
    CMSetArrayElementAt(value.array, i, &element, CMPI_uint8);
  }
  CMSetProperty(instance, "Features", &value, CMPI_uint8A);
  CMRelease(value.array);
}

void setProperties(CMPIInstance* instance, VirtualVolume& volume) {
  setText(instance, "CreationClassName", "TVP_VirtualVolume");
  setText(instance, "VolumeName", volume.getName());
  setText(instance, "Description", volume.getDescription());
  setUint32(instance, "VirtualVolumeId", volume.getVolumeId());
  setUint8(instance, "VirtualPoolsCount", volume.getVirtualPoolsCount());
  setFeatures(instance, volume.getFeatures());
  setUint8(instance, "VolumeType", volume.getVolumeType());
  setUint8(instance, "CacheMode", volume.getCacheMode());
  setUint32(instance, "MaxMoveChunks", volume.getMaxMoveChunks());
  setUint32(instance, "MoveThreshold", volume.getMoveThreshold());
  setUint32(instance, "StatsSetting", volume.getStatsSetting());
  setUint32(instance, "NumberOfVirtualPoolsSupported", volume.getNumberOfVirtualPoolsSupported());
  setUint16(instance, "DeviceNumber", volume.getDeviceNumber());
  setUint8(instance, "State", volume.getState());
  setUint8(instance, "KnobSetting", volume.getKnobSetting());
  setUint64(instance, "CapacityInSectors", volume.getCapacityInSectors());
}

/** Calls work with the collection of all objects of one type, if there is one. */
template <typename Work>
void withObjects(const char* type, Work work) {
  library().refreshConfiguration();
  unsigned long controllers = 0;
  library().getControllerCount(controllers);
  if (controllers == 0) {
    return;
  }
  FilterCollection everything(library().getRootObject()->getObject(0));
  const std::unique_ptr<FilterCollection> objects(everything.filterByType(type, 0));
  if (objects != nullptr) {
    work(*objects);
  }
}

/** Every instance also has the keys and properties of those before it, as in the product. */
template <typename Object>
void enumerate(const char* type, const CMPIResult* result, const Path& path) {
  withObjects(type, [&](FilterCollection& objects) {
    const auto upTo = [&](int last, auto visit) {
      for (int i = 0; i <= last; ++i) {
        visit(static_cast<Object&>(*objects.elementAt(i)));
      }
    };
    for (int last = 0; last < objects.size(); ++last) {
      CMPIInstance* instance =
          newInstance(path.nameSpace.c_str(), path.className.c_str(), [&](CMPIObjectPath* op) {
            upTo(last, [&](Object& object) { addKeys(op, object); });
          });
      upTo(last, [&](Object& object) { setProperties(instance, object); });
      CMReturnInstance(result, instance);
    }
  });
}

CMPIStatus enumInstances(
    CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* op, const char**) {
  const Path path(op, false);
  if (path.is("TVP_LogicalDevice")) {
    enumerate<LogicalDevice>("LogicalDevice", result, path);
  } else if (path.is("TVP_VirtualPool")) {
    enumerate<VirtualPool>("VirtualPool", result, path);
  } else if (path.is("TVP_VirtualVolume")) {
    enumerate<VirtualVolume>("VirtualVolume", result, path);
  }
  return CMReturnDone(result);
}

CMPIStatus
enumInstanceNames(CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* op) {
  const Path path(op, false);  // no class of the product names its instances
  return CMReturnDone(result);
}

CMPIStatus getInstance(
    CMPIInstanceMI*, const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* op, const char**) {
  const Path path(op, true);
  CMReturnInstance(result, newInstance(path.nameSpace.c_str(), path.className.c_str(), [](auto*) {}));
  return CMReturnDone(result);
}

/** The arguments of a method; the texts live as long as the request. */
struct Argument {
  const char* name;
  CMPIData data;
  const char* text;
};

std::vector<Argument> readArguments(const CMPIArgs* in) {
  std::vector<Argument> arguments;
  const CMPICount count = CMGetArgCount(in, nullptr);
  for (CMPICount i = 0; i < count; ++i) {
    CMPIString* name = nullptr;
    Argument argument{};
    argument.data = CMGetArgAt(in, i, &name, nullptr);
    argument.name = CMGetCharsPtr(name, nullptr);
    if (argument.data.type == CMPI_string) {
      argument.text = CMGetCharsPtr(argument.data.value.string, nullptr);
    }
    arguments.push_back(argument);
  }
  return arguments;
}

const Argument& find(const std::vector<Argument>& arguments, const char* name) {
  static const Argument missing{};
  for (const Argument& argument : arguments) {
    if (std::strcmp(argument.name, name) == 0) {
      return argument;
    }
  }
  return missing;
}

bool isAdministrator(const CMPIContext* context) {
  const CMPIData principal = CMGetContextEntry(context, "CMPIPrincipal", nullptr);
  const char* user = CMGetCharsPtr(principal.value.string, nullptr);
  std::ifstream users("/etc/passwd");
  for (std::string line; std::getline(users, line);) {
    std::istringstream fields(line);
    std::string name;
    std::string field;
    std::getline(fields, name, ':');
    for (int i = 0; i < 3; ++i) {
      std::getline(fields, field, ':');
    }
    if (field == "0" && name == user) {
      return true;
    }
  }
  return false;
}

CMPIValue describeMember(const Chunk& chunk, const Path& path) {
  const LogicalDevice* drive = chunk.getProviderLogical();
  CMPIInstance* member = newInstance(path.nameSpace.c_str(), "TVP_VirtualPoolMember", [](auto*) {});
  setText(member, "Name", drive->getDeviceName());
  setUint16(member, "DeviceNumber", drive->getDeviceNumber());
  setUint64(member, "LDStartRange", chunk.getStartRange());
  setUint64(member, "LDEndRange", chunk.getEndRange());
  CMPIValue value{};
  value.inst = member;
  return value;
}

CMPIUint32 getMembers(const Path& path, const std::vector<Argument>& in, CMPIArgs* out) {
  library().refreshConfiguration();
  FilterCollection everything(library().getRootObject()->getObject(0));
  const std::unique_ptr<FilterCollection> pools(everything.filterByType("VirtualPool", 0));
  std::vector<RaidObject*> chunks;
  for (int i = 0; i < pools->size(); ++i) {
    auto& pool = static_cast<VirtualPool&>(*pools->elementAt(i));
    if (pool.getPoolId() == find(in, "VirtualPoolId").data.value.uint32) {
      pool.getChildren(chunks, "Chunk", true, true);
    }
  }
  CMPIValue members{};
  members.array = CMNewArray(broker, static_cast<CMPICount>(chunks.size()), CMPI_instance, nullptr);
  std::vector<CMPIValue> elements;
  for (RaidObject* chunk : chunks) {
    elements.push_back(describeMember(static_cast<Chunk&>(*chunk), path));
    CMSetArrayElementAt(
        members.array, static_cast<CMPICount>(elements.size() - 1), &elements.back(), CMPI_instance);
  }
  CMAddArg(out, "Members", &members, CMPI_instanceA);
  CMRelease(members.array);
  for (const CMPIValue& element : elements) {
    CMRelease(element.inst);
  }
  return 0;
}

CMPIUint32 modifyPool(const std::vector<Argument>& in, CMPIArgs* out) {
  VirtualPoolSpec spec;
  spec.poolId = find(in, "VirtualPoolId").data.value.uint32;
  spec.nameTooLong = !tvkSetText(spec.name, TVK_NAME_SIZE, find(in, "Name").text);
  spec.tierLevel = find(in, "TierLevel").data.value.uint8;
  spec.descriptionTooLong = !tvkSetText(spec.description, TVK_DESCRIPTION_SIZE, find(in, "Description").text);
  auto& adapter = static_cast<TvkAdapter&>(*library().getRootObject()->getObject(0));
  CMPIValue status{};
  status.uint32 = adapter.modifyVirtualPool(spec.poolId, spec).getReturn();
  CMAddArg(out, "RetStat", &status, CMPI_uint32);
  return 0;
}

CMPIStatus invokeMethod(
    CMPIMethodMI*, const CMPIContext* context, const CMPIResult* result, const CMPIObjectPath* op,
    const char* method, const CMPIArgs* in, CMPIArgs* out) {
  const bool admitted = isAdministrator(context);
  {
    const Path logged(op, true);  // the product reads the path once for its log and once for the call
  }
  if (!admitted) {
    return CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, nullptr};
  }
  const Path path(op, true);
  const std::vector<Argument> arguments = readArguments(in);
  CMPIValue answer{};
  answer.uint32 = std::strcmp(method, "GetVirtualPoolMembers") == 0 ? getMembers(path, arguments, out)
                                                                    : modifyPool(arguments, out);
  CMReturnData(result, &answer, CMPI_uint32);
  return CMReturnDone(result);
}

CMPIStatus cleanUpInstance(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean) {
  return DONE;
}
CMPIStatus cleanUpMethod(CMPIMethodMI*, const CMPIContext*, CMPIBoolean) {
  return DONE;
}

CMPIInstanceMIFT instanceTable = {CMPIVersion200,    CMPIVersion200, "benchBaseline", cleanUpInstance,
                                  enumInstanceNames, enumInstances,  getInstance,     nullptr,
                                  nullptr,           nullptr,        nullptr};
CMPIMethodMIFT methodTable = {CMPIVersion200, CMPIVersion200, "benchBaseline", cleanUpMethod, invokeMethod};
CMPIInstanceMI instanceInterface = {nullptr, &instanceTable};
CMPIMethodMI methodInterface = {nullptr, &methodTable};

}  // namespace
}  // namespace bench

extern "C" {
__attribute__((visibility("default"))) CMPIInstanceMI*
benchBaseline_Create_InstanceMI(const CMPIBroker* given, const CMPIContext*, CMPIStatus*) {
  bench::broker = given;
  bench::library();
  return &bench::instanceInterface;
}

__attribute__((visibility("default"))) CMPIMethodMI*
benchBaseline_Create_MethodMI(const CMPIBroker* given, const CMPIContext*, CMPIStatus*) {
  bench::broker = given;
  return &bench::methodInterface;
}
}
