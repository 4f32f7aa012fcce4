// SPDX-License-Identifier: Apache-2.0
#include "backend/AdapterOperation.h"

#include "backend/LibraryAccess.h"
#include "backend/Refusal.h"
#include "CIM/Framework/RefusalReason.h"
#include "oslib/KVSLog.h"

#include <exception>
#include <string>

namespace tvp::cim::fwf {

namespace {

constexpr unsigned int SUCCESS = 0;
constexpr unsigned int FAILURE = 3;

void trace(const char* before, const char* name, const char* after) {
  KvsTrace((std::string(before) + name + after).c_str());
}

/** What the exception that is being handled says; empty when it says nothing. */
std::string textOfException() {
  try {
    throw;
  } catch (const std::exception& exception) {
    return exception.what();
  } catch (...) {
    return "";
  }
}

}  // namespace

void logMissingAdapter(const char* method) {
  KvsLogMsg(KVS_LOG_DEBUG, "%s() - !!ERROR!! - TvkAdapter object is NULL", method);
}

unsigned int AdapterOperation::run(Ret& ret, const Call& call, const Preparation& prepare) const {
  trace("Entering ", m_names.method, "()");
  return carryOut(ret, call, prepare);
}

unsigned int AdapterOperation::carryOut(Ret& ret, const Call& call, const Preparation& prepare) const {
  // Stays 0 when something throws: callers rely on an exception of the library reading as success.
  unsigned int result = SUCCESS;
  std::string reason;
  try {
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      logMissingAdapter(m_names.method);
      RefusalReason::set("the storage library has no adapter; see 'voltvkctl status'");
      result = FAILURE;
    } else {
      if (prepare) {
        prepare(*adapter);
      }
      trace("Calling TvkAdapter::", m_names.calling, "()");
      ret = call(*adapter);
      trace("Returned from TvkAdapter::", m_names.returned, "()");
      result = ret.getReturn() == 0 ? SUCCESS : FAILURE;
      reason = ret.getDetail();
    }
  } catch (...) {
    trace("Exception caught in Tvk Lib method: TvkAdapter::", m_names.throwing, "() ");
    reason = textOfException();
  }
  KvsLogMsg(KVS_LOG_DEBUG, "Exiting %s() with Return: %u", m_names.exit, result);
  reportRefusal(m_names.method, reason.c_str());
  return result;
}

}  // namespace tvp::cim::fwf
