#include "gsl_PersistentMatrix.h"

#include "Records.h"
#include "atr_String.h"
#include "cls_RecordException.h"
#include "cls_xp2DArrayDouble.h"
#include "cow_COW.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

gsl_Matrix SampleMatrix() {
  gsl_Matrix m;
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      m.m[r][c] = 10.0 * r + c;
  }
  m.isIdentity = -1;
  return m;
}

struct MatrixCloner {
  static gsl_PersistentMatrix* Clone(const gsl_PersistentMatrix& m) {
    return new gsl_PersistentMatrix(m);
  }
};

/// Returns a record with that flag and the entries of SampleMatrix.
gsl_RecordStore WithFlag(int flag) {
  return Edited(Written(gsl_PersistentMatrix(SampleMatrix())),
                {"_is_identity", [=](const cls_WriteVisitor& to, const cls_FieldHandle& field) {
                   to.WriteInteger(field, flag);
                 }});
}

gsl_RecordStore WithArray(std::size_t rows, std::size_t columns) {
  return Edited(Written(gsl_PersistentMatrix()),
                {"DDBmatrix", [=](const cls_WriteVisitor& to, const cls_FieldHandle& field) {
                   cls_xp2DArrayDouble(rows, columns).DBWrite(cls_WriteVisitor(to, field));
                 }});
}

} // namespace

TEST(GslPersistentMatrixRecord, WritesTheFlagThenTheEntriesRowByRow) {
  EXPECT_EQ(TextOf(Written(gsl_PersistentMatrix(SampleMatrix()))),
            "0x030A0002\n"
            "  -1 _is_identity integer 0\n"
            "  -1 DDBmatrix record 0x00230001 of 82 0 1 2 3 10 11 12 13 20 21 22 23 30 31 32 33\n");
}

TEST(GslPersistentMatrixRecord, IdentityIsWrittenWithFlagOne) {
  EXPECT_EQ(TextOf(Written(gsl_PersistentMatrix())),
            "0x030A0002\n"
            "  -1 _is_identity integer 1\n"
            "  -1 DDBmatrix record 0x00230001 of 82 1 0 0 0 0 1 0 0 0 0 1 0 0 0 0 1\n");
}

TEST(GslPersistentMatrixRecord, ReadsBackBitForBit) {
  const gsl_PersistentMatrix written(SampleMatrix());
  const gsl_RecordStore store = Written(written);
  const gsl_PersistentMatrix read = ReadBack<gsl_PersistentMatrix>(store);
  EXPECT_EQ(read.Uid(), written.Uid());
  EXPECT_EQ(read.Matrix().isIdentity, 0);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      EXPECT_TRUE(SameBits(read.Matrix().m[r][c], 10.0 * r + c));
  }
  EXPECT_EQ(Written(read).ToBytes(), store.ToBytes());
}

TEST(GslPersistentMatrixRecord, FlagIsTakenWhenWritingAndStaysOnTheObject) {
  const gsl_PersistentMatrix matrix(SampleMatrix());
  EXPECT_EQ(matrix.Matrix().isIdentity, -1);
  Written(matrix);
  EXPECT_EQ(matrix.Matrix().isIdentity, 0);
}

TEST(GslPersistentMatrixRecord, NearIdentityIsWrittenUnsnappedAsAnIdentity) {
  gsl_Matrix near;
  near.m[0][1] = 1e-6;
  near.isIdentity = -1;
  const gsl_PersistentMatrix matrix(near);
  const gsl_PersistentMatrix read = ReadBack<gsl_PersistentMatrix>(Written(matrix));
  EXPECT_EQ(matrix.Matrix().m[0][1], 0.0);
  EXPECT_EQ(read.Matrix().m[0][1], 1e-6);
  EXPECT_EQ(read.Matrix().isIdentity, 1);
  // The second record has the snapped entries.
  EXPECT_EQ(ReadBack<gsl_PersistentMatrix>(Written(matrix)).Matrix().m[0][1], 0.0);
}

