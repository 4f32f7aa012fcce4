// SPDX-License-Identifier: Apache-2.0
#include "machine/inside/Shell.h"

#include <cstdio>
#include <fstream>

namespace tvp::test {

bool isEmulatedMachine() {
  std::ifstream file("/proc/cmdline");
  std::string line;
  std::getline(file, line);
  return line.find("machine.drives=") != std::string::npos;
}

std::string shell(const std::string& command) {
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  std::string output;
  char buffer[4096];
  for (std::size_t length = 0; (length = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    output.append(buffer, length);
  }
  const int status = ::pclose(pipe);
  return status == 0 ? output : output + "(status " + std::to_string(status / 256) + ")";
}

}  // namespace tvp::test
