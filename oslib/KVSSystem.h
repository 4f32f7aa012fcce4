// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSSYSTEM_H
#define OSLIB_KVSSYSTEM_H

#include <cstdint>
#include <ctime>

/** The system time, as the C library breaks local time down: months from 0, years from 1900. */
struct _SysTime {
  std::uint32_t milliseconds;  ///< always 0
  std::uint32_t seconds;
  std::uint32_t minutes;
  std::uint32_t hours;
  std::uint32_t day;        ///< of the month, from 1
  std::uint32_t dayOfWeek;  ///< 0 is Sunday
  std::uint32_t month;      ///< 0 is January
  std::uint32_t year;       ///< since 1900
};

/** Modes of KvsGetLocalTime; every other number is as KVS_LOCAL_TIME_LOG. */
inline constexpr int KVS_LOCAL_TIME_LOG = 1;
inline constexpr int KVS_LOCAL_TIME_FILE_NAME = 2;

/** Smallest buffer that KvsGetLocalTime and KvsGetTimeZone may be given, in bytes. */
inline constexpr unsigned int KVS_LOCAL_TIME_SIZE = 32;
inline constexpr unsigned int KVS_TIME_ZONE_SIZE = 16;

// All functions may be called from any thread. Where nothing else is said, a null buffer returns 3.
extern "C" {

/**
 * Writes the local time with milliseconds: 06/5/2024 13:45:12:7, in mode 2 (for file names)
 * 06_5_2024 13.45.12.7. Only the month and the time of day have leading zeros.
 * @param buffer at least KVS_LOCAL_TIME_SIZE bytes.
 * @return 0.
 */
int KvsGetLocalTime(char* buffer, int mode);

/** Fills the record from the local time, see _SysTime. @return 0. */
int KvsGetSystemTime(_SysTime* systemTime);

/**
 * Writes the offset of local time from UTC in minutes with its sign and at least three digits (+330).
 * COMPAT: while daylight saving is in force, 60 minutes are taken off the standard offset; readers of the
 * time texts expect it.
 * @param buffer at least KVS_TIME_ZONE_SIZE bytes.
 * @return 0; 1 when the buffer is null or a clock call fails.
 */
int KvsGetTimeZone(char* buffer);

/**
 * Breaks a time down to local time.
 * @param milliseconds since the epoch; fractions of a second are dropped.
 * @return 0; 1 when the time has no valid breakdown (years 1970 to 3000) or brokenDown is null.
 */
int KvsGetTimeInTM(std::uint64_t milliseconds, std::tm* brokenDown);

/**
 * Writes a time as "%m/%d/%Y %H:%M:%S" in local time.
 * @param length of the buffer, at least 25 bytes.
 * @return 0; 1 when the time is 0 or has no valid breakdown, the buffer is null or too short.
 */
int KvsGetFormatedTime(std::uint64_t milliseconds, char* buffer, std::uint32_t length);

/** Writes the host's name. The buffer is left as it is when the name cannot be had. @return always 0. */
int KvsGetHostName(char* buffer, std::uint32_t length);

/** @return the number of this process. */
int KvsGetProcessId();

/**
 * Copies the value of an environment variable, whatever its length: the destination must be large
 * enough, size is not looked at.
 * @return 0; 1 the variable is not set; 3 the name or the destination is null.
 */
int KvsGetenv(const char* name, std::uint32_t size, char* destination);

/**
 * Writes system name, release and machine with a blank after each. A text that does not fit is cut
 * at length bytes and then has no terminator.
 * @return 0; 1 when the system does not tell.
 */
int KvsGetOSInfo(char* buffer, std::uint32_t length);

/**
 * Copies the fourth line of the product's configuration file, the product version, without its newline.
 * Exactly length bytes are written, zeros after the text; a text of that length or longer has no
 * terminator.
 * @param length taken modulo 65536.
 * @return 0, also when the file has fewer than four lines (an empty text); 1 when the buffer is null or
 *         the file cannot be opened.
 */
int KvsGetProductVersion(char* buffer, std::uint32_t length);

/** Without effect. @return 0. */
int KvsGetHostIPAddress(void* address);

/** Without effect; the result says nothing. */
int get_iface_list(void* list);

/**
 * Loads the dynamic library NAME.so; ".so" is always appended.
 * @param error set to 0, or to 1 when the library cannot be loaded.
 * @return the library, for KvsUnloadLibrary; null on an error, and null with error untouched when an
 *         argument is null.
 */
void* KvsLoadLibrary(const char* name, std::uint32_t* error);

/** Unloads a library; the variable keeps its value. @return 0, also for a null library; 1 for a null pointer.
 */
int KvsUnloadLibrary(void** library);

/**
 * Finds a symbol of a library.
 * @param error set to 0, or to 1 when there is no such symbol; untouched when an argument is null.
 * @return the symbol's address or null.
 */
void* KvsGetFuncAddress(void* library, const char* symbol, std::uint32_t* error);
}

#endif
