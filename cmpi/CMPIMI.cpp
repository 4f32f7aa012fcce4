// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIMI.h"

#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIMILifecycle.h"
#include "cmpi/CMPIObjectGuard.h"
#include "oslib/KVSLog.h"
#include "standard/cmpi/cmpilayout.h"  // asserts the layout of everything in the tables below

using namespace tvp::cim::adap::cmpi;

namespace {

constexpr char NO_ADAPTER[] = "Failed to get CMPIAdapter singleton instance";

/** The names of an exported function in its log lines. */
struct FunctionNames {
  constexpr explicit FunctionNames(const char* function)
      : entry(function), exit(function), invalidExit(function) {}

  // Each of these gives one line its own name: the entry, the exit and the exit when arguments are missing.
  // COMPAT: logs are searched for the odd ones.
  constexpr FunctionNames enteringAs(const char* name) const { return with(&FunctionNames::entry, name); }
  constexpr FunctionNames exitingAs(const char* name) const { return with(&FunctionNames::exit, name); }
  constexpr FunctionNames refusingAs(const char* name) const {
    return with(&FunctionNames::invalidExit, name);
  }
  /** The operation's name in the line about its failure. */
  constexpr FunctionNames forOperation(const char* name) const {
    return with(&FunctionNames::operation, name);
  }
  /** An additional line before the one about missing arguments. */
  constexpr FunctionNames refusingWith(const char* note) const {
    return with(&FunctionNames::invalidNote, note);
  }

