#include "gsl_Model.h"

#include "HostObjects.h"
#include "ModelSamples.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_RecordFile.h"
#include "gsl_StLine.h"
#include "omu_PrimEnum.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using gsl_model::Access;
using gsl_model::Model;
using gsl_model::RootEntry;
using gsl_model::Transaction;

class GslModel : public testing::Test {
protected:
  static void SetUpTestSuite() {
    int count = 0;
    gsl_initialize(count);
  }

  std::vector<std::string> NamesOf(const Model& model) const {
    std::vector<std::string> names;
    for (const RootEntry& root : model.Roots())
      names.push_back(root.name);
    return names;
  }

  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("part.gslm");
};

template <class Work>
std::string MessageOf(const Work& work) {
  try {
    work();
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "no error";
}

gsl_StLine Axis(double x) {
  return gsl_StLine(gsl_Point(x, 2, 3), gsl_Vector(0, 0, 1));
}

} // namespace

TEST_F(GslModel, ObjectIsReadByItsName) {
  const gsl_StLine axis = Axis(1);
  {
    Model model(m_path);
    model.Write([&](Transaction& t) { t.Put("axis", axis); });
  }
  const Model model(m_path, Access::Read);
  const gsl_StLine read = model.Get<gsl_StLine>("axis");
  EXPECT_EQ(read.PointOn().x, 1.0);
  EXPECT_EQ(read.Uid(), axis.Uid());
  EXPECT_TRUE(model.Has("axis"));
  EXPECT_FALSE(model.Has("plane"));
  EXPECT_EQ(MessageOf([&] { model.Get<gsl_StLine>("plane"); }),
            m_path + ": has no root named \"plane\"");
  EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"part.gslm"}));
}

TEST_F(GslModel, RootsAreListedWithTheirClassAndSize) {
  Model model(m_path);
  EXPECT_TRUE(model.Roots().empty());
  const gsl_StLine axis = Axis(1);
  const gsl_Dot dot(gsl_Point(1, 2, 3));
  model.Write([&](Transaction& t) {
    t.Put("axis", axis);
    t.Put("dot", dot);
  });
  const std::vector<RootEntry> roots = model.Roots();
  ASSERT_EQ(roots.size(), 2u);
  EXPECT_EQ(roots[0].name, "axis");
  EXPECT_EQ(roots[0].className, "gsl_StLine");
  EXPECT_EQ(roots[0].typeId, gsl_StLine::TypeId());
  EXPECT_EQ(roots[0].identity, (gsl_RecordIdentity{axis.Uid().Prefix(), axis.Uid().Serial()}));
  EXPECT_EQ(roots[1].className, "gsl_Dot");
  EXPECT_GT(roots[0].bytes, roots[1].bytes);
  EXPECT_GT(roots[1].bytes, 0u);
}

