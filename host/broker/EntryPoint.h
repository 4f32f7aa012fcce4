// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_ENTRYPOINT_H
#define HOST_BROKER_ENTRYPOINT_H

#include "host/broker/BrokerState.h"
#include "host/broker/Object.h"

#include <string>

namespace tvp::host {

/*
 * The shape of every function that a provider can call: examine the handle, count the call, fail when
 * a test asks for it, do the work, and let nothing thrown across. A body gets the content of the object
 * (or the broker) and sets or returns the status code.
 */

/** Sets a status that the caller may have left out. */
inline void setStatus(CMPIStatus* status, CMPIrc code) {
  if (status != nullptr) {
    *status = CMPIStatus{code, nullptr};
  }
}

/** What a function that returns CMPIData returns when it fails. */
inline CMPIData noData(CMPIValueState state = CMPI_badValue) {
  CMPIData data{};
  data.type = CMPI_null;
  data.state = state;
  return data;
}

/** The result of a failed function: null, 0, or CMPIData without a value. */
template <class Result>
Result failedResult() {
  if constexpr (std::is_same_v<Result, CMPIData>) {
    return noData();
  } else {
    return Result{};
  }
}

/** The living object behind a face, or null; a dead one is noted. Does not count as a call. */
template <class Face>
Object<Face>* livingObject(const Face* face, const char* function) {
  ObjectCore* core = ObjectCore::of(face);
  if (core == nullptr || core->kind() != ObjectTraits<Face>::KIND) {
    return nullptr;
  }
  if (!core->isAlive()) {
    core->broker().addLateUse(*core, function);
    return nullptr;
  }
  return static_cast<Object<Face>*>(core);
}

/** Runs a body that answers a code; exceptions become CMPI_RC_ERROR_SYSTEM. */
template <class Body>
CMPIrc guarded(Body body) {
  try {
    return body();
  } catch (...) {
    return CMPI_RC_ERROR_SYSTEM;
  }
}

/** A function of an object that answers a status. The body takes (content, broker) and returns a code. */
template <class Face, class Body>
CMPIStatus statusCall(const Face* face, const char* function, Body body) {
  const CMPIrc code = guarded([&]() -> CMPIrc {
    Object<Face>* object = livingObject(face, function);
    if (object == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    const CMPIrc injected = object->broker().enter(function);
    return injected != CMPI_RC_OK ? injected : body(object->content(), object->broker());
  });
  return CMPIStatus{code, nullptr};
}

/** A function of an object that answers a value. The body takes (content, broker, code). */
template <class Result, class Face, class Body>
Result valueCall(const Face* face, const char* function, CMPIStatus* status, Body body) {
  Result result = failedResult<Result>();
  const CMPIStatus outcome = statusCall(face, function, [&](auto& content, BrokerState& broker) {
    CMPIrc code = CMPI_RC_OK;
    result = body(content, broker, code);
    return code;
  });
  setStatus(status, outcome.rc);
  return result;
}

/** A function of the broker that answers a status. The body takes (broker) and returns a code. */
template <class Body>
CMPIStatus
brokerStatusCall(const CMPIBroker* broker, const char* function, Body body, bool mustBeAttached = true) {
  const CMPIrc code = guarded([&]() -> CMPIrc {
    BrokerState* state = BrokerState::of(broker);
    if (state == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    const CMPIrc injected = state->enter(function, mustBeAttached);
    return injected != CMPI_RC_OK ? injected : body(*state);
  });
  return CMPIStatus{code, nullptr};
}

/** A function of the broker that answers a value. The body takes (broker, code). */
template <class Result, class Body>
Result brokerValueCall(
    const CMPIBroker* broker, const char* function, CMPIStatus* status, Body body,
    bool mustBeAttached = true) {
  Result result = failedResult<Result>();
  const CMPIStatus outcome = brokerStatusCall(
      broker, function,
      [&](BrokerState& state) {
        CMPIrc code = CMPI_RC_OK;
        result = body(state, code);
        return code;
      },
      mustBeAttached);
  setStatus(status, outcome.rc);
  return result;
}

/** "CMPIString.release" and its like. */
template <class Face>
std::string functionName(const char* function) {
  return std::string(objectTypeName(ObjectTraits<Face>::KIND)) + "." + function;
}

/** The release function of a type. */
template <class Face>
CMPIStatus releaseObject(Face* face) {
  static const std::string function = functionName<Face>("release");
  const CMPIStatus status =
      statusCall(face, function.c_str(), [](auto&, BrokerState&) { return CMPI_RC_OK; });
  ObjectCore* core = ObjectCore::of(face);
  if (core != nullptr && core->isAlive()) {
    status.rc == CMPI_RC_OK ? core->die(ObjectCore::Life::Released) : core->refuseRelease();
  }
  return status;
}

/** The clone function of a type: the copy belongs to the caller and outlives the request. */
template <class Face>
Face* cloneObject(const Face* face, CMPIStatus* status) {
  static const std::string function = functionName<Face>("clone");
  return valueCall<Face*>(face, function.c_str(), status, [](auto& content, BrokerState& broker, CMPIrc&) {
    return broker.makeIn<Face>(broker.cloneScope(), content);
  });
}

/** Makes a string object. */
inline CMPIString* makeString(BrokerState& broker, const std::string& text) {
  return broker.make<CMPIString>(StringContent{text});
}

/** A C string that may be null. */
inline std::string textOf(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

}  // namespace tvp::host

#endif
