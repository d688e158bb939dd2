#include "FileDescriptor.h"

#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <fcntl.h>

using gsl_mesh::FileDescriptor;

namespace {

int OpenFile() {
  return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

bool IsOpen(int descriptor) {
  return fcntl(descriptor, F_GETFD) >= 0;
}

} // namespace

TEST(FileDescriptor, ClosesOnceWhenItEnds) {
  int value = -1;
  {
    const FileDescriptor file(OpenFile());
    value = file.Get();
    EXPECT_TRUE(IsOpen(value));
  }
  EXPECT_FALSE(IsOpen(value));
}

TEST(FileDescriptor, ClosesEarlyAndOnlyItsOwn) {
  FileDescriptor file(OpenFile());
  const int value = file.Get();
  file.Close();
  EXPECT_EQ(file.Get(), -1);
  const FileDescriptor other(OpenFile());
  ASSERT_EQ(other.Get(), value) << "the system gives the lowest free number";
  file.Close();
  EXPECT_TRUE(IsOpen(value));
}

TEST(FileDescriptor, ClosesTheLowestDescriptorToo) {
  const int status = StatusInChild([] {
    close(0);
    const int value = FileDescriptor(OpenFile()).Get();
    if (value != 0) return 1;
    return IsOpen(0) ? 2 : 0;
  });
  EXPECT_EQ(status, 0);
}

TEST(FileDescriptor, ReleasedIsLeftOpen) {
  int value = -1;
  {
    FileDescriptor file(OpenFile());
    value = file.Release();
    EXPECT_EQ(file.Get(), -1);
  }
  EXPECT_TRUE(IsOpen(value));
  close(value);
}
