// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_FRAMEWORK_RECORDINGPLUGIN_H
#define TESTS_FRAMEWORK_RECORDINGPLUGIN_H

#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"
#include "CIM/Framework/CIMException.h"

#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

/** An association and method plugin that records which operation was called and fails on demand. */
class RecordingPlugin : public cim::fwf::AbstractAssociationProviderPlugin,
                        public virtual cim::fwf::AbstractMethodProviderPlugin {
  using Path = cim::fwf::CIMObjectPath;
  using Paths = std::vector<cim::fwf::CIMObjectPath>;
  using Instances = std::vector<cim::fwf::CIMInstance>;
  using Properties = std::vector<cim::fwf::CIMProperty>;

public:
  RecordingPlugin() : AbstractAssociationProviderPlugin("TEST_Recording", "TEST_Near", "TEST_Far") {
    ++living;
  }
  ~RecordingPlugin() override { --living; }

  inline static int living = 0;

  std::vector<std::string> calls;
  bool fails = false;

  void getCIMInstance(Path&, Instances&) override { note("getCIMInstance"); }
  void enumerateInstances(Path&, Instances&, bool flag) override {
    note(flag ? "enumerateInstances with the flag" : "enumerateInstances");
  }
  void enumerateInstanceNames(Path&, Paths&) override { note("enumerateInstanceNames"); }
  void modifyInstance(Path&, cim::fwf::CIMInstance&, std::vector<std::string>&) override {
    note("modifyInstance");
  }
  void createInstance(Path&, cim::fwf::CIMInstance&) override { note("createInstance"); }
  void deleteInstance(const Path&) override { note("deleteInstance"); }
  void associators(
      Path&, std::string&, Instances&, std::string&, std::string&, std::string&, const char**) override {
    note("associators");
  }
  void associatorNames(Path&, std::string&, Paths&, std::string&, std::string&, std::string&) override {
    note("associatorNames");
  }
  void references(Path&, const std::string&, Instances&, const std::string&) override { note("references"); }
  void referencesNames(Path&, const std::string&, const std::string&, Paths&) override {
    note("referencesNames");
  }
  unsigned int invokeMethod(
      const Path&, const std::string& name, const cim::fwf::CIMMethodParam&,
      cim::fwf::CIMMethodParam&) override {
    note("invokeMethod " + name);
    return 42;
  }
  void getKeyAttributes(const cim::fwf::CIMInstance&, Properties&) override {}
  void getNonKeyAttributes(const cim::fwf::CIMInstance&, Properties&) override {}
  void getRepositoryObjects(const Path&, Instances&) override {}

private:
  void note(std::string call) {
    calls.push_back(std::move(call));
    if (fails) {
      throw cim::fwf::CIMException(6, std::string("100%s gone"));
    }
  }
};

}  // namespace tvp::test

#endif
