// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/CommandLine.h"
#include "terminal/StandardStreams.h"

int main(int argumentCount, char** arguments) {
  tvp::terminal::takeClosedStreams();
  tvp::host::tvpcim::runAndExit(argumentCount, arguments);
}
