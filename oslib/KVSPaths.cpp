// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSPaths.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace {

// Plain storage that needs no destruction: a thread may ask for a path while the process is exiting.
struct Root {
  char text[PATH_MAX];

  void set(const char* root) { std::snprintf(text, sizeof text, "%s", root == nullptr ? "" : root); }
};

Root processRoot{};

const Root& environmentRoot() {
  static const Root root = [] {
    Root read{};
    read.set(secure_getenv("TVP_TEST_ROOT"));
    return read;
  }();
  return root;
}

std::string rooted(const char* path) {
  const char* root = processRoot.text[0] != '\0' ? processRoot.text : environmentRoot().text;
  return std::string(root) + path;
}

}  // namespace

void kvsSetPathRoot(const std::string& root) {
  processRoot.set(root.c_str());
}

std::string kvsLogDirectory() {
  return rooted(KVS_LOG_DIRECTORY);
}

std::string kvsPasswdFile() {
  return std::string(processRoot.text) + KVS_PASSWD_FILE;
}

std::string kvsEventCatalogueDirectory() {
  return rooted(KVS_EVENT_CATALOGUE_DIRECTORY);
}

std::string kvsProductConfigurationFile() {
  return rooted(KVS_PRODUCT_CONFIGURATION_FILE);
}
