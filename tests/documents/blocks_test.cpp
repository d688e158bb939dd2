// The blocks of the documents, each with what it needs before it and what it promises after it.

#include "TemporaryFolder.h"
#include "cls_RecordException.h"
#include "gsl_Batch.h"
#include "gsl_FloatingPoint.h"
#include "gsl_Matrix.h"
#include "gsl_Model.h"
#include "gsl_Module.h"
#include "gsl_Plane.h"
#include "gsl_RecordFile.h"
#include "gsl_StLine.h"
#include "gsl_Sweep.h"
#include "omu_xoObjVarray.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sqlite3.h>
#include <string>
#include <vector>

#define BLOCK(name) <name.inc>

namespace {

/// Blocks name files without a folder.
class InAFolder {
public:
  InAFolder() : m_before(std::filesystem::current_path()) {
    std::filesystem::current_path(m_folder.Path(""));
  }
  ~InAFolder() { std::filesystem::current_path(m_before); }
  InAFolder(const InAFolder&) = delete;
  InAFolder& operator=(const InAFolder&) = delete;

private:
  TemporaryFolder m_folder;
  std::filesystem::path m_before;
};

const gsl_StLine axis(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 2.0));
const gsl_Plane plane(gsl_Point(0.0, 0.0, -5.0), gsl_Vector(0.0, 0.0, 1.0));

TEST(DocumentBlocks, ManyInputsAtOnce) {
#include BLOCK(batches_1)
  EXPECT_EQ(distances, (std::vector<double>{3.0, 5.0}));
  EXPECT_EQ(nearest, (std::vector<double>{0.0, 0.0, 0.0, 2.0, 0.0, 0.0}));
  EXPECT_EQ(parts, (std::vector<gsl_BatchPart>{gsl_BatchPart::Foot, gsl_BatchPart::Second}));
}

TEST(DocumentBlocks, PreparedTriangles) {
#include BLOCK(batches_2)
  EXPECT_TRUE(found);
  EXPECT_EQ(contact.distance, 3.0);
  EXPECT_EQ(contact.pair, 1u);
}

TEST(DocumentBlocks, FirstStepsOfTheGuide) {
#include BLOCK(guide_1)
  EXPECT_EQ(distance, 5.0);
  EXPECT_EQ(along.magnitude, 5.0);
  EXPECT_EQ(along.x, 3.0);
  const cls_Uid before = a.uid;
#include BLOCK(guide_3)
  EXPECT_TRUE(a.uid == before);
  EXPECT_NEAR(a.x, std::cos(0.5) - 2.0 * std::sin(0.5), 1e-15);
#include BLOCK(guide_4)
}

TEST(DocumentBlocks, ToleranceOfTheGuide) {
  const double before = omi_Singleton<gsl_Util>::Instance().linearTolerance;
#include BLOCK(guide_2)
  EXPECT_TRUE(gsl_Point(0.0, 0.0, 0.0).IsOn(gsl_Point(0.0, 0.0, 0.9e-5)));
  settings.linearTolerance = before;
  EXPECT_FALSE(gsl_Point(0.0, 0.0, 0.0).IsOn(gsl_Point(0.0, 0.0, 0.9e-5)));
}

TEST(DocumentBlocks, SweepLibrary) {
#include BLOCK(sweep_library_1)
  EXPECT_EQ(answer.status, gsl_sweep::SweepStatus::Contact);
  EXPECT_EQ(answer.contact.travel, 5.0);
  EXPECT_TRUE(box.IsSolid());
}

TEST(DocumentBlocks, Model) {
  const InAFolder folder;
#include BLOCK(model_1)
  EXPECT_TRUE(read.Uid() == axis.Uid());
  EXPECT_TRUE(model.Has("plane"));
}

/// Returns the rows of a query, the columns of each between bars.
std::vector<std::string> RowsOf(const std::string& path, const std::string& query) {
  sqlite3* database = nullptr;
  sqlite3_stmt* statement = nullptr;
  EXPECT_EQ(sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
  EXPECT_EQ(sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr), SQLITE_OK)
      << sqlite3_errmsg(database);
  std::vector<std::string> rows;
  while (sqlite3_step(statement) == SQLITE_ROW) {
    rows.emplace_back();
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const unsigned char* const text = sqlite3_column_text(statement, i);
      rows.back() += text != nullptr ? reinterpret_cast<const char*>(text) : "null";
      rows.back() += "|";
    }
  }
  sqlite3_finalize(statement);
  sqlite3_close(database);
  return rows;
}

