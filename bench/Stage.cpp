// SPDX-License-Identifier: Apache-2.0
#include "bench/Stage.h"

#include "host/schema/MofReader.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

using tvp::host::Arguments;
using tvp::host::ObjectPath;
using tvp::host::Value;

namespace {

constexpr char OUTPUT[] = TVP_BINARY_DIR;
constexpr std::uint64_t CHUNK_SECTORS = 2048;
constexpr std::uint64_t GIBIBYTE_SECTORS = 2097152;
/** Few dead objects are kept, so that the host's own memory is not measured. */
constexpr std::size_t GRAVEYARD = 256;

std::string libraryOf(Subject::Kind kind) {
  const char* name = kind == Subject::Kind::Product          ? "tarvexProProvider"
                     : kind == Subject::Kind::PollingProduct ? "benchPollingProvider"
                                                             : "benchBaseline";
  return std::string(OUTPUT) + "/lib/lib" + name + ".so";
}

tvp::host::BrokerOptions brokerOptions() {
  tvp::host::BrokerOptions options;
  options.graveyard = GRAVEYARD;
  return options;
}

/** The log that this process writes while it exists; requireScratch() has been called. */
std::filesystem::path logFile() {
  return std::filesystem::path(std::getenv("TVP_TEST_ROOT")) / "var/log/TVP.txt";
}

/** Adds a virtual hard disk. @return its number */
std::uint8_t addDrive() {
  const std::string command = std::string("'") + OUTPUT + "/bin/voltvkctl' drive add --type hdd --size 10GiB";
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> output(popen(command.c_str(), "r"), pclose);
  std::array<char, 32> line{};
  if (!output || std::fgets(line.data(), line.size(), output.get()) == nullptr) {
    throw std::runtime_error("no virtual drive could be added with: " + command);
  }
  return static_cast<std::uint8_t>(std::strtoul(line.data(), nullptr, 10));
}

void invoke(Subject& subject, const std::string& method, const Arguments& arguments) {
  const ObjectPath path{"root/kvs/tvp/smi_15", "TVP_TierService", {}, ""};
  const auto outcome = subject.provider().invokeMethod(path, method, arguments);
  const Value* status = outcome.output.find("RetStat");
  if (!outcome.ok() || status == nullptr || status->asUnsigned() != 0) {
    throw std::runtime_error(
        method + " was refused: " + outcome.message + " " + (status == nullptr ? "" : status->toText()));
  }
}

void createPool(Subject& subject, std::size_t number, std::uint64_t sectors) {
  invoke(
      subject, "CreateVirtualPool",
      Arguments()
          .add("Name", Value::string("Pool" + std::to_string(number)))
          .add("Description", Value::string("for measuring"))
          .add("NumberOfLogicalDevice", Value::uint8(1))
          .add("LDDeviceNumbers", Value::array(CMPI_uint8, {Value::uint8(addDrive())}))
          .add("CapacityInSectors", Value::uint64(sectors))
          .add("ChunkSize", Value::uint64(CHUNK_SECTORS))
          .add("TierLevel", Value::uint8(1)));
}

void createVolume(Subject& subject, std::size_t number) {
  invoke(
      subject, "CreateVirtualVolume",
      Arguments()
          .add("VolumeName", Value::string("Volume" + std::to_string(number)))
          .add("Description", Value::string("for measuring"))
          .add("VolumeType", Value::uint8(1))
          .add("VirtualPoolsCount", Value::uint8(1))
          .add("ListOfVirtualPoolIds", Value::array(CMPI_uint32, {Value::uint32(1)}))
          .add("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(CHUNK_SECTORS * 16)}))
          .add("KnobSetting", Value::uint32(2)));
}

}  // namespace

Subject::Subject(Kind kind)
    : m_broker(
          tvp::host::MofReader::readFile(std::string(OUTPUT) + "/share/tarvexpro/TVP.mof"), brokerOptions()) {
  tvp::host::BrokerHandlers handlers;
  handlers.onIndication = [this](const std::string&, const tvp::host::Instance&) {
    ++m_indications;
    return CMPI_RC_OK;
  };
  m_broker.setHandlers(handlers);
  const std::string library = libraryOf(kind);
  const char* prefix = kind == Kind::Baseline ? "benchBaseline" : "tarvexProProvider";
  m_provider = std::make_unique<tvp::host::Provider>(
      m_broker, std::make_shared<tvp::host::ProviderLibrary>(library, prefix));
  if (kind != Kind::Product) {
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_NOLOAD);
    m_pollOnce = reinterpret_cast<void (*)()>(dlsym(handle, "benchPollOnce"));
    m_looks = reinterpret_cast<std::uint64_t (*)()>(dlsym(handle, "benchLooks"));
  }
}

