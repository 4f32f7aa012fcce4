// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/CimService.h"

#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/KeyTypes.h"
#include "host/cimxml/message/MessageWriter.h"
#include "host/cimxml/message/RequestMessage.h"
#include "host/cimxml/server/InteropNamespace.h"
#include "host/cimxml/server/IntrinsicOperations.h"
#include "host/cimxml/server/ProviderNamespace.h"
#include "text/Quote.h"
#include "text/Trim.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tvp::host::cimxml {
namespace {

/** A namespace as it is compared: without the slashes around it. */
std::string plainNamespace(std::string_view name) {
  return std::string(text::trimmed(name, "/"));
}

/** The header CIMObject. */
struct HeaderObject {
  std::string nameSpace;
  std::string className;  ///< empty for a namespace
};

/** Reads "root/ns" or "root/ns:Class.Key=..."; the keys are left out, as clients write them in many ways. */
HeaderObject readObject(std::string_view text) {
  if (text.substr(0, 2) == "//") {
    text.remove_prefix(std::min(text.find('/', 2), text.size()));  // the host
  }
  const std::size_t colon = text.find(':');
  HeaderObject object;
  object.nameSpace = plainNamespace(text.substr(0, colon));
  if (colon != std::string_view::npos) {
    text.remove_prefix(colon + 1);
    object.className = text.substr(0, text.find('.'));
  }
  return object;
}

/** What can be said of a call before its body is read. @throws BadMessage */
void checkProtocol(const HttpCall& call) {
  if (!call.exportOperation.empty() ||
      (!call.operation.empty() && !equalNames(call.operation, "MethodCall"))) {
    throw BadMessage("unsupported-operation", "this server takes operations, CIMOperation: MethodCall, only");
  }
  if (call.operation.empty()) {
    throw BadMessage("header-mismatch", "the header CIMOperation is missing");
  }
  if (!call.protocolVersion.empty() && call.protocolVersion.substr(0, 2) != "1.") {
    throw BadMessage(
        "unsupported-protocol-version",
        "this server has the version 1.0 of the protocol, not " + text::quoted(call.protocolVersion));
  }
}

/** @throws BadMessage unless the headers say what the body says */
void checkHeaders(const HttpCall& call, const RequestMessage& message) {
  if (message.kind() == RequestKind::Export) {
    throw BadMessage("unsupported-operation", "this server takes no exports");
  }
  const auto require = [](bool agrees, const char* header) {
    if (!agrees) {
      throw BadMessage("header-mismatch", std::string("the header ") + header + " is not what the body says");
    }
  };
  require(equalNames(call.method, message.name()), "CIMMethod");
  const HeaderObject object = readObject(call.object);
  require(equalNames(object.nameSpace, plainNamespace(message.nameSpace())), "CIMObject");
  require(
      equalNames(object.className, message.kind() == RequestKind::Method ? message.target().className : ""),
      "CIMObject");
}

HttpReply badMessage(HttpReply reply, const BadMessage& error) {
  reply.status = error.httpStatus();
  reply.headers = {{"CIMError", error.cimError()}};
  reply.contentType = "text/plain; charset=utf-8";
  reply.body = std::string(error.what()) + "\n";
  reply.code = CMPI_RC_ERR_FAILED;
  return reply;
}

}  // namespace

struct CimService::Content {
  Content(
      Provider& provider, const Schema& schema, const Schema& interopSchema, Subscriptions& subscriptions,
      const CimServiceOptions& options)
      : provided(provider, options.nameSpace, schema, interopSchema),
        interop(interopSchema, schema, subscriptions, options.nameSpace) {}

  /** @throws CimFailure */
  ServedNamespace& nameSpace(const std::string& name) {
    for (ServedNamespace* candidate : std::array<ServedNamespace*, 2>{&provided, &interop}) {
      if (candidate->isCalled(plainNamespace(name))) {
        return *candidate;
      }
    }
    throw CimFailure(CMPI_RC_ERR_INVALID_NAMESPACE, name);
  }

  std::string answerMethod(const RequestMessage& message, const std::string& user, std::string& className) {
    ServedNamespace& served = nameSpace(message.nameSpace());
    ObjectPath target = message.target();
    className = target.className;
    const SchemaClass& known = existingClass(served.schema(), target.className);
    className = target.className = known.name;
    target.nameSpace = served.name();
    applyKeyTypes(target, served.schema());
    // A method that the class does not declare is the provider's to refuse, as with object managers.
    const Arguments input = message.arguments(known.method(message.name()));
    const MethodOutcome outcome = served.invoke(target, message.name(), input, user);
    return methodAnswer({message.id(), message.name()}, outcome.returnValue, outcome.output);
  }

  std::string
  answerOperation(const RequestMessage& message, const std::string& user, std::string& className) {
    IntrinsicCall call{message, nameSpace(message.nameSpace()), user, {}};
    try {
      std::string answer = answerIntrinsic(call);
      className = call.className;
      return answer;
    } catch (const CimFailure&) {
      className = call.className;
      throw;
    }
  }

  /** The document that answers a request, whatever becomes of it; notes in the reply what the log says. */
  void answer(const RequestMessage& message, const std::string& user, HttpReply& reply) {
    const bool method = message.kind() == RequestKind::Method;
    const auto fail = [&](CMPIrc code, const std::string& text) {
      reply.code = code;
      reply.body = errorAnswer(
          {message.id(), message.name()}, method, code, statusName(code) + (text.empty() ? "" : ": " + text));
    };
    try {
      reply.body = method ? answerMethod(message, user, reply.className)
                          : answerOperation(message, user, reply.className);
    } catch (const CimFailure& failure) {
      fail(failure.code(), failure.what());
    } catch (const std::exception& error) {
      fail(CMPI_RC_ERR_FAILED, error.what());
    }
  }

  ProviderNamespace provided;
  InteropNamespace interop;
};

CimService::CimService(
    Provider& provider, std::shared_ptr<const Schema> schema, std::shared_ptr<const Schema> interop,
    Subscriptions& subscriptions, CimServiceOptions options)
    : m_content(std::make_unique<Content>(provider, *schema, *interop, subscriptions, options)) {}

CimService::~CimService() = default;

HttpReply CimService::answer(const HttpCall& call) {
  HttpReply reply;
  reply.operation = call.method;
  try {
    checkProtocol(call);
    const RequestMessage message = RequestMessage::read(call.body);
    reply.operation = message.name();
    checkHeaders(call, message);
    reply.headers = {{"CIMOperation", "MethodResponse"}};
    m_content->answer(message, call.user, reply);
  } catch (const BadMessage& error) {
    return badMessage(std::move(reply), error);
  } catch (const CimFailure& failure) {
    return badMessage(std::move(reply), BadMessage("request-not-valid", failure.what()));
  } catch (const std::exception&) {
    reply.status = 500;  // memory is exhausted
    reply.code = CMPI_RC_ERR_FAILED;
  }
  return reply;
}

}  // namespace tvp::host::cimxml
