// SPDX-License-Identifier: Apache-2.0
/**
 * Function tables of CMPI 2.0 for Linux x86-64: the slots through which an object manager and a
 * provider call each other. The order of the members is the interface; cmpilayout.h asserts every
 * offset, so a slot that moves does not compile.
 *
 * A table function takes the object it belongs to as its first argument; a CMPIStatus* argument
 * may be null.
 */
#ifndef STANDARD_CMPI_CMPIFT_H
#define STANDARD_CMPI_CMPIFT_H

#include "cmpidt.h"

#include <stddef.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Services of the broker that concern requests, threads and indications. */
struct CMPIBrokerFT {
  unsigned int brokerCapabilities;
  unsigned int brokerVersion;
  const char* brokerName;
  CMPIContext* (*prepareAttachThread)(const CMPIBroker*, const CMPIContext*);
  CMPIStatus (*attachThread)(const CMPIBroker*, const CMPIContext*);
  CMPIStatus (*detachThread)(const CMPIBroker*, const CMPIContext*);
  CMPIStatus (*deliverIndication)(const CMPIBroker*, const CMPIContext*, const char*, const CMPIInstance*);
  CMPIEnumeration* (*enumerateInstanceNames)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, CMPIStatus*);
  CMPIInstance* (*getInstance)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char**, CMPIStatus*);
  CMPIObjectPath* (*createInstance)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const CMPIInstance*, CMPIStatus*);
  CMPIStatus (*modifyInstance)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const CMPIInstance*, const char**);
  CMPIStatus (*deleteInstance)(const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*);
  CMPIEnumeration* (*execQuery)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const char*, CMPIStatus*);
  CMPIEnumeration* (*enumerateInstances)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char**, CMPIStatus*);
  CMPIEnumeration* (*associators)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const char*, const char*,
      const char*, const char**, CMPIStatus*);
  CMPIEnumeration* (*associatorNames)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const char*, const char*,
      const char*, CMPIStatus*);
  CMPIEnumeration* (*references)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const char*, const char**,
      CMPIStatus*);
  CMPIEnumeration* (*referenceNames)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const char*, CMPIStatus*);
  CMPIData (*invokeMethod)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const CMPIArgs*, CMPIArgs*,
      CMPIStatus*);
  CMPIStatus (*setProperty)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, const CMPIValue*, CMPIType);
  CMPIData (*getProperty)(
      const CMPIBroker*, const CMPIContext*, const CMPIObjectPath*, const char*, CMPIStatus*);
};

/** Services of the broker that create and examine encapsulated objects. */
struct CMPIBrokerEncFT {
  int ftVersion;
  CMPIInstance* (*newInstance)(const CMPIBroker*, const CMPIObjectPath*, CMPIStatus*);
  CMPIObjectPath* (*newObjectPath)(const CMPIBroker*, const char*, const char*, CMPIStatus*);
  CMPIArgs* (*newArgs)(const CMPIBroker*, CMPIStatus*);
  CMPIString* (*newString)(const CMPIBroker*, const char*, CMPIStatus*);
  CMPIArray* (*newArray)(const CMPIBroker*, CMPICount, CMPIType, CMPIStatus*);
  CMPIDateTime* (*newDateTime)(const CMPIBroker*, CMPIStatus*);
  CMPIDateTime* (*newDateTimeFromBinary)(const CMPIBroker*, CMPIUint64, CMPIBoolean, CMPIStatus*);
  CMPIDateTime* (*newDateTimeFromChars)(const CMPIBroker*, const char*, CMPIStatus*);
  CMPISelectExp* (*newSelectExp)(const CMPIBroker*, const char*, const char*, CMPIArray**, CMPIStatus*);
  CMPIBoolean (*classPathIsA)(const CMPIBroker*, const CMPIObjectPath*, const char*, CMPIStatus*);
  CMPIString* (*toString)(const CMPIBroker*, const void*, CMPIStatus*);
  CMPIBoolean (*isOfType)(const CMPIBroker*, const void*, const char*, CMPIStatus*);
  CMPIString* (*getType)(const CMPIBroker*, const void*, CMPIStatus*);
  CMPIString* (*getMessage)(const CMPIBroker*, const char*, const char*, CMPIStatus*, CMPICount, ...);
  CMPIStatus (*logMessage)(const CMPIBroker*, int, const char*, const char*, const CMPIString*);
  CMPIStatus (*trace)(const CMPIBroker*, int, const char*, const char*, const CMPIString*);
  CMPIError* (*newCMPIError)(
      const CMPIBroker*, const char*, const char*, const char*, const CMPIErrorSeverity,
      const CMPIErrorProbableCause, const CMPIrc, CMPIStatus*);
  CMPIStatus (*openMessageFile)(const CMPIBroker*, const char*, CMPIMsgFileHandle*);
  CMPIStatus (*closeMessageFile)(const CMPIBroker*, const CMPIMsgFileHandle);
  CMPIString* (*getMessage2)(
      const CMPIBroker*, const char*, const CMPIMsgFileHandle, const char*, CMPIStatus*, CMPICount, ...);
};

