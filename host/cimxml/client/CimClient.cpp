// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/CimClient.h"

#include "host/cimxml/message/AnswerMessage.h"
#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/MessageWriter.h"
#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "text/Quote.h"

#include <httplib.h>

#include <utility>

namespace tvp::host::cimxml {
namespace {

using Clock = std::chrono::steady_clock;
using Parameters = std::vector<IntrinsicParameter>;

constexpr std::size_t LARGEST_ANSWER = 256U << 20U;  ///< in bytes; a server that sends more is not believed
constexpr std::chrono::seconds TO_CONNECT(10);

/** All bytes but the plainest, as %XX: a header takes no others. */
std::string encoded(const std::string& text) {
  static const char* const DIGITS = "0123456789ABCDEF";
  std::string result;
  for (const char letter : text) {
    const auto byte = static_cast<unsigned char>(letter);
    const bool plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                       (byte >= 'a' && byte <= 'z') || byte == '_' || byte == '-' || byte == '.';
    if (plain) {
      result += letter;
    } else {
      result.append({'%', DIGITS[byte >> 4U], DIGITS[byte & 15U]});
    }
  }
  return result;
}

IntrinsicParameter parameter(const char* name, IntrinsicParameter::Kind kind) {
  IntrinsicParameter result;
  result.name = name;
  result.kind = kind;
  return result;
}

IntrinsicParameter flag(const char* name, bool value) {
  IntrinsicParameter result = parameter(name, IntrinsicParameter::Kind::Boolean);
  result.flag = value;
  return result;
}

IntrinsicParameter className(const char* name, const std::string& text) {
  IntrinsicParameter result = parameter(name, IntrinsicParameter::Kind::ClassName);
  result.text = text;
  return result;
}

IntrinsicParameter textOf(const char* name, const std::string& text) {
  IntrinsicParameter result = parameter(name, IntrinsicParameter::Kind::Text);
  result.text = text;
  return result;
}

IntrinsicParameter pathOf(const char* name, const ObjectPath& path) {
  IntrinsicParameter result = parameter(name, IntrinsicParameter::Kind::InstanceName);
  result.path = path;
  return result;
}

IntrinsicParameter instanceOf(const char* name, IntrinsicParameter::Kind kind, const Instance& instance) {
  IntrinsicParameter result = parameter(name, kind);
  result.instance = instance;
  return result;
}

/** Objects without what only describes them. */
Parameters wholeObjects(Parameters parameters, const PropertyList& properties) {
  parameters.push_back(flag("IncludeQualifiers", false));
  parameters.push_back(flag("IncludeClassOrigin", false));
  if (properties) {
    IntrinsicParameter list = parameter("PropertyList", IntrinsicParameter::Kind::Texts);
    list.texts = *properties;
    parameters.push_back(std::move(list));
  }
  return parameters;
}

/** The same for the operations on instances, which could also leave out what is inherited. */
Parameters wholeInstances(Parameters parameters, const PropertyList& properties) {
  parameters.push_back(flag("LocalOnly", false));
  return wholeObjects(std::move(parameters), properties);
}

/** What restricts an association request; an empty name is left out. @param ends whether the far end is asked
 * for */
Parameters restrictions(const ObjectPath& path, const AssociationFilter& filter, bool ends) {
  Parameters parameters = {pathOf("ObjectName", path)};
  const auto add = [&](bool wanted, IntrinsicParameter parameter) {
    if (wanted && !parameter.text.empty()) {
      parameters.push_back(std::move(parameter));
    }
  };
  add(ends, className("AssocClass", filter.associationClass));
  add(true, className("ResultClass", filter.resultClass));
  add(true, textOf("Role", filter.role));
  add(ends, textOf("ResultRole", filter.resultRole));
  return parameters;
}

/** Servers put the name of the status in front of the provider's message, where it would be repeated. */
std::string withoutStatus(std::string message, CMPIrc code) {
  const std::string prefix = statusName(code) + ": ";
  return message.compare(0, prefix.size(), prefix) == 0 ? message.substr(prefix.size()) : message;
}

}  // namespace

struct CimClient::Content {
  Content(CimClientOptions given, std::shared_ptr<const Schema> classes)
      : options(std::move(given)), schema(std::move(classes)) {
    const ServerUrl& url = options.url;
    if (url.tls) {
      auto secured = std::make_unique<httplib::SSLClient>(url.host, url.port);
      secured->enable_server_certificate_verification(true);
      if (!options.certificates.empty()) {
        secured->set_ca_cert_path(options.certificates);
      }
      tls = secured.get();
      http = std::move(secured);
    } else {
      http = std::make_unique<httplib::ClientImpl>(url.host, url.port);
    }
    if (!url.user.empty()) {
      http->set_basic_auth(url.user, options.password);
    }
    http->set_keep_alive(true);
    http->set_tcp_nodelay(true);
    http->set_decompress(false);
    http->set_connection_timeout(TO_CONNECT);
    http->set_read_timeout(options.timeout);
    http->set_write_timeout(options.timeout);
  }

  std::string nextId() { return std::to_string(++messages); }

