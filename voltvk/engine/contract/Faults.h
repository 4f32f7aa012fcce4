// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_FAULTS_H
#define VOLTVK_ENGINE_CONTRACT_FAULTS_H

#include "voltvk/engine/state/Fault.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace voltvk {

class State;

/** The names of the operations: operations::createVirtualPool is "createVirtualPool" and so on. */
namespace operations {
#define TVK_OPERATION(name) inline constexpr char name[] = #name;
#include "voltvk/engine/contract/Operations.def"
}  // namespace operations

/**
 * Faults for tests and demonstrations. They are part of the state, so every process that uses the state sees
 * them on its next call, and they outlive the process that set them. Operations are named as in the
 * interface: "createVirtualPool", "getEvents", "refreshConfiguration" and so on.
 *
 * Safe to use from any thread. Functions throw voltvk::Refusal if the state cannot be used, and
 * std::invalid_argument for an operation that does not exist or a fault that makes no sense.
 */
class Faults {
public:
  /** Faults of the state that this process uses ($VOLTVK_STATE or the default). */
  Faults();
  explicit Faults(std::shared_ptr<State> state);

  void driverAbsent() { set({FaultKind::DriverAbsent, {}, 0, 0}); }
  void adapterAbsent() { set({FaultKind::AdapterAbsent, {}, 0, 0}); }
  /** @param status what the call returns; not 0. */
  void fail(const std::string& operation, std::uint32_t status = TVK_INTERNAL) {
    set({FaultKind::Fail, operation, status, 0});
  }
  void throwFrom(const std::string& operation) { set({FaultKind::Throw, operation, 0, 0}); }
  void slow(const std::string& operation, std::chrono::milliseconds delay) {
    set({FaultKind::Slow, operation, 0, static_cast<std::uint32_t>(delay.count())});
  }

  /** Adds a fault; an absence or a delay that is already set is replaced. */
  void set(const Fault& fault);

  /**
   * Removes the faults of a kind (all kinds if not given) and of an operation (all if empty). @return how
   * many.
   */
  std::size_t clear(std::optional<FaultKind> kind = std::nullopt, const std::string& operation = {});

  /** The faults that are set, oldest first. */
  std::vector<Fault> list();

  /** The operations that can fail, throw or be slow. */
  static const std::vector<std::string>& operations();

  /**
   * Applies the faults at the start of an operation: waits, throws or refuses, and consumes the faults that
   * hold for one call only.
   * @throws InjectedFault, or Refusal with the status of a fault
   */
  static void apply(State& state, const char* operation);

private:
  std::shared_ptr<State> m_state;
};

/** The exception that an operation throws because of a fault. */
class InjectedFault : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/** The name of a kind on the command line: "driver-absent", "fail" and so on. */
const char* faultKindName(FaultKind kind);

/** A fault in one line, such as "fail createVirtualPool with status 35". */
std::string describeFault(const Fault& fault);

}  // namespace voltvk

#endif
