// SPDX-License-Identifier: Apache-2.0
// The plugin table, the schema and the registration files name the same classes.
#include "CIM/Framework/PluginTable.h"
#include "host/schema/MofReader.h"
#include "support/Lines.h"
#include "text/Case.h"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

namespace {

const std::string modelNamespace = "root/kvs/tvp/smi_15";

/** What a file registers a class for. */
struct Registration {
  std::set<std::string> namespaces;
  std::set<std::string> serves;  ///< "instance", "indication", "method"
  bool operator==(const Registration& other) const {
    return namespaces == other.namespaces && serves == other.serves;
  }
};

std::ostream& operator<<(std::ostream& stream, const Registration& registration) {
  for (const auto* texts : {&registration.namespaces, &registration.serves}) {
    for (const std::string& text : *texts) {
      stream << text << ' ';
    }
  }
  return stream;
}

using Registrations = std::map<std::string, Registration>;

std::set<std::string> matches(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator i(text.begin(), text.end(), expression), end; i != end; ++i) {
    found.insert((*i)[1]);
  }
  return found;
}

Registrations registeredWithPegasus() {
  const std::map<std::string, std::string> names{{"2", "instance"}, {"4", "indication"}, {"5", "method"}};
  const std::string text = tvp::test::readFile(TVP_SOURCE_DIR "/schema/pegasus/TVPRegistration.mof");
  const std::regex block(R"re(instance of PG_ProviderCapabilities\s*\{[^;]*;[^;]*;[^;]*;\s*)re"
                         R"re(ClassName = "(\w+)";\s*Namespaces = \{([^}]*)\};\s*)re"
                         R"re(ProviderType = \{([^}]*)\};)re");
  Registrations result;
  for (std::sregex_iterator i(text.begin(), text.end(), block), end; i != end; ++i) {
    Registration& registration = result[(*i)[1]];
    registration.namespaces = matches((*i)[2], R"re("([^"]+)")re");
    for (const std::string& type : matches((*i)[3], R"((\d+))")) {
      registration.serves.insert(names.at(type));
    }
  }
  return result;
}

Registrations registeredWithSfcb() {
  const std::string text = tvp::test::readFile(TVP_SOURCE_DIR "/schema/sfcb/TVP.reg");
  const std::regex block(R"(\[(\w+)\]\n  provider: tarvexProProvider\n  location: tarvexProProvider\n)"
                         R"(  type: ([^\n]+)\n  namespace: ([^\n]+)\n)");
  Registrations result;
  for (std::sregex_iterator i(text.begin(), text.end(), block), end; i != end; ++i) {
    result[(*i)[1]] = {matches((*i)[3], R"((\S+))"), matches((*i)[2], R"((\w+))")};
  }
  return result;
}

/** The lower-case names of the classes that the schema wants a plugin for; fills what is to be registered. */
std::set<std::string>
servedClasses(Registrations& expected, const std::set<std::string>& indicationNamespaces) {
  std::set<std::string> served;
  const auto schema = tvp::host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  for (const tvp::host::SchemaClass* cimClass : schema->classes()) {
    if (cimClass->isIndication()) {
      expected[cimClass->name] = {indicationNamespaces, {"indication"}};
      continue;
    }
    served.insert(tvp::text::lowerCase(cimClass->name));
    Registration& registration = expected[cimClass->name];
    registration = {{modelNamespace}, {"instance"}};
    if (!cimClass->methods.empty()) {
      registration.serves.insert("method");
    }
  }
  return served;
}

TEST(RegistrationFiles, NameTheSameClassesAsTheProviderAndTheSchema) {
  Registrations pegasus;
  Registrations sfcb;
  std::set<std::string> plugins;
  for (const tvp::cim::fwf::PluginTableRow& row : tvp::cim::fwf::pluginTable()) {
    plugins.insert(row.key);
  }
  EXPECT_EQ(plugins, servedClasses(pegasus, {"root/PG_InterOp"}));
  EXPECT_EQ(plugins, servedClasses(sfcb, {"root/interop", modelNamespace}));
  EXPECT_EQ(registeredWithPegasus(), pegasus);
  EXPECT_EQ(registeredWithSfcb(), sfcb);
}

}  // namespace
