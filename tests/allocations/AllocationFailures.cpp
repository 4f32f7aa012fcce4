// SPDX-License-Identifier: Apache-2.0
// Whichever allocation of the provider, the storage library or SQLite fails, the answer is the complete one
// or an error, nothing crashes, leaks or stays locked, and the next request works.
#include "allocations/ProductMemory.h"
#include "host/schema/MofReader.h"
#include "life/AnswerText.h"
#include "life/ListenerSleep.h"
#include "support/Command.h"
#include "support/Lines.h"
#include "support/MethodArguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <optional>

#include <sys/wait.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) unsigned int sleep(unsigned int seconds) {
  return tvp::test::ListenerSleep::instance().sleep(seconds);
}

namespace tvp::test {
namespace {

using host::Value;
using Failing = ProductMemory::Failing;

constexpr char NAMESPACE[] = "root/kvs/tvp/smi_15";
constexpr char PROVIDER_FILE[] = TVP_BINARY_DIR "/lib/libtarvexProProvider.so";

host::ObjectPath classPath(const std::string& className) {
  return {NAMESPACE, className, {}, ""};
}

/** Every allocation fails alone; that all after it fail too is tried for some of them, since it takes as
 * long. */
std::uint64_t stepOf(Failing failing) {
  return failing == Failing::One ? 1 : 7;
}

/** What the process was doing, for a crash or a hang. */
char current[256] = "";

void nameCurrent(int signal) {
  static_cast<void>(!::write(STDERR_FILENO, current, std::strlen(current)));
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

/** Names what is done next, which must not hang. @return its name, for a failure of the test */
const char* announce(const std::string& what, std::uint64_t n, Failing failing) {
  constexpr unsigned int LONGEST = 120;  // seconds, on a machine that is busy with other things
  ::alarm(LONGEST);
  std::snprintf(
      current, sizeof current, "\n%s: allocation %llu%s\n", what.c_str(), static_cast<unsigned long long>(n),
      failing == Failing::One ? "" : " and all after it");
  return current;
}

/** The surroundings of the provider: a storage state, a machine and the place of the log. */
class Surroundings {
public:
  Surroundings() {
    for (const int signal : {SIGSEGV, SIGABRT, SIGALRM}) {
      ::signal(signal, nameCurrent);
    }
    ::setenv("TVP_TEST_ROOT", m_directory.path().c_str(), 1);
    ::setenv("VOLTVK_STATE", m_directory.file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", m_directory.file("machine").c_str(), 1);
    // One drive, with a mount and a swap area elsewhere, so that there is something to look at.
    for (const auto& [file, content] :
         {std::pair("sys/block/sda/size", "2097152\n"), std::pair("sys/block/sda/queue/rotational", "1\n"),
          std::pair("sys/block/sda/device/model", "A disk\n"),
          std::pair("proc/self/mountinfo", "1 0 259:1 / / rw - ext4 /dev/nvme0n1p1 rw\n"),
          std::pair("proc/swaps", "Filename Type\n/dev/nvme0n1p2 partition\n")}) {
      m_directory.write(std::string("machine/") + file, content);
    }
    ::setenv("TZ", "UTC", 1);
    for (const char* type : {"hdd", "ssd", "hdd", "hdd", "hdd"}) {
      const std::string number = voltvkctl({"drive", "add", "--type", type, "--size", "1GiB"});
      m_drives.push_back(static_cast<std::uint8_t>(std::stoul(number)));
    }
  }

  /** @return what the command printed */
  static std::string voltvkctl(std::vector<std::string> words) {
    words.insert(words.begin(), TVP_BINARY_DIR "/bin/voltvkctl");
    const CommandResult result = Command(words).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
  }
  std::string file(const std::string& name) const { return m_directory.file(name); }
  /** The drives, those of the machine included. */
  static std::size_t driveCount() { return linesOf(voltvkctl({"drive", "list"})).size() - 1; }
  /** The number of the i-th drive that was added. */
  std::uint8_t drive(std::size_t i) const { return m_drives.at(i); }
  void switchLogOn() const { m_directory.write("var/log/TVP.txt", ""); }
  /** Whether the log has an error that contains a text. */
  bool hasError(const std::string& text) const {
    const std::vector<std::string> lines = linesOf(readFile(file("var/log/TVP.txt")));
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
      return line.find(":LOG_ERROR::") != std::string::npos && line.find(text) != std::string::npos;
    });
  }

private:
  // Where the system has it, in memory: thousands of commits need not wait for a disk.
  const bool m_isInMemory = ::access("/dev/shm", W_OK) == 0 && ::setenv("TMPDIR", "/dev/shm", 0) == 0;
  TemporaryDirectory m_directory;
  std::vector<std::uint8_t> m_drives;
};

/** What the provider and the library have in use. */
struct InUse {
  std::size_t blocks = ProductMemory::blocks();
  std::ptrdiff_t descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
};

/** Checks that no more is in use than there was after the first failure, which may have filled caches. */
class Leaks {
public:
  void check() {
    const InUse now;
    EXPECT_GT(now.blocks, 0U) << "blocks are not counted";
    if (!m_first) {
      m_first = now;
    }
    EXPECT_LE(now.blocks, m_first->blocks) << "memory leaks";
    EXPECT_LE(now.descriptors, m_first->descriptors) << "descriptors leak";
  }

private:
  std::optional<InUse> m_first;
};

/** What a client sees of an answer: its status and all of it as text. */
using Answer = std::pair<CMPIrc, std::string>;

template <typename Outcome>
Answer seen(const Outcome& outcome) {
  return {outcome.rc, answerText(outcome)};
}

class AllocationFailures : public testing::Test, protected Surroundings {
protected:
  using Request = std::function<Answer()>;

