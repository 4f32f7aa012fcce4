// SPDX-License-Identifier: Apache-2.0
#include "TinyBroker.h"

#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* Every object of the broker is one of these; what it is shows in its function table. */
typedef struct Object {
  struct {
    void* hdl;
    const void* ft;
  } face; /* what the provider sees */
  char* text;
  char* nameSpace;
  CMPIType type;
  CMPICount count;
  char** names;
  CMPIData* values;
  struct Object* next;
} Object;

static Object* allObjects;
static pthread_mutex_t listLock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t delivered = PTHREAD_COND_INITIALIZER;
static unsigned int deliveries;

static const CMPIStatus done = {CMPI_RC_OK, NULL};

static void setStatus(CMPIStatus* status, CMPIrc rc) {
  if (status != NULL) {
    status->rc = rc;
    status->msg = NULL;
  }
}

static void* newObject(const void* ft, const char* text, CMPIStatus* status) {
  Object* object = calloc(1, sizeof *object);
  object->face.hdl = object;
  object->face.ft = ft;
  object->text = strdup(text == NULL ? "" : text);
  pthread_mutex_lock(&listLock);
  object->next = allObjects;
  allObjects = object;
  pthread_mutex_unlock(&listLock);
  setStatus(status, CMPI_RC_OK);
  return object;
}

static Object* self(const void* face) {
  return (Object*)((const CMPIString*)face)->hdl;
}

static CMPIStatus append(Object* object, const char* name, const CMPIValue* value, CMPIType type) {
  CMPIData data;
  memset(&data, 0, sizeof data);
  data.type = type;
  data.state = value == NULL ? CMPI_nullValue : CMPI_goodValue;
  if (value != NULL) {
    data.value = *value;
  }
  object->names = realloc(object->names, (object->count + 1) * sizeof *object->names);
  object->values = realloc(object->values, (object->count + 1) * sizeof *object->values);
  object->names[object->count] = strdup(name);
  object->values[object->count++] = data;
  return done;
}

static CMPIData missing(CMPIStatus* status) {
  CMPIData data;
  memset(&data, 0, sizeof data);
  data.state = CMPI_notFound;
  setStatus(status, CMPI_RC_ERR_NOT_FOUND);
  return data;
}

static CMPIData lookUp(const Object* object, const char* name, CMPIStatus* status) {
  for (CMPICount i = object->count; i-- > 0;) {
    if (strcmp(object->names[i], name) == 0) {
      setStatus(status, CMPI_RC_OK);
      return object->values[i];
    }
  }
  return missing(status);
}

/* Strings */
static CMPIStatus releaseString(CMPIString* s) {
  return (void)s, done;
}
static const char* getCharPtr(const CMPIString* s, CMPIStatus* status) {
  setStatus(status, CMPI_RC_OK);
  return self(s)->text;
}
static CMPIStringFT stringTable = {CMPIVersion200, releaseString, NULL, getCharPtr};
static CMPIString* newString(const CMPIBroker* b, const char* text, CMPIStatus* status) {
  return (void)b, newObject(&stringTable, text, status);
}

static CMPIData at(const Object* object, CMPICount index, CMPIString** name, CMPIStatus* status) {
  if (index >= object->count) {
    return missing(status);
  }
  if (name != NULL) {
    *name = newString(NULL, object->names[index], NULL);
  }
  setStatus(status, CMPI_RC_OK);
  return object->values[index];
}

/* Object paths */
static CMPIStatus releasePath(CMPIObjectPath* p) {
  return (void)p, done;
}
static CMPIString* pathNameSpace(const CMPIObjectPath* p, CMPIStatus* status) {
  return newString(NULL, self(p)->nameSpace, status);
}
static CMPIString* pathClassName(const CMPIObjectPath* p, CMPIStatus* status) {
  return newString(NULL, self(p)->text, status);
}
static CMPIStatus pathAddKey(CMPIObjectPath* p, const char* n, const CMPIValue* v, const CMPIType t) {
  return append(self(p), n, v, t);
}
static CMPIData pathKeyAt(const CMPIObjectPath* p, CMPICount i, CMPIString** n, CMPIStatus* status) {
  return at(self(p), i, n, status);
}
static CMPICount pathKeyCount(const CMPIObjectPath* p, CMPIStatus* status) {
  setStatus(status, CMPI_RC_OK);
  return self(p)->count;
}
static CMPIObjectPathFT pathTable;
static CMPIObjectPath*
newObjectPath(const CMPIBroker* b, const char* ns, const char* cn, CMPIStatus* status) {
  Object* object = newObject(&pathTable, cn, status);
  (void)b;
  object->nameSpace = strdup(ns == NULL ? "" : ns);
  return (CMPIObjectPath*)object;
}

