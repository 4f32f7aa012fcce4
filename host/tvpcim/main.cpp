// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/CommandLine.h"

int main(int argumentCount, char** arguments) {
  tvp::host::tvpcim::runAndExit(argumentCount, arguments);
}
