// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_PROVIDERSUBSCRIPTION_H
#define HOST_TVPCIM_REMOTE_PROVIDERSUBSCRIPTION_H

#include "host/tvpcim/Session.h"

#include <string>

namespace tvp::host::tvpcim {

/** A subscription of this process to the indications of the provider, which go to the handler that the
 * session's broker has. One thread; the session must outlive it. */
class ProviderSubscription {
public:
  /** The class of all indications of the provider. */
  static constexpr const char* EVENTS = "TVP_CIMIndication";

  /** @param user in whose name the provider is asked @throws UsageError for an unknown class */
  ProviderSubscription(Session& session, const std::string& className, const std::string& user);

  /** Subscribes as an object manager does. @throws OperationError */
  void begin();
  /** Takes the subscription back. @throws OperationError */
  void end();

private:
  Session& m_session;
  IndicationFilter m_filter;
};

}  // namespace tvp::host::tvpcim

#endif