  const char* entry;
  const char* exit;
  const char* invalidExit;
  const char* operation = nullptr;
  const char* invalidNote = nullptr;

private:
  constexpr FunctionNames with(const char* FunctionNames::*member, const char* name) const {
    FunctionNames changed = *this;
    changed.*member = name;
    return changed;
  }
};

/** Whether a text argument is neither null nor empty. */
bool isText(const char* text) {
  return text != nullptr && *text != '\0';
}

template <typename... Objects>
bool areObjects(const Objects*... objects) {
  return (isObject(objects) && ...);
}

CMPIStatus invalidParameters(const FunctionNames& names) {
  if (names.invalidNote != nullptr) {
    KvsLogMsg(KVS_LOG_INFORMATION, "%s", names.invalidNote);
  }
  KvsLogMsg(KVS_LOG_INFORMATION, "%s", INVALID_PARAMETERS);
  return CMPIStatus{CMPI_RC_ERR_INVALID_PARAMETER, newEntryMessage(INVALID_PARAMETERS)};
}

/**
 * Runs what a function of the tables does. Whatever it throws, or an object manager in C++ throws out of a
 * call that it makes, must not reach the caller, which may be written in C.
 */
template <typename Work>
CMPIStatus withoutThrowing(Work work) noexcept {
  try {
    return work();
  } catch (...) {
    return CMPIStatus{CMPI_RC_ERR_FAILED, newEntryMessage(UNKNOWN_ERROR)};
  }
}

template <typename Operation, typename... Arguments>
CMPIStatus callAdapter(const FunctionNames& names, Operation operation, Arguments... arguments) {
  CMPIAdapter* adapter = CMPIAdapter::getInstance();
  if (adapter == nullptr) {
    KvsLogMsg(KVS_LOG_FATAL, "%s", NO_ADAPTER);
    return CMPIStatus{CMPI_RC_ERR_FAILED, newEntryMessage(NO_ADAPTER)};
  }
  const CMPIStatus status = withoutThrowing([&] {
    CMPIStatus answer{CMPI_RC_OK, nullptr};
    (adapter->*operation)(arguments..., entryBroker(), &answer);
    return answer;
  });
  if (status.rc != CMPI_RC_OK) {
    KvsLogMsg(
        KVS_LOG_ERROR, "%s operation failed,                 refer previous log lines for reason",
        names.operation);
  }
  return status;
}

/**
 * The form of all functions that call the adapter: their arguments, if valid, are passed to one of its
 * operations.
 */
template <typename Operation, typename... Arguments>
CMPIStatus forward(
    const FunctionNames& names, bool argumentsAreValid, Operation operation,
    Arguments... arguments) noexcept {
  return withoutThrowing([&] {
    traceFunction("Entering", names.entry);
    const CMPIStatus status =
        argumentsAreValid ? callAdapter(names, operation, arguments...) : invalidParameters(names);
    traceFunction("Exiting", argumentsAreValid ? names.exit : names.invalidExit);
    return status;
  });
}

/** The form of the functions that only check their arguments. */
CMPIStatus answerEmpty(const FunctionNames& names, bool argumentsAreValid) noexcept {
  return withoutThrowing([&] {
    traceFunction("Entering", names.entry);
    const CMPIStatus status = argumentsAreValid ? CMPIStatus{CMPI_RC_OK, nullptr} : invalidParameters(names);
    traceFunction("Exiting", names.exit);
    return status;
  });
}

template <typename MI>
MI* createMI(const CMPIBroker* broker, const CMPIContext* ctx, MI& mi) noexcept {
  // The interface is returned even if the provider could not start: its requests then say so.
  withoutThrowing([&] {
    enterProvider(broker, ctx);
    return CMPIStatus{CMPI_RC_OK, nullptr};
  });
  return &mi;
}

CMPIStatus
cleanUpMI(const char* function, const void* mi, const CMPIContext* ctx, CMPIBoolean terminating) noexcept {
  return withoutThrowing([&] {
    traceFunction("Entering", function);
    CMPIStatus status{CMPI_RC_OK, nullptr};
    if (terminating != 0) {
      KvsTrace("CleanUp routein called due to cimserver shutdown");
      status = withoutThrowing([&] {
        CMPIStatus ended{CMPI_RC_OK, nullptr};
        CommonCleanup(mi, ctx, ended);
        return ended;
      });
    } else {
      KvsTrace("CleanUp routein called due to inactivity of provider and zero indication subscription");
      KvsTrace("Preventing provider from unloading this time");
      status.rc = CMPI_RC_NEVER_UNLOAD;
    }
    traceFunction("Exiting", function);
    return status;
  });
}

CMPIInstanceMIFT instanceTable = {
    CMPIVersion200,
    CMPIVersion200,
    "instancetarvexProProvider",
    tvpCmpiMICleanup,
    tvpCmpiMIEnumInstanceNames,
    tvpCmpiMIEnumInstances,
    tvpCmpiMIGetInstance,
    tvpCmpiMICreateInstance,
    tvpCmpiMIModifyInstance,
    tvpCmpiMIDeleteInstance,
    tvpCmpiMIExecQuery};
CMPIMethodMIFT methodTable = {
    CMPIVersion200, CMPIVersion200, "methodtarvexProProvider", tvpCmpiMIMethodCleanup, tvpCmpiMIInvokeMethod};
CMPIAssociationMIFT associationTable = {
    CMPIVersion200,
    CMPIVersion200,
    "associationtarvexProProvider",
    tvpCmpiMIAssociationCleanup,
    tvpCmpiMIAssociators,
    tvpCmpiMIAssociatorNames,
    tvpCmpiMIReferences,
    tvpCmpiMIReferenceNames};
// COMPAT: registrations spell the interface with the capital letter.
CMPIIndicationMIFT indicationTable = {
    CMPIVersion200,
    CMPIVersion200,
    "IndicationtarvexProProvider",
    tvpCmpiMIIndicationCleanup,
    tvpCmpiMIAuthorizeFilter,
    tvpCmpiMIMustPoll,
    tvpCmpiMIActivateFilter,
    tvpCmpiMIDeActivateFilter,
    tvpCmpiMIEnableIndications,
    tvpCmpiMIDisableIndications};

CMPIInstanceMI instanceMI = {nullptr, &instanceTable};
CMPIMethodMI methodMI = {nullptr, &methodTable};
CMPIAssociationMI associationMI = {nullptr, &associationTable};
CMPIIndicationMI indicationMI = {nullptr, &indicationTable};

}  // namespace