/** Operating-system services that a broker offers to portable providers. */
struct CMPIBrokerExtFT {
  int ftVersion;
  char* (*resolveFileName)(const char*);
  void* (*newThread)(void* (*)(void*), void*, int);
  int (*joinThread)(void*, void**);
  int (*exitThread)(void*);
  int (*cancelThread)(void*);
  int (*threadSleep)(CMPIUint32);
  int (*threadOnce)(int*, void (*)(void));
  int (*createThreadKey)(unsigned long*, void (*)(void*));
  int (*destroyThreadKey)(unsigned long);
  void* (*getThreadSpecific)(unsigned long);
  int (*setThreadSpecific)(unsigned long, void*);
  void* (*newMutex)(int);
  void (*destroyMutex)(void*);
  void (*lockMutex)(void*);
  void (*unlockMutex)(void*);
  void* (*newCondition)(int);
  void (*destroyCondition)(void*);
  int (*condWait)(void*, void*);
  int (*timedCondWait)(void*, void*, struct timespec*);
  int (*signalCondition)(void*);
};

/** Memory services of the broker. */
struct CMPIBrokerMemFT {
  const int ftVersion;
  CMPIGcStat* (*mark)(const CMPIBroker*, CMPIStatus*);
  CMPIStatus (*release)(const CMPIBroker*, const CMPIGcStat*);
  void* (*cmpiMalloc)(const CMPIBroker*, size_t);
  void* (*cmpiCalloc)(const CMPIBroker*, size_t, size_t);
  void* (*cmpiRealloc)(const CMPIBroker*, void*, size_t);
  char* (*cmpiStrDup)(const CMPIBroker*, const char*);
  void (*cmpiFree)(const CMPIBroker*, void*);
  void (*freeInstance)(const CMPIBroker*, CMPIInstance*);
  void (*freeObjectPath)(const CMPIBroker*, CMPIObjectPath*);
  void (*freeArgs)(const CMPIBroker*, CMPIArgs*);
  void (*freeString)(const CMPIBroker*, CMPIString*);
  void (*freeArray)(const CMPIBroker*, CMPIArray*);
  void (*freeDateTime)(const CMPIBroker*, CMPIDateTime*);
  void (*freeSelectExp)(const CMPIBroker*, CMPISelectExp*);
};

/** The operations of an instance provider. */
struct CMPIInstanceMIFT {
  int ftVersion;
  int miVersion;
  const char* miName;
  CMPIStatus (*cleanup)(CMPIInstanceMI*, const CMPIContext*, CMPIBoolean);
  CMPIStatus (*enumerateInstanceNames)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*);
  CMPIStatus (*enumerateInstances)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char**);
  CMPIStatus (*getInstance)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char**);
  CMPIStatus (*createInstance)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const CMPIInstance*);
  CMPIStatus (*modifyInstance)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const CMPIInstance*,
      const char**);
  CMPIStatus (*deleteInstance)(CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*);
  CMPIStatus (*execQuery)(
      CMPIInstanceMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const char*);
};

