// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSSYSTEM_H
#define OSLIB_KVSSYSTEM_H

#include <cstdint>
#include <ctime>

/** The system time in the C library's broken-down local form: months from 0, years from 1900. */
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

/** Modes of KvsGetLocalTime; every other number means KVS_LOCAL_TIME_LOG. */
inline constexpr int KVS_LOCAL_TIME_LOG = 1;
inline constexpr int KVS_LOCAL_TIME_FILE_NAME = 2;

/** Smallest buffer that KvsGetLocalTime and KvsGetTimeZone may be given, in bytes. */
inline constexpr unsigned int KVS_LOCAL_TIME_SIZE = 32;
inline constexpr unsigned int KVS_TIME_ZONE_SIZE = 16;

// All functions may be called from any thread. Unless stated otherwise, a null buffer returns 3.
extern "C" {

/**
 * Writes the local time with milliseconds: 06/5/2024 13:45:12:7, in mode 2 (for file names) 06_5_2024
 * 13.45.12.7. Only the month and the time of day have leading zeros.
 * @param buffer at least KVS_LOCAL_TIME_SIZE bytes.
 * @return 0.
 */
int KvsGetLocalTime(char* buffer, int mode);

/** Fills the record from the local time, see _SysTime. @return 0. */
int KvsGetSystemTime(_SysTime* systemTime);

/**
 * Writes the offset of local time from UTC in minutes with its sign and at least three digits (+330).
 * COMPAT: during daylight saving time, 60 minutes are subtracted from the standard offset; readers of the
 * time texts expect it.
 * @param buffer at least KVS_TIME_ZONE_SIZE bytes.
 * @return 0; 1 if the buffer is null or a clock call fails.
 */
int KvsGetTimeZone(char* buffer);

/**
 * Breaks a time down to local time.
 * @param milliseconds since the epoch; fractions of a second are dropped.
 * @return 0; 1 if the time has no valid breakdown (years 1970 to 3000) or brokenDown is null.
 */
int KvsGetTimeInTM(std::uint64_t milliseconds, std::tm* brokenDown);

/**
 * Writes a time as "%m/%d/%Y %H:%M:%S" in local time.
 * @param length of the buffer, at least 25 bytes.
 * @return 0; 1 if the time is 0 or has no valid breakdown, or if the buffer is null or too short.
 */
int KvsGetFormatedTime(std::uint64_t milliseconds, char* buffer, std::uint32_t length);

/**
 * Writes the host's name. The buffer is left unchanged if the name cannot be determined. @return always 0.
 */
int KvsGetHostName(char* buffer, std::uint32_t length);

/** @return the ID of this process. */
int KvsGetProcessId();

/**
 * Copies the value of an environment variable, whatever its length: the destination must be large enough,
 * since size is ignored.
 * @return 0; 1 if the variable is not set; 3 if the name or the destination is null.
 */
int KvsGetenv(const char* name, std::uint32_t size, char* destination);

/**
 * Writes system name, release and machine with a blank after each. A text that does not fit is truncated to
 * length bytes and then has no terminator.
 * @return 0; 1 if the system does not provide them.
 */
int KvsGetOSInfo(char* buffer, std::uint32_t length);

/**
 * Copies the fourth line of the product's configuration file, the product version, without its newline.
 * Exactly length bytes are written, zeros after the text; a text of that length or longer has no terminator.
 * @param length taken modulo 65536.
 * @return 0, also if the file has fewer than four lines (an empty text); 1 if the buffer is null or the file
 *         cannot be opened.
 */
int KvsGetProductVersion(char* buffer, std::uint32_t length);

/** Does nothing. @return 0. */
int KvsGetHostIPAddress(void* address);

/** Does nothing; the result is meaningless. */
int get_iface_list(void* list);

/**
 * Loads the dynamic library NAME.so; ".so" is always appended.
 * @param error set to 0, or to 1 if the library cannot be loaded.
 * @return the library, for KvsUnloadLibrary; null on an error; null with error unchanged if an argument is
 *         null.
 */
void* KvsLoadLibrary(const char* name, std::uint32_t* error);

/** Unloads a library; the variable keeps its value. @return 0, also for a null library; 1 for a null pointer.
 */
int KvsUnloadLibrary(void** library);

/**
 * Finds a symbol of a library.
 * @param error set to 0, or to 1 if there is no such symbol; untouched when an argument is null.
 * @return the symbol's address or null.
 */
void* KvsGetFuncAddress(void* library, const char* symbol, std::uint32_t* error);
}

#endif
