// SPDX-License-Identifier: Apache-2.0
#include "TinyHost.h"

#include "cmpidt.h"
#include "cmpift.h"
#include "cmpimacs.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <pthread.h>

namespace {

/** Every object of the broker is one of these; what it is shows in its function table. */
struct Object {
  Object* handle;  ///< the provider sees this and the table
  const void* table;
  char* text;
  char* nameSpace;
  char** names;
  CMPIData* values;
  CMPICount count;
  Object* next;
};

Object* allObjects;
pthread_mutex_t listLock = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t delivered = PTHREAD_COND_INITIALIZER;
unsigned int deliveries;

constexpr CMPIStatus DONE = {CMPI_RC_OK, nullptr};
constexpr auto SUCCEED = [](auto...) { return DONE; };

void setStatus(CMPIStatus* status, CMPIrc rc) {
  if (status != nullptr) {
    *status = {rc, nullptr};
  }
}

template <typename Face>
Face* newObject(const void* table, const char* text = nullptr, CMPIStatus* status = nullptr) {
  auto* object = static_cast<Object*>(calloc(1, sizeof(Object)));
  object->handle = object;
  object->table = table;
  object->text = strdup(text == nullptr ? "" : text);
  pthread_mutex_lock(&listLock);
  object->next = allObjects;
  allObjects = object;
  pthread_mutex_unlock(&listLock);
  setStatus(status, CMPI_RC_OK);
  return reinterpret_cast<Face*>(object);
}

template <typename Face>
Object* self(const Face* face) {
  return static_cast<Object*>(face->hdl);
}

// What objects that hold named values have in common.

constexpr auto APPEND = [](auto* face, const char* name, const CMPIValue* value, CMPIType type) {
  Object* object = self(face);
  CMPIData data{};
  data.type = type;
  data.state = value == nullptr ? CMPI_nullValue : CMPI_goodValue;
  if (value != nullptr) {
    data.value = *value;
  }
  const size_t count = object->count + 1;
  object->names = static_cast<char**>(realloc(object->names, count * sizeof *object->names));
  object->values = static_cast<CMPIData*>(realloc(object->values, count * sizeof *object->values));
  object->names[object->count] = strdup(name);
  object->values[object->count++] = data;
  return DONE;
};

CMPIData missing(CMPIStatus* status) {
  CMPIData data{};
  data.state = CMPI_notFound;
  setStatus(status, CMPI_RC_ERR_NOT_FOUND);
  return data;
}

constexpr auto LOOK_UP = [](auto* face, const char* name, CMPIStatus* status) {
  const Object* object = self(face);
  for (CMPICount i = object->count; i-- > 0;) {
    if (strcmp(object->names[i], name) == 0) {
      setStatus(status, CMPI_RC_OK);
      return object->values[i];
    }
  }
  return missing(status);
};

constexpr auto COUNT = [](auto* face, CMPIStatus* status) {
  setStatus(status, CMPI_RC_OK);
  return self(face)->count;
};

CMPIStringFT stringTable = {
    CMPIVersion200, SUCCEED, nullptr, [](const CMPIString* string, CMPIStatus* status) {
      setStatus(status, CMPI_RC_OK);
      return static_cast<const char*>(self(string)->text);
    }};

CMPIString* newString(const CMPIBroker* /*broker*/, const char* text, CMPIStatus* status) {
  return newObject<CMPIString>(&stringTable, text, status);
}

constexpr auto AT = [](auto* face, CMPICount index, CMPIString** name, CMPIStatus* status) {
  const Object* object = self(face);
  if (index >= object->count) {
    return missing(status);
  }
  if (name != nullptr) {
    *name = newString(nullptr, object->names[index], nullptr);
  }
  setStatus(status, CMPI_RC_OK);
  return object->values[index];
};

CMPIObjectPathFT pathTable = [] {
  CMPIObjectPathFT table{};
  table.ftVersion = CMPIVersion200;
  table.release = SUCCEED;
  table.getNameSpace = [](const CMPIObjectPath* path, CMPIStatus* status) {
    return newString(nullptr, self(path)->nameSpace, status);
  };
  table.getClassName = [](const CMPIObjectPath* path, CMPIStatus* status) {
    return newString(nullptr, self(path)->text, status);
  };
  table.addKey = APPEND;
  table.getKeyAt = AT;
  table.getKeyCount = COUNT;
  return table;
}();

CMPIInstanceFT instanceTable = {CMPIVersion200, SUCCEED, nullptr, LOOK_UP, nullptr, nullptr,
                                APPEND,         nullptr, nullptr, nullptr, nullptr};
CMPIArgsFT argsTable = {CMPIVersion200, SUCCEED, nullptr, APPEND, LOOK_UP, AT, COUNT};
CMPIContextFT contextTable = {CMPIVersion200, nullptr, nullptr, LOOK_UP, nullptr, nullptr, nullptr};

CMPIArrayFT arrayTable = {
    CMPIVersion200,
    SUCCEED,
    nullptr,
    COUNT,
    nullptr,
    [](const CMPIArray* array, CMPICount index, CMPIStatus* status) {
      return AT(array, index, nullptr, status);
    },
    [](CMPIArray* array, CMPICount index, const CMPIValue* value, CMPIType type) {
      CMPIData& data = self(array)->values[index];
      data.type = type;
      data.state = CMPI_goodValue;
      data.value = *value;
      return DONE;
    }};

/** Counts the instances. */
CMPIResultFT resultTable = {
    CMPIVersion200,
    nullptr,
    nullptr,
    SUCCEED,
    [](const CMPIResult* result, const CMPIInstance* /*instance*/) {
      ++self(result)->count;
      return DONE;
    },
    nullptr,
    SUCCEED,
    nullptr};

/** A context whose principal is the empty name. */
CMPIContext* newContext() {
  auto* context = newObject<CMPIContext>(&contextTable);
  CMPIValue principal;
  principal.string = newString(nullptr, "", nullptr);
  APPEND(context, CMPIPrincipal, &principal, CMPI_string);
  return context;
}

CMPIObjectPath*
newPath(const CMPIBroker* /*broker*/, const char* nameSpace, const char* className, CMPIStatus* status) {
  auto* path = newObject<CMPIObjectPath>(&pathTable, className, status);
  self(path)->nameSpace = strdup(nameSpace == nullptr ? "" : nameSpace);
  return path;
}

CMPIBrokerFT services = [] {
  CMPIBrokerFT table{};
  table.brokerVersion = CMPIVersion200;
  table.brokerName = "tiny";
  table.prepareAttachThread = [](auto...) { return newContext(); };
  table.attachThread = table.detachThread = SUCCEED;
  table.deliverIndication = [](auto...) {
    pthread_mutex_lock(&listLock);
    ++deliveries;
    pthread_cond_signal(&delivered);
    pthread_mutex_unlock(&listLock);
    return DONE;
  };
  table.enumerateInstanceNames = [](auto, auto, auto, CMPIStatus* status) -> CMPIEnumeration* {
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
  };
  return table;
}();

CMPIBrokerEncFT makers = [] {
  CMPIBrokerEncFT table{};
  table.ftVersion = CMPIVersion200;
  table.newInstance = [](auto, const CMPIObjectPath* path, CMPIStatus* status) {
    return newObject<CMPIInstance>(&instanceTable, self(path)->text, status);
  };
  table.newObjectPath = newPath;
  table.newArgs = [](auto, CMPIStatus* status) { return newObject<CMPIArgs>(&argsTable, "", status); };
  table.newString = newString;
  table.newArray = [](auto, CMPICount count, CMPIType type, CMPIStatus* status) {
    auto* array = newObject<CMPIArray>(&arrayTable, "", status);
    for (CMPICount i = 0; i < count; ++i) {
      APPEND(array, "", nullptr, type);
    }
    return array;
  };
  return table;
}();

const CMPIBroker BROKER = {nullptr, &services, &makers, nullptr, nullptr};

CMPIObjectPath* pathOf(const char* className) {
  return newPath(nullptr, "root/kvs/tvp/smi_15", className, nullptr);
}

bool waitForIndication(time_t seconds) {
  timespec until{};
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += seconds;
  pthread_mutex_lock(&listLock);
  while (deliveries == 0 && pthread_cond_timedwait(&delivered, &listLock, &until) == 0) {
  }
  const bool come = deliveries > 0;
  pthread_mutex_unlock(&listLock);
  return come;
}

/** The interface that a factory of the provider makes, or null without such a factory. */
template <typename Interface>
Interface* create(void* library, const char* name) {
  using Factory = Interface* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
  const auto factory = reinterpret_cast<Factory>(dlsym(library, name));
  return factory == nullptr ? nullptr : factory(&BROKER, newContext(), nullptr);
}

bool enumerate(CMPIInstanceMI* mi, const char* className) {
  auto* result = newObject<CMPIResult>(&resultTable);
  const CMPIStatus status = mi->ft->enumerateInstances(mi, newContext(), result, pathOf(className), nullptr);
  const CMPICount count = self(result)->count;
  if (status.rc != CMPI_RC_OK || count == 0) {
    fprintf(stderr, "%s: status %d, %u instances\n", className, static_cast<int>(status.rc), count);
    return false;
  }
  return true;
}

bool refusesWhileBrokerFails(CMPIInstanceMI* mi) {
  if (tinyFail == nullptr) {
    return true;
  }
  auto* result = newObject<CMPIResult>(&resultTable);
  tinyFail(&makers, 1);
  const CMPIStatus status =
      mi->ft->enumerateInstances(mi, newContext(), result, pathOf("TVP_LogicalDevice"), nullptr);
  tinyFail(&makers, 0);
  return status.rc != CMPI_RC_OK;
}

bool createPool(CMPIMethodMI* mi) {
  CMPIArgs* in = CMNewArgs(&BROKER, nullptr);
  CMPIArgs* out = CMNewArgs(&BROKER, nullptr);
  CMPIValue value;
  value.string = CMNewString(&BROKER, "a-pool-with-a-long-enough-name", nullptr);
  CMAddArg(in, "Name", &value, CMPI_string);
  // Longer than any short-string buffer, so that it is allocated on both sides of every boundary.
  value.string =
      CMNewString(&BROKER, "far too long to be kept inside a string object by any library", nullptr);
  CMAddArg(in, "Description", &value, CMPI_string);
  value.uint8 = 1;
  CMAddArg(in, "NumberOfLogicalDevice", &value, CMPI_uint8);
  CMAddArg(in, "TierLevel", &value, CMPI_uint8);
  const char* number = getenv("TINY_HOST_DRIVE");
  value.uint8 = static_cast<CMPIUint8>(atoi(number == nullptr ? "0" : number));
  CMPIArray* drives = CMNewArray(&BROKER, 1, CMPI_uint8, nullptr);
  CMSetArrayElementAt(drives, 0, &value, CMPI_uint8);
  value.array = drives;
  CMAddArg(in, "LDDeviceNumbers", &value, CMPI_uint8A);
  value.uint64 = 20971520;
  CMAddArg(in, "CapacityInSectors", &value, CMPI_uint64);
  value.uint64 = 2048;
  CMAddArg(in, "ChunkSize", &value, CMPI_uint64);
  const CMPIStatus status = mi->ft->invokeMethod(
      mi, newContext(), newObject<CMPIResult>(&resultTable), pathOf("TVP_TierService"), "CreateVirtualPool",
      in, out);
  const CMPIData result = CMGetArg(out, "RetStat", nullptr);
  if (status.rc != CMPI_RC_OK || result.state == CMPI_notFound || result.value.uint32 != 0) {
    fprintf(
        stderr, "CreateVirtualPool: status %d, %s\n", static_cast<int>(status.rc),
        status.msg == nullptr ? "no text" : CMGetCharsPtr(status.msg, nullptr));
    return false;
  }
  return true;
}

bool serve(CMPIInstanceMI* instances, CMPIMethodMI* methods, CMPIIndicationMI* events) {
  events->ft->activateFilter(events, newContext(), nullptr, "TVP_CIMIndication", nullptr, 1);
  events->ft->enableIndications(events, newContext());
  if (!enumerate(instances, "TVP_TarvexProIdentity") || !enumerate(instances, "TVP_LogicalDevice") ||
      !refusesWhileBrokerFails(instances) || !createPool(methods) ||
      !enumerate(instances, "TVP_VirtualPool")) {
    return false;
  }
  if (!waitForIndication(30)) {
    fprintf(stderr, "no indication came\n");
    return false;
  }
  return events->ft->disableIndications(events, newContext()).rc == CMPI_RC_OK;
}

template <typename Interface>
bool end(Interface* mi) {
  return mi->ft->cleanup(mi, newContext(), 1).rc == CMPI_RC_OK;
}

}  // namespace