  /** Sends a request. @return the body of its answer @throws ServerError */
  std::string send(const std::string& method, const std::string& object, std::string body) {
    httplib::Request request;
    request.method = "POST";
    request.path = options.url.path;
    request.headers = {
        {"Host", options.url.authority()}, {"Content-Type", "application/xml; charset=\"utf-8\""},
        {"CIMProtocolVersion", "1.0"},     {"CIMOperation", "MethodCall"},
        {"CIMMethod", encoded(method)},    {"CIMObject", encoded(object)}};
    request.body = std::move(body);
    std::string answer;
    const Clock::time_point end = Clock::now() + options.timeout;
    bool tooLong = false;
    request.content_receiver = [&](const char* data, std::size_t size, std::uint64_t, std::uint64_t) {
      tooLong = answer.size() + size > LARGEST_ANSWER || Clock::now() > end;
      if (!tooLong) {
        answer.append(data, size);
      }
      return !tooLong;
    };
    httplib::Response response;
    httplib::Error error = httplib::Error::Success;
    if (!http->send(request, response, error)) {
      fail(tooLong ? "answers without an end" : reason(error));
    }
    requireSuccess(response);
    return answer;
  }

  /** @param method that was called; null for an intrinsic operation */
  AnswerMessage read(const std::string& body, const SchemaMethod* method = nullptr) const {
    try {
      return AnswerMessage::read(body, *schema, method);
    } catch (const BadMessage& error) {
      fail(std::string("does not answer as a WBEM server: ") + error.what());
    }
  }

  /** Carries an intrinsic operation out. */
  AnswerMessage ask(const std::string& operation, const ObjectPath& path, const Parameters& parameters) {
    return read(
        send(operation, path.nameSpace, intrinsicRequest(nextId(), operation, path.nameSpace, parameters)));
  }

  /** An instance as the provider itself returns it: with a place for every property unless a list was asked
   * for. */
  Instance completed(Instance instance, const ObjectPath& asked, bool whole) const {
    if (instance.path.nameSpace.empty()) {
      instance.path.nameSpace = asked.nameSpace;
    }
    const SchemaClass* known = schema->find(instance.path.className);
    if (known == nullptr || known->external || !whole) {
      return instance;
    }
    Instance complete = schema->emptyInstance(instance.path);
    for (NamedValue& property : instance.properties) {
      setValue(complete.properties, property.name, std::move(property.value));
    }
    return complete;
  }

  /** An outcome with the status of an answer. */
  template <class Result>
  static Result outcomeOf(AnswerMessage& answer) {
    Result outcome;
    outcome.rc = answer.code;
    outcome.message = withoutStatus(std::move(answer.message), answer.code);
    return outcome;
  }

  InstancesOutcome
  instances(const std::string& operation, const ObjectPath& path, const Parameters& parameters, bool whole) {
    AnswerMessage answer = ask(operation, path, parameters);
    auto outcome = outcomeOf<InstancesOutcome>(answer);
    for (Instance& instance : answer.instances) {
      outcome.instances.push_back(completed(std::move(instance), path, whole));
    }
    return outcome;
  }

  PathsOutcome paths(const std::string& operation, const ObjectPath& path, const Parameters& parameters) {
    AnswerMessage answer = ask(operation, path, parameters);
    auto outcome = outcomeOf<PathsOutcome>(answer);
    outcome.paths = std::move(answer.paths);
    for (ObjectPath& found : outcome.paths) {
      if (found.nameSpace.empty()) {
        found.nameSpace = path.nameSpace;
      }
    }
    return outcome;
  }

  Outcome nothing(const std::string& operation, const ObjectPath& path, const Parameters& parameters) {
    AnswerMessage answer = ask(operation, path, parameters);
    return outcomeOf<Outcome>(answer);
  }

  [[noreturn]] void fail(const std::string& what) const {
    throw ServerError("the server at " + options.url.text() + " " + what);
  }

  /** Why nothing was answered, and what to do. */
  std::string reason(httplib::Error error) const {
    switch (error) {
    case httplib::Error::Connection:
    case httplib::Error::ConnectionTimeout:
    case httplib::Error::BindIPAddress:
      return "cannot be reached; check that it runs and listens there, and the host and port of the URL";
    case httplib::Error::SSLServerVerification: {
      const long result = tls->get_openssl_verify_result();
      return std::string("has a certificate that is not trusted: ") +
             (result == 0 ? "it is for another host" : ::X509_verify_cert_error_string(result)) +
             "; name the file of the right ones with --cert";
    }
    case httplib::Error::SSLLoadingCerts:
      return "cannot be asked: the certificates in " + text::quoted(options.certificates) + " cannot be read";
    case httplib::Error::SSLConnection:
      return "does not speak TLS there; the URL of a server without TLS begins with http://";
    default:
      return "ended the connection, or took longer than " + std::to_string(options.timeout.count()) +
             " seconds; a server with TLS has a URL that begins with https://";
    }
  }

