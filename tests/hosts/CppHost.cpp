// SPDX-License-Identifier: Apache-2.0
// A host in C++ on the shared libstdc++, whose allocator the provider must neither use nor disturb.
#include "TinyHost.h"

#include <iostream>
#include <new>
#include <string>
#include <vector>

/** A broker in C++ that is short of memory throws, out of another C++ runtime than the provider's. */
static void throwInstead(CMPIBrokerEncFT* makers, int on) {
  static const CMPIBrokerEncFT real = *makers;
  *makers = real;
  if (on != 0) {
    makers->newInstance = [](const CMPIBroker*, const CMPIObjectPath*, CMPIStatus*) -> CMPIInstance* {
      throw std::bad_alloc();
    };
    makers->newString = [](const CMPIBroker*, const char*, CMPIStatus*) -> CMPIString* {
      throw std::bad_alloc();
    };
  }
}

int main(int argc, char** argv) {
  std::vector<std::string> own(100, std::string(100, 'x'));
  tinyFail = throwInstead;
  const int status = tinyHostLife(argc, argv);
  own.insert(own.end(), 100, std::string(1000, 'y'));
  std::cout << "strings of the host: " << own.size() << '\n';
  return status;
}
