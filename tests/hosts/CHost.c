// SPDX-License-Identifier: Apache-2.0
/* A host without any C++ of its own; object managers in C include the headers of CMPI, too. */
#include "TinyHost.h"
#include "cmpift.h"
#include "cmpimacs.h"

int main(int argc, char** argv) {
  return tinyHostLife(argc, argv);
}