/** The operations of a method provider. */
struct CMPIMethodMIFT {
  int ftVersion;
  int miVersion;
  const char* miName;
  CMPIStatus (*cleanup)(CMPIMethodMI*, const CMPIContext*, CMPIBoolean);
  CMPIStatus (*invokeMethod)(
      CMPIMethodMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const CMPIArgs*, CMPIArgs*);
};

/** The operations of an association provider. */
struct CMPIAssociationMIFT {
  int ftVersion;
  const CMPISint32 miVersion;
  const char* miName;
  CMPIStatus (*cleanup)(CMPIAssociationMI*, const CMPIContext*, CMPIBoolean);
  CMPIStatus (*associators)(
      CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const char*, const char*, const char*, const char**);
  CMPIStatus (*associatorNames)(
      CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const char*, const char*, const char*);
  CMPIStatus (*references)(
      CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const char*, const char**);
  CMPIStatus (*referenceNames)(
      CMPIAssociationMI*, const CMPIContext*, const CMPIResult*, const CMPIObjectPath*, const char*,
      const char*);
};

/** The operations of an indication provider. mustPoll has no result argument in this version. */
struct CMPIIndicationMIFT {
  int ftVersion;
  int miVersion;
  const char* miName;
  CMPIStatus (*cleanup)(CMPIIndicationMI*, const CMPIContext*, CMPIBoolean);
  CMPIStatus (*authorizeFilter)(
      CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
      const char*);
  CMPIStatus (*mustPoll)(
      CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*);
  CMPIStatus (*activateFilter)(
      CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
      CMPIBoolean);
  CMPIStatus (*deActivateFilter)(
      CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
      CMPIBoolean);
  CMPIStatus (*enableIndications)(CMPIIndicationMI*, const CMPIContext*);
  CMPIStatus (*disableIndications)(CMPIIndicationMI*, const CMPIContext*);
};

/** Functions of CMPIObjectPath. */
struct CMPIObjectPathFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIObjectPath*);
  CMPIObjectPath* (*clone)(const CMPIObjectPath*, CMPIStatus*);
  CMPIStatus (*setNameSpace)(CMPIObjectPath*, const char*);
  CMPIString* (*getNameSpace)(const CMPIObjectPath*, CMPIStatus*);
  CMPIStatus (*setHostname)(CMPIObjectPath*, const char*);
  CMPIString* (*getHostname)(const CMPIObjectPath*, CMPIStatus*);
  CMPIStatus (*setClassName)(CMPIObjectPath*, const char*);
  CMPIString* (*getClassName)(const CMPIObjectPath*, CMPIStatus*);
  CMPIStatus (*addKey)(CMPIObjectPath*, const char*, const CMPIValue*, const CMPIType);
  CMPIData (*getKey)(const CMPIObjectPath*, const char*, CMPIStatus*);
  CMPIData (*getKeyAt)(const CMPIObjectPath*, CMPICount, CMPIString**, CMPIStatus*);
  CMPICount (*getKeyCount)(const CMPIObjectPath*, CMPIStatus*);
  CMPIStatus (*setNameSpaceFromObjectPath)(CMPIObjectPath*, const CMPIObjectPath*);
  CMPIStatus (*setHostAndNameSpaceFromObjectPath)(CMPIObjectPath*, const CMPIObjectPath*);
  CMPIData (*getClassQualifier)(const CMPIObjectPath*, const char*, CMPIStatus*);
  CMPIData (*getPropertyQualifier)(const CMPIObjectPath*, const char*, const char*, CMPIStatus*);
  CMPIData (*getMethodQualifier)(const CMPIObjectPath*, const char*, const char*, CMPIStatus*);
  CMPIData (*getParameterQualifier)(
      const CMPIObjectPath*, const char*, const char*, const char*, CMPIStatus*);
  CMPIString* (*toString)(const CMPIObjectPath*, CMPIStatus*);
};