TEST(DocumentBlocks, QueryOfModel) {
  std::ifstream file(GSL_MODEL_DOCUMENT);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::string fence = "```sql\n";
  const std::size_t begin = text.find(fence) + fence.size();
  ASSERT_NE(text.find(fence), text.npos);
  const InAFolder folder;
  int count = 0;
  gsl_initialize(count); // registers the names of the classes
  {
    gsl_model::Model model("part.gslm");
    model.Write([](gsl_model::Transaction& t) { t.Put("axis", axis); });
  }
  const std::vector<std::string> rows =
      RowsOf("part.gslm", text.substr(begin, text.find("```", begin) - begin));
  ASSERT_EQ(rows.size(), 7u); // one for each field of a line
  EXPECT_EQ(rows[0].rfind("axis|gsl_StLine|_point|", 0), 0u) << rows[0];
  EXPECT_EQ(rows[6].rfind("axis|gsl_StLine|owner_feat_id|", 0), 0u) << rows[6];
  gsl_finalize(count);
}

TEST(DocumentBlocks, SaveAndLoadOfPersistence) {
  omu_xoObjVarray<gsl_Dot> points;
  points.Add(new gsl_Dot(3.0, 4.0, 5.0));
#include BLOCK(persistence_1)
  ASSERT_EQ(readPoints.Count(), 1u);
  EXPECT_EQ(readPoints[0]->GetPoint().z, 5.0);
  EXPECT_TRUE(readAxis.Uid() == axis.Uid());
}

TEST(DocumentBlocks, BytesOfRecords) {
#include BLOCK(records_1)
  EXPECT_EQ(read.RootCount(), 1u);
  EXPECT_EQ(read.RecordCount(), store.RecordCount());
}

TEST(DocumentBlocks, NamesOfRecords) {
  const InAFolder folder;
  gsl_RecordStore store;
  cls_Save save(store);
  cls_Load load(store);
#include BLOCK(records_2)
  EXPECT_TRUE(readAxis.Uid() == axis.Uid());
#include BLOCK(records_3)
  EXPECT_EQ(loaded.FindRoot("axis"), 0u);
}

namespace first_version {
#include BLOCK(records_4)
} // namespace first_version

namespace second_version {
#include BLOCK(records_5)
} // namespace second_version

/// Saves the object in a file and in a database, and reads it from each as an object of the class
/// `Read`.
template <class Read, class Written>
std::vector<Read> ReadAs(const Written& object) {
  const InAFolder folder;
  gsl_RecordStore store;
  {
    cls_Save save(store);
    object.DBWrite(cls_WriteVisitor(save, "bolt"));
  }
  gsl_SaveRecords(store, "bolt.gslr");
  const gsl_RecordStore loaded = gsl_LoadRecords("bolt.gslr");
  cls_Load load(loaded);
  gsl_model::Model model("bolt.gslm");
  model.Write([&](gsl_model::Transaction& t) { t.Put("bolt", object); });
  std::vector<Read> read;
  read.push_back(Read(cls_ReadVisitor(load, "bolt")));
  read.push_back(model.Get<Read>("bolt"));
  for (const Read& each : read)
    EXPECT_TRUE(each.uid == object.uid);
  return read;
}

TEST(DocumentBlocks, OldProgramReadsWhatANewerOneWrote) {
  second_version::Bolt bolt;
  bolt.width = 2.5;
  bolt.material = "brass";
  for (const first_version::Bolt& read : ReadAs<first_version::Bolt>(bolt)) {
    EXPECT_EQ(read.width, 2.5);
    EXPECT_EQ(read.turns, 0);
  }
  for (const second_version::Bolt& read : ReadAs<second_version::Bolt>(bolt)) {
    EXPECT_EQ(read.width, 2.5);
    EXPECT_EQ(read.material, "brass");
  }
}

TEST(DocumentBlocks, NewProgramReadsWhatAnOlderOneWrote) {
  first_version::Bolt bolt;
  bolt.width = 2.5;
  bolt.turns = 7;
  for (const second_version::Bolt& read : ReadAs<second_version::Bolt>(bolt)) {
    EXPECT_EQ(read.width, 2.5);
    EXPECT_EQ(read.material, "steel");
  }
  for (const first_version::Bolt& read : ReadAs<first_version::Bolt>(bolt)) {
    EXPECT_EQ(read.width, 2.5);
    EXPECT_EQ(read.turns, 7);
  }
}

TEST(DocumentBlocks, FieldOfAnotherKindIsRefused) {
  struct Changed {
    cls_Uid uid = cls_Uid::AllocateUid();
    void DBWrite(const cls_WriteVisitor& visitor) const {
      visitor.StartWrite(first_version::Bolt::kTypeId, uid);
      visitor.WriteString({-1, "turns"}, "seven");
    }
  };
  EXPECT_THROW(ReadAs<first_version::Bolt>(Changed()), cls_RecordException);
}

} // namespace