void Subject::subscribe() {
  static_cast<void>(m_provider->activateFilter({}));
  static_cast<void>(m_provider->enableIndications());
}

double Subject::pollOnce() {
  double seconds = 0;
  std::thread listener([&] {
    seconds = time(m_pollOnce);
    m_broker.cmpi()->bft->detachThread(m_broker.cmpi(), nullptr);
  });
  listener.join();
  return seconds;
}

double Subject::time(const std::function<void()>& call) {
  const std::uint64_t before = m_looks == nullptr ? 0 : m_looks();
  const auto start = std::chrono::steady_clock::now();
  call();
  payLogLines(m_addedLines);
  const std::chrono::duration<double> duration = std::chrono::steady_clock::now() - start;
  m_looksOfLastCall = m_looks == nullptr ? 0 : m_looks() - before;
  return duration.count();
}

Scenario Scenario::named(const std::string& name) {
  const std::size_t dash = name.find('-');
  if (dash == std::string::npos) {
    throw std::invalid_argument("'" + name + "' is not a scenario; they are named like drives-8");
  }
  return {name.substr(0, dash), std::stoul(name.substr(dash + 1))};
}

void requireScratch() {
  for (const char* variable : {"VOLTVK_STATE", "TVP_TEST_ROOT"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') {
      throw std::runtime_error(
          std::string(variable) +
          " is not set: one measurement alone would use the storage state and the log of "
          "this machine; start tvp_bench without arguments, or set it to a scratch place");
    }
  }
}

void prepare(const Scenario& scenario) {
  Subject subject(Subject::Kind::Product);
  if (scenario.sort == "drives") {
    const ObjectPath drives{"root/kvs/tvp/smi_15", "TVP_LogicalDevice", {}, ""};
    const std::size_t present = subject.provider().enumerateInstances(drives).instances.size();
    for (std::size_t count = present; count < scenario.count; ++count) {
      addDrive();
    }
  } else if (scenario.sort == "pools") {
    for (std::size_t number = 0; number < scenario.count; ++number) {
      createPool(subject, number, GIBIBYTE_SECTORS);
    }
  } else {
    createPool(subject, 0, GIBIBYTE_SECTORS * 8);
    for (std::size_t number = 0; number < scenario.count; ++number) {
      createVolume(subject, number);
    }
  }
}

void switchLog(bool on) {
  const std::filesystem::path file = logFile();
  if (on) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream created(file);
    return;
  }
  // The directories are removed too: finding nothing there then takes as long as in /var/log.
  for (const auto& gone : {file, file.parent_path(), file.parent_path().parent_path()}) {
    std::filesystem::remove(gone);
  }
}

void payLogLines(std::uint64_t lines) {
  static const std::string file = logFile();
  static const std::string line = std::string(99, '-') + '\n';
  struct stat status {};
  for (; lines > 0; --lines) {
    if (stat(file.c_str(), &status) != 0) {
      continue;
    }
    const int log = open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (log < 0 || write(log, line.data(), line.size()) < 0 || close(log) != 0) {
      throw std::runtime_error("the log could not be written: " + file);
    }
  }
}

void keepLogSmall() {
  constexpr std::uintmax_t LARGEST = 4U << 20U;
  static const std::filesystem::path file = logFile();
  std::error_code absent;
  const std::uintmax_t size = std::filesystem::file_size(file, absent);
  if (!absent && size > LARGEST) {
    std::filesystem::resize_file(file, 0);
  }
}

}  // namespace bench
