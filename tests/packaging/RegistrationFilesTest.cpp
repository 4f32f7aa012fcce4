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

using Texts = std::set<std::string>;

/** By class: the namespaces that a file registers it in, and what for: "instance", "indication", "method". */
using Registrations = std::map<std::string, std::pair<Texts, Texts>>;

Texts matches(const std::string& text, const std::string& pattern) {
  const std::regex expression(pattern);
  Texts found;
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
    auto& [namespaces, serves] = result[(*i)[1]];
    namespaces = matches((*i)[2], R"re("([^"]+)")re");
    for (const std::string& type : matches((*i)[3], R"((\d+))")) {
      serves.insert(names.at(type));
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

TEST(RegistrationFiles, NameTheSameClassesAsTheProviderAndTheSchema) {
  Registrations pegasus;
  Texts served;
  const auto schema = tvp::host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  std::string indication;
  for (const tvp::host::SchemaClass* known : schema->classes()) {
    if (known->isIndication()) {
      indication = known->name;
      continue;
    }
    served.insert(tvp::text::lowerCase(known->name));
    pegasus[known->name] = {
        {modelNamespace}, known->methods.empty() ? Texts{"instance"} : Texts{"instance", "method"}};
  }
  Registrations sfcb = pegasus;
  pegasus[indication] = {{"root/PG_InterOp"}, {"indication"}};
  sfcb[indication] = {{"root/interop", modelNamespace}, {"indication"}};
  Texts plugins;
  for (const tvp::cim::fwf::PluginTableRow& row : tvp::cim::fwf::pluginTable()) {
    plugins.insert(row.key);
  }
  EXPECT_EQ(plugins, served);
  EXPECT_EQ(registeredWithPegasus(), pegasus);
  EXPECT_EQ(registeredWithSfcb(), sfcb);
}

}  // namespace
