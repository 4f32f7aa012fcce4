// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_PAMUSERS_H
#define HOST_CIMXML_SERVER_PAMUSERS_H

#include "host/cimxml/server/HttpServer.h"

namespace tvp::host::cimxml {

/** The users of the machine, whose passwords PAM checks. */
class PamUsers : public Users {
public:
  /** @param service of PAM @param directory where its file is; empty: where PAM looks by default */
  explicit PamUsers(std::string service, std::string directory = "");

  std::optional<std::string> anonymous() const override { return std::nullopt; }
  /** Whether PAM authenticates the user and the account is in order. PAM's own pause after a wrong password
   * is left out. */
  bool accepts(const std::string& user, const std::string& password) override;

private:
  const std::string m_service;
  const std::string m_directory;
};

}  // namespace tvp::host::cimxml

#endif