TEST_F(GslModel, PutReplacesTheRootAndKeepsItsPlace) {
  Model model(m_path);
  model.Write([&](Transaction& t) {
    t.Put("a", Axis(1));
    t.Put("b", Axis(2));
  });
  const auto size = model.ReadAll()->RootCount();
  model.Write([&](Transaction& t) {
    t.Put("c", Axis(3));
    t.Put("a", Axis(4));
    t.Put("a", Axis(5));
  });
  EXPECT_EQ(size, 2u);
  EXPECT_EQ(NamesOf(model), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 5.0);
  EXPECT_EQ(model.Get<gsl_StLine>("b").PointOn().x, 2.0);
  EXPECT_EQ(NamesOf(Model(m_path)), (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(GslModel, RemovedRootIsGone) {
  Model model(m_path);
  model.Write([&](Transaction& t) {
    t.Put("a", Axis(1));
    t.Put("b", Axis(2));
  });
  model.Write([&](Transaction& t) {
    EXPECT_TRUE(t.Remove("a"));
    EXPECT_FALSE(t.Remove("a"));
    EXPECT_FALSE(t.Remove("none"));
    t.Put("new", Axis(3));
    EXPECT_TRUE(t.Remove("new"));
    EXPECT_FALSE(t.Remove("new"));
    EXPECT_TRUE(t.Remove("b"));
    t.Put("b", Axis(4));
  });
  EXPECT_EQ(NamesOf(model), (std::vector<std::string>{"b"}));
  EXPECT_EQ(model.Get<gsl_StLine>("b").PointOn().x, 4.0);
}

TEST_F(GslModel, ExceptionOfTheCallerRollsBack) {
  Model model(m_path);
  model.Write([&](Transaction& t) { t.Put("a", Axis(1)); });
  const std::string before = BytesOf(m_path);
  EXPECT_THROW(model.Write([&](Transaction& t) {
    t.Put("a", Axis(2));
    EXPECT_TRUE(t.Remove("a"));
    throw std::runtime_error("no");
  }),
               std::runtime_error);
  EXPECT_EQ(BytesOf(m_path), before);
  EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 1.0);
  model.Write([&](Transaction& t) { t.Put("a", Axis(3)); });
  EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 3.0);
}

namespace {

/// Writes a point, then fails.
struct Failing {
  void DBWrite(const cls_WriteVisitor& visitor) const {
    visitor.StartWrite(1, cls_Uid(1, 1));
    visitor.WriteInteger({0, "n"}, 1);
    throw std::runtime_error("no");
  }
};

/// Writes no record.
struct Silent {
  void DBWrite(const cls_WriteVisitor&) const {}
};

} // namespace

TEST_F(GslModel, PutThatFailsLeavesTheTransactionAsItWas) {
  Model model(m_path);
  model.Write([&](Transaction& t) { t.Put("stored", Axis(1)); });
  model.Write([&](Transaction& t) {
    t.Put("a", Axis(2));
    EXPECT_THROW(t.Put("a", Failing()), std::runtime_error);
    EXPECT_THROW(t.Put("stored", Failing()), std::runtime_error);
    EXPECT_THROW(t.Put("b", Silent()), gsl_RecordError);
    EXPECT_THROW(t.Put("", Axis(3)), gsl_RecordError);
  });
  EXPECT_EQ(NamesOf(model), (std::vector<std::string>{"stored", "a"}));
  EXPECT_EQ(model.Get<gsl_StLine>("stored").PointOn().x, 1.0);
  EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 2.0);
}

TEST_F(GslModel, SharedObjectLivesWhileARootReachesIt) {
  Model model(m_path);
  const gsl_ModelSegment first(gsl_Dot(gsl_Point(1, 2, 3)), gsl_Dot(gsl_Point(4, 5, 6)));
  const gsl_ModelSegment second = first;
  model.Write([&](Transaction& t) {
    t.Put("first", first);
    t.Put("second", second);
  });
  const auto counted = [&] {
    const auto records = model.ReadAll();
    std::size_t objects = 0, references = 0;
    for (std::size_t i = 0; i < records->RootCount(); ++i) {
      for (const gsl_RecordField& field : records->Fields(records->Root(i))) {
        objects += field.kind == gsl_RecordKind::Object ? 1 : 0;
        references += field.kind == gsl_RecordKind::Reference ? 1 : 0;
      }
    }
    return std::make_pair(objects, references);
  };
  EXPECT_EQ(counted(), std::make_pair(std::size_t{2}, std::size_t{2}));
  // The first root held the objects; now the second does.
  model.Write([&](Transaction& t) { EXPECT_TRUE(t.Remove("first")); });
  EXPECT_EQ(counted(), std::make_pair(std::size_t{2}, std::size_t{0}));
  EXPECT_EQ(model.Get<gsl_ModelSegment>("second").Point2().GetPoint().z, 6.0);
  model.Write([&](Transaction& t) { EXPECT_TRUE(t.Remove("second")); });
  EXPECT_EQ(model.ReadAll()->RootCount(), 0u);
}