  AllocationFailures()
      : m_broker(host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof"), brokerOptions()) {
    m_provider.emplace(m_broker, std::make_shared<host::ProviderLibrary>(PROVIDER_FILE, "tarvexProProvider"));
    EXPECT_NE(ListenerSleep::instance().waitUntilAsleep(), 0U);
    arrange();
  }
  ~AllocationFailures() override {
    ListenerSleep::instance().wakeWhen([] { return true; });
    static_cast<void>(m_provider->cleanup(true));
  }
  void TearDown() override {
    for (const host::Breach& breach : m_broker.breaches()) {
      ADD_FAILURE() << "breach: " << breach.text;
    }
  }

  static host::BrokerOptions brokerOptions() {
    host::BrokerOptions options;
    options.graveyard = 0;  // the dead would look like a leak
    return options;
  }

  Answer instancesOf(const char* className) {
    return seen(m_provider->enumerateInstances(classPath(className)));
  }

  /** Everything that a change could affect, but for identifiers and what they decide. */
  std::string state() {
    std::string text;
    for (const char* className : {"TVP_VirtualPool", "TVP_VirtualVolume"}) {
      for (const host::Instance& object : m_provider->enumerateInstances(classPath(className)).instances) {
        for (const char* name :
             {"Name", "VolumeName", "Description", "TierLevel", "UsedCapacityInSectors", "CapacityInSectors",
              "KnobSetting"}) {
          const Value* value = object.property(name);
          text += value == nullptr ? "" : value->toText() + " ";
        }
        text += "\n";
      }
    }
    return text;
  }

  Answer call(const std::string& method, const MethodValues& values) {
    const host::SchemaMethod* declared = m_broker.schema().find("TVP_TierService")->method(method);
    return seen(
        m_provider->invokeMethod(classPath("TVP_TierService"), method, argumentsFor(*declared, values)));
  }

  std::uint32_t pool(const std::string& name) {
    return identifierOf(m_provider->enumerateInstances(classPath("TVP_VirtualPool")), name);
  }