void (*tinyFail)(CMPIBrokerEncFT* makers, int on) = nullptr;

int tinyHostLife(int argc, char** argv) {
  void* library = nullptr;
  for (int i = argc > 2 ? 2 : 1; i > 0; --i) {
    library = dlopen(argv[i], RTLD_LAZY | RTLD_GLOBAL);
    if (library == nullptr) {
      fprintf(stderr, "%s\n", dlerror());
      return 2;
    }
  }
  auto* instances = create<CMPIInstanceMI>(library, "tarvexProProvider_Create_InstanceMI");
  auto* methods = create<CMPIMethodMI>(library, "tarvexProProvider_Create_MethodMI");
  auto* associations = create<CMPIAssociationMI>(library, "tarvexProProvider_Create_AssociationMI");
  auto* events = create<CMPIIndicationMI>(library, "tarvexProProvider_Create_IndicationMI");
  const bool complete =
      instances != nullptr && methods != nullptr && associations != nullptr && events != nullptr;
  bool served = complete && serve(instances, methods, events);
  if (complete) {
    served = end(events) && served;
    served = end(associations) && served;
    served = end(methods) && served;
    served = end(instances) && served;
  }
  dlclose(library);
  puts(served ? "a full life" : "failed");
  return served ? 0 : 1;
}