TEST_F(GslModel, RingOfObjectsGoesWithItsLastRoot) {
  Model model(m_path);
  const gsl_RecordStore ring = model_samples::Circular();
  const auto put = [&](const char* name) {
    model.Write([&](Transaction& t) {
      gsl_RecordWriter& to = t.Writer();
      const gsl_RecordIndex root = to.AddRoot(1, {});
      to.NameRoot(name);
      const gsl_RecordIndex a = to.AddRecord(root, {"first", -1}, true, 2, {});
      const gsl_RecordIndex b = to.AddRecord(a, {"next", -1}, true, 2, {});
      to.AddReference(b, {"next", -1}, a);
    });
  };
  put("ring");
  put("other");
  EXPECT_EQ(model.Read("ring")->RootCount(), 1u);
  model.Write([&](Transaction& t) {
    EXPECT_TRUE(t.Remove("ring"));
    EXPECT_TRUE(t.Remove("other"));
  });
  EXPECT_TRUE(model.Roots().empty());
}

TEST_F(GslModel, ArrayIsReadWithFurtherArguments) {
  Model model(m_path);
  omu_xoObjVarray<gsl_Dot> array(2, 2.0);
  array.Add(new gsl_Dot(gsl_Point(1, 2, 3)));
  array.Add(nullptr);
  model.Write([&](Transaction& t) { t.Put("dots", array); });
  const auto read = model.Get<omu_xoObjVarray<gsl_Dot>>("dots", nullptr, nullptr);
  EXPECT_EQ(read.Count(), 2u);
  EXPECT_EQ(read.Uid(), array.Uid());
}

TEST_F(GslModel, WritingWithinATransactionIsRefusedAndReadingFindsTheOldModel) {
  Model model(m_path);
  model.Write([&](Transaction& t) { t.Put("a", Axis(1)); });
  model.Write([&](Transaction& t) {
    t.Put("a", Axis(2));
    EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 1.0);
    EXPECT_EQ(MessageOf([&] { model.Write([](Transaction&) {}); }),
              m_path + ": cannot be written within another transaction of the same model");
  });
  EXPECT_EQ(model.Get<gsl_StLine>("a").PointOn().x, 2.0);
  Model reader(m_path, Access::Read);
  EXPECT_EQ(MessageOf([&] { reader.Write([](Transaction&) {}); }),
            m_path + ": cannot be written: it was opened for reading");
}

TEST_F(GslModel, ChangesOfAnotherConnectionAreSeen) {
  Model first(m_path);
  Model second(m_path);
  first.Write([&](Transaction& t) { t.Put("a", Axis(1)); });
  EXPECT_TRUE(second.Has("a"));
  second.Write([&](Transaction& t) {
    EXPECT_TRUE(t.Remove("a"));
    t.Put("b", Axis(2));
  });
  EXPECT_EQ(NamesOf(first), (std::vector<std::string>{"b"}));
  first.Write([&](Transaction& t) { t.Put("b", Axis(3)); });
  EXPECT_EQ(second.Get<gsl_StLine>("b").PointOn().x, 3.0);
}

TEST_F(GslModel, ModelIsMoved) {
  Model source(m_path);
  Model model = std::move(source);
  model.Write([&](Transaction& t) { t.Put("a", Axis(1)); });
  source = std::move(model);
  EXPECT_TRUE(source.Has("a"));
}

