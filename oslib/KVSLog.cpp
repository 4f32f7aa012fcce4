// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSLog.h"

#include "oslib/KVSLogSwitch.h"
#include "oslib/KVSMutexGuard.h"
#include "oslib/KVSPaths.h"
#include "oslib/KVSSystem.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

constexpr std::uint64_t LARGEST_SIZE_WRITTEN_TO = 0x9FFFFF;
constexpr std::size_t LINE_SIZE = 512;
constexpr std::size_t LONGEST_PARTS = 255;
constexpr char DASHES[] = "----------";
constexpr std::size_t MODULE_COLUMNS = sizeof DASHES - 1;  // module name and dashes together

struct LogTarget {
  char path[512];
  char module[256];
};

// The state outlives static destruction, since threads may log until the process ends. g_LogMsg owns what it
// points to, until KvsLogUninit.
std::atomic<int> LOGInit{0};
std::atomic<KvsMutexHandle> g_LogMutex{nullptr};
std::atomic<LogTarget*> g_LogMsg{nullptr};
KvsLogSwitch logSwitch;

const char* tagOf(int level) {
  switch (level) {
  case KVS_LOG_FATAL:
    return ":LOG_FATAL::";
  case KVS_LOG_ERROR:
    return ":LOG_ERROR::";
  case KVS_LOG_WARNING:
    return ":LOG_WARN::";
  case KVS_LOG_DEBUG:
    return ":LOG_DEBUG::";
  default:
    return ":LOG_INFO::";
  }
}

/**
 * Whether the path is a link created by another user, who must not redirect the log to a file of their
 * choice.
 */
