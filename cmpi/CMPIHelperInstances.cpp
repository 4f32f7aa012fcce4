// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperPaths.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMException;
using fwf::CIMInstance;
using fwf::CIMProperty;

void logPropertyFailure(const CMPIStatus&) {
  // COMPAT: a fixed number, whatever the line, and the misspelling: support searches logs for this text.
  KvsLogMsg(KVS_LOG_DEBUG, "Exception throwin in Fun: %s in Line# %d", "setProps", 2297);
}

void setProperty(const CMPIInstance* ci, const CIMProperty& property, const OutboundRules& rules) {
  const std::optional<OutboundShape> shape = naturalShape(property.getType(), IN_PROPERTY);
  if (!shape) {
    KvsLogMsg(
        KVS_LOG_DEBUG, "TVP: fwf::FW_RC_NOT_SUPPORTED - propertyType %d",
        static_cast<int>(property.getType()));
    throw CIMException(fwf::FW_RC_NOT_SUPPORTED, std::string(fwf::NOT_SUPPORTED_SUFFIX));
  }
  const OutboundValue value = valueOfProperty(property, *shape, rules);
  const CMPIStatus rc = CMSetProperty(ci, property.name().c_str(), value.get(), value.type());
  if (rc.rc != CMPI_RC_OK) {
    KvsLogMsg(
        KVS_LOG_INFORMATION, "%s:Exception for the attribute %s due to Type MisMatch ->%d.",
        "FrameworkInstanceToCMPIInstance", property.name().c_str(), static_cast<int>(rc.rc));
    fail(nullptr, rc);
  }
}

/**
 * An empty CMPI instance; its path is released at once. @return a null guard if the broker returns neither an
 * instance nor an error
 */
CMPIObjectGuard<CMPIInstance> newInstance(const CIMInstance& inst, const CMPIBroker* broker) {
  const CMPIObjectGuard<CMPIObjectPath> op(makeObjectPath(
      inst.nameSpace(), inst.className(), inst.keyProperties(), KeySelection::WithoutArrays, broker));
  if (!op.usable()) {
    return CMPIObjectGuard<CMPIInstance>();
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  CMPIObjectGuard<CMPIInstance> ci(CMNewInstance(broker, op.get(), &rc));
  requireOk(rc);
  return ci;
}

}  // namespace

bool CMPIHelper::CMPIInstanceToFrameworkInstance(
    CMPIInstance const* ci, fwf::CIMObjectPath& path, CIMInstance& out) {
  out.setPath(path);
  return setProps(ci, out);
}

bool CMPIHelper::setProps(CMPIInstance const* ci, CIMInstance& out) {
  // References are read without their keys: nothing that can be written is addressed by them.
  const InboundRules rules{IN_PROPERTY, CMPIObjectPathToFrameworkObjectPath, logPropertyFailure};
  if (!isObject(ci)) {
    fail();
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPICount count = CMGetPropertyCount(ci, &rc);
  requireOk(rc);
  std::vector<CIMProperty> properties;
  for (CMPICount i = 0; i < count; ++i) {
    CMPIString* name = nullptr;
    const CMPIData data = CMGetPropertyAt(ci, i, &name, &rc);
    requireOk(rc);
    if (data.state != CMPI_goodValue || CMIsArray(data)) {
      continue;
    }
    const std::string text = textOf(name);
    if (const InboundKind* kind = findInboundKind(data.type, IN_PROPERTY)) {
      properties.push_back(makeProperty(*kind, text, data, rules));
    }
  }
  for (CIMProperty& property : properties) {
    out.addProperty(std::move(property));
  }
  return true;
}

CMPIInstance* CMPIHelper::FrameworkInstanceToCMPIInstance(
    CIMInstance const& inst, CMPIBroker const* broker, char const** properties) {
  CMPIObjectGuard<CMPIInstance> ci = newInstance(inst, broker);
  if (!ci.usable()) {
    return nullptr;
  }
  if (properties != nullptr) {
    requireOk(CMSetPropertyFilter(ci.get(), properties, nullptr));
  }
  const OutboundRules rules{broker, properties, nullptr};
  for (const CIMProperty& property : inst.properties()) {
    setProperty(ci.get(), property, rules);
  }
  return ci.leave();
}

}  // namespace tvp::cim::adap::cmpi