TEST_F(GslModel, GoldenFileIsReadAndStaysAsItIs) {
  // The file is kept for ever. It was made from the golden file of the byte form, and a root was
  // added and removed after that.
  const std::string bytes = BytesOf(GOLDEN_MODELS "/every_kind.gslm");
  m_folder.Write("part.gslm", bytes);
  const gsl_RecordStore expected = gsl_LoadRecords(GOLDEN_RECORDS "/every_kind.gslr");
  {
    const Model model(m_path, Access::Read);
    EXPECT_TRUE(SameObjects(*model.ReadAll(), expected));
    const std::vector<RootEntry> roots = model.Roots();
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_EQ(roots[0].name, "every kind");
    EXPECT_EQ(roots[0].className, "EveryKind");
    EXPECT_EQ(roots[0].typeId, 0x7F000001u);
    EXPECT_EQ(roots[0].identity, (gsl_RecordIdentity{3, 5}));
    EXPECT_EQ(roots[1].name, "");
    EXPECT_EQ(roots[1].className, "Value");
    const auto root = model.Read("every kind");
    const gsl_RecordField least = *root->Fields(root->Root(0)).begin();
    EXPECT_EQ(least.name, "least");
    EXPECT_EQ(least.integer, -2147483647 - 1);
  }
  EXPECT_EQ(BytesOf(m_path), bytes);
  // It can be changed, and the rest of it stays.
  Model model(m_path, Access::Write);
  model.Write([&](Transaction& t) { t.Put("axis", Axis(1)); });
  EXPECT_EQ(model.Get<gsl_StLine>("axis").PointOn().x, 1.0);
  model.Write([&](Transaction& t) { EXPECT_TRUE(t.Remove("axis")); });
  EXPECT_TRUE(SameObjects(*model.ReadAll(), expected));
}

namespace {

/// An axis as a later version of the library may write it: with fields that this one does not know.
struct LaterAxis {
  explicit LaterAxis(const gsl_StLine& its) : axis(its), direction(its.Direction()) {}
  void DBWrite(const cls_WriteVisitor& visitor) const {
    visitor.StartWrite(gsl_StLine::TypeId(), axis.Uid());
    visitor.WriteString({-1, "_label"}, "a later field");
    axis.PointOn().DBWrite(cls_WriteVisitor(visitor, {0, "_point"}));
    visitor.WriteDouble({-1, "_accuracy"}, 0.5);
    direction.DBWrite(cls_WriteVisitor(visitor, {1, "_dir"}));
    visitor.WriteString({2, "_method"}, omu_PrimEnum<gsl_LineMethod, 1>(axis.Method()).AsString());
    visitor.WriteBoolean({3, "_flip"}, axis.Flip());
    visitor.WriteBoolean({4, "_ok"}, axis.Ok());
    anchor.DBWrite(cls_WriteVisitor(visitor, {-1, "_anchor"}));
    visitor.WriteInteger({6, "owner_feat_id"}, 42);
  }

  const gsl_StLine& axis;
  gsl_PersistentVector direction;
  gsl_Dot anchor{gsl_Point(7, 8, 9)};
};

void ExpectAxis(const gsl_StLine& read, const gsl_StLine& written) {
  EXPECT_EQ(read.Uid(), written.Uid());
  EXPECT_EQ(read.PointOn().y, 2.0);
  EXPECT_EQ(read.Direction().z, 1.0);
  EXPECT_EQ(read.OwnerFeatID(), 42);
  EXPECT_EQ(read.Ok(), written.Ok());
}

} // namespace

TEST_F(GslModel, FileOfALaterProgramIsReadWithoutItsNewFieldsAndKeepsThem) {
  const gsl_StLine axis = Axis(1);
  const LaterAxis later(axis);
  Model model(m_path);
  model.Write([&](Transaction& t) {
    t.Put("axis", later);
    t.Put("other", Axis(2));
  });
  ExpectAxis(model.Get<gsl_StLine>("axis"), axis);
  // Changes of other roots leave the fields alone that this program does not know.
  const auto before = model.Read("axis");
  model.Write([&](Transaction& t) { t.Put("other", Axis(3)); });
  EXPECT_TRUE(SameContents(*model.Read("axis"), *before));
  const gsl_RecordField label = *before->Fields(before->Root(0)).begin();
  EXPECT_EQ(label.name, "_label");
  EXPECT_EQ(label.text, "a later field");

  const std::string path = m_folder.Path("part.gslr");
  gsl_RecordStore store;
  {
    cls_Save save(store);
    later.DBWrite(cls_WriteVisitor(save, "axis"));
  }
  gsl_SaveRecords(store, path);
  const gsl_RecordStore loaded = gsl_LoadRecords(path);
  cls_Load load(loaded);
  ExpectAxis(gsl_StLine(cls_ReadVisitor(load, "axis")), axis);
  EXPECT_TRUE(SameObjects(loaded, *before));
}

