// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_ENTRYPOINT_H
#define HOST_BROKER_ENTRYPOINT_H

#include "host/broker/Broker.h"
#include "host/broker/Object.h"
#include "host/broker/Scope.h"

#include <new>
#include <string>
#include <type_traits>
#include <utility>

namespace tvp::host {

/*
 * Every function that a provider can call has the same shape: check the handle, count the call, fail if a
 * test requested it, do the work, and let no exception escape. That shape is written here; the function
 * tables bind a body to each slot:
 *
 *   bind<&CMPIArrayFT::getSize>(table, "getSize", [](ArrayContent& content, Call&) { ... });
 *
 * A body gets the content of the object (or the broker, for a function of the broker), the call, and the
 * arguments of the slot without the handle and the status. It returns the slot's value, or nothing if the
 * slot returns a status, and throws a CallFailure to end with a status other than success.
 */

/** Thrown to end the body of a function: the status that the provider gets. */
struct CallFailure {
  CMPIrc code;
  std::string message = {};  ///< the status's message; if empty, one that names the function
};

/** Thrown by a call that was requested to fail with an exception; the provider gets it. */
struct CallException : std::bad_alloc {};

/** The live object behind a face, or null; a dead one is noted. Does not count as a call. */
template <class Face>
Object<Face>* livingObject(const Face* face, const char* function) {
  ObjectCore* core = ObjectCore::of(face);
  if (core == nullptr || core->typeName() != ObjectTraits<Face>::NAME) {
    return nullptr;
  }
  if (!core->isAlive()) {
    core->broker().addLateUse(*core, function);
    return nullptr;
  }
  return static_cast<Object<Face>*>(core);
}

/** The object on which the functions of a face operate. */
template <class Face>
struct Target : ObjectTraits<Face> {};
template <>
struct Target<CMPIBroker> {
  using Content = Broker;
  static constexpr char NAME[] = "CMPIBroker";
};

/** A call in progress: which function, of which broker. */
class Call {
public:
  Call(Broker& broker, const char* function) : m_broker(broker), m_function(function) {}

  Broker& broker() const { return m_broker; }
  /** The full name, such as "CMPIString.getCharPtr". */
  const char* function() const { return m_function; }

  /** The content of an object passed as an argument. @throws CallFailure CMPI_RC_ERR_INVALID_HANDLE */
  template <class Face>
  typename ObjectTraits<Face>::Content& contentOf(const Face* face) const {
    if (Object<Face>* object = livingObject(face, m_function)) {
      return object->content();
    }
    throw CallFailure{CMPI_RC_ERR_INVALID_HANDLE};
  }