  /** Restores the configuration if it has changed; its identifiers are different then. */
  void arrange() {
    if (!m_standard.empty() && state() == m_standard) {
      return;
    }
    for (const auto& [className, key, method] :
         {std::array{"TVP_VirtualVolume", "VirtualVolumeId", "DeleteVirtualVolume"},
          std::array{"TVP_VirtualPool", "VirtualPoolId", "DeleteVirtualPool"}}) {
      for (const host::Instance& object : m_provider->enumerateInstances(classPath(className)).instances) {
        MethodValues values;
        values.pool = values.volume = static_cast<std::uint32_t>(object.property(key)->asUnsigned());
        call(method, values);
      }
    }
    MethodValues values;
    for (const auto& [name, index] :
         {std::pair("disks", 0U), std::pair("flash", 1U), std::pair("spare", 2U)}) {
      values.name = name;
      values.drive = drive(index);
      values.tier = index == 1 ? 3 : 1;
      EXPECT_EQ(call("CreateVirtualPool", values).first, CMPI_RC_OK);
    }
    m_good.diskPool = m_good.pool = values.diskPool = pool("disks");
    m_good.flashPool = values.flashPool = pool("flash");
    values.name = "cached";
    EXPECT_EQ(call("CreateVirtualVolume", values).first, CMPI_RC_OK);
    m_good.volume = identifierOf(m_provider->enumerateInstances(classPath("TVP_VirtualVolume")), "cached");
    m_good.name = "a pool or a volume";
    m_good.drive = drive(3);
    m_spare = pool("spare");
    m_standard = state();
  }
  MethodValues goodValues(const std::string& method) const {
    MethodValues values = m_good;
    if (method == "DeleteVirtualPool") {
      values.pool = m_spare;
    }
    return values;
  }

  /** The request that must work after a failure; reading the state is always one of them. */
  enum class Next { TheSame, ReadingTheState };

  /** Makes a request once for each of its allocations, with that one failing, or with all from there on. */
  void survives(const std::string& name, const Request& request, Next next = Next::TheSame) {
    for (const Failing failing : {Failing::One, Failing::AllAfter}) {
      arrange();
      request();  // fills caches
      arrange();
      const Answer expected = request();
      const std::string changed = state();
      arrange();
      Leaks leaks;
      for (std::uint64_t n = 1; !HasFailure(); n += stepOf(failing)) {
        SCOPED_TRACE(announce(name, n, failing));
        ProductMemory::fail(n, failing);
        const Answer answer = request();
        if (ProductMemory::stop() < n) {
          EXPECT_EQ(answer, expected);
          break;
        }
        ++m_failures;
        if (answer.first == CMPI_RC_OK) {
          EXPECT_EQ(answer, expected) << "success, with another answer";
        }
        const std::string after = state();
        EXPECT_TRUE(after == m_standard || after == changed) << "half a change:\n" << after;
        if (next == Next::TheSame && changed == m_standard) {
          EXPECT_EQ(request(), expected) << "the next request";
        } else if (after != m_standard) {
          arrange();
        }
        leaks.check();
      }
    }
    arrange();
  }

