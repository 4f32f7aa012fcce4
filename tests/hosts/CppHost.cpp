// SPDX-License-Identifier: Apache-2.0
// A host in C++ on the shared libstdc++, whose allocator the provider must neither use nor disturb.
#include "TinyHost.h"

#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  std::vector<std::string> own(100, std::string(100, 'x'));
  const int status = tinyHostLife(argc, argv);
  own.insert(own.end(), 100, std::string(1000, 'y'));
  std::cout << "strings of the host: " << own.size() << '\n';
  return status;
}
