// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PROVIDERS_PROVIDERTEST_H
#define TESTS_PROVIDERS_PROVIDERTEST_H

#include "CIM/Framework/FrameworkFacade.h"
#include "backend/TarvexProInterface.h"
#include "support/LogCapture.h"
#include "support/Storage.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tvp::test {

/**
 * The classes of the product on a storage state of their own, without drives of the machine, called in the
 * same way as by a request.
 */
class ProviderTest : public testing::Test {
protected:
  ProviderTest() : m_storage(m_directory) {
    m_facade = cim::fwf::FrameworkFacade::getInstance();
    m_facade->initialize();
  }
  ~ProviderTest() override { cim::fwf::TVPInterface::getInstance()->terminate(); }

  static cim::fwf::CIMObjectPath classPath(const std::string& className) {
    return cim::fwf::CIMObjectPath("host", "root/kvs/tvp/smi_15", className, {});
  }
  std::vector<cim::fwf::CIMInstance> enumerate(const std::string& className) {
    cim::fwf::CIMObjectPath path = classPath(className);
    std::vector<cim::fwf::CIMInstance> instances;
    m_facade->enumerateInstances(path, instances);
    return instances;
  }
  unsigned int
  invoke(const std::string& className, const std::string& method, cim::fwf::CIMMethodParam in = {}) {
    m_out = cim::fwf::CIMMethodParam();
    return m_facade->invokeMethod(classPath(className), method, in, m_out);
  }

  TemporaryDirectory m_directory;
  Storage m_storage;
  cim::fwf::FrameworkFacade* m_facade = nullptr;
  cim::fwf::CIMMethodParam m_out;  ///< of the last invoke
};

}  // namespace tvp::test

#endif
