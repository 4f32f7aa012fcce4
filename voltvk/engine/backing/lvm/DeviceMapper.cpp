// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/DeviceMapper.h"

#include "voltvk/engine/backing/lvm/StatisticsText.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <libdevmapper.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include <fcntl.h>

namespace voltvk {

namespace {

constexpr const char* CONTROL = "/dev/mapper/control";
/** Marks our regions among those of other programs. */
constexpr const char* PROGRAM = "voltvk";
/** Areas that are printed at once. libdevmapper keeps the size of the largest answer for all later calls. */
constexpr unsigned AREAS_PER_PRINT = 1024;
/** How often the areas of a region are doubled if the kernel has no memory for so many. */
constexpr int MOST_DOUBLINGS = 8;

struct Deleter {
  void operator()(dm_task* task) const { dm_task_destroy(task); }
  void operator()(dm_stats* stats) const { dm_stats_destroy(stats); }
  void operator()(dm_pool* pool) const { dm_pool_destroy(pool); }
};
using Task = std::unique_ptr<dm_task, Deleter>;
using Stats = std::unique_ptr<dm_stats, Deleter>;
using Pool = std::unique_ptr<dm_pool, Deleter>;

std::mutex g_mutex;  // of all that libdevmapper keeps for the process

/** What libdevmapper said last, guarded by the mutex. It cannot be passed to the function that is told. */
std::array<char, 512> g_message;

__attribute__((format(printf, 5, 6))) void
keepMessage(int level, const char* /*file*/, int /*line*/, int /*error*/, const char* format, ...) {
  constexpr int LEVEL_BITS = 7;
  constexpr int WARNING = 4;
  if ((level & LEVEL_BITS) > WARNING) {
    return;
  }
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(g_message.data(), g_message.size(), format, arguments);
  va_end(arguments);
}

Pool makePool() {
  return Pool(dm_pool_create("voltvk", 1024));
}

/** A task for a device that has run, or null. */
Task runTask(int type, const std::string& name, const char* message = nullptr) {
  Task task(dm_task_create(type));
  // Nothing that is asked here may wait for the device's I/O or make it write.
  const bool done = task != nullptr && dm_task_set_name(task.get(), name.c_str()) != 0 &&
                    dm_task_no_flush(task.get()) != 0 &&
                    (message == nullptr || (dm_task_set_sector(task.get(), 0) != 0 &&
                                            dm_task_set_message(task.get(), message) != 0)) &&
                    dm_task_run(task.get()) != 0;
  return done ? std::move(task) : nullptr;
}

std::optional<MappedDevice> findDevice(const std::string& name) {
  dm_info info{};
  const Task task = runTask(DM_DEVICE_INFO, name);
  if (task == nullptr || dm_task_get_info(task.get(), &info) == 0 || info.exists == 0) {
    return std::nullopt;
  }
  return MappedDevice{static_cast<std::uint32_t>(info.open_count), info.suspended != 0};
}

/** The statistics of a device, with the list of our regions; or null. */
Stats listRegions(const std::string& name) {
  Stats stats(dm_stats_create(PROGRAM));
  const bool done = stats != nullptr && dm_stats_bind_name(stats.get(), name.c_str()) != 0 &&
                    dm_stats_list(stats.get(), PROGRAM) != 0;
  return done ? std::move(stats) : nullptr;
}

std::vector<StatisticsRegion> regionsOf(const Stats& stats) {
  std::vector<StatisticsRegion> regions;
  if (dm_stats_get_nr_regions(stats.get()) == 0) {
    return regions;  // libdevmapper 1.02.185 crashes on a walk through none
  }
  dm_stats_foreach_region(stats.get()) {
    StatisticsRegion region;
    region.id = dm_stats_get_current_region(stats.get());
    if (dm_stats_get_region_start(stats.get(), &region.firstSector, region.id) == 0 ||
        dm_stats_get_region_len(stats.get(), &region.sectors, region.id) == 0 ||
        dm_stats_get_region_area_len(stats.get(), &region.areaSectors, region.id) == 0 ||
        region.areaSectors == 0) {
      continue;
    }
    const char* data = dm_stats_get_region_aux_data(stats.get(), region.id);
    region.timesTaken = data == nullptr ? 0 : std::strtoull(data, nullptr, 10);
    regions.push_back(region);
  }
  return regions;
}

CacheStatus convert(const dm_status_cache& status) {
  CacheStatus converted;
  converted.hasFailed = status.fail != 0 || status.error != 0;
  converted.needsCheck = status.needs_check != 0;
  converted.policy = status.policy_name == nullptr ? "" : status.policy_name;
  converted.counters = {status.read_hits,  status.read_misses, status.write_hits,   status.write_misses,
                        status.block_size, status.used_blocks, status.total_blocks, status.dirty_blocks};
  return converted;
}

}  // namespace

/**
 * The time in which one thread uses libdevmapper: it has the mutex, and messages are kept instead of printed.
 * On destruction the last message becomes the object's last error, and the descriptor of the device mapper is
 * closed, so that no child process inherits it.
 */
class DeviceMapper::Session {
public:
  explicit Session(const DeviceMapper& mapper) : m_mapper(mapper), m_lock(g_mutex) {
    g_message[0] = '\0';
    // A log function of somebody else in this process stays; its owner then sees our messages.
    if (dm_log_is_non_default() == 0) {
      dm_log_with_errno_init(keepMessage);
      m_isLogOurs = true;
    }
    // libdevmapper would make the device node if it is missing.
    const FileDescriptor control(open(CONTROL, O_RDWR | O_CLOEXEC));
    m_isUsable = static_cast<bool>(control);
    if (!m_isUsable) {
      std::snprintf(
          g_message.data(), g_message.size(), "the device mapper cannot be used: %s: %s", CONTROL,
          std::strerror(errno));
    }
  }
  ~Session() {
    if (m_isUsable) {
      dm_lib_release();
    }
    if (m_isLogOurs) {
      dm_log_with_errno_init(nullptr);
    }
    try {
      m_mapper.m_lastError = g_message.data();
    } catch (const std::bad_alloc&) {
      m_mapper.m_lastError.clear();
    }
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  bool isUsable() const { return m_isUsable; }
  /** What was tried in between has been made up for. */
  static void forgetMessage() { g_message[0] = '\0'; }

private:
  const DeviceMapper& m_mapper;
  const std::lock_guard<std::mutex> m_lock;
  bool m_isLogOurs = false;
  bool m_isUsable = false;
};

std::string DeviceMapper::deviceName(const std::string& group, const std::string& volume) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  const Pool pool = makePool();
  const char* name =
      pool == nullptr ? nullptr : dm_build_dm_name(pool.get(), group.c_str(), volume.c_str(), nullptr);
  if (name == nullptr) {
    throw std::bad_alloc();
  }
  return name;
}

std::string DeviceMapper::obstacle() const {
  {
    const Session session(*this);
    std::array<char, 64> version{};
    if (session.isUsable() && dm_driver_version(version.data(), version.size()) == 0 &&
        g_message[0] == '\0') {
      std::snprintf(g_message.data(), g_message.size(), "the kernel's device mapper does not answer");
    }
  }
  return lastError();
}

std::optional<MappedDevice> DeviceMapper::device(const std::string& name) const {
  const Session session(*this);
  return session.isUsable() ? findDevice(name) : std::nullopt;
}

std::optional<CacheStatus> DeviceMapper::cacheStatus(const std::string& name) const {
  const Session session(*this);
  const Task task = session.isUsable() ? runTask(DM_DEVICE_STATUS, name) : nullptr;
  dm_info info{};
  if (task == nullptr || dm_task_get_info(task.get(), &info) == 0 || info.exists == 0) {
    return std::nullopt;
  }
  std::uint64_t start = 0;
  std::uint64_t length = 0;
  char* type = nullptr;
  char* parameters = nullptr;
  dm_get_next_target(task.get(), nullptr, &start, &length, &type, &parameters);
  const Pool pool = makePool();
  dm_status_cache* status = nullptr;
  if (type == nullptr || std::strcmp(type, "cache") != 0 || parameters == nullptr || pool == nullptr ||
      dm_get_status_cache(pool.get(), parameters, &status) == 0) {
    return std::nullopt;
  }
  return convert(*status);
}

std::optional<StatisticsRegion> DeviceMapper::region(const std::string& name) const {
  const Session session(*this);
  if (!session.isUsable() || !findDevice(name)) {
    return std::nullopt;
  }
  const Stats stats = listRegions(name);
  const std::vector<StatisticsRegion> regions =
      stats == nullptr ? std::vector<StatisticsRegion>() : regionsOf(stats);
  return regions.empty() ? std::nullopt : std::optional(regions.front());
}

std::optional<StatisticsRegion>
DeviceMapper::createRegion(const std::string& name, std::uint64_t sectors, std::uint64_t areaSectors) const {
  const Session session(*this);
  const Stats stats = session.isUsable() ? listRegions(name) : nullptr;
  if (stats == nullptr) {
    return std::nullopt;
  }
  for (const StatisticsRegion& earlier : regionsOf(stats)) {
    dm_stats_delete_region(stats.get(), earlier.id);
  }
  StatisticsRegion region;
  region.sectors = sectors;
  region.areaSectors = areaSectors;
  for (int attempt = 0; attempt <= MOST_DOUBLINGS; ++attempt, region.areaSectors *= 2) {
    if (dm_stats_create_region(
            stats.get(), &region.id, 0, sectors, static_cast<std::int64_t>(region.areaSectors), 0, nullptr,
            PROGRAM, "0") != 0) {
      Session::forgetMessage();
      return region;
    }
  }
  return std::nullopt;
}

std::vector<AreaStatistics>
DeviceMapper::read(const std::string& name, const StatisticsRegion& region) const {
  return print(name, region, false);
}

std::vector<AreaStatistics>
DeviceMapper::take(const std::string& name, const StatisticsRegion& region) const {
  return print(name, region, true);
}

std::vector<AreaStatistics>
DeviceMapper::print(const std::string& name, const StatisticsRegion& region, bool clear) const {
  std::vector<AreaStatistics> areas;
  const Session session(*this);
  const Stats stats = session.isUsable() ? listRegions(name) : nullptr;
  if (stats == nullptr) {
    return areas;
  }
  for (std::uint64_t line = 0; line < region.areas(); line += AREAS_PER_PRINT) {
    char* text = dm_stats_print_region(
        stats.get(), region.id, static_cast<unsigned>(line), AREAS_PER_PRINT, clear ? 1 : 0);
    if (text == nullptr) {
      break;
    }
    parseStatistics(text, areas);
    dm_stats_buffer_destroy(stats.get(), text);
  }
  if (clear) {
    // Tells all readers that what they have read before is out of date.
    runTask(
        DM_DEVICE_TARGET_MSG, name,
        ("@stats_set_aux " + std::to_string(region.id) + " " + std::to_string(region.timesTaken + 1))
            .c_str());
  }
  return areas;
}

std::string DeviceMapper::lastError() const {
  const std::lock_guard<std::mutex> lock(g_mutex);
  return m_lastError;
}

}  // namespace voltvk
