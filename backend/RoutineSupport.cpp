// SPDX-License-Identifier: Apache-2.0
#include "backend/RoutineSupport.h"

#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"

#include <utility>

namespace tvp::cim::fwf {

void traceRoutineEntry(const char* routine) {
  traceParts({"Entering TVPIfExecute::", routine, "()"});
}

void returnStatus(const std::string& caller, const Ret& ret, CIMMethodParam& out, const char* name) {
  KvsLogMsg(
      KVS_LOG_DEBUG, "%s() returned Ret.getReturn() = %d", caller.c_str(), static_cast<int>(ret.getReturn()));
  out.addArgument(makeProperty<unsigned int>(name, ret.getReturn()));
}

unsigned int runIdentifierRoutine(
    const StatusRoutine& texts, const char* argument, const IdentifierOperation& operation,
    const CIMMethodParam& in, CIMMethodParam& out) {
  return runStatusRoutine(
      texts, {argument},
      [&](const RoutineArguments& arguments, Ret& ret) {
        const unsigned int identifier = arguments.identifier(argument);
        KvsLogMsg(KVS_LOG_DEBUG, "%s() - %s: %d", texts.routine, argument, static_cast<int>(identifier));
        return operation(identifier, ret);
      },
      in, out);
}

unsigned int runMemberRoutine(
    const MemberRoutine& texts, const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsLogMsg(KVS_LOG_DEBUG, "%s Enter", texts.routine);
  if (in.getArgumentCount() == 0) {
    KvsLogMsg(KVS_LOG_DEBUG, "%s exits with without calling TVP Func", texts.routine);
    return BACKEND_FAILED;
  }
  const RoutineArguments arguments(texts.routine, in);
  if (!arguments.contain({texts.argument})) {
    return BACKEND_FAILED;
  }
  const unsigned int identifier = arguments.identifier(texts.argument);
  KvsLogMsg(KVS_LOG_DEBUG, "%s() - %s: %d", texts.routine, texts.argument, static_cast<int>(identifier));
  std::vector<CIMInstance> members;
  const unsigned int result = texts.collect(identifier, members);
  // An object manager creates embedded instances from their path, so each needs the namespace too.
  const CIMObjectPath memberPath(path.host(), path.nameSpace(), texts.className, {});
  for (CIMInstance& member : members) {
    member.setPath(memberPath);
    KvsLogMsg(KVS_LOG_DEBUG, "adding instance");
  }
  out.addArgument(makeProperty("Members", std::move(members)));
  KvsLogMsg(KVS_LOG_DEBUG, "%s", texts.farewell);
  return result;
}

}  // namespace tvp::cim::fwf
