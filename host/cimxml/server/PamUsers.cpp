// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/PamUsers.h"

#include "host/cimxml/server/Credentials.h"

#include <security/pam_appl.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace tvp::host::cimxml {
namespace {

/** What PAM asks for, answered: a hidden question with the password, any other with the user. */
int converse(int count, const pam_message** messages, pam_response** responses, void* data) {
  const auto& credentials = *static_cast<const Credentials*>(data);
  if (count <= 0 || count > PAM_MAX_NUM_MSG) {
    return PAM_CONV_ERR;
  }
  // PAM frees them.
  auto* answers =
      static_cast<pam_response*>(std::calloc(static_cast<std::size_t>(count), sizeof(pam_response)));
  if (answers == nullptr) {
    return PAM_BUF_ERR;
  }
  for (int index = 0; index < count; ++index) {
    const int style = messages[index]->msg_style;
    if (style == PAM_PROMPT_ECHO_OFF || style == PAM_PROMPT_ECHO_ON) {
      const std::string& answer = style == PAM_PROMPT_ECHO_OFF ? credentials.password : credentials.user;
      answers[index].resp = ::strdup(answer.c_str());
    }
  }
  *responses = answers;
  return PAM_SUCCESS;
}

void noPause(int /*result*/, unsigned /*microseconds*/, void* /*data*/) {}

}  // namespace

PamUsers::PamUsers(std::string service, std::string directory)
    : m_service(std::move(service)), m_directory(std::move(directory)) {}

bool PamUsers::accepts(const std::string& user, const std::string& password) {
  Credentials credentials{user, password};
  const pam_conv conversation{converse, &credentials};
  pam_handle_t* handle = nullptr;
  int result =
      m_directory.empty()
          ? pam_start(m_service.c_str(), user.c_str(), &conversation, &handle)
          : pam_start_confdir(m_service.c_str(), user.c_str(), &conversation, m_directory.c_str(), &handle);
  if (result != PAM_SUCCESS) {
    return false;
  }
  // The server pauses itself, as long for a user that does not exist.
  pam_set_item(handle, PAM_FAIL_DELAY, reinterpret_cast<const void*>(noPause));
  const int flags = PAM_SILENT | PAM_DISALLOW_NULL_AUTHTOK;
  result = pam_authenticate(handle, flags);
  if (result == PAM_SUCCESS) {
    result = pam_acct_mgmt(handle, flags);
  }
  pam_end(handle, result);
  return result == PAM_SUCCESS;
}

}  // namespace tvp::host::cimxml
