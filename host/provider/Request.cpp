// SPDX-License-Identifier: Apache-2.0
#include "host/provider/Request.h"

#include "host/broker/EntryPoint.h"

#include <stdexcept>

namespace tvp::host {
namespace {

ContextContent contextOf(const CallOptions& options) {
  ContextContent content;
  content.entries.push_back({CMPIInvocationFlags, Value::uint32(options.flags)});
  if (options.withPrincipal) {
    content.entries.push_back({CMPIPrincipal, Value::string(options.principal.value_or(""))});
    content.nullPrincipal = !options.principal.has_value();
  }
  return content;
}

template <class Face>
typename ObjectTraits<Face>::Content& contentOf(const Face* face) {
  Object<Face>* object = livingObject(face, "the host's reading");
  if (object == nullptr) {
    throw std::invalid_argument(std::string("not a living ") + ObjectTraits<Face>::NAME);
  }
  return object->content();
}

}  // namespace

Request::Request(Broker& broker, const CallOptions& options)
    : m_broker(broker), m_scope(std::make_unique<Scope>(broker, Scope::Kind::Request)),
      m_before(broker.enterScope(m_scope.get())), m_returned(std::make_shared<ResultContent>()),
      m_context(m_scope->make<CMPIContext>(contextOf(options))),
      m_result(m_scope->make<CMPIResult>({m_returned})) {}

Request::~Request() {
  end();
}

CMPIObjectPath* Request::objectPath(const ObjectPath& path) {
  return m_scope->make<CMPIObjectPath>(path);
}

CMPIInstance* Request::instance(const Instance& instance) {
  InstanceContent content;
  content.instance = instance;
  return m_scope->make<CMPIInstance>(std::move(content));
}

CMPIArgs* Request::arguments(const Arguments& arguments) {
  return m_scope->make<CMPIArgs>(ArgsContent{arguments, nullptr});
}

CMPISelectExp* Request::selectExpression(const std::string& query, const std::string& language) {
  return m_scope->make<CMPISelectExp>(SelectExpContent{query, language});
}

CMPIArgs* Request::outputArguments(const SchemaMethod* method) {
  return m_scope->make<CMPIArgs>(ArgsContent{{}, method});
}

ObjectPath Request::read(const CMPIObjectPath* path) {
  return contentOf(path);
}

Instance Request::read(const CMPIInstance* instance) {
  return contentOf(instance).snapshot();
}

Arguments Request::read(const CMPIArgs* arguments) {
  return contentOf(arguments).arguments;
}

std::string Request::read(const CMPIString* text) {
  return contentOf(text).text.value_or("");
}

void Request::end() {
  if (!m_ended) {
    m_ended = true;
    m_broker.enterScope(m_before);
    m_scope->endSince(0);
  }
}

const std::vector<Instance>& Request::instances() const {
  return m_returned->instances;
}

const std::vector<ObjectPath>& Request::paths() const {
  return m_returned->paths;
}

const std::vector<Value>& Request::data() const {
  return m_returned->data;
}

const std::string& Request::error() const {
  return m_returned->error;
}

std::vector<std::string> Request::remarks() const {
  return m_scope->remarks();
}

bool Request::done() const {
  return m_returned->done;
}

}  // namespace tvp::host
