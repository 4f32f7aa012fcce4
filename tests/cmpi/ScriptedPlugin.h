// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CMPI_SCRIPTEDPLUGIN_H
#define TESTS_CMPI_SCRIPTEDPLUGIN_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "CIM/Framework/PluginsManager.h"

#include <functional>
#include <string>
#include <vector>

namespace tvp::test {

/** A plugin for TEST_All that answers what a test has set, and notes what it was given. */
class ScriptedPlugin : public cim::fwf::AbstractInstanceProviderPlugin {
  using Path = cim::fwf::CIMObjectPath;
  using Properties = std::vector<cim::fwf::CIMProperty>;

public:
  /** Registers a new one, which the registry owns. */
  static ScriptedPlugin& install() {
    auto* plugin = new ScriptedPlugin;
    cim::fwf::PluginsManager::getInstance()->registerPlugin("test_all", plugin);
    return *plugin;
  }

  std::vector<cim::fwf::CIMInstance> instances;
  std::vector<Path> names;
  std::function<void()> beforeAnswer = [] {};
  unsigned int returnValue = 0;
  cim::fwf::CIMMethodParam output;

  Path givenPath;
  cim::fwf::CIMInstance givenInstance;
  std::vector<std::string> givenList;
  cim::fwf::CIMMethodParam givenInput;
  int changes = 0;  ///< calls of modifyInstance and invokeMethod

  void getCIMInstance(Path& path, std::vector<cim::fwf::CIMInstance>& out) override {
    givenPath = path;
    beforeAnswer();
    out = instances;
  }
  void enumerateInstances(Path& path, std::vector<cim::fwf::CIMInstance>& out, bool) override {
    getCIMInstance(path, out);
  }
  void enumerateInstanceNames(Path& path, std::vector<Path>& out) override {
    givenPath = path;
    beforeAnswer();
    out = names;
  }
  void modifyInstance(Path& path, cim::fwf::CIMInstance& instance, std::vector<std::string>& list) override {
    ++changes;
    givenPath = path;
    givenInstance = instance;
    givenList = list;
    beforeAnswer();
  }
  unsigned int invokeMethod(
      const Path& path, const std::string&, const cim::fwf::CIMMethodParam& in,
      cim::fwf::CIMMethodParam& out) override {
    ++changes;
    givenPath = path;
    givenInput = in;
    beforeAnswer();
    out = output;
    return returnValue;
  }
  void getKeyAttributes(const cim::fwf::CIMInstance&, Properties&) override {}
  void getNonKeyAttributes(const cim::fwf::CIMInstance&, Properties&) override {}
  void getRepositoryObjects(const Path&, std::vector<cim::fwf::CIMInstance>&) override {}
};

}  // namespace tvp::test

#endif
