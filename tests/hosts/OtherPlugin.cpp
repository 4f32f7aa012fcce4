// SPDX-License-Identifier: Apache-2.0
// Another plugin of the same process: brings the shared libstdc++ in before the provider comes.
#include <string>
#include <vector>

static const std::vector<std::string>& table() {
  static const std::vector<std::string> texts(64, std::string(64, 'p'));
  return texts;
}

extern "C" __attribute__((visibility("default"))) unsigned long otherPluginSize();
unsigned long otherPluginSize() {
  return table().size();
}

static const unsigned long sizeAtLoad = otherPluginSize();
extern "C" __attribute__((visibility("default"))) unsigned long otherPluginSizeAtLoad();
unsigned long otherPluginSizeAtLoad() {
  return sizeAtLoad;
}
