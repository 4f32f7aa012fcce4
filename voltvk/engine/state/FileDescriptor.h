// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_FILEDESCRIPTOR_H
#define VOLTVK_ENGINE_STATE_FILEDESCRIPTOR_H

#include <unistd.h>

namespace voltvk {

/** An open file that is closed at the end of its scope. */
class FileDescriptor {
public:
  explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
  ~FileDescriptor() {
    if (m_descriptor >= 0) {
      close(m_descriptor);
    }
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  explicit operator bool() const { return m_descriptor >= 0; }
  int get() const { return m_descriptor; }

private:
  int m_descriptor;
};

}  // namespace voltvk

#endif
