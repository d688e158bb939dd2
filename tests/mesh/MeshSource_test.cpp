#include "MeshSource.h"

#include <gtest/gtest.h>

using gsl_mesh::Mesh;
using gsl_mesh::MeshError;
using gsl_mesh::MeshSource;

TEST(MeshSource, LinesEndInEveryWay) {
  const std::string text = "a\nb\r\nc\rd\n\ne";
  EXPECT_EQ(gsl_mesh::LineNumberAt(text, text.data()), 1U);
  EXPECT_EQ(gsl_mesh::LineNumberAt(text, text.data() + text.find('b')), 2U);
  EXPECT_EQ(gsl_mesh::LineNumberAt(text, text.data() + text.find('c')), 3U);
  EXPECT_EQ(gsl_mesh::LineNumberAt(text, text.data() + text.find('d')), 4U);
  EXPECT_EQ(gsl_mesh::LineNumberAt(text, text.data() + text.find('e')), 6U);
}

TEST(MeshSource, QuotesAreShortAndPrintable) {
  EXPECT_EQ(gsl_mesh::Quoted("abc"), "'abc'");
  EXPECT_EQ(gsl_mesh::Quoted("\x1f !a }~\x7f"), "'? !a }~?'");
  EXPECT_EQ(gsl_mesh::Quoted("a\nb\x1b[2J\xff"), "'a?b?[2J?'");
  EXPECT_EQ(gsl_mesh::Quoted(std::string(41, 'x')), "'" + std::string(40, 'x') + "...'");
}

TEST(MeshSource, ErrorsNameTheFileAndTheLine) {
  const MeshSource source{"a\nb", "part\n.obj"};
  try {
    gsl_mesh::FailReadAt(source, source.bytes.data() + 2, "is odd");
    FAIL() << "did not throw";
  } catch (const MeshError& e) {
    EXPECT_STREQ(e.what(), "part?.obj: line 2: is odd");
  }
  EXPECT_THROW(gsl_mesh::FailRead(source, "is odd"), MeshError);
  EXPECT_THROW(gsl_mesh::FailUnknownFormat(source), MeshError);
}

TEST(MeshSource, WarningsAreOneLineAndKeepTheirOrder) {
  Mesh mesh;
  Warn(mesh, {"", "part\x1b.obj"}, "first");
  Warn(mesh, {"", "part"}, "second\n");
  EXPECT_EQ(mesh.warnings, (std::vector<std::string>{"part?.obj: first", "part: second?"}));
}

TEST(MeshSource, OnlyAWholeByteOrderMarkIsDropped) {
  EXPECT_EQ(gsl_mesh::WithoutByteOrderMark("\xEF\xBB\xBFsolid"), "solid");
  EXPECT_EQ(gsl_mesh::WithoutByteOrderMark("\xEF\xBBsolid"), "\xEF\xBBsolid");
  EXPECT_EQ(gsl_mesh::WithoutByteOrderMark(""), "");
}
