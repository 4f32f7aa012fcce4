// SPDX-License-Identifier: Apache-2.0
#include "TinyBroker.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char* const modelNameSpace = "root/kvs/tvp/smi_15";

typedef struct Mis {
  CMPIInstanceMI* instance;
  CMPIMethodMI* method;
  CMPIAssociationMI* association;
  CMPIIndicationMI* indication;
} Mis;

/* dlsym's result as a function pointer, in the one way that both languages allow. */
#define LOAD_FACTORY(mis, member, library, name, type)                                                       \
  do {                                                                                                       \
    type* (*factory)(const CMPIBroker*, const CMPIContext*, CMPIStatus*) = NULL;                             \
    void* symbol = dlsym(library, name);                                                                     \
    memcpy(&factory, &symbol, sizeof factory);                                                               \
    if (factory == NULL) {                                                                                   \
      return 0;                                                                                              \
    }                                                                                                        \
    (mis)->member = factory(tinyBroker(), tinyContext(), NULL);                                              \
  } while (0)

static int createMis(void* library, Mis* mis) {
  LOAD_FACTORY(mis, instance, library, "tarvexProProvider_Create_InstanceMI", CMPIInstanceMI);
  LOAD_FACTORY(mis, method, library, "tarvexProProvider_Create_MethodMI", CMPIMethodMI);
  LOAD_FACTORY(mis, association, library, "tarvexProProvider_Create_AssociationMI", CMPIAssociationMI);
  LOAD_FACTORY(mis, indication, library, "tarvexProProvider_Create_IndicationMI", CMPIIndicationMI);
  return 1;
}

static int enumerate(const Mis* mis, const char* className, unsigned int atLeast) {
  CMPIResult* result = tinyResult();
  CMPIStatus status = mis->instance->ft->enumerateInstances(
      mis->instance, tinyContext(), result, tinyPath(modelNameSpace, className), NULL);
  if (status.rc != CMPI_RC_OK || tinyResultCount(result) < atLeast) {
    fprintf(stderr, "%s: status %d, %u instances\n", className, (int)status.rc, tinyResultCount(result));
    return 0;
  }
  return 1;
}

/* Longer than any short-string buffer, so that it is allocated on both sides of every boundary. */
static const char* const longText = "a description that is far too long to be kept inside a string object";

static int createPool(const Mis* mis) {
  CMPIArgs* in = CMNewArgs(tinyBroker(), NULL);
  CMPIArgs* out = CMNewArgs(tinyBroker(), NULL);
  CMPIValue value;
  CMPIData result;
  CMPIStatus status;
  value.string = CMNewString(tinyBroker(), "a-pool-with-a-long-enough-name", NULL);
  CMAddArg(in, "Name", &value, CMPI_string);
  value.string = CMNewString(tinyBroker(), longText + 10, NULL);
  CMAddArg(in, "Description", &value, CMPI_string);
  value.uint8 = 1;
  CMAddArg(in, "NumberOfLogicalDevice", &value, CMPI_uint8);
  value.array = CMNewArray(tinyBroker(), 1, CMPI_uint8, NULL);
  {
    CMPIValue drive;
    const char* number = getenv("TINY_HOST_DRIVE");
    drive.uint8 = (CMPIUint8)atoi(number == NULL ? "0" : number);
    CMSetArrayElementAt(value.array, 0, &drive, CMPI_uint8);
  }
  CMAddArg(in, "LDDeviceNumbers", &value, CMPI_uint8A);
  value.uint64 = 20971520;
  CMAddArg(in, "CapacityInSectors", &value, CMPI_uint64);
  value.uint64 = 2048;
  CMAddArg(in, "ChunkSize", &value, CMPI_uint64);
  value.uint8 = 1;
  CMAddArg(in, "TierLevel", &value, CMPI_uint8);
  status = mis->method->ft->invokeMethod(
      mis->method, tinyContext(), tinyResult(), tinyPath(modelNameSpace, "TVP_TierService"),
      "CreateVirtualPool", in, out);
  result = CMGetArg(out, "RetStat", NULL);
  if (status.rc != CMPI_RC_OK || result.state == CMPI_notFound || result.value.uint32 != 0) {
    fprintf(
        stderr, "CreateVirtualPool: status %d, %s\n", (int)status.rc,
        status.msg == NULL ? "no text" : CMGetCharsPtr(status.msg, NULL));
    return 0;
  }
  return 1;
}

void (*tinyFail)(int on) = NULL;

static int refusesWhileBrokerFails(const Mis* mis) {
  CMPIStatus status;
  if (tinyFail == NULL) {
    return 1;
  }
  tinyFail(1);
  status = mis->instance->ft->enumerateInstances(
      mis->instance, tinyContext(), tinyResult(), tinyPath(modelNameSpace, "TVP_LogicalDevice"), NULL);
  tinyFail(0);
  return status.rc != CMPI_RC_OK;
}

static int serve(const Mis* mis) {
  CMPIIndicationMI* events = mis->indication;
  events->ft->activateFilter(events, tinyContext(), NULL, "TVP_CIMIndication", NULL, 1);
  events->ft->enableIndications(events, tinyContext());
  if (!enumerate(mis, "TVP_TarvexProIdentity", 1) || !enumerate(mis, "TVP_LogicalDevice", 1) ||
      !refusesWhileBrokerFails(mis) || !createPool(mis) || !enumerate(mis, "TVP_VirtualPool", 1)) {
    return 0;
  }
  if (!tinyWaitForIndication(30)) {
    fprintf(stderr, "no indication came\n");
    return 0;
  }
  return events->ft->disableIndications(events, tinyContext()).rc == CMPI_RC_OK;
}

int tinyHostLife(int argc, char** argv) {
  Mis mis;
  void* library = NULL;
  int served = 0;
  if (argc > 2 && dlopen(argv[2], RTLD_LAZY | RTLD_GLOBAL) == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  library = dlopen(argv[1], RTLD_LAZY | RTLD_GLOBAL);
  if (library == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  memset(&mis, 0, sizeof mis);
  served = createMis(library, &mis) && serve(&mis);
  if (mis.indication != NULL) {
    served = mis.indication->ft->cleanup(mis.indication, tinyContext(), 1).rc == CMPI_RC_OK && served;
    served = mis.association->ft->cleanup(mis.association, tinyContext(), 1).rc == CMPI_RC_OK && served;
    served = mis.method->ft->cleanup(mis.method, tinyContext(), 1).rc == CMPI_RC_OK && served;
    served = mis.instance->ft->cleanup(mis.instance, tinyContext(), 1).rc == CMPI_RC_OK && served;
  }
  dlclose(library);
  tinyBrokerFree();
  puts(served ? "a full life" : "failed");
  return served ? 0 : 1;
}
