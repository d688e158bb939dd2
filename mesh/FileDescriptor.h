#ifndef GSL_MESH_FILE_DESCRIPTOR_H
#define GSL_MESH_FILE_DESCRIPTOR_H

#include <unistd.h>

namespace gsl_mesh {

/// Closes a file when it is destroyed. A negative descriptor means no file.
class FileDescriptor {
public:
  explicit FileDescriptor(int value) : m_value(value) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Close(); }

  int Get() const { return m_value; }

  void Close() {
    if (m_value >= 0) close(m_value);
    m_value = -1;
  }

  /// Returns the descriptor, which this object then no longer closes.
  int Release() {
    const int value = m_value;
    m_value = -1;
    return value;
  }

private:
  int m_value;
};

} // namespace gsl_mesh

#endif