TEST(GslPersistentMatrixRecord, DeclinedRecordLeavesFlagAndEntriesAlone) {
  gsl_Matrix near;
  near.m[0][1] = 1e-6;
  near.isIdentity = -1;
  auto* const matrix = new gsl_PersistentMatrix(near);
  const auto shared = cow_COW<gsl_PersistentMatrix, MatrixCloner>::Adopt(matrix);
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(1, cls_Uid());
  shared->DBWrite(cls_WriteVisitor(root, {-1, "first"}, shared));
  EXPECT_EQ(matrix->Matrix().m[0][1], 0.0);
  const_cast<gsl_Matrix&>(matrix->Matrix()) = near;
  shared->DBWrite(cls_WriteVisitor(root, {-1, "again"}, shared));
  EXPECT_EQ(store.RecordCount(), 3u);
  EXPECT_EQ(matrix->Matrix().isIdentity, -1);
  EXPECT_EQ(matrix->Matrix().m[0][1], 1e-6);
}

TEST(GslPersistentMatrixRecord, StoredFlagIsTrustedNotComputed) {
  for (const int flag : {1, 0, -1, 7}) {
    const gsl_PersistentMatrix read = ReadBack<gsl_PersistentMatrix>(WithFlag(flag));
    EXPECT_EQ(read.Matrix().isIdentity, flag);
    EXPECT_EQ(read.Matrix().m[3][3], 33.0);
  }
  EXPECT_TRUE(ReadBack<gsl_PersistentMatrix>(WithFlag(1)).Matrix().IsIdentity());
}

TEST(GslPersistentMatrixRecord, MissingFlagReadsAsZero) {
  const gsl_RecordStore store = Without(Written(gsl_PersistentMatrix()), "_is_identity");
  const gsl_PersistentMatrix read = ReadBack<gsl_PersistentMatrix>(store);
  EXPECT_EQ(read.Matrix().isIdentity, 0);
  EXPECT_FALSE(read.Matrix().IsIdentity());
  EXPECT_EQ(read.Matrix().m[2][2], 1.0);
}

TEST(GslPersistentMatrixRecord, MissingEntriesAreThoseOfTheIdentity) {
  const gsl_PersistentMatrix read = ReadBack<gsl_PersistentMatrix>(
      Without(Written(gsl_PersistentMatrix(SampleMatrix())), "DDBmatrix"));
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      EXPECT_EQ(read.Matrix().m[r][c], r == c ? 1.0 : 0.0);
  }
  EXPECT_EQ(read.Matrix().isIdentity, 0);
}

TEST(GslPersistentMatrixRecord, EntriesAreFourByFour) {
  for (const auto& [rows, columns] :
       {std::pair<std::size_t, std::size_t>{3, 4}, {4, 3}, {16, 1}, {2, 8}, {5, 5}, {4, 0}}) {
    EXPECT_THROW(ReadBack<gsl_PersistentMatrix>(WithArray(rows, columns)), cls_RecordException);
  }
  EXPECT_NO_THROW(ReadBack<gsl_PersistentMatrix>(WithArray(4, 4)));
}

namespace {

/// Returns the message and the place of the exception for entries of another size.
std::string Refusal(std::size_t rows, std::size_t columns) {
  try {
    ReadBack<gsl_PersistentMatrix>(WithArray(rows, columns));
  } catch (const cls_RecordException& e) {
    return std::string(e.Message().CStr()) + " | " + e.SourceName().CStr() + ":" +
           std::to_string(e.LineNumber());
  }
  return "nothing";
}

} // namespace

TEST(GslPersistentMatrixRecord, WrongSizeIsSaidThroughTheTranslationAndFromAFixedLine) {
  const char* const format = "A stored transform must have 4 by 4 entries (got %s by %s)";
  const std::string place = " | generated/module/gsl/persist/gsl_PersistentMatrixRecord:62";
  EXPECT_EQ(Refusal(3, 4), "A stored transform must have 4 by 4 entries (got 3 by 4)" + place);
  atr_SetTranslation(format, "%2$s Spalten, %1$s Zeilen statt 4 mal 4");
  EXPECT_EQ(Refusal(16, 1), "1 Spalten, 16 Zeilen statt 4 mal 4" + place);
  atr_SetTranslation(format, nullptr);
}
