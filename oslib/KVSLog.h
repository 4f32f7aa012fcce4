// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSLOG_H
#define OSLIB_KVSLOG_H

#include <cstdint>
#include <initializer_list>
#include <string_view>

/** Levels of KvsLogMsg. Messages of every level are written; unknown levels count as information. */
enum KvsLogLevel : int {
  KVS_LOG_FATAL = 1,
  KVS_LOG_ERROR = 2,
  KVS_LOG_WARNING = 3,
  KVS_LOG_DEBUG = 4,
  KVS_LOG_INFORMATION = 5
};

/** What the functions of the log return. */
enum KvsLogResult : int {
  KVS_LOG_DONE = 0,
  KVS_LOG_FAILED = 1,  ///< no lock, not initialised, no writable log file, or a module name that is too long
  KVS_LOG_NO_MEMORY = 2,
  KVS_LOG_MISSING_ARGUMENT = 3,
  KVS_LOG_FULL = 5  ///< the file is larger than 10,485,759 bytes
};

// The log of the process: /var/log/MODULE.txt. It is written only while that file exists; an administrator
// switches it on by creating the file. Every function but KvsLogInit and KvsLogUninit may be called from any
// thread at any time; lines from different threads never mix.
extern "C" {

/**
 * Initialises the log. Only the first success has an effect: later calls return 0 and change nothing. Must
 * not be called by two threads at once.
 * @param module names the file and appears in every line; up to 10 characters.
 * @return 0; 1 no lock; 2 no memory; 3 the module is null.
 */
int KvsLogInit(const char* module);

/** Ends the log; no other thread may be writing. @return 0; 1 if the lock cannot be taken. */
int KvsLogUninit();

/**
 * Writes one line: time stamp, module, thread, level and the message. Message and line are truncated to 511
 * bytes. COMPAT: if the file exists but cannot be opened, the lock stays with the calling thread; other
 * threads then wait.
 * @return 0; 1 nothing written; 3 the format is null; 5 the file is full.
 */
__attribute__((format(printf, 2, 3))) int KvsLogMsg(int level, const char* format, ...);

/**
 * Writes one trace line, of any length. COMPAT: with a module name over 10 characters the line breaks off,
 * and the lock stays with the calling thread; other threads then wait.
 * @return 0; 1 nothing written; 3 the text is null; 5 the file is full.
 */
int KvsTrace(const char* text);

/**
 * Looks for a file.
 * @param size receives the file's size in bytes; may be null.
 * @return 1 if something exists at the path, else 0.
 */
int KvsFileExists(const char* path, std::uint64_t* size);
}

/**
 * Does what KvsTrace does with a text in parts, such as {"Entering FrameworkFacade ", name, "()"}. They are
 * put together only if the line is written, and truncated to 255 bytes.
 */
int KvsTraceParts(std::initializer_list<std::string_view> parts);

#endif