  host::Broker m_broker;
  std::optional<host::Provider> m_provider;
  std::string m_standard;
  MethodValues m_good;
  std::uint32_t m_spare = 0;
  std::uint64_t m_failures = 0;  ///< seen by survives()
};

TEST_F(AllocationFailures, AreSurvivedByReadingEveryClass) {
  for (const host::SchemaClass* schemaClass : m_broker.schema().classes()) {
    const host::ObjectPath all = classPath(schemaClass->name);
    const auto names = m_provider->enumerateInstanceNames(all).paths;
    const host::ObjectPath one = names.empty() ? all : managerPath(names.back());
    survives("enumerate " + all.className, [&] { return seen(m_provider->enumerateInstances(all)); });
    survives("names " + all.className, [&] { return seen(m_provider->enumerateInstanceNames(all)); });
    survives("get " + all.className, [&] { return seen(m_provider->getInstance(one)); });
  }
  EXPECT_GT(m_failures, 500U) << "the requests have become something else";
}

TEST_F(AllocationFailures, AreSurvivedByChangesOfInstancesAndByAssociations) {
  const host::ObjectPath all = classPath("TVP_VirtualPool");
  const host::Instance instance = m_provider->enumerateInstances(all).instances.front();
  const host::ObjectPath one = managerPath(instance.path);
  survives("modify", [&] { return seen(m_provider->modifyInstance(one, instance)); });
  survives("create", [&] { return seen(m_provider->createInstance(all, instance)); });
  survives("delete", [&] { return seen(m_provider->deleteInstance(one)); });
  survives("query", [&] { return seen(m_provider->execQuery(all, "SELECT * FROM TVP_VirtualPool", "WQL")); });
  for (const char* association : {"", "TVP_VirtualVolume", "TVP_Unknown"}) {
    const host::AssociationFilter filter{association, "", "", ""};
    const host::AssociationFilter result{"", association, "", ""};
    survives("associators", [&] { return seen(m_provider->associators(one, filter)); });
    survives("associatorNames", [&] { return seen(m_provider->associatorNames(one, filter)); });
    survives("references", [&] { return seen(m_provider->references(one, result)); });
    survives("referenceNames", [&] { return seen(m_provider->referenceNames(one, result)); });
  }
  survives("authorizeFilter", [&] { return seen(m_provider->authorizeFilter({})); });
  survives("mustPoll", [&] { return seen(m_provider->mustPoll({})); });
  survives("activateFilter", [&] { return seen(m_provider->activateFilter({})); });
  survives("deActivateFilter", [&] { return seen(m_provider->deActivateFilter({})); });
  survives("enableIndications", [&] { return seen(m_provider->enableIndications()); });
  survives("disableIndications", [&] { return seen(m_provider->disableIndications()); });
  survives("a clean-up that is refused", [&] { return seen(m_provider->cleanup(false)); });
}

TEST_F(AllocationFailures, AreSurvivedByMethodsThatSucceed) {
  for (const host::SchemaMethod& method : m_broker.schema().find("TVP_TierService")->methods) {
    survives(method.name, [&] { return call(method.name, goodValues(method.name)); });
  }
}

TEST_F(AllocationFailures, AreSurvivedByMethodsThatAreRefused) {
  MethodValues bad = m_good;
  bad.pool = bad.volume = bad.diskPool = bad.flashPool = 4711;
  bad.drive = drive(0);  // in use
  for (const host::SchemaMethod& method : m_broker.schema().find("TVP_TierService")->methods) {
    survives(
        method.name, [&] { return call(method.name, bad); }, Next::ReadingTheState);
  }
  survives("a method that does not exist", [&] {
    return seen(m_provider->invokeMethod(classPath("TVP_TierService"), "Repair", {}));
  });
  host::CallOptions stranger;
  stranger.principal = "nobody";
  survives("a method for somebody else", [&] {
    return seen(m_provider->invokeMethod(classPath("TVP_TierService"), "DeleteVirtualPool", {}, &stranger));
  });
}

TEST_F(AllocationFailures, AreSurvivedWhileTheStateIsOpened) {
  survives(
      "reopen",
      [&] {
        // Another file in its place, with the same content.
        std::filesystem::copy(file("state.db"), file("copy.db"));
        std::filesystem::rename(file("copy.db"), file("state.db"));
        return instancesOf("TVP_VirtualPool");
      },
      Next::ReadingTheState);
}

TEST_F(AllocationFailures, AreSurvivedWithTheLogSwitchedOn) {
  switchLogOn();
  survives("enumerate pools", [&] { return instancesOf("TVP_VirtualPool"); });
}

/** One round of the listener, which must be asleep and goes to sleep again. */
void listenOnce() {
  ListenerSleep::instance().wake();
  ASSERT_NE(ListenerSleep::instance().waitUntilAsleep(), 0U) << "the listener is gone";
}

TEST_F(AllocationFailures, AreSurvivedByTheListener) {
  std::atomic<int> delivered{0};
  host::BrokerHandlers handlers;
  handlers.onIndication = [&](const std::string&, const host::Instance&) {
    ++delivered;
    return CMPI_RC_OK;
  };
  m_broker.setHandlers(handlers);
  ASSERT_TRUE(m_provider->activateFilter({}).ok() && m_provider->enableIndications().ok());
  MethodValues knob = m_good;
  const auto happen = [&] {
    knob.name = knob.name == "cached" ? "changed" : "cached";
    EXPECT_EQ(call("ModifyVirtualVolume", knob).first, CMPI_RC_OK);
  };
  for (const Failing failing : {Failing::One, Failing::AllAfter}) {
    happen();
    listenOnce();
    Leaks leaks;
    bool reached = true;
    for (std::uint64_t n = 1; reached && !HasFailure(); n += stepOf(failing)) {
      SCOPED_TRACE(announce("listener", n, failing));
      happen();
      switchLogOn();
      delivered = 0;
      ProductMemory::fail(n, failing);
      listenOnce();
      reached = ProductMemory::stop() >= n;
      const bool isLogged = hasError("");
      const bool wasDelivered = delivered == 1;
      EXPECT_TRUE(wasDelivered || isLogged) << "nobody learns of the event";
      happen();
      listenOnce();
      EXPECT_GE(delivered, wasDelivered ? 2 : 1) << "the next event";
      leaks.check();
    }
  }
}

/** The parts of a provider's life that happen once in a process. */
enum class Once { Start, Stop };

/**
 * Starts the provider in a process of its own, makes a request and stops it, with allocations that fail in
 * one part.
 * @param count of the drives, all of which a good answer has
 * @return whether the n-th allocation was reached; a failure of the test if anything else went wrong
 */
bool lifeWithFailures(
    const std::shared_ptr<const host::Schema>& schema, std::size_t count, Once part, std::uint64_t n,
    Failing failing) {
  constexpr int REACHED = 10;
  constexpr int NOT_REACHED = 11;
  const pid_t child = ::fork();
  if (child == 0) {
    announce(part == Once::Start ? "start" : "stop", n, failing);
    bool reached = false;
    const auto during = [&](Once now, const auto& work) {
      // How the database is opened without memory is AreSurvivedWhileTheStateIsOpened.
      ProductMemory::fail(now == part ? n : 0, failing, ProductMemory::Of::AllButDatabase);
      work();
      reached = (ProductMemory::stop() >= n && now == part) || reached;
    };
    host::Broker broker(schema);
    std::optional<host::Provider> provider;
    ListenerSleep::instance().wakeWhen([] { return true; });
    std::shared_ptr<host::ProviderLibrary> library;
    const auto load = [&] {
      library = std::make_shared<host::ProviderLibrary>(PROVIDER_FILE, "tarvexProProvider");
    };
    if (failing == Failing::AllAfter) {
      load();  // which sets memory aside for exceptions: if there is not even that, nothing can be thrown
    }
    during(Once::Start, [&] {
      if (library == nullptr) {
        load();
      }
      provider.emplace(broker, library);
    });
    const host::InstancesOutcome drives = provider->enumerateInstances(classPath("TVP_LogicalDevice"));
    bool good = !drives.ok() || drives.instances.size() == count;
    during(Once::Stop, [&] { static_cast<void>(provider->cleanup(true)); });
    provider.reset();
    good = good && broker.breaches().empty();
    ::_exit(!good ? 1 : reached ? REACHED : NOT_REACHED);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  const int result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  EXPECT_TRUE(result == REACHED || result == NOT_REACHED) << "exit status " << result << ", allocation " << n;
  return result == REACHED;
}

TEST(AllocationFailuresOnce, AreSurvivedByStartAndStop) {
  const Surroundings surroundings;
  const auto schema = host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  const std::size_t count = Surroundings::driveCount();
  for (const Once part : {Once::Start, Once::Stop}) {
    for (const Failing failing : {Failing::One, Failing::AllAfter}) {
      std::uint64_t n = 1;
      while (lifeWithFailures(schema, count, part, n, failing) && !testing::Test::HasFailure()) {
        n += stepOf(failing);
      }
    }
  }
}

}  // namespace
}  // namespace tvp::test
