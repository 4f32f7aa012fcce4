// SPDX-License-Identifier: Apache-2.0
// The texts of clients and drives are shown and stored, and never interpreted.
#include "TrustFixture.h"

namespace tvp::test {
namespace {

using host::Value;

class ForeignTextTest : public TrustTest {};

TEST_F(ForeignTextTest, IsNeverUsedAsAFormatAPathOrAStatement) {
  const std::string log = m_log.root().write("var/log/TVP.txt", "");
  const host::SchemaMethod& create = *m_broker.schema().find("TVP_TierService")->method("CreateVirtualPool");
  const host::ObjectPath service = path("TVP_TierService");
  for (const std::string text :
       {"%s%n%x%99999999d", "'; DROP TABLE pools; --", "\"); DELETE FROM volumes; --", "../../etc/passwd",
        "/etc/passwd", "$(reboot) `id` | sh", "a\nb]\t:LOG_ERROR::c", "{0}[1]{9}"}) {
    SCOPED_TRACE(text);
    arrange();
    host::Arguments arguments = goodArguments(create);
    arguments.add("Name", Value::string(text)).add("Description", Value::string(text));
    const host::MethodOutcome created = m_provider->invokeMethod(service, create.name, arguments);
    const bool taken = text.find('\n') == std::string::npos;
    EXPECT_EQ(created.ok(), taken) << "control bytes do not belong into names";
    EXPECT_EQ(state().find("pool " + text + "|") != std::string::npos, taken);
    EXPECT_EQ(state().find("volume cached") != std::string::npos, true) << "the others are as before";

    // As the name of a class, a key, a method and a user.
    host::CallOptions options;
    options.principal = text;
    EXPECT_EQ(m_provider->invokeMethod(service, text, {}, &options).rc, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(
        m_provider->invokeMethod(service, create.name, arguments, &options).message,
        text + " : is not a member of Administrator/root");
    m_provider->invokeMethod(service, text, arguments);
    EXPECT_TRUE(m_provider->enumerateInstances(path(text)).instances.empty());
    EXPECT_TRUE(m_provider->getInstance(path("TVP_VirtualPool", {{text, Value::string(text)}})).ok());
    EXPECT_TRUE(
        m_log.has(LogCapture::message(5, "CMPIAdapter::InvokeMethod:" + text.substr(0, text.find('\n')))));
  }
}

}  // namespace
}  // namespace tvp::test
