// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/**
 * The host hands filters over and does not evaluate them: a subscription is served by the provider, and
 * what arrives is shown whole.
 */
CMPIBoolean evaluate(const CMPISelectExp* expression, const CMPIInstance*, CMPIStatus* status) {
  return valueCall<CMPIBoolean>(
      expression, "CMPISelectExp.evaluate", status, [](SelectExpContent&, BrokerState&, CMPIrc& code) {
        code = CMPI_RC_ERR_NOT_SUPPORTED;
        return CMPIBoolean{0};
      });
}

CMPIBoolean evaluateUsingAccessor(const CMPISelectExp* expression, CMPIAccessor*, void*, CMPIStatus* status) {
  return evaluate(expression, nullptr, status);
}

CMPIString* getString(const CMPISelectExp* expression, CMPIStatus* status) {
  return valueCall<CMPIString*>(
      expression, "CMPISelectExp.getString", status,
      [](SelectExpContent& content, BrokerState& broker, CMPIrc&) {
        return makeString(broker, content.query);
      });
}

CMPISelectCond* getCondition(const CMPISelectExp* expression, CMPIStatus* status) {
  return valueCall<CMPISelectCond*>(
      expression, "CMPISelectExp.getDOC", status,
      [](SelectExpContent&, BrokerState&, CMPIrc& code) -> CMPISelectCond* {
        code = CMPI_RC_ERR_NOT_SUPPORTED;
        return nullptr;
      });
}

}  // namespace

template <>
CMPISelectExpFT* functionTable<CMPISelectExp>() {
  static CMPISelectExpFT table = {CMPIVersion200,
                                  releaseObject<CMPISelectExp>,
                                  cloneObject<CMPISelectExp>,
                                  evaluate,
                                  getString,
                                  getCondition,
                                  getCondition,
                                  evaluateUsingAccessor};
  return &table;
}

}  // namespace tvp::host
