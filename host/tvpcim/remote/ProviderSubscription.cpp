// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/ProviderSubscription.h"

namespace tvp::host::tvpcim {

ProviderSubscription::ProviderSubscription(
    Session& session, const std::string& className, const std::string& user)
    : m_session(session) {
  m_filter.className = className;
  m_filter.query = "SELECT * FROM " + className;
  m_filter.path = m_session.pathOf(className);
  m_filter.owner = user;
}

void ProviderSubscription::begin() {
  Provider& provider = m_session.provider();
  m_session.check(provider.authorizeFilter(m_filter));
  m_session.check(provider.mustPoll(m_filter));
  m_session.check(provider.activateFilter(m_filter));
  m_session.check(provider.enableIndications());
}

void ProviderSubscription::end() {
  m_session.check(m_session.provider().deActivateFilter(m_filter));
  m_session.check(m_session.provider().disableIndications());
}

}  // namespace tvp::host::tvpcim
