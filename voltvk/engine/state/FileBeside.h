// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FILEBESIDE_H
#define VOLTVK_ENGINE_STATE_FILEBESIDE_H

#include "voltvk/engine/state/FileDescriptor.h"

#include <string>

#include <sys/types.h>

namespace voltvk {

/**
 * A new file beside another, so that whoever reads the other finds what it held before or all of the new
 * contents. Removed on destruction unless it has taken the other's place. Functions throw Refusal
 * TVK_INTERNAL if the file cannot be written.
 */
class FileBeside {
public:
  /** Makes an empty file of mode 0600. @param path of the other file, which need not exist */
  explicit FileBeside(const std::string& path);
  ~FileBeside();
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  /** Its own path. */
  const std::string& name() const { return m_name; }

  void write(const std::string& contents);

  /** Moves it to the place of the other file; both it and the entry of its directory are on the disk then. */
  void takePlace(mode_t mode);
  /** The same, unless there is another file by now. @return whether it was moved */
  bool takeFreePlace(mode_t mode);

private:
  void store(mode_t mode);
  void finish();

  const std::string m_path;
  const std::string m_directory;
  std::string m_name;
  const FileDescriptor m_file;
};

}  // namespace voltvk

#endif
