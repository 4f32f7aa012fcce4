// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSPATHS_H
#define OSLIB_KVSPATHS_H

#include <string>

/** The fixed locations of the system. The log shows these, whatever root the tests have set. */
inline constexpr char KVS_LOG_DIRECTORY[] = "/var/log";
inline constexpr char KVS_PASSWD_FILE[] = "/etc/passwd";
inline constexpr char KVS_EVENT_CATALOGUE_DIRECTORY[] = "/usr/VolMan/";
inline constexpr char KVS_PRODUCT_CONFIGURATION_FILE[] = "/etc/Kelvora/hexRAID.conf";

/**
 * Prepends a directory to all four locations, for tests in this process; an empty text removes it. Must be
 * called before other threads use the paths.
 */
void kvsSetPathRoot(const std::string& root);

// Each function returns its location, prefixed with the root of kvsSetPathRoot. If none is set, the
// environment variable TVP_TEST_ROOT (read once, ignored in privileged programs) is the prefix of all but the
// user list: who is an administrator must not depend on the environment.
std::string kvsLogDirectory();
std::string kvsPasswdFile();
std::string kvsEventCatalogueDirectory();
std::string kvsProductConfigurationFile();

#endif
