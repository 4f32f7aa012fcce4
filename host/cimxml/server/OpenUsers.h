// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_OPENUSERS_H
#define HOST_CIMXML_SERVER_OPENUSERS_H

#include "host/cimxml/server/HttpServer.h"

#include <memory>
#include <utility>

namespace tvp::host::cimxml {

/** Asks nobody for a password: every client is the same user. */
class OpenUsers : public Users {
public:
  explicit OpenUsers(std::string user) : m_user(std::move(user)) {}

  std::optional<std::string> anonymous() const override { return m_user; }
  bool accepts(const std::string& /*user*/, const std::string& /*password*/) override { return false; }

private:
  const std::string m_user;
};

/** Whether a user's primary group is root's, which lets him change things. */
bool isAdministrator(const std::string& user);

/** Of some users, permits those only whose primary group is root's. */
class AdministratorsOnly : public Users {
public:
  explicit AdministratorsOnly(std::shared_ptr<Users> users) : m_users(std::move(users)) {}

  std::optional<std::string> anonymous() const override { return m_users->anonymous(); }
  bool accepts(const std::string& user, const std::string& password) override {
    return m_users->accepts(user, password);
  }
  bool permits(const std::string& user) const override {
    return m_users->permits(user) && isAdministrator(user);
  }

private:
  const std::shared_ptr<Users> m_users;
};

}  // namespace tvp::host::cimxml

#endif
