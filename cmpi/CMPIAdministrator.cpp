// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIAdministrator.h"

#include "CIM/Framework/CommonFunctions.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSPaths.h"
#include "oslib/KVSSystem.h"

#include <fstream>

namespace tvp::cim::adap::cmpi {
namespace {

constexpr std::uint32_t HOST_NAME_SIZE = 256;
constexpr unsigned int LOGIN_FIELD = 1;
constexpr unsigned int PRIMARY_GROUP_FIELD = 4;

}  // namespace

bool readOrigin(const CMPIContext* ctx, const CMPIBroker* broker, RequestOrigin& origin, CMPIStatus* status) {
  char host[HOST_NAME_SIZE] = {};
  KvsGetHostName(host, HOST_NAME_SIZE);
  host[HOST_NAME_SIZE - 1] = '\0';
  origin.host = std::string("\\\\") + host;

  CMPIStatus rc{isObject(ctx) ? CMPI_RC_OK : CMPI_RC_ERR_FAILED, nullptr};
  CMPIData principal{};
  if (rc.rc == CMPI_RC_OK) {
    principal = CMGetContextEntry(ctx, "CMPIPrincipal", &rc);
  }
  if (rc.rc != CMPI_RC_OK) {
    setStatus(status, CMPI_RC_ERR_FAILED, broker, "Failed to get context entry type CMPIPrinciple");
    return false;
  }
  const char* user = nullptr;
  // The value of anything else than a string is not a pointer that may be followed.
  if (principal.type == CMPI_string && principal.value.string != nullptr) {
    // The handle is not checked: where the handle is the text itself, it is null for a null text.
    user = CMGetCharsPtr(principal.value.string, &rc);
  } else {
    rc.rc = CMPI_RC_ERR_FAILED;
  }
  if (rc.rc != CMPI_RC_OK) {
    setStatus(status, CMPI_RC_ERR_FAILED, broker, "Failed to get CharsPtr from string username");
    return false;
  }
  // An object manager without authentication passes a principal whose text is null.
  origin.user = user == nullptr ? "" : user;
  return true;
}

bool admitOrigin(const RequestOrigin& origin, const CMPIBroker* broker, CMPIStatus* status) {
  if (!CMPIAdapter::VerifyUserRole(origin.user, origin.host) && !origin.user.empty()) {
    const std::string refusal = origin.user + " : is not a member of Administrator/root";
    setStatus(status, CMPI_RC_ERR_ACCESS_DENIED, broker, refusal.c_str());
    return false;
  }
  KvsLogMsg(KVS_LOG_INFORMATION, "UserName = %s is verified", origin.user.c_str());
  return true;
}

bool CMPIAdapter::VerifyUserRole(const std::string& userName, const std::string&) {
  std::ifstream users(kvsPasswdFile());
  for (std::string line; std::getline(users, line);) {
    if (fwf::CommonFunctions::getStringAtPosition(line, PRIMARY_GROUP_FIELD, ':') == "0" &&
        fwf::CommonFunctions::getStringAtPosition(line, LOGIN_FIELD, ':') == userName) {
      return true;
    }
  }
  return false;
}

}  // namespace tvp::cim::adap::cmpi
