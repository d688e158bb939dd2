#include "gsl_RecordWriter.h"

#include "gsl_RecordStore.h"

#include <gtest/gtest.h>

#include <memory>

TEST(GslRecordWriter, RecordNumbersGrowAcrossRootsAndRecords) {
  const auto store = std::make_unique<gsl_RecordStore>();
  gsl_RecordWriter& writer = *store;
  const gsl_RecordIndex first = writer.AddRoot(1, {});
  const gsl_RecordIndex child = writer.AddRecord(first, {"child", 0}, false, 2, {});
  const gsl_RecordIndex second = writer.AddRoot(3, {});
  const gsl_RecordIndex late = writer.AddRecord(second, {"late", 0}, true, 4, {});
  EXPECT_LT(first, child);
  EXPECT_LT(child, second);
  EXPECT_LT(second, late);
}

TEST(GslRecordWriter, IsDestroyedThroughTheBase) {
  std::unique_ptr<gsl_RecordWriter> writer = std::make_unique<gsl_RecordStore>();
  writer->AddRoot(1, {});
  EXPECT_NO_THROW(writer.reset());
}
