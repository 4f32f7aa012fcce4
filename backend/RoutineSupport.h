// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_ROUTINESUPPORT_H
#define BACKEND_ROUTINESUPPORT_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "voltvk/Ret.h"
#include "voltvk/Specs.h"

#include <functional>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** What a routine answers when its arguments are wrong. */
constexpr unsigned int ROUTINE_FAILURE = 3;

/** Traces the entry of a routine. */
void traceRoutineEntry(const char* routine);

/** Logs the library's status and adds it to the output. @param caller the name in the log line */
void answerStatus(const char* caller, const Ret& ret, CIMMethodParam& out, const char* name = "RetStat");

/** An operation on a pool or a volume that needs its identifier alone. */
using IdentifierOperation = std::function<unsigned int(unsigned int identifier, Ret& ret)>;

/** The texts of a routine that needs an identifier alone. */
struct IdentifierRoutine {
  const char* routine;   ///< name in messages about its arguments
  const char* argument;  ///< name of its one argument
  const char* caller;    ///< name in the line about the library's status
  const char* output;    ///< name of the argument that answers that status
};

/** Checks the one argument, runs the operation, answers its status. @return the operation's result, or 3 */
unsigned int runIdentifierRoutine(
    const IdentifierRoutine& texts, const IdentifierOperation& operation, const CIMMethodParam& in,
    CIMMethodParam& out);

/** What differs between the routines that answer members. */
struct MemberRoutine {
  const char* routine;    ///< name in log lines
  const char* argument;   ///< name of the identifier argument
  const char* className;  ///< class of the members
  const char* farewell;   ///< the last log line
  unsigned int (*collect)(unsigned int identifier, std::vector<CIMInstance>& members);
};

/** Answers the "Members" of a pool or a volume, as instances in the namespace of the path. */
unsigned int runMemberRoutine(
    const MemberRoutine& texts, const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out);

/**
 * Fills the name and the description of a record, and marks there what is too long for its field: the
 * library then refuses the request instead of giving an object half a name.
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
