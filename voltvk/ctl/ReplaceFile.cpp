// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/ReplaceFile.h"

#include "text/Quote.h"
#include "voltvk/engine/state/FileBeside.h"

#include <stdexcept>

#include <sys/stat.h>

namespace voltvk::ctl {

namespace {

/** The mode that files get which this process creates. */
mode_t usualMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666U & ~mask;
}

}  // namespace

void replaceFile(const std::string& path, const std::string& contents) {
  struct stat before {};
  const bool exists = ::lstat(path.c_str(), &before) == 0;
  if (exists && !S_ISREG(before.st_mode)) {
    throw std::runtime_error(
        tvp::text::quoted(path) + " is not a regular file and is left alone; name another file");
  }
  FileBeside file(path);
  file.write(contents);
  file.takePlace(exists ? before.st_mode & 0777U : usualMode());
}

}  // namespace voltvk::ctl
