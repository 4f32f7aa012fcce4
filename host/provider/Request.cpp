// SPDX-License-Identifier: Apache-2.0
#include "host/provider/Request.h"

#include "host/broker/BrokerState.h"
#include "host/broker/EntryPoint.h"

#include <stdexcept>

namespace tvp::host {

/** The scope and the result of a request. */
class RequestState {
public:
  RequestState(Broker& broker, const CallOptions& options)
      : m_broker(broker.state()), m_scope(m_broker, Scope::Kind::Request),
        m_before(m_broker.enterScope(&m_scope)) {
    ContextContent content;
    content.entries.push_back({CMPIInvocationFlags, Value::uint32(options.flags)});
    if (options.withPrincipal) {
      content.entries.push_back({CMPIPrincipal, Value::string(options.principal.value_or(""))});
      content.nullPrincipal = !options.principal.has_value();
    }
    context = make<CMPIContext>(std::move(content));
    result = make<CMPIResult>(ResultHandle{returned});
  }

  ~RequestState() { end(); }

  void end() {
    if (!m_ended) {
      m_ended = true;
      m_broker.enterScope(m_before);
      m_scope.endSince(0);
    }
  }

  std::vector<std::string> remarks() const { return m_scope.remarks(); }

  template <class Face>
  Face* make(typename ObjectTraits<Face>::Content content) {
    return m_broker.makeIn<Face>(m_scope, std::move(content));
  }

  CMPIContext* context = nullptr;
  CMPIResult* result = nullptr;
  const std::shared_ptr<ResultContent> returned = std::make_shared<ResultContent>();

private:
  BrokerState& m_broker;
  Scope m_scope;
  Scope* m_before;
  bool m_ended = false;
};

namespace {

template <class Face>
typename ObjectTraits<Face>::Content& contentOf(const Face* face) {
  Object<Face>* object = livingObject(face, "the host's reading");
  if (object == nullptr) {
    throw std::invalid_argument(std::string("not a living ") + objectTypeName(ObjectTraits<Face>::KIND));
  }
  return object->content();
}

}  // namespace

Request::Request(Broker& broker, const CallOptions& options)
    : m_state(std::make_unique<RequestState>(broker, options)) {}

Request::~Request() = default;

CMPIContext* Request::context() const {
  return m_state->context;
}

CMPIResult* Request::result() const {
  return m_state->result;
}

CMPIObjectPath* Request::objectPath(const ObjectPath& path) {
  return m_state->make<CMPIObjectPath>(path);
}

CMPIInstance* Request::instance(const Instance& instance) {
  InstanceContent content;
  content.instance = instance;
  return m_state->make<CMPIInstance>(std::move(content));
}

CMPIArgs* Request::arguments(const Arguments& arguments) {
  return m_state->make<CMPIArgs>(ArgsContent{arguments, nullptr});
}

CMPISelectExp* Request::selectExpression(const std::string& query, const std::string& language) {
  return m_state->make<CMPISelectExp>(SelectExpContent{query, language});
}

CMPIArgs* Request::outputArguments(const SchemaMethod* method) {
  return m_state->make<CMPIArgs>(ArgsContent{{}, method});
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
  m_state->end();
}

const std::vector<Instance>& Request::instances() const {
  return m_state->returned->instances;
}

const std::vector<ObjectPath>& Request::paths() const {
  return m_state->returned->paths;
}

const std::vector<Value>& Request::data() const {
  return m_state->returned->data;
}

const std::string& Request::error() const {
  return m_state->returned->error;
}

std::vector<std::string> Request::remarks() const {
  return m_state->remarks();
}

bool Request::done() const {
  return m_state->returned->done;
}

}  // namespace tvp::host
