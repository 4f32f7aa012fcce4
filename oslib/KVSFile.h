// SPDX-License-Identifier: Apache-2.0
#ifndef OSLIB_KVSFILE_H
#define OSLIB_KVSFILE_H

#include <cstdio>
#include <memory>

struct KvsCloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/** An open file of the C library, closed at the end of its scope. */
using KvsFile = std::unique_ptr<std::FILE, KvsCloseFile>;

#endif