  /** Creates an object that belongs to the current thread's scope. */
  template <class Face>
  Face* make(typename ObjectTraits<Face>::Content content) const {
    return m_broker.scope().make<Face>(std::move(content));
  }
  CMPIString* makeString(const std::string& text) const { return make<CMPIString>({text}); }
  /** The message of a status; null if the object manager leaves it out. */
  CMPIString* makeMessage(const CallFailure& failure) const {
    if (m_broker.options().manager == ObjectManager::Sfcb) {
      return nullptr;
    }
    return makeString(
        failure.message.empty()
            ? std::string(m_function) + " failed with status " + std::to_string(failure.code)
            : failure.message);
  }

private:
  Broker& m_broker;
  const char* m_function;
};

/** A C string that may be null. */
inline std::string textOf(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

/** An argument that must not be null. @throws CallFailure CMPI_RC_ERR_INVALID_PARAMETER */
template <class Argument>
Argument* required(Argument* argument) {
  return argument != nullptr ? argument : throw CallFailure{CMPI_RC_ERR_INVALID_PARAMETER};
}

/** What a function returns when it fails: null, 0, or CMPIData without a value. */
template <class Result>
Result failedResult(CMPIrc code) {
  Result result{};
  if constexpr (std::is_same_v<Result, CMPIData>) {
    const bool missing = code == CMPI_RC_ERR_NO_SUCH_PROPERTY || code == CMPI_RC_ERR_NOT_FOUND;
    result.state = missing ? CMPI_notFound : CMPI_badValue;
  }
  return result;
}

/** Runs a body that gets the content behind a face and the call; any exception becomes the status. */
template <class Face, class Body>
CMPIStatus guarded(Face* face, const char* function, Thread thread, Body body) {
  try {
    Broker* broker = nullptr;
    typename Target<std::remove_const_t<Face>>::Content* content = nullptr;
    if constexpr (std::is_same_v<const Face, const CMPIBroker>) {
      broker = content = Broker::of(face);
    } else if (auto* object = livingObject(face, function)) {
      broker = &object->broker();
      content = &object->content();
    }
    if (content == nullptr) {
      return CMPIStatus{CMPI_RC_ERR_INVALID_HANDLE, nullptr};
    }
    Call call(*broker, function);
    try {
      broker->enter(function, thread);
      body(*content, call);
    } catch (const CallFailure& failure) {
      return CMPIStatus{failure.code, call.makeMessage(failure)};
    }
    return CMPIStatus{CMPI_RC_OK, nullptr};
  } catch (const CallException&) {
    throw;  // out of the broker, as from an object manager in C++
  } catch (...) {
    return CMPIStatus{CMPI_RC_ERROR_SYSTEM, nullptr};
  }
}

/** The face to which a slot of a table belongs. */
template <class Slot>
struct SlotTraits;
template <class Table, class Result, class Owner, class... Arguments>
struct SlotTraits<Result (*Table::*)(Owner*, Arguments...)> {
  using Face = Owner;
  using Function = Result (*)(Owner*, Arguments...);
};

/** The function of one slot in the three shapes that the interface has, and the body that it runs. */
template <auto slot, class Body>
struct Entry;
template <auto slot, class Result, class Content, class... Arguments>
struct Entry<slot, Result (*)(Content&, Call&, Arguments...)> {
  using Face = typename SlotTraits<decltype(slot)>::Face;

  static inline std::string name;
  static inline Thread thread = Thread::Attached;
  static inline Result (*body)(Content&, Call&, Arguments...) = nullptr;

  static CMPIStatus returningStatus(Face* face, Arguments... arguments) {
    return guarded(
        face, name.c_str(), thread, [&](Content& content, Call& call) { body(content, call, arguments...); });
  }

  static Result settingStatus(Face* face, Arguments... arguments, CMPIStatus* status) {
    Result result{};
    const CMPIStatus outcome = guarded(face, name.c_str(), thread, [&](Content& content, Call& call) {
      result = body(content, call, arguments...);
    });
    if (status != nullptr) {
      *status = outcome;
    }
    return outcome.rc == CMPI_RC_OK ? result : failedResult<Result>(outcome.rc);
  }

  static Result withoutStatus(Face* face, Arguments... arguments) {
    if constexpr (std::is_void_v<Result>) {
      returningStatus(face, arguments...);
    } else {
      return settingStatus(face, arguments..., nullptr);
    }
  }

  static auto function() {
    using Function = typename SlotTraits<decltype(slot)>::Function;
    if constexpr (std::is_same_v<Function, CMPIStatus (*)(Face*, Arguments...)>) {
      return &returningStatus;
    } else if constexpr (std::is_same_v<Function, Result (*)(Face*, Arguments...)>) {
      return &withoutStatus;
    } else {
      return &settingStatus;
    }
  }
};

/**
 * The function for a slot, made from a body; its calls are recorded under the face's name and the given one.
 */
template <auto slot, class Body>
auto entry(const char* name, Body body, Thread thread = Thread::Attached) {
  using Bound = Entry<slot, decltype(+body)>;
  Bound::name = std::string(Target<std::remove_const_t<typename Bound::Face>>::NAME) + "." + name;
  Bound::thread = thread;
  Bound::body = body;
  return Bound::function();
}

/** Fills a slot. */
template <auto slot, class Table, class Body>
void bind(Table& table, const char* name, Body body, Thread thread = Thread::Attached) {
  table.*slot = entry<slot>(name, body, thread);
}

/** The release function of a type. */
template <class Face>
CMPIStatus releaseObject(Face* face) {
  static const std::string function = std::string(ObjectTraits<Face>::NAME) + ".release";
  const CMPIStatus status = guarded(face, function.c_str(), Thread::Attached, [](auto&, Call&) {});
  ObjectCore* core = ObjectCore::of(face);
  if (core != nullptr && core->isAlive()) {
    status.rc == CMPI_RC_OK ? core->die(ObjectCore::Life::Released) : core->refuseRelease();
  }
  return status;
}

/**
 * A table with the slots that all types share, and those that fill binds. A clone belongs to the caller and
 * outlives the request.
 */
template <class Face, class Fill>
auto objectTable(Fill fill) {
  using Table = std::remove_pointer_t<decltype(Face::ft)>;
  Table table{};
  table.ftVersion = CMPIVersion200;
  table.release = releaseObject<Face>;
  bind<&Table::clone>(table, "clone", [](typename ObjectTraits<Face>::Content& content, Call& call) {
    return call.broker().cloneScope().template make<Face>(content);
  });
  fill(table);
  return table;
}

}  // namespace tvp::host

#endif
