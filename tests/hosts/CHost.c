// SPDX-License-Identifier: Apache-2.0
/* A host without any C++ of its own. */
#include "TinyBroker.h"

int main(int argc, char** argv) {
  return tinyHostLife(argc, argv);
}