namespace {

/// A journal that says that there was nothing.
std::string JournalOfCreation() {
  const std::string start{"\xd9\xd5\x05\xf9\x20\xa1\x63\xd7\xff\xff\xff\xff\0\0\0\1\0\0\0\0"
                          "\0\0\2\0\0\0\x10\0",
                          28};
  return start + std::string(512 - start.size(), '\0');
}

} // namespace

TEST_F(GslModel, InterruptedCreationIsDoneAgain) {
  // The first page has not reached the disk.
  const std::string journal = JournalOfCreation();
  for (const std::string& page :
       {std::string(4096, '\0'), std::string("SQLite format 3\0", 16) + std::string(4080, '\0')}) {
    m_folder.Write("part.gslm", page);
    m_folder.Write("part.gslm-journal", journal);
    EXPECT_EQ(MessageOf([&] { const Model model(m_path, Access::Read); }),
              m_path + ": is not a model: the file is empty");
    m_folder.Write("part.gslm", page);
    m_folder.Write("part.gslm-journal", journal);
    EXPECT_TRUE(Model(m_path).Roots().empty());
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"part.gslm"}));
  }
}

TEST_F(GslModel, InterruptedCreationIsDoneAgainThroughALink) {
  std::filesystem::create_directory(m_folder.Path("far"));
  const std::string target = m_folder.Write("far/target", std::string(4096, '\0'));
  m_folder.Write("far/target-journal", JournalOfCreation());
  std::filesystem::create_symlink("far/target", m_path);
  EXPECT_TRUE(Model(m_path).Roots().empty());
  EXPECT_TRUE(Model(target, Access::Read).Roots().empty());
  EXPECT_FALSE(std::filesystem::exists(target + "-journal"));
  EXPECT_TRUE(std::filesystem::is_symlink(m_path));
}

TEST_F(GslModel, LogOfAnotherProgramStaysAndThatOfAModelIsWritten) {
  const std::string foreign = m_folder.Path("foreign");
  { const Model model(m_path); }
  for (const std::string& path : {foreign, m_path}) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &database), SQLITE_OK);
    sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    ASSERT_EQ(sqlite3_exec(database, "PRAGMA journal_mode = WAL; CREATE TABLE t(x)", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(database);
    ASSERT_FALSE(BytesOf(path + "-wal").empty());
  }
  const std::string bytes = BytesOf(foreign);
  const std::string log = BytesOf(foreign + "-wal");
  for (const Access access : {Access::Read, Access::Write, Access::Create}) {
    EXPECT_EQ(MessageOf([&] { const Model model(foreign, access); }),
              foreign + ": is not a model: it is a database with the application id 0, but a model "
                        "has 1735617645");
    EXPECT_EQ(BytesOf(foreign), bytes);
    EXPECT_EQ(BytesOf(foreign + "-wal"), log);
  }
  EXPECT_TRUE(Model(m_path, Access::Read).Roots().empty());
  EXPECT_FALSE(std::filesystem::exists(m_path + "-wal"));
}

TEST_F(GslModel, DatabaseOfAnotherProgramIsRefusedAndStaysAsItIs) {
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(m_path.c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "PRAGMA journal_mode = WAL; CREATE TABLE t(x)", nullptr, nullptr,
                         nullptr),
            SQLITE_OK);
  sqlite3_close(database);
  const std::string bytes = BytesOf(m_path);
  for (const Access access : {Access::Read, Access::Write, Access::Create}) {
    EXPECT_EQ(MessageOf([&] { const Model model(m_path, access); }),
              m_path + ": is not a model: it is a database with the application id 0, but a model "
                       "has 1735617645");
    EXPECT_EQ(BytesOf(m_path), bytes);
  }
}
