#include "support/Program.h"

#include "Mesh.h"
#include "OutputFile.h"
#include "support/InputText.h"
#include "support/UsageError.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace gsl_tools;

/// Returns what is written to stderr, and the status.
template <class Work>
std::string Said(const Work& work, int& status) {
  testing::internal::CaptureStderr();
  status = Guarded("gsl-test", work);
  return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Program, ExceptionsBecomeOneLineAndAStatus) {
  int status = -1;
  EXPECT_EQ(Said([] { return 7; }, status), "");
  EXPECT_EQ(status, 7);
  EXPECT_EQ(Said([]() -> int { throw UsageError("usage\nof it"); }, status),
            "gsl-test: usage?of it\n");
  EXPECT_EQ(status, 2);
  EXPECT_EQ(Said([]() -> int { throw InputError("input"); }, status), "gsl-test: input\n");
  EXPECT_EQ(status, 3);
  EXPECT_EQ(Said([]() -> int { throw gsl_mesh::MeshError("mesh"); }, status), "gsl-test: mesh\n");
  EXPECT_EQ(status, 3);
  EXPECT_EQ(Said([]() -> int { throw gsl_mesh::OutputError("output"); }, status),
            "gsl-test: output\n");
  EXPECT_EQ(status, 4);
  EXPECT_EQ(Said([]() -> int { throw std::bad_alloc(); }, status), "gsl-test: out of memory\n");
  EXPECT_EQ(status, 4);
  EXPECT_EQ(Said([]() -> int { throw std::runtime_error("other"); }, status), "gsl-test: other\n");
  EXPECT_EQ(status, 4);
}

TEST(Program, StdoutThatCannotBeWrittenIsNamed) {
  const int kept = dup(STDOUT_FILENO);
  const int full = open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 0);
  dup2(full, STDOUT_FILENO);
  std::string error;
  try {
    WriteStdout("text");
  } catch (const gsl_mesh::OutputError& caught) {
    error = caught.what();
  }
  dup2(kept, STDOUT_FILENO);
  close(full);
  close(kept);
  EXPECT_EQ(error, "standard output: cannot be written: No space left on device");
}