/** Functions of CMPIInstance. */
struct CMPIInstanceFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIInstance*);
  CMPIInstance* (*clone)(const CMPIInstance*, CMPIStatus*);
  CMPIData (*getProperty)(const CMPIInstance*, const char*, CMPIStatus*);
  CMPIData (*getPropertyAt)(const CMPIInstance*, CMPICount, CMPIString**, CMPIStatus*);
  CMPICount (*getPropertyCount)(const CMPIInstance*, CMPIStatus*);
  CMPIStatus (*setProperty)(const CMPIInstance*, const char*, const CMPIValue*, CMPIType);
  CMPIObjectPath* (*getObjectPath)(const CMPIInstance*, CMPIStatus*);
  CMPIStatus (*setPropertyFilter)(CMPIInstance*, const char**, const char**);
  CMPIStatus (*setObjectPath)(CMPIInstance*, const CMPIObjectPath*);
  CMPIStatus (*setPropertyWithOrigin)(
      const CMPIInstance*, const char*, const CMPIValue*, const CMPIType, const char*);
};

/** Functions of CMPIArgs. */
struct CMPIArgsFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIArgs*);
  CMPIArgs* (*clone)(const CMPIArgs*, CMPIStatus*);
  CMPIStatus (*addArg)(const CMPIArgs*, const char*, const CMPIValue*, const CMPIType);
  CMPIData (*getArg)(const CMPIArgs*, const char*, CMPIStatus*);
  CMPIData (*getArgAt)(const CMPIArgs*, CMPICount, CMPIString**, CMPIStatus*);
  CMPICount (*getArgCount)(const CMPIArgs*, CMPIStatus*);
};

/** Functions of CMPIString. */
struct CMPIStringFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIString*);
  CMPIString* (*clone)(const CMPIString*, CMPIStatus*);
  const char* (*getCharPtr)(const CMPIString*, CMPIStatus*);
};

/** Functions of CMPIArray. */
struct CMPIArrayFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIArray*);
  CMPIArray* (*clone)(const CMPIArray*, CMPIStatus*);
  CMPICount (*getSize)(const CMPIArray*, CMPIStatus*);
  CMPIType (*getSimpleType)(const CMPIArray*, CMPIStatus*);
  CMPIData (*getElementAt)(const CMPIArray*, CMPICount, CMPIStatus*);
  CMPIStatus (*setElementAt)(CMPIArray*, CMPICount, const CMPIValue*, CMPIType);
};

/** Functions of CMPIEnumeration. */
struct CMPIEnumerationFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIEnumeration*);
  CMPIEnumeration* (*clone)(const CMPIEnumeration*, CMPIStatus*);
  CMPIData (*getNext)(const CMPIEnumeration*, CMPIStatus*);
  CMPIBoolean (*hasNext)(const CMPIEnumeration*, CMPIStatus*);
  CMPIArray* (*toArray)(const CMPIEnumeration*, CMPIStatus*);
};

/** Functions of CMPIDateTime. */
struct CMPIDateTimeFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIDateTime*);
  CMPIDateTime* (*clone)(const CMPIDateTime*, CMPIStatus*);
  CMPIUint64 (*getBinaryFormat)(const CMPIDateTime*, CMPIStatus*);
  CMPIString* (*getStringFormat)(const CMPIDateTime*, CMPIStatus*);
  CMPIBoolean (*isInterval)(const CMPIDateTime*, CMPIStatus*);
};

