// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_SUBSCRIPTION_H
#define CIM_FRAMEWORK_SUBSCRIPTION_H

#include <atomic>

namespace tvp::cim::fwf {

/**
 * True while at least one client subscription to indications is counted. Changed by the object
 * manager's adapter, read by FrameworkFacade::notify on the listener thread.
 */
extern std::atomic<bool> m_subscription;

}  // namespace tvp::cim::fwf

#endif
