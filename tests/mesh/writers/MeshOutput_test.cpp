#include "writers/MeshOutput.h"

#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

using namespace gsl_mesh;

namespace {

/// Returns the bytes that a writer leaves in a file.
std::string Written(const std::function<void(MeshOutput&)>& write) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("out");
  OutputFile file(path, false);
  MeshOutput output(path, file);
  write(output);
  output.Flush();
  file.Commit();
  return BytesOf(path);
}

} // namespace

TEST(MeshOutput, DecimalsAreTheShortestThatReadBack) {
  const double least = std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(Written([&](MeshOutput& output) {
              for (const double value : {0.1, -0.0, 1.0 / 3.0, 30.0, least, 1e300}) {
                output.Decimal(value);
                output.Text(" ");
              }
              output.Decimal(std::uint64_t{18446744073709551615U});
            }),
            "0.1 -0 0.3333333333333333 30 5e-324 1e+300 18446744073709551615");
}

TEST(MeshOutput, BytesAreLittleEndian) {
  EXPECT_EQ(Written([](MeshOutput& output) {
              output.Byte(0xfe);
              output.Bits32(0x01020304);
              output.Float(-1.5);    // 0xbfc00000
              output.Double(-0.375); // 0xbfd8000000000000
            }),
            std::string("\xfe\x04\x03\x02\x01\0\0\xc0\xbf\0\0\0\0\0\0\xd8\xbf", 17));
}

TEST(MeshOutput, NothingIsLostBetweenBlocks) {
  std::string expected;
  const std::string written = Written([&](MeshOutput& output) {
    for (std::uint64_t k = 0; k < 40000; ++k) {
      output.Decimal(k);
      output.Text("\n");
      expected += std::to_string(k) + "\n";
    }
  });
  EXPECT_GT(expected.size(), 200000U);
  EXPECT_EQ(written, expected);
}

TEST(MeshOutput, FailNamesTheFileInOneLine) {
  try {
    Written([](MeshOutput& output) { output.Fail("no room"); });
    ADD_FAILURE() << "did not fail";
  } catch (const OutputError& e) {
    EXPECT_THAT(e.what(), testing::EndsWith("/out: no room"));
  }
}