CMPIInstanceMI*
tarvexProProvider_Create_InstanceMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus*) {
  return createMI(broker, ctx, instanceMI);
}

CMPIMethodMI*
tarvexProProvider_Create_MethodMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus*) {
  return createMI(broker, ctx, methodMI);
}

CMPIAssociationMI*
tarvexProProvider_Create_AssociationMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus*) {
  return createMI(broker, ctx, associationMI);
}

CMPIIndicationMI*
tarvexProProvider_Create_IndicationMI(const CMPIBroker* broker, const CMPIContext* ctx, CMPIStatus*) {
  return createMI(broker, ctx, indicationMI);
}

CMPIStatus tvpCmpiMICleanup(CMPIInstanceMI* mi, const CMPIContext* ctx, CMPIBoolean terminating) {
  return cleanUpMI("tvpCmpiMICleanup", mi, ctx, terminating);
}

CMPIStatus tvpCmpiMIMethodCleanup(CMPIMethodMI* mi, const CMPIContext* ctx, CMPIBoolean terminating) {
  return cleanUpMI("tvpCmpiMIMethodCleanup", mi, ctx, terminating);
}

CMPIStatus
tvpCmpiMIAssociationCleanup(CMPIAssociationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating) {
  return cleanUpMI("tvpCmpiMIAssociationCleanup", mi, ctx, terminating);
}

CMPIStatus tvpCmpiMIIndicationCleanup(CMPIIndicationMI* mi, const CMPIContext* ctx, CMPIBoolean terminating) {
  return cleanUpMI("tvpCmpiMIIndicationCleanup", mi, ctx, terminating);
}

CMPIStatus tvpCmpiMIEnumInstanceNames(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op) {
  constexpr auto names = FunctionNames("tvpCmpiMIEnumInstanceNames")
                             .forOperation("EnumInstanceNames")
                             .refusingAs("KvsCmpiMIEnumInstanceNames");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::EnumInstanceNames, mi, ctx, rslt, op);
}

CMPIStatus tvpCmpiMIEnumInstances(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties) {
  constexpr auto names = FunctionNames("tvpCmpiMIEnumInstances").forOperation("EnumInstances");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::EnumInstances, mi, ctx, rslt, op,
      properties);
}

CMPIStatus tvpCmpiMIGetInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char** properties) {
  constexpr auto names = FunctionNames("tvpCmpiMIGetInstance").forOperation("GetInstance");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::GetInstance, mi, ctx, rslt, op,
      properties);
}

CMPIStatus tvpCmpiMICreateInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIInstance* instance) {
  constexpr auto names = FunctionNames("tvpCmpiMICreateInstance")
                             .forOperation("CreateInstance")
                             .enteringAs("tvpCmpiMIGetInstance")
                             .exitingAs("ZelCmpiMICreateInstance");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op, instance), &CMPIAdapter::CreateInstance, mi, ctx,
      rslt, op, instance);
}

CMPIStatus tvpCmpiMIModifyInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const CMPIInstance* instance, const char** properties) {
  constexpr auto names = FunctionNames("tvpCmpiMIModifyInstance").forOperation("ModifyInstance");
  return forward(
      names, mi != nullptr && properties != nullptr, &CMPIAdapter::ModifyInstance, mi, ctx, rslt, op,
      instance, properties);
}

CMPIStatus tvpCmpiMIDeleteInstance(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op) {
  constexpr auto names = FunctionNames("tvpCmpiMIDeleteInstance").forOperation("DeleteInstance");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::DeleteInstance, mi, ctx, rslt, op);
}

CMPIStatus tvpCmpiMIExecQuery(
    CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* query, const char* language) {
  constexpr auto names = FunctionNames("tvpCmpiMIExecQuery").enteringAs("KvsCmpiMIExecQuery");
  return answerEmpty(names, mi != nullptr && areObjects(ctx, rslt, op) && isText(query) && isText(language));
}