/** Functions of CMPIResult. */
struct CMPIResultFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIResult*);
  CMPIResult* (*clone)(const CMPIResult*, CMPIStatus*);
  CMPIStatus (*returnData)(const CMPIResult*, const CMPIValue*, const CMPIType);
  CMPIStatus (*returnInstance)(const CMPIResult*, const CMPIInstance*);
  CMPIStatus (*returnObjectPath)(const CMPIResult*, const CMPIObjectPath*);
  CMPIStatus (*returnDone)(const CMPIResult*);
  CMPIStatus (*returnError)(const CMPIResult*, const CMPIError*);
};

/** Functions of CMPIContext. */
struct CMPIContextFT {
  int ftVersion;
  CMPIStatus (*release)(CMPIContext*);
  CMPIContext* (*clone)(const CMPIContext*, CMPIStatus*);
  CMPIData (*getEntry)(const CMPIContext*, const char*, CMPIStatus*);
  CMPIData (*getEntryAt)(const CMPIContext*, CMPICount, CMPIString**, CMPIStatus*);
  CMPICount (*getEntryCount)(const CMPIContext*, CMPIStatus*);
  CMPIStatus (*addEntry)(const CMPIContext*, const char*, const CMPIValue*, const CMPIType);
};

/** Functions of CMPISelectExp. */
struct CMPISelectExpFT {
  int ftVersion;
  CMPIStatus (*release)(CMPISelectExp*);
  CMPISelectExp* (*clone)(const CMPISelectExp*, CMPIStatus*);
  CMPIBoolean (*evaluate)(const CMPISelectExp*, const CMPIInstance*, CMPIStatus*);
  CMPIString* (*getString)(const CMPISelectExp*, CMPIStatus*);
  CMPISelectCond* (*getDOC)(const CMPISelectExp*, CMPIStatus*);
  CMPISelectCond* (*getCOD)(const CMPISelectExp*, CMPIStatus*);
  CMPIBoolean (*evaluateUsingAccessor)(const CMPISelectExp*, CMPIAccessor*, void*, CMPIStatus*);
};

/** Functions of CMPIError. */
struct CMPIErrorFT {
  CMPISint32 ftVersion;
  CMPIStatus (*release)(CMPIError*);
  CMPIError* (*clone)(const CMPIError*, CMPIStatus*);
  CMPIErrorType (*getErrorType)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getOtherErrorType)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getOwningEntity)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getMessageID)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getMessage)(const CMPIError*, CMPIStatus*);
  CMPIErrorSeverity (*getPerceivedSeverity)(const CMPIError*, CMPIStatus*);
  CMPIErrorProbableCause (*getProbableCause)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getProbableCauseDescription)(const CMPIError*, CMPIStatus*);
  CMPIArray* (*getRecommendedActions)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getErrorSource)(const CMPIError*, CMPIStatus*);
  CMPIErrorSrcFormat (*getErrorSourceFormat)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getOtherErrorSourceFormat)(const CMPIError*, CMPIStatus*);
  CMPIrc (*getCIMStatusCode)(const CMPIError*, CMPIStatus*);
  CMPIString* (*getCIMStatusCodeDescription)(const CMPIError*, CMPIStatus*);
  CMPIArray* (*getMessageArguments)(const CMPIError*, CMPIStatus*);
  CMPIStatus (*setErrorType)(CMPIError*, const CMPIErrorType);
  CMPIStatus (*setOtherErrorType)(CMPIError*, const char*);
  CMPIStatus (*setProbableCauseDescription)(CMPIError*, const char*);
  CMPIStatus (*setRecommendedActions)(CMPIError*, const CMPIArray*);
  CMPIStatus (*setErrorSource)(CMPIError*, const char*);
  CMPIStatus (*setErrorSourceFormat)(CMPIError*, const CMPIErrorSrcFormat);
  CMPIStatus (*setOtherErrorSourceFormat)(CMPIError*, const char*);
  CMPIStatus (*setCIMStatusCodeDescription)(CMPIError*, const char*);
  CMPIStatus (*setMessageArguments)(CMPIError*, CMPIArray*);
};

#ifdef __cplusplus
}
#endif

#endif
