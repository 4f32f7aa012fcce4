// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_ROUTINESUPPORT_H
#define BACKEND_ROUTINESUPPORT_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "backend/BackendResult.h"
#include "backend/RoutineArguments.h"
#include "voltvk/Ret.h"
#include "voltvk/Specs.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** Traces the entry of a routine. */
void traceRoutineEntry(const char* routine);

/** Logs the library's status and adds it to the output. @param caller the name in the log line */
void returnStatus(
    const std::string& caller, const Ret& ret, CIMMethodParam& out, const char* name = "RetStat");

/** A routine that returns the library's status: its names in log lines and in the output. */
struct StatusRoutine {
  /** @param name of the routine, in messages about its arguments */
  explicit StatusRoutine(const char* name) : routine(name), caller(std::string(" ") + name) {}

  /** Sets another name for the line about the library's status. */
  StatusRoutine& calledAs(const char* name) {
    caller = name;
    return *this;
  }
  /** Sets another name for the argument that returns that status. */
  StatusRoutine& returning(const char* name) {
    output = name;
    return *this;
  }

  const char* routine;
  std::string caller;
  const char* output = "RetStat";
};

/**
 * Checks that there are exactly the named arguments, does the work and returns its status.
 * @param work called as unsigned int(const RoutineArguments&, Ret&): logs the arguments and runs the
 * operation
 * @return the operation's result; BACKEND_FAILED for wrong arguments
 */
template <typename Work>
unsigned int runStatusRoutine(
    const StatusRoutine& texts, std::initializer_list<const char*> names, const Work& work,
    const CIMMethodParam& in, CIMMethodParam& out) {
  const RoutineArguments arguments(texts.routine, in);
  if (!arguments.areExactly(names)) {
    return BACKEND_FAILED;
  }
  Ret ret;
  const unsigned int result = work(arguments, ret);
  returnStatus(texts.caller, ret, out, texts.output);
  return result;
}

/** An operation on a pool or a volume that needs only its identifier. */
using IdentifierOperation = std::function<unsigned int(unsigned int identifier, Ret& ret)>;

/** The same for a routine with one argument, an identifier. @param argument its name */
unsigned int runIdentifierRoutine(
    const StatusRoutine& texts, const char* argument, const IdentifierOperation& operation,
    const CIMMethodParam& in, CIMMethodParam& out);

/** What differs between the routines that return members. */
struct MemberRoutine {
  const char* routine = nullptr;    ///< name used in log lines
  const char* argument = nullptr;   ///< name of the identifier argument
  const char* className = nullptr;  ///< class of the members
  const char* farewell = nullptr;   ///< the last log line
  unsigned int (*collect)(unsigned int identifier, std::vector<CIMInstance>& members) = nullptr;
};

/** Returns the "Members" of a pool or a volume, as instances in the namespace of the path. */
unsigned int runMemberRoutine(
    const MemberRoutine& texts, const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out);

/**
 * Fills the name and the description of a record, and marks what is too long for its field, so that the
 * library refuses the request instead of giving an object half a name.
 * @param spec a VirtualPoolSpec or VirtualVolumeSpec
 */
template <typename Spec>
void fillTexts(Spec& spec, const std::string& name, const std::string& description) {
  spec.nameTooLong = !tvkSetText(spec.name, sizeof spec.name, name.c_str());
  spec.nameBytes = static_cast<std::uint32_t>(name.size());
  spec.descriptionTooLong = !tvkSetText(spec.description, sizeof spec.description, description.c_str());
  spec.descriptionBytes = static_cast<std::uint32_t>(description.size());
}

}  // namespace tvp::cim::fwf

#endif
