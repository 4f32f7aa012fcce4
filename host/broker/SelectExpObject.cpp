// SPDX-License-Identifier: Apache-2.0
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/**
 * The host passes filters on without evaluating them: subscriptions are served by the provider, and every
 * indication that arrives is shown in full.
 */
template <class Result, class... Arguments>
Result notSupported(SelectExpContent&, Call&, Arguments...) {
  throw CallFailure{CMPI_RC_ERR_NOT_SUPPORTED};
}

}  // namespace

CMPISelectExpFT* ObjectTraits<CMPISelectExp>::table() {
  static CMPISelectExpFT functions = objectTable<CMPISelectExp>([](CMPISelectExpFT& table) {
    bind<&CMPISelectExpFT::evaluate>(table, "evaluate", notSupported<CMPIBoolean, const CMPIInstance*>);
    bind<&CMPISelectExpFT::getString>(table, "getString", [](SelectExpContent& content, Call& call) {
      return call.makeString(content.query);
    });
    bind<&CMPISelectExpFT::getDOC>(table, "getDOC", notSupported<CMPISelectCond*>);
    bind<&CMPISelectExpFT::getCOD>(table, "getCOD", notSupported<CMPISelectCond*>);
    bind<&CMPISelectExpFT::evaluateUsingAccessor>(
        table, "evaluateUsingAccessor", notSupported<CMPIBoolean, CMPIAccessor*, void*>);
  });
  return &functions;
}

}  // namespace tvp::host
