// SPDX-License-Identifier: Apache-2.0
#include "life/Life.h"

#include "host/schema/MofReader.h"
#include "life/ListenerSleep.h"
#include "support/Command.h"
#include "support/Lines.h"
#include "support/Threads.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <stdexcept>
#include <utility>

#include <pthread.h>
#include <sys/utsname.h>

extern "C" __attribute__((visibility("default"))) unsigned int sleep(unsigned int seconds) {
  return tvp::test::ListenerSleep::instance().sleep(seconds);
}

namespace tvp::test {
namespace {

constexpr char CATALOGUE[] = "usr/VolMan/TVPEvents.properties";
constexpr unsigned int SECONDS_BETWEEN_ROUNDS = 5;

/** The registered profiles of an object manager, two of which the provider looks for. */
host::UpcallAnswer profiles() {
  host::UpcallAnswer answer;
  answer.rc = CMPI_RC_OK;
  for (const char* profile : {"SNIA+SMI-S+1.5.0", "SNIA+Server+1.5.0", "SNIA+Other+1.5.0"}) {
    answer.values.push_back(host::Value::reference(
        {"root/PG_InterOp", "PG_RegisteredProfile", {{"InstanceID", host::Value::string(profile)}}, ""}));
  }
  return answer;
}

std::string recordingPath(const std::string& name) {
  return TVP_SOURCE_DIR "/tests/life/" + name;
}

/** What diff shows, each difference under the heading of its step. */
std::string difference(const std::string& from, const std::string& to, const std::string& linesAround) {
  return Command(
             {"/usr/bin/diff", "--text", "--unified=" + linesAround, "--show-function-line=^=== ", from, to})
      .run()
      .out;
}

}  // namespace

Life::Life() : m_logFile(m_directory.write("var/log/TVP.txt", "")) {
  m_directory.write(CATALOGUE, readFile(TVP_SOURCE_DIR "/share/TVPEvents.properties"));
  // Before anything of the provider reads them.
  ::setenv("TVP_TEST_ROOT", m_directory.path().c_str(), 1);
  ::setenv("VOLTVK_STATE", m_directory.file("state.db").c_str(), 1);
  ::setenv("VOLTVK_HOST_ROOT", TVP_SOURCE_DIR "/tests/docs/machine", 1);
  ::setenv("TZ", "UTC", 1);
  m_broker = std::make_unique<host::Broker>(
      host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof"),
      host::optionsAs(std::getenv("TVP_OBJECT_MANAGER")));
  m_broker->setHandlers(handlers());
}

Life::~Life() {
  ListenerSleep::instance().wakeWhen([] { return true; });
  if (m_provider) {
    static_cast<void>(m_provider->cleanup(true));
  }
}

host::BrokerHandlers Life::handlers() {
  host::BrokerHandlers handlers;
  handlers.onPrepareAttachThread = [this] { return m_objectManager.preparesThreads.load(); };
  handlers.onAttachThread = [this] {
    return m_objectManager.attachesThreads ? CMPI_RC_OK : CMPI_RC_ERR_FAILED;
  };
  handlers.onIndication = [this](const std::string& nameSpace, const host::Instance& indication) {
    const std::lock_guard<std::mutex> lock(m_receivedMutex);
    m_received += "indication in " + nameSpace + "\n" + instanceText(indication);
    return m_objectManager.takesIndications ? CMPI_RC_OK : CMPI_RC_ERR_FAILED;
  };
  handlers.onUpcall = [this](const host::Upcall& upcall) {
    const std::lock_guard<std::mutex> lock(m_receivedMutex);
    m_received +=
        "upcall " + upcall.operation + " " + upcall.path.nameSpace + ":" + upcall.path.className + "\n";
    return m_objectManager.hasProfiles ? profiles() : host::UpcallAnswer();
  };
  return handlers;
}

void Life::removeCatalogue() {
  std::filesystem::remove(m_directory.file(CATALOGUE));
}

void Life::start() {
  static bool lived = false;
  if (std::exchange(lived, true)) {
    throw std::logic_error("one process can run only one life; choose one with --gtest_filter, or use ctest");
  }
  begin("start");
  m_library = std::make_shared<host::ProviderLibrary>(
      TVP_BINARY_DIR "/lib/libtarvexProProvider.so", "tarvexProProvider");
  m_provider.emplace(broker(), m_library);
  waitForListener();
  end();
}

void Life::startAgain() {
  begin("start again");
  m_provider.emplace(broker(), m_library);
  end();
}

void Life::stop() {
  ListenerSleep& sleep = ListenerSleep::instance();
  // The listener looks whether it shall end when it wakes; it is woken after it was told to.
  sleep.wakeWhen([this] { return logHas("CancelSynchronousIo Failed"); });
  step("stop", [this] { return provider().cleanup(true); });
}

void Life::unload() {
  begin("unload");
  m_provider.reset();
  m_library.reset();
  m_broker->reportLeaks();
  end();
}

host::MethodOutcome
Life::invoke(const MethodCall& call, const std::string& why, const std::string& className) {
  return answerOf(className + "." + call.method + ": " + why, [&] {
    return provider().invokeMethod(classPath(className), call.method, call.arguments);
  });
}

host::InstancesOutcome Life::enumerate(const std::string& className, const std::string& why) {
  return answerOf("enumerateInstances of " + className + ": " + why, [&] {
    return provider().enumerateInstances(classPath(className));
  });
}

void Life::round(const std::string& title) {
  begin(title);
  ListenerSleep::instance().wake();
  waitForListener();
  end();
}

void Life::lastRound() {
  begin("the last round of the listener");
  ListenerSleep::instance().wake();
  if (!waitFor([this] { return logHas("Exiting TvproEventManager::TvproEventListenerThread()"); })) {
    throw std::runtime_error("the listener does not end");
  }
  end();
}

void Life::waitForListener() {
  const unsigned int seconds = ListenerSleep::instance().waitUntilAsleep();
  if (seconds == 0) {
    throw std::runtime_error("the listener does not go to sleep");
  }
  EXPECT_EQ(seconds, SECONDS_BETWEEN_ROUNDS);
}

std::string Life::voltvkctl(const std::vector<std::string>& words) {
  std::vector<std::string> arguments = {TVP_BINARY_DIR "/bin/voltvkctl"};
  std::string title = "voltvkctl";
  for (const std::string& word : words) {
    arguments.push_back(word);
    title += " " + word;
  }
  begin(title);
  const CommandResult result = Command(arguments).run();
  EXPECT_EQ(result.exitStatus, 0) << title << ": " << result.err;
  end();
  return result.out;
}

void Life::expectRecording(const std::string& name, const std::string& text) const {
  constexpr std::size_t SHOWN = 4000;  // bytes
  const std::string file = recordingPath(name);
  if (std::getenv("TVP_LIFE_WRITE") != nullptr) {
    EXPECT_TRUE((std::ofstream(file, std::ios::binary) << text).flush()) << file << " cannot be written";
  } else if (text != readFile(file)) {
    ADD_FAILURE() << file << ": this life is not the recorded one\n"
                  << difference(file, m_directory.write("now", text), "6").substr(0, SHOWN)
                  << "\nIf the change is meant, record it and review the difference:\n"
                     "  TVP_LIFE_WRITE=1 ctest --test-dir " TVP_BINARY_DIR " -R OneLife";
  }
}

void Life::expectAsRecorded(const std::string& prefix) const {
  const char* manager = std::getenv("TVP_OBJECT_MANAGER");
  if (manager == nullptr) {
    expectRecording(prefix + "log.txt", m_log);
    expectRecording(prefix + "answers.txt", m_answers);
    return;
  }
  // The log is the same, but for the order of two threads that clean up. In the answers, the numbers of all
  // events change when one is missing, and the numbers of lines move with every change of the recording.
  const auto withoutNumbers = [this](const std::string& name, const std::string& whole) {
    return m_directory.write(
        name, std::regex_replace(whole, std::regex("\n  Id uint32 \\d+"), "\n  Id uint32"));
  };
  std::string found = difference(
      withoutNumbers("recorded", readFile(recordingPath(prefix + "answers.txt"))),
      withoutNumbers("now", m_answers), "0");
  found = std::regex_replace(found, std::regex("(^|\n)(---|\\+\\+\\+) [^\n]*"), "");
  found = std::regex_replace(found, std::regex("\n@@ [^@]* @@"), "\n@@");
  const std::string recording = prefix + manager + ".diff";
  if (!found.empty() || std::filesystem::exists(recordingPath(recording))) {
    expectRecording(recording, found);
  }
}

void Life::begin(const std::string& title) {
  m_log += "=== " + title + "\n";
  m_answers += "=== " + title + "\n";
}

void Life::end() {
  recordAnswersOfBroker();
  // Where both threads write at a time, at the start and at the stop, only the order within each is certain.
  std::string ofRequests;
  std::string ofListener;
  bool isOfListener = false;
  const std::string log = unreadLog();
  m_logRead += static_cast<std::streamoff>(log.size());
  for (const std::string& line : linesOf(log)) {
    const std::string text = normalised(line, isOfListener) + "\n";
    (isOfListener ? ofListener : ofRequests) += text;
  }
  m_log += ofRequests + ofListener;
}

void Life::recordAnswersOfBroker() {
  const std::lock_guard<std::mutex> lock(m_receivedMutex);
  m_answers += withoutPlacesAndTimes(m_received);
  m_received.clear();
  for (const host::Breach& breach : m_broker->breaches()) {
    m_answers += "breach " + breach.text + "\n";
    ADD_FAILURE() << breach.text;
  }
  m_broker->clearBreaches();
}

std::string Life::unreadLog() const {
  std::ifstream stream(m_logFile, std::ios::binary);
  stream.seekg(m_logRead);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::string Life::normalised(const std::string& line, bool& ofListener) const {
  static const std::regex HEAD(R"(^\d\d/\d{1,2}/\d{4} \d\d:\d\d:\d\d:\d{1,3}\[TVP-------([ 0-9A-F]{8})\])");
  static const auto ownNumber = static_cast<unsigned long>(static_cast<unsigned int>(::pthread_self()));
  std::smatch head;
  if (!std::regex_search(line, head, HEAD)) {
    return withoutPlacesAndTimes(line);  // the next line of a text of several, by the same thread
  }
  ofListener = std::stoul(head[1], nullptr, 16) != ownNumber;
  return (ofListener ? "listener" : "requests") + withoutPlacesAndTimes(head.suffix());
}

std::string Life::withoutPlacesAndTimes(std::string text) const {
  static const std::regex TIME(R"(\d\d/\d\d/\d{4} \d\d:\d\d:\d\d)");
  replaceAll(text, m_directory.path().string(), "<directory>");
  static const std::string HOST = [] {
    utsname system{};
    ::uname(&system);
    return std::string(system.nodename);
  }();
  replaceAll(text, "HostName = \\\\" + HOST + ",", "HostName = \\\\<host>,");
  replaceAll(text, "ObjPath = //" + HOST + "/", "ObjPath = //<host>/");
  return std::regex_replace(text, TIME, "<time>");
}

std::vector<std::pair<std::string, std::uint64_t>> Life::callsSinceReset() {
  std::vector<std::pair<std::string, std::uint64_t>> first;
  std::set<std::string> known;
  for (std::uint64_t i = 0; i < m_broker->callCount(); ++i) {
    const std::string name = m_broker->callName(i);
    // Not every object manager has the memory functions; tests/cmpi makes them fail.
    const bool ofMemory = name == "CMPIBroker.mark" || name == "CMPIBroker.release";
    if (!ofMemory && known.insert(name).second) {
      first.emplace_back(name, i + 1);
    }
  }
  return first;
}

bool Life::logHas(const std::string& text) const {
  return unreadLog().find(text) != std::string::npos;
}

}  // namespace tvp::test
