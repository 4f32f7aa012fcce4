// SPDX-License-Identifier: Apache-2.0
// Method calls with arguments of any name, type and number, through the provider's own function tables.
#include "cmpi/CMPIMI.h"
#include "fuzz/FuzzTarget.h"
#include "host/provider/Provider.h"
#include "host/schema/MofReader.h"
#include "oslib/KVSPaths.h"
#include "support/Storage.h"
#include "support/TemporaryDirectory.h"

#include <array>

namespace {

using namespace tvp::host;
using tvp::fuzz::Bytes;

constexpr char NAMESPACE[] = "root/kvs/tvp/smi_15";

/** The provider on a scratch state with drives of both kinds. */
class Target {
public:
  Target() : m_storage(m_directory) {
    kvsSetPathRoot(m_directory.path().string());
    for (const TvkDeviceType type : {TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD}) {
      tvp::test::Storage::addDrive(type, 1000 * tvp::test::MIB);
    }
    m_provider = std::make_unique<Provider>(
        m_broker, ProviderFactories{
                      tarvexProProvider_Create_InstanceMI, tarvexProProvider_Create_MethodMI,
                      tarvexProProvider_Create_AssociationMI, tarvexProProvider_Create_IndicationMI});
    for (const SchemaMethod& method : m_broker.schema().find("TVP_TierService")->methods) {
      m_methods.push_back(&method);
    }
  }

  void call(Bytes& bytes) {
    const SchemaMethod& method = *m_methods[bytes.byte() % m_methods.size()];
    Arguments arguments;
    for (const SchemaParameter& parameter : method.parameters) {
      if (!parameter.in || bytes.empty()) {
        continue;
      }
      // Mostly what is expected, so that the calls get somewhere.
      const std::uint8_t choice = bytes.byte();
      const CMPIType type = choice < 200 ? parameter.type : TYPES[choice % TYPES.size()];
      arguments.add(choice == 199 ? bytes.until('\0') : parameter.name, value(type, bytes));
    }
    const MethodOutcome outcome =
        m_provider->invokeMethod({NAMESPACE, "TVP_TierService", {}, ""}, method.name, arguments);
    tvp::fuzz::require(outcome.ok() || !outcome.message.empty(), "a failure says why");
    for (const Breach& breach : m_broker.breaches()) {
      tvp::fuzz::require(false, breach.text);
    }
  }

private:
  static constexpr std::array<CMPIType, 14> TYPES = {
      CMPI_boolean, CMPI_uint8,  CMPI_uint16,   CMPI_uint32, CMPI_uint64,  CMPI_sint8,   CMPI_sint32,
      CMPI_sint64,  CMPI_string, CMPI_dateTime, CMPI_uint8A, CMPI_uint32A, CMPI_uint64A, CMPI_stringA};

  static Value scalar(CMPIType type, Bytes& bytes) {
    switch (type) {
    case CMPI_boolean:
      return Value::boolean((bytes.byte() & 1) != 0);
    case CMPI_uint8:
      return Value::uint8(bytes.byte());
    case CMPI_uint16:
    case CMPI_uint32:
      return Value::unsignedInteger(type, bytes.number(2));
    case CMPI_uint64:
      return Value::uint64(bytes.number(4) << (bytes.byte() % 33U));
    case CMPI_sint8:
      return Value::signedInteger(type, static_cast<std::int8_t>(bytes.byte()));
    case CMPI_sint32:
      return Value::signedInteger(type, static_cast<std::int32_t>(bytes.number(4)));
    case CMPI_sint64:
      return Value::sint64(static_cast<std::int64_t>(bytes.number(8)));
    case CMPI_string:
      return Value::string(bytes.until('\0'));
    default:
      return Value::null(type);
    }
  }

  static Value value(CMPIType type, Bytes& bytes) {
    if ((type & CMPI_ARRAY) == 0) {
      return scalar(type, bytes);
    }
    const auto elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    Value::List elements;
    for (std::size_t count = bytes.byte() % 5U; count > 0; --count) {
      elements.push_back(scalar(elementType, bytes));
    }
    return Value::array(elementType, std::move(elements));
  }

  tvp::test::TemporaryDirectory m_directory;
  tvp::test::Storage m_storage;
  Broker m_broker{MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof")};
  std::unique_ptr<Provider> m_provider;
  std::vector<const SchemaMethod*> m_methods;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Target target;
  Bytes bytes(data, size);
  while (!bytes.empty()) {
    target.call(bytes);
  }
  return 0;
}