bool isForeignLink(const char* path) {
  struct stat status {};
  return lstat(path, &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid != 0 &&
         status.st_uid != geteuid();
}

/**
 * A line being written: the log with its lock held, or the reason why nothing is written. Works without
 * allocating, since lines matter most when memory has run out.
 */
class Line {
public:
  /** @param complete whether there is a text to write */
  explicit Line(bool complete)
      : m_result(refusalWithoutLock(complete)),
        m_lock(m_result == KVS_LOG_DONE ? g_LogMutex.load() : nullptr) {
    if (m_result == KVS_LOG_DONE) {
      m_result = m_lock.locked() ? open() : KVS_LOG_FAILED;
    }
  }

  ~Line() {
    if (m_file >= 0) {
      ::close(m_file);  // before the lock is released
    }
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  static constexpr std::size_t MOST_PARTS = 4;

  /** KVS_LOG_DONE when the file is open. */
  int result() const { return m_result; }
  /** Whether the file exists but could not be opened. */
  bool couldNotOpen() const { return m_couldNotOpen; }

  /** Writes a line of up to MOST_PARTS parts at once; what the system does not take is dropped. */
  void write(std::initializer_list<std::string_view> parts) const {
    std::array<iovec, MOST_PARTS> vector{};
    std::transform(parts.begin(), parts.end(), vector.begin(), [](std::string_view part) {
      return iovec{const_cast<char*>(part.data()), part.size()};
    });
    [[maybe_unused]] const ssize_t written = ::writev(m_file, vector.data(), static_cast<int>(parts.size()));
  }

  /** Leaves the lock held by this thread, and the file open. */
  void keepLock() {
    m_file = -1;
    logSwitch.setLockKept(true);
    m_lock.keepLocked();
  }

private:
  static int refusalWithoutLock(bool complete) {
    if (!complete) {
      return KVS_LOG_MISSING_ARGUMENT;
    }
    return logSwitch.isOff() ? KVS_LOG_FAILED : KVS_LOG_DONE;
  }

  /** Opens the log for appending; it is never created here. */
  int open() {
    if (LOGInit.load() != 1) {
      return KVS_LOG_FAILED;
    }
    const char* path = g_LogMsg.load()->path;
    std::uint64_t size = 0;
    if (!logSwitch.look(path, size) || isForeignLink(path)) {
      return KVS_LOG_FAILED;
    }
    if (size > LARGEST_SIZE_WRITTEN_TO) {
      return KVS_LOG_FULL;
    }
    m_file = ::open(path, O_RDWR | O_CLOEXEC);
    if (m_file < 0) {
      // A log that is removed at this moment counts as switched off, as if it had been missing before.
      m_couldNotOpen = errno != ENOENT;
      return KVS_LOG_FAILED;
    }
    ::lseek(m_file, 0, SEEK_END);
    return KVS_LOG_DONE;
  }

  int m_result;
  bool m_couldNotOpen = false;
  KvsMutexGuard m_lock;
  int m_file = -1;
};

unsigned int threadNumber() {
  return static_cast<unsigned int>(pthread_self());
}

std::string pathOf(const char* module) {
  std::string path = kvsLogDirectory();
  if (path.empty() || path.back() != '/') {
    path += '/';
  }
  return path + module + ".txt";
}

/** Writes one trace line. @param write writes the line with its two beginnings; called only if it is wanted
 */
template <typename Writer>
int trace(bool complete, const Writer& write) {
  Line log(complete);
  if (log.result() != KVS_LOG_DONE) {
    return log.result();
  }
  char timeStamp[KVS_LOCAL_TIME_SIZE] = "";
  KvsGetLocalTime(timeStamp, KVS_LOCAL_TIME_LOG);
  const char* module = g_LogMsg.load()->module;
  const std::size_t moduleLength = std::strlen(module);
  char head[sizeof timeStamp + sizeof LogTarget::module];
  std::snprintf(head, sizeof head, "%s[%s", timeStamp, module);
  if (moduleLength > MODULE_COLUMNS) {
    log.write({head});
    log.keepLock();  // COMPAT: such module names are refused half-way, with the lock held and the file open
    return KVS_LOG_FAILED;
  }
  // COMPAT: the blanks and the tag differ from the lines of KvsLogMsg; both forms are parsed from logs.
  char tag[64];
  std::snprintf(tag, sizeof tag, "%s%8X]  :LOG_INFO :: ", DASHES + moduleLength, threadNumber());
  write(log, head, tag);
  return KVS_LOG_DONE;
}

}  // namespace

int KvsFileExists(const char* path, std::uint64_t* size) {
  struct stat status {};
  if (path == nullptr || stat(path, &status) != 0) {
    return 0;
  }
  if (size != nullptr) {
    *size = static_cast<std::uint64_t>(status.st_size);
  }
  return 1;
}

int KvsLogInit(const char* module) {
  if (LOGInit.load() != 0) {
    return KVS_LOG_DONE;
  }
  // A failed attempt leaves its lock for the next one; a lock that a thread keeps is useless to a log that is
  // started again.
  if (g_LogMutex.load() == nullptr || logSwitch.isLockKept()) {
    g_LogMutex = KvsMutexInit();
    logSwitch.setLockKept(false);
  }
  if (g_LogMutex.load() == nullptr) {
    return KVS_LOG_FAILED;
  }
  if (module == nullptr) {
    return KVS_LOG_MISSING_ARGUMENT;
  }
  std::unique_ptr<LogTarget> target(new (std::nothrow) LogTarget{});
  if (!target) {
    return KVS_LOG_NO_MEMORY;
  }
  try {
    std::snprintf(target->path, sizeof target->path, "%s", pathOf(module).c_str());
    logSwitch.watch(target->path);
  } catch (const std::bad_alloc&) {
    return KVS_LOG_NO_MEMORY;
  }
  std::snprintf(target->module, sizeof target->module, "%s", module);
  g_LogMsg = target.release();
  LOGInit = 1;
  KvsTrace("######OSLIB Init Suucesazful#####");  // COMPAT: misspelt; logs are searched for it
  return KVS_LOG_DONE;
}

int KvsLogUninit() {
  KvsMutexHandle mutex = g_LogMutex.load();
  KvsMutexGuard lock(mutex);
  if (!lock.locked()) {
    return KVS_LOG_FAILED;
  }
  logSwitch.stopWatching();
  delete g_LogMsg.exchange(nullptr);
  LOGInit = 0;
  lock.unlock();
  KvsMutexDelete(&mutex);
  g_LogMutex = mutex;
  logSwitch.setLockKept(logSwitch.isLockKept() && mutex != nullptr);  // a held lock cannot be deleted
  return KVS_LOG_DONE;
}

int KvsLogMsg(int level, const char* format, ...) {
  Line log(format != nullptr);
  if (log.result() != KVS_LOG_DONE) {
    if (log.couldNotOpen()) {
      log.keepLock();  // COMPAT: unlike KvsTrace, a failed open leaves the lock held by this thread
    }
    return log.result();
  }
  const char* module = g_LogMsg.load()->module;
  const std::size_t moduleLength = std::strlen(module);
  if (moduleLength > MODULE_COLUMNS) {
    return KVS_LOG_FAILED;
  }
  char timeStamp[KVS_LOCAL_TIME_SIZE] = "";
  KvsGetLocalTime(timeStamp, KVS_LOCAL_TIME_LOG);
  char line[LINE_SIZE];
  std::snprintf(
      line, sizeof line, "%s[%s%s%8X]\t%s", timeStamp, module, DASHES + moduleLength, threadNumber(),
      tagOf(level));
  const std::size_t headLength = std::strlen(line);
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line + headLength, sizeof line - headLength, format, arguments);
  va_end(arguments);
  log.write({line, "\n"});
  return KVS_LOG_DONE;
}

int KvsTrace(const char* text) {
  return trace(text != nullptr, [text](const Line& log, const char* head, const char* tag) {
    log.write({head, tag, text, "\n"});
  });
}

int KvsTraceParts(std::initializer_list<std::string_view> parts) {
  return trace(true, [parts](const Line& log, const char* head, const char* tag) {
    std::array<char, LONGEST_PARTS + 1> text{};
    std::size_t length = 0;
    for (const std::string_view part : parts) {
      length += part.copy(text.data() + length, LONGEST_PARTS - length);
    }
    log.write({head, tag, text.data(), "\n"});
  });
}