CMPIStatus tvpCmpiMIInvokeMethod(
    CMPIMethodMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* methodName, const CMPIArgs* in, CMPIArgs* out) {
  constexpr auto names = FunctionNames("tvpCmpiMIInvokeMethod").forOperation("InvokeMethod");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op, in, out) && isText(methodName),
      &CMPIAdapter::InvokeMethod, mi, ctx, rslt, op, methodName, in, out);
}

CMPIStatus tvpCmpiMIAssociators(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
    const char** properties) {
  constexpr auto names = FunctionNames("tvpCmpiMIAssociators").forOperation("Associators");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::Associators, mi, ctx, rslt, op,
      assocClass, resultClass, role, resultRole, properties);
}

CMPIStatus tvpCmpiMIAssociatorNames(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole) {
  constexpr auto names = FunctionNames("tvpCmpiMIAssociatorNames").forOperation("AssociatorNames");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op) && isText(assocClass), &CMPIAdapter::AssociatorNames,
      mi, ctx, rslt, op, assocClass, resultClass, role, resultRole);
}

CMPIStatus tvpCmpiMIReferences(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role, const char** properties) {
  constexpr auto names = FunctionNames("tvpCmpiMIReferences").forOperation("References");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::References, mi, ctx, rslt, op,
      resultClass, role, properties);
}

CMPIStatus tvpCmpiMIReferenceNames(
    CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role) {
  constexpr auto names = FunctionNames("tvpCmpiMIReferenceNames").forOperation("ReferenceNames");
  return forward(
      names, mi != nullptr && areObjects(ctx, rslt, op), &CMPIAdapter::ReferenceNames, mi, ctx, rslt, op,
      resultClass, role);
}

CMPIStatus tvpCmpiMIAuthorizeFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, const char* owner) {
  constexpr FunctionNames names("tvpCmpiMIAuthorizeFilter");
  return answerEmpty(
      names, mi != nullptr && areObjects(ctx, filter, op) && isText(className) && isText(owner));
}

CMPIStatus tvpCmpiMIMustPoll(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op) {
  constexpr FunctionNames names("tvpCmpiMIMustPoll");
  return answerEmpty(names, mi != nullptr && areObjects(ctx, filter, op) && isText(className));
}

CMPIStatus tvpCmpiMIActivateFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, CMPIBoolean firstActivation) {
  constexpr auto names = FunctionNames("tvpCmpiMIActivateFilter")
                             .forOperation("ActivateFilter")
                             .refusingWith("INVALID : Indication MI");
  return forward(
      names, mi != nullptr, &CMPIAdapter::ActivateFilter, mi, ctx, filter, className, op, firstActivation);
}

CMPIStatus tvpCmpiMIDeActivateFilter(
    CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
    const CMPIObjectPath* op, CMPIBoolean lastActivation) {
  constexpr auto names = FunctionNames("tvpCmpiMIDeActivateFilter").forOperation("DeActivateFilter");
  return forward(
      names, mi != nullptr, &CMPIAdapter::DeActivateFilter, mi, ctx, filter, className, op, lastActivation);
}

CMPIStatus tvpCmpiMIEnableIndications(CMPIIndicationMI* mi, const CMPIContext* ctx) {
  constexpr auto names = FunctionNames("tvpCmpiMIEnableIndications").forOperation("EnableIndications");
  return forward(names, mi != nullptr && areObjects(ctx), &CMPIAdapter::EnableIndications, mi, ctx);
}

CMPIStatus tvpCmpiMIDisableIndications(CMPIIndicationMI* mi, const CMPIContext* ctx) {
  constexpr auto names = FunctionNames("tvpCmpiMIDisableIndications").forOperation("DisableIndications");
  return forward(names, mi != nullptr && areObjects(ctx), &CMPIAdapter::DisableIndications, mi, ctx);
}
