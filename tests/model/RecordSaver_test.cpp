#include "RecordSaver.h"

#include "DatabaseSamples.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace database_samples;

class RecordSaverTest : public testing::Test {
protected:
  RecordSaverTest() { CreateEveryKind(m_path); }

  std::int64_t CountOf(const char* table) const {
    return NumberFrom(m_path, std::string("SELECT count(*) FROM ") + table);
  }

  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("model.gslm");
};

} // namespace

TEST_F(RecordSaverTest, RowsAreAsDescribed) {
  const auto number = [&](const char* sql) { return NumberFrom(m_path, sql); };
  EXPECT_EQ(CountOf("roots"), 2);
  EXPECT_EQ(CountOf("records"), 6);
  EXPECT_EQ(CountOf("fields"), 13);
  EXPECT_EQ(number("SELECT prefix = 0x0123456789abcdef AND serial = 9 AND class = 7 AND "
                   "collection = 0 FROM records WHERE id = 1"),
            1);
  EXPECT_EQ(number("SELECT elements = x'00000000FFFFFFFF' FROM records WHERE collection = 57"), 1);
  EXPECT_EQ(number("SELECT elements = x'3FB999999999999A8000000000000000' AND rows = 1 AND "
                   "columns = 2 FROM records WHERE collection = 82"),
            1);
  EXPECT_EQ(number("SELECT count(*) FROM fields JOIN names ON names.id = fields.name WHERE "
                   "names.name = 'x' AND number = 1 AND value = x'3FF8000000000000'"),
            1);
  EXPECT_EQ(number("SELECT count(*) FROM roots WHERE name IS NULL"), 1);
  EXPECT_EQ(number("SELECT name = 'my_Part' FROM classes WHERE id = 7"), 1);
}

TEST_F(RecordSaverTest, WhatNoRootReachesGoesInTheSameTransaction) {
  Model model(m_path);
  model.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("part")); });
  // The second root and the object that both shared.
  EXPECT_EQ(CountOf("records"), 2);
  EXPECT_EQ(CountOf("fields"), 2);
  EXPECT_EQ(CountOf("roots"), 1);
  EXPECT_EQ(NumberFrom(m_path, "SELECT count(*) FROM pragma_foreign_key_check"), 0);
}

TEST_F(RecordSaverTest, IndexOfAnotherProgramNeverRemovesARoot) {
  RunSql(m_path, "CREATE UNIQUE INDEX another ON roots(class)");
  const auto put = [&] {
    Model(m_path).Write([](Transaction& t) {
      t.Writer().AddRoot(7, {});
      t.Writer().NameRoot("second of its class");
    });
  };
  EXPECT_EQ(MessageOf(put), m_path + ": cannot be used: UNIQUE constraint failed: roots.class");
  EXPECT_TRUE(Model(m_path).Has("part"));
  EXPECT_EQ(CountOf("roots"), 2);
}

TEST_F(RecordSaverTest, NumbersDoNotOverflow) {
  RunSql(m_path, "INSERT INTO records VALUES (9223372036854775807, 7, 0, 0, 0, NULL, NULL, NULL)");
  EXPECT_EQ(
      MessageOf([&] { Model(m_path).Write([](Transaction& t) { t.Writer().AddRoot(7, {}); }); }),
      m_path + ": is damaged: the number of a record is 9223372036854775807");
}

TEST_F(RecordSaverTest, ReplacedRootLeavesNothing) {
  Model model(m_path);
  for (int i = 0; i < 3; ++i) {
    model.Write([](Transaction& t) {
      EXPECT_TRUE(t.Remove("part"));
      gsl_RecordWriter& to = t.Writer();
      const gsl_RecordIndex root = to.AddRoot(1, {});
      to.NameRoot("part");
      to.AddRecord(to.AddRecord(root, {"a", 0}, false, 1, {}), {"b", 0}, true, 1, {});
    });
    EXPECT_EQ(CountOf("records"), 5);
    EXPECT_EQ(CountOf("roots"), 2);
  }
}

TEST_F(RecordSaverTest, RingGoesWhenNothingElseReachesIt) {
  Model model(m_path);
  model.Write([](Transaction& t) {
    gsl_RecordWriter& to = t.Writer();
    const gsl_RecordIndex ring = to.AddRoot(1, {});
    to.NameRoot("ring");
    const gsl_RecordIndex a = to.AddRecord(ring, {"a", 0}, true, 2, {});
    const gsl_RecordIndex b = to.AddRecord(a, {"b", 0}, true, 2, {});
    to.AddReference(b, {"a", 0}, a);
    to.AddRecord(b, {"own", 0}, false, 2, {});
    to.AddReference(to.AddRoot(1, {}), {"b", 0}, b);
    to.NameRoot("other");
  });
  const std::int64_t before = CountOf("records");
  model.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("ring")); });
  EXPECT_EQ(CountOf("records"), before - 1);
  EXPECT_EQ(model.Read("other")->RootCount(), 1u);
  model.Write([](Transaction& t) { EXPECT_TRUE(t.Remove("other")); });
  EXPECT_EQ(CountOf("records"), before - 5);
}

TEST_F(RecordSaverTest, ObjectOfAReplacedRootOfTheSameTransactionStays) {
  Model model(m_path);
  model.Write([](Transaction& t) {
    gsl_RecordWriter& to = t.Writer();
    const gsl_RecordIndex first = to.AddRoot(1, {});
    to.NameRoot("first");
    const gsl_RecordIndex object = to.AddRecord(first, {"o", 0}, true, 2, {});
    to.AddInteger(object, {"n", 0}, 17);
    to.AddReference(to.AddRoot(1, {}), {"o", 0}, object);
    to.NameRoot("second");
    EXPECT_TRUE(t.Remove("first"));
  });
  const auto read = model.Read("second");
  const gsl_RecordField field = *read->Fields(read->Root(0)).begin();
  EXPECT_EQ(field.kind, gsl_RecordKind::Object);
  EXPECT_EQ((*read->Fields(field.link).begin()).integer, 17);
  EXPECT_FALSE(model.Has("first"));
}

TEST_F(RecordSaverTest, ClassKeepsItsNameWhenAWriterDoesNotKnowIt) {
  Model model(m_path);
  const auto put = [&](const char* name) {
    model.Write([&](Transaction& t) {
      t.Writer().AddRoot(7, {});
      if (name != nullptr) t.Writer().NameClass(7, name);
    });
    return std::string(model.ReadAll()->ClassName(7));
  };
  EXPECT_EQ(put(nullptr), "my_Part");
  EXPECT_EQ(put("renamed"), "renamed");
}
