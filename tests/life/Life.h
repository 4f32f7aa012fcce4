// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_LIFE_H
#define TESTS_LIFE_LIFE_H

#include "host/provider/Provider.h"
#include "life/AnswerText.h"
#include "support/TemporaryDirectory.h"

#include <atomic>
#include <cstdint>
#include <ios>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tvp::test {

inline host::ObjectPath classPath(const std::string& className, std::vector<host::NamedValue> keys = {}) {
  return {"root/kvs/tvp/smi_15", className, std::move(keys), ""};
}

/** A method call: its name and good arguments, which a test changes as it needs. */
struct MethodCall {
  std::string method;
  host::Arguments arguments;

  /** The same call with another argument. */
  MethodCall with(const std::string& name, host::Value value) const {
    MethodCall changed = *this;
    changed.arguments.add(name, std::move(value));
    return changed;
  }
};

/**
 * A life of the built provider on a machine, a storage state and a log of its own. What the provider writes
 * into its log and what it answers is recorded step by step, without what differs from run to run: the name
 * of this machine, the directory of the test and times are replaced, and the head of a line of the log, when
 * it has its form of time, module and thread, becomes the name of the thread, "requests" or "listener".
 *
 * Between two steps the listener sleeps, so that the order of all lines is certain. Used on one thread.
 */
class Life {
public:
  Life();
  /** Ends a provider that was not stopped, and its listener, which would hold up the end of the process. */
  ~Life();
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  /** How the object manager behaves. */
  struct ObjectManager {
    std::atomic<bool> preparesThreads{true};
    std::atomic<bool> attachesThreads{true};
    std::atomic<bool> takesIndications{true};
    std::atomic<bool> hasProfiles{true};
  };
  ObjectManager& objectManager() { return m_objectManager; }

  host::Broker& broker() { return *m_broker; }
  host::Provider& provider() { return *m_provider; }

  /** Takes the texts of events away, before the start. */
  void removeCatalogue();
  /** Loads the provider and creates its four interfaces. @throws std::logic_error the second time in a
   * process, std::runtime_error when the listener does not run */
  void start();
  /** The same once more, after the stop. */
  void startAgain();
  /** Cleans up, which ends the listener. */
  void stop();
  /** Takes the provider out of the process. */
  void unload();

  /** Runs something as one step and records its answer. */
  template <typename Work>
  void step(const std::string& title, Work work) {
    static_cast<void>(answerOf(title, work));
  }
  /** The same. @return the answer */
  template <typename Work>
  auto answerOf(const std::string& title, Work work) {
    begin(title);
    auto answer = work();
    m_answers += answerText(answer);
    end();
    return answer;
  }

  /** Makes a method call as one step. @param why stands in the title */
  host::MethodOutcome
  invoke(const MethodCall& call, const std::string& why, const std::string& className = "TVP_TierService");
  /** Every instance of a class, as one step. */
  host::InstancesOutcome enumerate(const std::string& className, const std::string& why);

  /** One round of the listener, with the indications that come out of it. */
  void round(const std::string& title = "a round of the listener");
  /** A round after which the listener ends. */
  void lastRound();

  /**
   * Makes a step as it is, and once more for each function of the object manager that it calls: the first
   * call of that one fails.
   * @param step makes one step, with an addition to its title
   */
  template <typename Step>
  void failEachFunction(Step step) {
    m_broker->resetCalls(true);
    step(", all calls answered");
    for (const auto& [name, number] : callsSinceReset()) {
      m_broker->failCall(number, CMPI_RC_ERR_FAILED);
      step(", " + name + " fails");
      m_broker->failCall(0, CMPI_RC_OK);
    }
  }

  /** Runs voltvkctl, which must succeed; a step when the provider runs. @return what it printed */
  std::string voltvkctl(const std::vector<std::string>& words);

  /**
   * Fails the test unless this life is byte for byte what was recorded in tests/life, and shows the first
   * difference. With TVP_LIFE_WRITE in the environment it is recorded instead; look at the difference then.
   * With an object manager in TVP_OBJECT_MANAGER, what differs from the recorded answers is compared.
   * @param prefix of the names of the recordings: PREFIXlog.txt, PREFIXanswers.txt and PREFIXMANAGER.diff
   */
  void expectAsRecorded(const std::string& prefix) const;

private:
  void expectRecording(const std::string& name, const std::string& text) const;
  static void waitForListener();
  /** The functions that the provider called, with the number of the first call, from 1. */
  std::vector<std::pair<std::string, std::uint64_t>> callsSinceReset();
  void begin(const std::string& title);
  void end();
  void recordAnswersOfBroker();
  std::string unreadLog() const;
  std::string normalised(const std::string& line, bool& ofListener) const;
  std::string withoutPlacesAndTimes(std::string text) const;
  bool logHas(const std::string& text) const;
  host::BrokerHandlers handlers();

  TemporaryDirectory m_directory;
  std::string m_logFile;
  ObjectManager m_objectManager;
  std::unique_ptr<host::Broker> m_broker;
  std::shared_ptr<host::ProviderLibrary> m_library;
  std::optional<host::Provider> m_provider;
  std::streamoff m_logRead = 0;
  std::string m_log;
  std::string m_answers;
  std::mutex m_receivedMutex;
  std::string m_received;  ///< by the object manager in this step: indications and other calls
};

}  // namespace tvp::test

#endif
