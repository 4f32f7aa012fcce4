// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/Subscription.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::adap::cmpi {
namespace {

constexpr char NO_BROKER_OR_CONTEXT[] = "NULL broker or context";

/**
 * Records why an indication was not delivered: in the log and as a broker string, which is released at once
 * because no request ends on the listener's thread. @return false
 */
bool notDelivered(const CMPIBroker* broker, const char* reason) {
  KvsLogMsg(KVS_LOG_ERROR, "%s", reason);
  const CMPIObjectGuard<CMPIString> text(newMessage(broker, reason));
  return false;
}

/**
 * Whether a call of the broker succeeded. Its message is released, since no request ends on the listener's
 * thread; a broker that throws has not succeeded, and must not end the listener.
 */
template <typename Call>
bool succeeds(Call call) {
  try {
    const CMPIStatus status = call();
    const CMPIObjectGuard<CMPIString> message(status.msg);
    return status.rc == CMPI_RC_OK;
  } catch (...) {
    return false;
  }
}

/**
 * Has the broker free, on destruction, what it has made on this thread in the meantime. Besides the objects
 * that the provider releases one by one, one object manager makes strings of its own while an indication is
 * converted and delivered, which nothing else frees. Does nothing with a broker that lacks these functions.
 */
class BrokerMemoryMark {
public:
  explicit BrokerMemoryMark(const CMPIBroker* broker) : m_broker(broker) {
    if (broker->mft == nullptr || broker->mft->mark == nullptr || broker->mft->release == nullptr) {
      return;
    }
    succeeds([this] {
      CMPIStatus rc{CMPI_RC_OK, nullptr};
      m_mark = m_broker->mft->mark(m_broker, &rc);
      return rc;
    });
  }
  ~BrokerMemoryMark() {
    if (m_mark != nullptr) {
      succeeds([this] { return m_broker->mft->release(m_broker, m_mark); });
    }
  }
  BrokerMemoryMark(const BrokerMemoryMark&) = delete;
  BrokerMemoryMark& operator=(const BrokerMemoryMark&) = delete;

private:
  const CMPIBroker* m_broker;
  CMPIGcStat* m_mark = nullptr;
};

/** The CMPI instance of an indication. @return a null guard if it cannot be made */
CMPIObjectGuard<CMPIInstance>
convertIndication(const fwf::CIMInstance& indication, const CMPIBroker* broker) {
  try {
    return CMPIObjectGuard<CMPIInstance>(
        CMPIHelper::FrameworkInstanceToCMPIInstance(indication, broker, nullptr));
  } catch (...) {
    return CMPIObjectGuard<CMPIInstance>();
  }
}

}  // namespace

std::atomic<std::int32_t> CMPIAdapter::m_numOfSubscriptions{0};

void CMPIAdapter::setThreadContext(const CMPIBroker* broker, const CMPIContext* context) {
  const CMPIContext* prepared = CBPrepareAttachThread(broker, context);
  m_threadContext = prepared;
  // The previously prepared context is not released: the listener may be about to attach with it.
  m_preparedContext = prepared;
}

void CMPIAdapter::resetThreadContextToContext(const CMPIContext* context) {
  m_preparedContext = nullptr;
  m_threadContext = context;
}

void CMPIAdapter::EnableIndications(
    CMPIIndicationMI*, const CMPIContext*, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("EnableIndications", broker, status, [] {
    if (++m_numOfSubscriptions == 1) {
      fwf::m_subscription = true;
    }
    KvsLogMsg(
        KVS_LOG_INFORMATION, "CMPIAdapter::EnableIndications --> m_subscription = %d",
        fwf::m_subscription ? 1 : 0);
  });
}

void CMPIAdapter::DisableIndications(
    CMPIIndicationMI*, const CMPIContext*, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("DisableIndications", broker, status, [] {
    // COMPAT: no lower bound; object managers see that a surplus call leaves a nonzero count.
    if (--m_numOfSubscriptions == 0) {
      fwf::m_subscription = false;
    }
  });
}

void CMPIAdapter::ActivateFilter(
    CMPIIndicationMI*, const CMPIContext* ctx, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    CMPIBoolean, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("ActivateFilter", broker, status, [&] {
    setContext(ctx);
    setBroker(broker);
    if (broker == nullptr || ctx == nullptr) {
      throw fwf::CIMException(fwf::FW_RC_FAILED, std::string(NO_BROKER_OR_CONTEXT));
    }
    setThreadContext(broker, ctx);
    if (getThreadContext() == nullptr) {
      resetThreadContextToContext(ctx);
    }
  });
}

void CMPIAdapter::DeActivateFilter(
    CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    CMPIBoolean, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("DeActivateFilter", broker, status, [] {});
}

void CMPIAdapter::MustPoll(
    CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    const CMPIBroker*, CMPIStatus* status) {
  *status = CMPIStatus{CMPI_RC_OK, nullptr};
}

void CMPIAdapter::AuthorizeFilter(
    CMPIIndicationMI*, const CMPIContext*, const CMPISelectExp*, const char*, const CMPIObjectPath*,
    const char*, const CMPIBroker*, CMPIStatus* status) {
  *status = CMPIStatus{CMPI_RC_OK, nullptr};
}

bool CMPIAdapter::DeliverIndication(fwf::CIMInstance& indication) {
  KvsTrace("Entering CMPIAdapter::DeliverIndication()");
  // Not locked once there is an adapter: deleteInstance holds the lock while it waits for the listener, which
  // is this thread.
  const CMPIAdapter* adapter = m_adapins.load() == nullptr ? getInstance() : instanceWithoutLock();
  if (adapter == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to get CMPIAdapter singleton instance");
    return false;
  }
  if (m_numOfSubscriptions == 0) {
    KvsLogMsg(KVS_LOG_INFORMATION, "No subscription to service indications");
    return true;
  }
  const CMPIBroker* broker = adapter->getBroker();
  const CMPIContext* base = adapter->getContext();
  if (broker == nullptr || base == nullptr) {
    return notDelivered(broker, NO_BROKER_OR_CONTEXT);
  }
  const CMPIContext* threadContext = adapter->m_preparedContext;
  if (threadContext == nullptr || threadContext == base) {
    KvsLogMsg(KVS_LOG_INFORMATION, "Could not deliver indication");
    // COMPAT: the wording is the opposite of the case; logs are searched for it.
    KvsLogMsg(KVS_LOG_INFORMATION, "#***#Thread Context not equal to Original Context");
    return false;
  }
  if (!succeeds([&] { return CBAttachThread(broker, threadContext); })) {
    return notDelivered(broker, "Failed to attach context to new thread");
  }
  const BrokerMemoryMark mark(broker);
  const CMPIObjectGuard<CMPIInstance> instance = convertIndication(indication, broker);
  if (!instance.usable()) {
    return notDelivered(broker, "Failed to convert CMPI Instance to Framework Instance");
  }
  if (!succeeds([&] {
        return CBDeliverIndication(broker, threadContext, indication.nameSpace().c_str(), instance.get());
      })) {
    return notDelivered(broker, "Failed to deliver indication");
  }
  KvsTrace("Exiting CMPIAdapter::DeliverIndication()");
  return true;
}

}  // namespace tvp::cim::adap::cmpi
