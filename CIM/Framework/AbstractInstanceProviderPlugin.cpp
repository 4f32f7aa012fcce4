// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

#include "CIM/Framework/CIMException.h"
#include "oslib/KVSLog.h"

#include <utility>

namespace tvp::cim::fwf {

/** The texts in which the three operations built from the hooks differ. */
struct AbstractInstanceProviderPlugin::TemplateOperation {
  const char* name;
  const char* entering;
  const char* exiting;     ///< null if the operation does not trace its end
  const char* failureEnd;  ///< what follows the message of a failure
};

/**
 * Passes every repository object of the path to append. An empty repository is a valid result, not an error.
 * What was appended before a failure stays in the output.
 */
template <typename Append>
void AbstractInstanceProviderPlugin::answerFromRepository(
    const TemplateOperation& operation, const CIMObjectPath& path, Append append) {
  KvsTrace(operation.entering);
  try {
    std::vector<CIMInstance> repository;
    getRepositoryObjects(path, repository);
    if (repository.empty()) {
      KvsLogMsg(
          KVS_LOG_DEBUG, "%s :: Empty list returned for class %s", operation.name, path.className().c_str());
      return;
    }
    for (const CIMInstance& object : repository) {
      append(object);
    }
  } catch (const CIMException& failure) {
    KvsLogMsg(KVS_LOG_ERROR, "%s :: %s%s", operation.name, failure.message().c_str(), operation.failureEnd);
    throw CIMException(failure);
  }
  if (operation.exiting != nullptr) {
    KvsTrace(operation.exiting);
  }
}

CIMInstance
AbstractInstanceProviderPlugin::composeInstance(const CIMInstance& object, const CIMObjectPath& path) {
  std::vector<CIMProperty> keys;
  std::vector<CIMProperty> others;
  getKeyAttributes(object, keys);
  getNonKeyAttributes(object, others);
  CIMInstance instance;
  instance.setPath(path);
  for (CIMProperty& key : keys) {
    instance.addCimKeyBinding(std::move(key));
  }
  for (CIMProperty& property : others) {
    instance.addProperty(std::move(property));
  }
  return instance;
}

void AbstractInstanceProviderPlugin::getCIMInstance(
    CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  static constexpr TemplateOperation OPERATION = {
      "getCIMInstance", "Entering AbstractInstanceProviderPlugin :: getCIMInstance()",
      "Exiting AbstractInstanceProviderPlugin :: getCIMInstance()", ""};
  answerFromRepository(OPERATION, path, [&](const CIMInstance& object) {
    instances.push_back(composeInstance(object, path));
  });
}

void AbstractInstanceProviderPlugin::enumerateInstances(
    CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  // COMPAT: logs are searched for the text with its run of blanks.
  static constexpr TemplateOperation OPERATION = {
      "enumerateInstances", "Entering AbstractInstanceProviderPlugin ::              enumerateInstances()",
      "Exiting AbstractInstanceProviderPlugin :: enumerateInstances()", ""};
  answerFromRepository(OPERATION, path, [&](const CIMInstance& object) {
    instances.push_back(composeInstance(object, path));
  });
}

void AbstractInstanceProviderPlugin::enumerateInstanceNames(
    CIMObjectPath& path, std::vector<CIMObjectPath>& names) {
  // COMPAT: logs are searched for the full stop after the message of a failure; the end is not traced.
  static constexpr TemplateOperation OPERATION = {
      "enumerateInstanceNames", "Entering AbstractInstanceProviderPlugin :: enumerateInstanceNames()",
      nullptr, "."};
  answerFromRepository(OPERATION, path, [&](const CIMInstance& object) {
    std::vector<CIMProperty> keys;
    getKeyAttributes(object, keys);
    names.emplace_back(path.host(), path.nameSpace(), path.className(), std::move(keys));
  });
}

void AbstractInstanceProviderPlugin::throwNotSupported(const char* operation) {
  throw frameworkError(FW_RC_NOT_SUPPORTED, operation, NOT_SUPPORTED_SUFFIX);
}

void AbstractInstanceProviderPlugin::modifyInstance(CIMObjectPath&, CIMInstance&, std::vector<std::string>&) {
  throwNotSupported("modifyInstance");
}

void AbstractInstanceProviderPlugin::createInstance(CIMObjectPath&, CIMInstance&) {
  throwNotSupported("createInstance");
}

void AbstractInstanceProviderPlugin::deleteInstance(const CIMObjectPath&) {
  throwNotSupported("deleteInstance");
}

void AbstractInstanceProviderPlugin::associators(
    CIMObjectPath&, std::string&, std::vector<CIMInstance>&, std::string&, std::string&, std::string&,
    const char**) {
  throwNotSupported("associators");
}

void AbstractInstanceProviderPlugin::associatorNames(
    CIMObjectPath&, std::string&, std::vector<CIMObjectPath>&, std::string&, std::string&, std::string&) {
  throwNotSupported("associatorNames");
}

void AbstractInstanceProviderPlugin::references(
    CIMObjectPath&, const std::string&, std::vector<CIMInstance>&, const std::string&) {
  throwNotSupported("references");
}

void AbstractInstanceProviderPlugin::referencesNames(
    CIMObjectPath&, const std::string&, const std::string&, std::vector<CIMObjectPath>&) {
  throwNotSupported("referencesNames");
}

unsigned int AbstractInstanceProviderPlugin::invokeMethod(
    const CIMObjectPath&, const std::string&, const CIMMethodParam&, CIMMethodParam&) {
  return FW_RC_NOT_SUPPORTED;
}

void AbstractInstanceProviderPlugin::pushCompletedJobObject(_CompletedJob) {}

void AbstractInstanceProviderPlugin::popCompletedJobObject(std::string) {}

}  // namespace tvp::cim::fwf
