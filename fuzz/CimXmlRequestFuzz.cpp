// SPDX-License-Identifier: Apache-2.0
// The reader of requests: any bytes are a request, or refused as one of the kinds that the server answers;
// the arguments of a method call are written such that they read the same again.
#include "fuzz/CimXmlSample.h"
#include "fuzz/FuzzTarget.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/KeyTypes.h"
#include "host/cimxml/message/MessageWriter.h"
#include "host/cimxml/message/RequestMessage.h"

namespace {

using namespace tvp::host;
using namespace tvp::host::cimxml;
using tvp::fuzz::require;

/** Calls a function that may find the message at fault. */
template <class Read>
void attempt(Read read) {
  try {
    read();
  } catch (const CimFailure& failure) {
    require(failure.code() == CMPI_RC_ERR_INVALID_PARAMETER, "the client is told what is wrong");
  }
}

void readParameters(const RequestMessage& request) {
  const auto schema = tvp::fuzz::sampleSchema();
  std::size_t count = 0;
  for (const std::string& name : request.parameters()) {
    if (++count > 16) {
      break;
    }
    attempt([&] { request.className(name); });
    attempt([&] { request.boolean(name); });
    attempt([&] { request.number(name); });
    attempt([&] { request.texts(name); });
    attempt([&] {
      if (std::optional<ObjectPath> path = request.path(name)) {
        applyKeyTypes(*path, *schema);
      }
    });
    attempt([&] {
      if (const std::optional<Instance> instance = request.instance(name, *schema)) {
        instancesAnswer({"1", "X"}, {*instance}, ObjectShape::ObjectWithPath, {}, *schema);
      }
    });
  }
}

void readCall(const RequestMessage& request) {
  const SchemaMethod* method = tvp::fuzz::sampleSchema()->find("T_Pool")->method("Grow");
  attempt([&] { request.arguments(method); });
  attempt([&] {
    const Arguments arguments = request.arguments(nullptr);
    const std::string written = methodRequest(request.id(), request.target(), request.name(), arguments);
    const RequestMessage again = RequestMessage::read(written);
    // A text may come to differ in what XML cannot have; written once more, nothing differs.
    const std::string second =
        methodRequest(again.id(), again.target(), again.name(), again.arguments(nullptr));
    require(second == written, "reads the same: " + written + "\n" + second);
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const RequestMessage request =
        RequestMessage::read(std::string_view(reinterpret_cast<const char*>(data), size));
    switch (request.kind()) {
    case RequestKind::Intrinsic:
      readParameters(request);
      break;
    case RequestKind::Method:
      readCall(request);
      break;
    case RequestKind::Export:
      attempt([&] { request.indication(); });
      break;
    }
  } catch (const BadMessage& error) {
    require(error.httpStatus() == 400 || error.httpStatus() == 501, "has a status of HTTP");
  }
  return 0;
}