  /** @throws ServerError unless the status of HTTP is that of an answer */
  void requireSuccess(const httplib::Response& response) const {
    constexpr int OK = 200;
    constexpr int UNAUTHORIZED = 401;
    constexpr int FORBIDDEN = 403;
    const std::string& user = options.url.user;
    if (response.status == UNAUTHORIZED) {
      fail(
          user.empty() ? "answers known users only; write the URL as " +
                             std::string(options.url.tls ? "https" : "http") + "://USER@HOST:PORT"
                       : "refuses the user " + text::quoted(user) + " or the password");
    }
    if (response.status == FORBIDDEN) {
      fail("does not let the user " + text::quoted(user) + " in");
    }
    if (response.status != OK) {
      const std::string error = response.get_header_value("CIMError");
      fail(
          "answered with the HTTP status " + std::to_string(response.status) +
          (error.empty() ? "; is it a WBEM server?" : ", CIMError " + text::quoted(error)));
    }
  }

  const CimClientOptions options;
  const std::shared_ptr<const Schema> schema;
  std::unique_ptr<httplib::ClientImpl> http;
  httplib::SSLClient* tls = nullptr;  ///< the same, when it uses TLS
  std::uint64_t messages = 0;
};

CimClient::CimClient(CimClientOptions options, std::shared_ptr<const Schema> schema)
    : m_content(std::make_unique<Content>(std::move(options), std::move(schema))) {}

CimClient::~CimClient() = default;

InstancesOutcome CimClient::enumerateInstances(const ObjectPath& path, const PropertyList& properties) {
  const Parameters parameters = {className("ClassName", path.className), flag("DeepInheritance", true)};
  return m_content->instances(
      "EnumerateInstances", path, wholeInstances(parameters, properties), !properties);
}

PathsOutcome CimClient::enumerateInstanceNames(const ObjectPath& path) {
  return m_content->paths("EnumerateInstanceNames", path, {className("ClassName", path.className)});
}

InstancesOutcome CimClient::getInstance(const ObjectPath& path, const PropertyList& properties) {
  InstancesOutcome outcome = m_content->instances(
      "GetInstance", path, wholeInstances({pathOf("InstanceName", path)}, properties), !properties);
  for (Instance& instance : outcome.instances) {
    instance.path = path;  // which the answer does not repeat
  }
  return outcome;
}

PathsOutcome CimClient::createInstance(const ObjectPath& path, const Instance& instance) {
  return m_content->paths(
      "CreateInstance", path, {instanceOf("NewInstance", IntrinsicParameter::Kind::Instance, instance)});
}

Outcome
CimClient::modifyInstance(const ObjectPath& path, const Instance& instance, const PropertyList& properties) {
  Instance modified = instance;
  modified.path = path;
  IntrinsicParameter list = parameter("PropertyList", IntrinsicParameter::Kind::Texts);
  if (properties) {
    list.texts = *properties;
  } else {
    // Some servers take the absence of a list for an empty one.
    for (const NamedValue& property : instance.properties) {
      list.texts.push_back(property.name);
    }
  }
  return m_content->nothing(
      "ModifyInstance", path,
      {instanceOf("ModifiedInstance", IntrinsicParameter::Kind::NamedInstance, modified),
       flag("IncludeQualifiers", false), std::move(list)});
}

Outcome CimClient::deleteInstance(const ObjectPath& path) {
  return m_content->nothing("DeleteInstance", path, {pathOf("InstanceName", path)});
}

InstancesOutcome
CimClient::execQuery(const ObjectPath& path, const std::string& query, const std::string& language) {
  // What a query selects is not always the whole of an instance.
  return m_content->instances(
      "ExecQuery", path, {textOf("QueryLanguage", language), textOf("Query", query)}, false);
}

MethodOutcome
CimClient::invokeMethod(const ObjectPath& path, const std::string& method, const Arguments& input) {
  const SchemaClass* known = m_content->schema->find(path.className);
  ObjectPath target = path;
  target.host.clear();
  AnswerMessage answer = m_content->read(
      m_content->send(method, toPathText(target), methodRequest(m_content->nextId(), target, method, input)),
      known == nullptr ? nullptr : known->method(method));
  auto outcome = Content::outcomeOf<MethodOutcome>(answer);
  outcome.returnValue = std::move(answer.returnValue);
  outcome.output = std::move(answer.output);
  return outcome;
}

InstancesOutcome CimClient::associators(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties) {
  return m_content->instances(
      "Associators", path, wholeObjects(restrictions(path, filter, true), properties), !properties);
}

PathsOutcome CimClient::associatorNames(const ObjectPath& path, const AssociationFilter& filter) {
  return m_content->paths("AssociatorNames", path, restrictions(path, filter, true));
}

InstancesOutcome CimClient::references(
    const ObjectPath& path, const AssociationFilter& filter, const PropertyList& properties) {
  return m_content->instances(
      "References", path, wholeObjects(restrictions(path, filter, false), properties), !properties);
}

PathsOutcome CimClient::referenceNames(const ObjectPath& path, const AssociationFilter& filter) {
  return m_content->paths("ReferenceNames", path, restrictions(path, filter, false));
}

}  // namespace tvp::host::cimxml
