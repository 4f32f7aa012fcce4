// SPDX-License-Identifier: Apache-2.0
#include "backend/AdapterOperation.h"

#include "CIM/Framework/RefusalReason.h"
#include "backend/BackendResult.h"
#include "backend/LibraryAccess.h"
#include "backend/Refusal.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"

#include <cstdio>
#include <exception>
#include <new>
#include <string>

namespace tvp::cim::fwf {

namespace {

enum class Cause { NoMemory, Other };

/** Copies the message of the exception being handled; leaves the text unchanged if it has none. */
Cause keepTextOfException(char (&text)[TVK_DETAIL_SIZE]) noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    std::snprintf(text, sizeof text, "%s", "there is not enough memory");
    return Cause::NoMemory;
  } catch (const std::exception& exception) {
    std::snprintf(text, sizeof text, "%s", exception.what());
  } catch (...) {
  }
  return Cause::Other;
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
  // COMPAT: unchanged when something throws; clients see an exception from the library as success. Not on
  // allocation failure, after which the operation may never have reached the library.
  unsigned int result = BACKEND_DONE;
  char reason[TVK_DETAIL_SIZE] = "";
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
      std::snprintf(reason, sizeof reason, "%s", ret.getDetail());
    }
  } catch (...) {
    traceParts({"Exception caught in Tvk Lib method: TvkAdapter::", m_throwing, "() "});
    if (keepTextOfException(reason) == Cause::NoMemory) {
      result = BACKEND_FAILED;
    }
  }
  KvsLogMsg(KVS_LOG_DEBUG, "Exiting %s() with Return: %u", m_exit, result);
  reportRefusal(m_method, reason);
  return result;
}

}  // namespace tvp::cim::fwf
