// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIMI_H
#define CMPI_CMPIMI_H

#include "cmpidt.h"
#include "cmpift.h"

/**
 * The provider as an object manager sees it: four factories, each returning the provider's interface of one
 * kind. The first call initialises the provider, further calls are counted; terminating clean-ups count down,
 * and the last one tears the provider down permanently. A clean-up that is not terminating is refused with
 * CMPI_RC_NEVER_UNLOAD.
 *
 * Every function may be called from any thread, and none lets an exception escape. Statuses: what the adapter
 * returns; CMPI_RC_ERR_INVALID_PARAMETER for missing arguments; CMPI_RC_ERR_FAILED when the adapter has been
 * destroyed. Each error has a message unless no broker was ever given.
 */

#define TVP_CMPI_EXPORT __attribute__((visibility("default")))

extern "C" {

/**
 * The interfaces live as long as the library. They are returned even if the initialisation failed (the reason
 * is in the log, and requests then return empty results). The status, which may be null, is never written.
 */
TVP_CMPI_EXPORT CMPIInstanceMI*
tarvexProProvider_Create_InstanceMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus* status);
TVP_CMPI_EXPORT CMPIMethodMI*
tarvexProProvider_Create_MethodMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus* status);
TVP_CMPI_EXPORT CMPIAssociationMI*
tarvexProProvider_Create_AssociationMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus* status);
TVP_CMPI_EXPORT CMPIIndicationMI*
tarvexProProvider_Create_IndicationMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus* status);

TVP_CMPI_EXPORT CMPIStatus
tvpCmpiMICleanup(CMPIInstanceMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIEnumInstanceNames(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIEnumInstances(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIGetInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMICreateInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIInstance* instance);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIModifyInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIInstance* instance, const char** properties);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIDeleteInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIExecQuery(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* query, const char* language);

TVP_CMPI_EXPORT CMPIStatus
tvpCmpiMIMethodCleanup(CMPIMethodMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIInvokeMethod(
    CMPIMethodMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* methodName, const CMPIArgs* in, CMPIArgs* out);

TVP_CMPI_EXPORT CMPIStatus
tvpCmpiMIAssociationCleanup(CMPIAssociationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIAssociators(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
    const char** properties);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIAssociatorNames(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIReferences(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role, const char** properties);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIReferenceNames(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role);

TVP_CMPI_EXPORT CMPIStatus
tvpCmpiMIIndicationCleanup(CMPIIndicationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIAuthorizeFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, const char* owner);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIMustPoll(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIActivateFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, CMPIBoolean firstActivation);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIDeActivateFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, CMPIBoolean lastActivation);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIEnableIndications(CMPIIndicationMI* mi, const CMPIContext* ctx);
TVP_CMPI_EXPORT CMPIStatus tvpCmpiMIDisableIndications(CMPIIndicationMI* mi, const CMPIContext* ctx);

}  // extern "C"

#endif
