// SPDX-License-Identifier: Apache-2.0
#include "backend/AdapterOperation.h"

#include "CIM/Framework/RefusalReason.h"
#include "backend/BackendResult.h"
#include "backend/LibraryAccess.h"
#include "backend/Refusal.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"

#include <exception>
#include <string>

namespace tvp::cim::fwf {

namespace {

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
  traceParts({"Entering ", m_method, "()"});
  return carryOut(ret, call, prepare);
}

unsigned int AdapterOperation::carryOut(Ret& ret, const Call& call, const Preparation& prepare) const {
  // COMPAT: stays so when something throws; clients see an exception of the library as success.
  unsigned int result = BACKEND_DONE;
  std::string reason;
  try {
    TvkAdapter* adapter = getTvkAdapter();
    if (adapter == nullptr) {
      logMissingAdapter(m_method);
      RefusalReason::set("the storage library has no adapter; see 'voltvkctl status'");
      result = BACKEND_FAILED;
    } else {
      if (prepare) {
        prepare(*adapter);
      }
      traceParts({"Calling TvkAdapter::", m_calling, "()"});
      ret = call(*adapter);
      traceParts({"Returned from TvkAdapter::", m_returned, "()"});
      result = ret.getReturn() == 0 ? BACKEND_DONE : BACKEND_FAILED;
      reason = ret.getDetail();
    }
  } catch (...) {
    traceParts({"Exception caught in Tvk Lib method: TvkAdapter::", m_throwing, "() "});
    reason = textOfException();
  }
  KvsLogMsg(KVS_LOG_DEBUG, "Exiting %s() with Return: %u", m_exit, result);
  reportRefusal(m_method, reason.c_str());
  return result;
}

}  // namespace tvp::cim::fwf