/* Instances */
static CMPIStatus releaseInstance(CMPIInstance* i) {
  return (void)i, done;
}
static CMPIStatus instanceSet(const CMPIInstance* i, const char* n, const CMPIValue* v, CMPIType t) {
  return append(self(i), n, v, t);
}
static CMPIData instanceGet(const CMPIInstance* i, const char* n, CMPIStatus* status) {
  return lookUp(self(i), n, status);
}
static CMPIInstanceFT instanceTable;
static CMPIInstance* newInstance(const CMPIBroker* b, const CMPIObjectPath* p, CMPIStatus* status) {
  return (void)b, newObject(&instanceTable, self(p)->text, status);
}

/* Method arguments */
static CMPIStatus releaseArgs(CMPIArgs* a) {
  return (void)a, done;
}
static CMPIStatus argsAdd(const CMPIArgs* a, const char* n, const CMPIValue* v, const CMPIType t) {
  return append(self(a), n, v, t);
}
static CMPIData argsGet(const CMPIArgs* a, const char* n, CMPIStatus* status) {
  return lookUp(self(a), n, status);
}
static CMPIData argsAt(const CMPIArgs* a, CMPICount i, CMPIString** n, CMPIStatus* status) {
  return at(self(a), i, n, status);
}
static CMPICount argsCount(const CMPIArgs* a, CMPIStatus* status) {
  setStatus(status, CMPI_RC_OK);
  return self(a)->count;
}
static CMPIArgsFT argsTable = {CMPIVersion200, releaseArgs, NULL, argsAdd, argsGet, argsAt, argsCount};
static CMPIArgs* newArgs(const CMPIBroker* b, CMPIStatus* status) {
  return (void)b, newObject(&argsTable, "", status);
}

/* Arrays */
static CMPIStatus releaseArray(CMPIArray* a) {
  return (void)a, done;
}
static CMPICount arraySize(const CMPIArray* a, CMPIStatus* status) {
  setStatus(status, CMPI_RC_OK);
  return self(a)->count;
}
static CMPIData arrayAt(const CMPIArray* a, CMPICount i, CMPIStatus* status) {
  return at(self(a), i, NULL, status);
}
static CMPIStatus arraySet(CMPIArray* a, CMPICount i, const CMPIValue* v, CMPIType t) {
  CMPIData* data = &self(a)->values[i];
  data->type = t;
  data->state = CMPI_goodValue;
  data->value = *v;
  return done;
}
static CMPIArrayFT arrayTable = {CMPIVersion200, releaseArray, NULL, arraySize, NULL, arrayAt, arraySet};
static CMPIArray* newArray(const CMPIBroker* b, CMPICount count, CMPIType type, CMPIStatus* status) {
  Object* object = newObject(&arrayTable, "", status);
  (void)b;
  for (CMPICount i = 0; i < count; ++i) {
    append(object, "", NULL, type);
  }
  return (CMPIArray*)object;
}

/* Results */
static CMPIStatus resultInstance(const CMPIResult* r, const CMPIInstance* i) {
  (void)i;
  ++self(r)->count;
  return done;
}
static CMPIStatus resultData(const CMPIResult* r, const CMPIValue* v, const CMPIType t) {
  return (void)r, (void)v, (void)t, done;
}
static CMPIStatus resultDone(const CMPIResult* r) {
  return (void)r, done;
}
static CMPIResultFT resultTable = {CMPIVersion200, NULL, NULL,       resultData,
                                   resultInstance, NULL, resultDone, NULL};

