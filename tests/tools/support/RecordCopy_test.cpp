#include "support/RecordCopy.h"

#include "ModelSamples.h"
#include "SameContents.h"

#include <gtest/gtest.h>

#include <vector>

using namespace model_samples;

namespace {

gsl_RecordStore CopyOf(const gsl_RecordStore& from) {
  gsl_RecordStore copy;
  gsl_tools::CopyRecords(from, copy);
  return copy;
}

} // namespace

TEST(RecordCopy, CopyHasTheSameContents) {
  EXPECT_TRUE(SameContents(CopyOf(EveryKind()), EveryKind()));
  EXPECT_FALSE(SameContents(CopyOf(EveryKind(2.0)), EveryKind()));
  EXPECT_TRUE(SameContents(CopyOf(Circular()), Circular()));
  EXPECT_TRUE(SameContents(CopyOf(Nested(20000)), Nested(20000)));
  EXPECT_TRUE(SameContents(CopyOf(gsl_RecordStore()), gsl_RecordStore()));
}

TEST(RecordCopy, CopyOfACopyIsTheSameBytes) {
  const gsl_RecordStore once = CopyOf(EveryKind());
  EXPECT_EQ(CopyOf(once).ToBytes(), once.ToBytes());
}
