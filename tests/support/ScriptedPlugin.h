// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_SCRIPTEDPLUGIN_H
#define TESTS_SUPPORT_SCRIPTEDPLUGIN_H

#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"

#include <functional>
#include <string>
#include <vector>

namespace tvp::test {

/** An association and method plugin that answers what a test has set, and notes what it was asked. */
class ScriptedPlugin : public cim::fwf::AbstractAssociationProviderPlugin,
                       public virtual cim::fwf::AbstractMethodProviderPlugin {
  using Path = cim::fwf::CIMObjectPath;
  using Instance = cim::fwf::CIMInstance;
  using Properties = std::vector<cim::fwf::CIMProperty>;
  using Text = std::string;

public:
  explicit ScriptedPlugin(
      const char* name = "TEST_Recording", const char* antecedent = "TEST_Near",
      const char* dependent = "TEST_Far")
      : AbstractAssociationProviderPlugin(name, antecedent, dependent) {
    ++living;
  }
  ~ScriptedPlugin() override { --living; }

  inline static int living = 0;

  std::vector<Instance> instances;
  std::vector<Path> names;
  std::function<void()> beforeAnswer = [] {};
  unsigned int returnValue = 0;
  cim::fwf::CIMMethodParam output;

  std::vector<Text> calls;
  Path givenPath;
  Instance givenInstance;
  std::vector<Text> givenList;
  cim::fwf::CIMMethodParam givenInput;

  void getCIMInstance(Path& path, std::vector<Instance>& out) override {
    note("getCIMInstance", path);
    out = instances;
  }
  void enumerateInstances(Path& path, std::vector<Instance>& out, bool flag) override {
    note(flag ? "enumerateInstances with the flag" : "enumerateInstances", path);
    out = instances;
  }
  void enumerateInstanceNames(Path& path, std::vector<Path>& out) override {
    note("enumerateInstanceNames", path);
    out = names;
  }
  void modifyInstance(Path& path, Instance& instance, std::vector<Text>& list) override {
    givenInstance = instance;
    givenList = list;
    note("modifyInstance", path);
  }
  void createInstance(Path& path, Instance&) override { note("createInstance", path); }
  void deleteInstance(const Path& path) override { note("deleteInstance", path); }
  void associators(Path& path, Text&, std::vector<Instance>&, Text&, Text&, Text&, const char**) override {
    note("associators", path);
  }
  void associatorNames(Path& path, Text&, std::vector<Path>&, Text&, Text&, Text&) override {
    note("associatorNames", path);
  }
  void references(Path& path, const Text&, std::vector<Instance>&, const Text&) override {
    note("references", path);
  }
  void referencesNames(Path& path, const Text&, const Text&, std::vector<Path>&) override {
    note("referencesNames", path);
  }
  unsigned int invokeMethod(
      const Path& path, const Text& name, const cim::fwf::CIMMethodParam& in,
      cim::fwf::CIMMethodParam& out) override {
    givenInput = in;
    note("invokeMethod " + name, path);
    out = output;
    return returnValue;
  }
  void getKeyAttributes(const Instance&, Properties&) override {}
  void getNonKeyAttributes(const Instance&, Properties&) override {}
  void getRepositoryObjects(const Path&, std::vector<Instance>&) override {}

private:
  void note(const Text& call, const Path& path) {
    calls.push_back(call);
    givenPath = path;
    beforeAnswer();
  }
};

}  // namespace tvp::test

#endif
