// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIHelperPaths.h"

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSystem.h"

#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMException;
using fwf::CIMObjectPath;
using fwf::CIMProperty;

constexpr char OUTBOUND_NAME[] = "FrameworkObjectPathToCMPIObjectPath";
constexpr std::uint32_t HOST_NAME_SIZE = 256;

/** Null when the string is missing or has no text. */
const char* charactersOf(const CMPIString* text) {
  if (text == nullptr) {
    return nullptr;
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const char* characters = CMGetCharsPtr(text, &rc);
  requireOk(rc);
  return characters;
}

void logMissing(const char* text) {
  KvsLogMsg(KVS_LOG_ERROR, "CMPIHelper::CMPIObjectPathToFrameworkObjectPath() - %s is NULL", text);
}

/** Fails with a code and text of its own, releasing the message, unless a part of a path could be read. */
void requirePart(const CMPIStatus& status, unsigned int code, const char* text) {
  if (status.rc != CMPI_RC_OK) {
    const CMPIObjectGuard<CMPIString> message(status.msg);
    throw CIMException(code, std::string(text));
  }
}

/** Host, namespace and class of a path. @return false, after calling report, if one of the texts is null */
bool readNames(const CMPIObjectPath* op, CIMObjectPath& out, void (*report)(const char* text)) {
  if (!isObject(op)) {
    throw CIMException(fwf::FW_RC_INVALID_NAMESPACE, std::string(fwf::INVALID_NAMESPACE_SUFFIX));
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPIObjectGuard<CMPIString> nameSpace(CMGetNameSpace(op, &rc));
  requirePart(rc, fwf::FW_RC_INVALID_NAMESPACE, fwf::INVALID_NAMESPACE_SUFFIX);
  const char* nameSpaceText = charactersOf(nameSpace.get());
  const CMPIObjectGuard<CMPIString> className(CMGetClassName(op, &rc));
  requirePart(rc, fwf::FW_RC_INVALID_CLASS, fwf::INVALID_CLASS_SUFFIX);
  const char* classText = charactersOf(className.get());
  char host[HOST_NAME_SIZE] = {};
  if (KvsGetHostName(host, HOST_NAME_SIZE) != 0) {
    fail();
  }
  host[HOST_NAME_SIZE - 1] = '\0';
  // The host in the path is not read: the provider manages only this host.
  out.setHost(host);
  if (nameSpaceText == nullptr) {
    report("NameSpace");
    return false;
  }
  out.setNameSpace(nameSpaceText);
  if (classText == nullptr) {
    report("ClassName");
    return false;
  }
  out.setClassName(classText);
  return true;
}

/** Replaces the keys of a path; readPath is for keys that are references. */
void readKeys(const CMPIObjectPath* op, PathReader readPath, CIMObjectPath& out) {
  const InboundRules rules{IN_KEY, readPath, nullptr};
  if (!isObject(op)) {
    fail();
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPICount count = CMGetKeyCount(op, &rc);
  requireOk(rc);
  if (count == 0) {
    return;
  }
  std::vector<CIMProperty> keys;
  for (CMPICount i = 0; i < count; ++i) {
    CMPIString* name = nullptr;
    const CMPIData data = CMGetKeyAt(op, i, &name, &rc);
    // One object manager counts the keys of the class, of which a path that names only the class has none.
    if (rc.rc == CMPI_RC_ERR_NO_SUCH_PROPERTY) {
      continue;
    }
    requireOk(rc);
    const InboundKind* kind = findInboundKind(data.type, IN_KEY);
    if (data.state == CMPI_keyValue && kind != nullptr) {
      keys.push_back(makeProperty(*kind, textOf(name), data, rules));
    }
  }
  out.setKeyBindings(std::move(keys));
}

/** The conversion without its log lines. */
void readPathSilently(const CMPIObjectPath* op, bool withKeys, CIMObjectPath& out) {
  if (readNames(op, out, [](const char*) {}) && withKeys) {
    readKeys(op, readPathSilently, out);
  }
}

void logOutboundFailure(const CMPIStatus& status) {
  const char* message = isObject(status.msg) ? CMGetCharsPtr(status.msg, nullptr) : nullptr;
  KvsLogMsg(
      KVS_LOG_INFORMATION, "%s : Throw exception if operation returns error# %d with Error msg %s",
      OUTBOUND_NAME, static_cast<int>(status.rc), message == nullptr ? "" : message);
}

void addKey(CMPIObjectPath* path, const CIMProperty& key, const OutboundRules& rules) {
  const std::optional<OutboundShape> shape = naturalShape(key.getType(), IN_KEY);
  if (!shape) {
    throw CIMException(fwf::FW_RC_NOT_SUPPORTED, std::string(fwf::NOT_SUPPORTED_SUFFIX));
  }
  if (key.getType() == fwf::PDT_STRING && !key.stringSlot().m_values.empty()) {
    KvsLogMsg(KVS_LOG_DEBUG, " string property %s", key.stringSlot().m_values.front().c_str());
  }
  const OutboundValue value = valueOfProperty(key, *shape, rules);
  if (value.isNull()) {  // a key without a value identifies nothing
    KvsLogMsg(
        KVS_LOG_INFORMATION, "%s:Key %s has no value and is left out.", OUTBOUND_NAME, key.name().c_str());
    return;
  }
  requireOk(CMAddKey(path, key.name().c_str(), value.get(), value.type()), rules.report);
}

bool isArray(const CIMProperty& property) {
  return (property.getType() & 1U) != 0;
}

}  // namespace

void CMPIHelper::CMPIObjectPathToFrameworkObjectPath(
    CMPIObjectPath const* op, bool withKeys, CIMObjectPath& out) {
  KvsTrace("Entering CMPIHelper :: CMPIObjectPathToFrameworkObjectPath");
  if (!readNames(op, out, logMissing)) {
    return;
  }
  if (withKeys) {
    setKeys(op, out);
  }
  KvsTrace("Exiting CMPIHelper :: CMPIObjectPathToFrameworkObjectPath");
}

bool CMPIHelper::setKeys(CMPIObjectPath const* op, CIMObjectPath& out) {
  readKeys(op, CMPIObjectPathToFrameworkObjectPath, out);
  return true;
}

std::string CMPIHelper::objectPathText(CMPIObjectPath const* op) {
  CIMObjectPath path;
  try {
    readPathSilently(op, true, path);
  } catch (const CIMException&) {
    path.clearObjectPath();
  }
  return path.toString();
}

CMPIObjectPath*
CMPIHelper::FrameworkObjectPathToCMPIObjectPath(CIMObjectPath const& path, CMPIBroker const* broker) {
  return makeObjectPath(path.nameSpace(), path.className(), path.keyBindings(), KeySelection::All, broker);
}

CMPIObjectPath* makeObjectPath(
    const std::string& nameSpace, const std::string& className, const std::vector<CIMProperty>& keys,
    KeySelection selection, const CMPIBroker* broker) {
  KvsLogMsg(KVS_LOG_DEBUG, " FrameworkObjectPathToCMPIObjectPath Enter");
  KvsLogMsg(KVS_LOG_DEBUG, " namespace %s", nameSpace.c_str());
  KvsLogMsg(KVS_LOG_DEBUG, " classname %s", className.c_str());
  if (broker == nullptr) {
    fail();
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  CMPIObjectGuard<CMPIObjectPath> path(CMNewObjectPath(broker, nameSpace.c_str(), className.c_str(), &rc));
  if (rc.rc != CMPI_RC_OK) {
    KvsLogMsg(KVS_LOG_INFORMATION, "%s:Cannot set object path.", OUTBOUND_NAME);
    fail(nullptr, rc);
  }
  if (!path.usable()) {
    return nullptr;
  }
  const OutboundRules rules{broker, nullptr, logOutboundFailure};
  for (const CIMProperty& key : keys) {
    if (selection == KeySelection::All || !isArray(key)) {
      addKey(path.get(), key, rules);
    }
  }
  KvsLogMsg(KVS_LOG_DEBUG, " FrameworkObjectPathToCMPIObjectPath Exit");
  return path.leave();
}

void CMPIHelper::ConvertChartoStringVector(char const* const* list, std::vector<std::string>& out) {
  fwf::CommonFunctions::convertToStringVector(list, out);
}

}  // namespace tvp::cim::adap::cmpi