/* Contexts */
static CMPIData contextGet(const CMPIContext* c, const char* n, CMPIStatus* status) {
  return lookUp(self(c), n, status);
}
static CMPIContextFT contextTable = {CMPIVersion200, NULL, NULL, contextGet, NULL, NULL, NULL};

/* Broker services */
static CMPIContext* prepareAttach(const CMPIBroker* b, const CMPIContext* c) {
  return (void)b, (void)c, tinyContext();
}
static CMPIStatus attach(const CMPIBroker* b, const CMPIContext* c) {
  return (void)b, (void)c, done;
}
static CMPIStatus deliver(const CMPIBroker* b, const CMPIContext* c, const char* ns, const CMPIInstance* i) {
  (void)b, (void)c, (void)ns, (void)i;
  pthread_mutex_lock(&listLock);
  ++deliveries;
  pthread_cond_signal(&delivered);
  pthread_mutex_unlock(&listLock);
  return done;
}
static CMPIEnumeration*
noNames(const CMPIBroker* b, const CMPIContext* c, const CMPIObjectPath* p, CMPIStatus* s) {
  (void)b, (void)c, (void)p;
  setStatus(s, CMPI_RC_ERR_NOT_SUPPORTED);
  return NULL;
}

const CMPIBroker* tinyBroker(void) {
  static CMPIBrokerFT services;
  static CMPIBrokerEncFT makers;
  static CMPIBroker broker;
  if (broker.bft == NULL) {
    pathTable.ftVersion = instanceTable.ftVersion = CMPIVersion200;
    pathTable.release = releasePath;
    pathTable.getNameSpace = pathNameSpace;
    pathTable.getClassName = pathClassName;
    pathTable.addKey = pathAddKey;
    pathTable.getKeyAt = pathKeyAt;
    pathTable.getKeyCount = pathKeyCount;
    instanceTable.release = releaseInstance;
    instanceTable.setProperty = instanceSet;
    instanceTable.getProperty = instanceGet;
    services.brokerVersion = CMPIVersion200;
    services.brokerName = "tiny";
    services.prepareAttachThread = prepareAttach;
    services.attachThread = services.detachThread = attach;
    services.deliverIndication = deliver;
    services.enumerateInstanceNames = noNames;
    makers.ftVersion = CMPIVersion200;
    makers.newInstance = newInstance;
    makers.newObjectPath = newObjectPath;
    makers.newArgs = newArgs;
    makers.newString = newString;
    makers.newArray = newArray;
    broker.eft = &makers;
    broker.bft = &services;
  }
  return &broker;
}

CMPIContext* tinyContext(void) {
  Object* object = newObject(&contextTable, "", NULL);
  CMPIValue principal;
  principal.string = newString(NULL, "", NULL);
  append(object, CMPIPrincipal, &principal, CMPI_string);
  return (CMPIContext*)object;
}

CMPIObjectPath* tinyPath(const char* nameSpace, const char* className) {
  return newObjectPath(NULL, nameSpace, className, NULL);
}

CMPIResult* tinyResult(void) {
  return newObject(&resultTable, "", NULL);
}

unsigned int tinyResultCount(const CMPIResult* result) {
  return self(result)->count;
}

int tinyWaitForIndication(unsigned int seconds) {
  struct timespec until;
  int come = 0;
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += (time_t)seconds;
  pthread_mutex_lock(&listLock);
  while (deliveries == 0 && pthread_cond_timedwait(&delivered, &listLock, &until) == 0) {
  }
  come = deliveries > 0;
  pthread_mutex_unlock(&listLock);
  return come;
}

void tinyBrokerFree(void) {
  while (allObjects != NULL) {
    Object* next = allObjects->next;
    if (allObjects->names != NULL) {
      for (CMPICount i = 0; i < allObjects->count; ++i) {
        free(allObjects->names[i]);
      }
    }
    free(allObjects->names);
    free(allObjects->values);
    free(allObjects->nameSpace);
    free(allObjects->text);
    free(allObjects);
    allObjects = next;
  }
}
