#include "RecordTable.h"

#include "OneFailingAllocation.h"
#include "RecordBorder.h"
#include "TemporaryFolder.h"
#include "gsl_Model.h"

#include <iterator>
#include <memory>
#include <new>

namespace {

using gsl_model::RecordTable;

/// The table itself, and what comes back from a database.
class InTable {
public:
  static constexpr const char* kName = "InTable";

  void Write(const std::function<void(gsl_RecordWriter&)>& work) { work(m_table); }
  const gsl_RecordReader& Read() { return m_table; }

private:
  RecordTable m_table;
};

class InDatabase {
public:
  static constexpr const char* kName = "InDatabase";

  void Write(const std::function<void(gsl_RecordWriter&)>& work) {
    gsl_model::Model(m_path).Write([&](gsl_model::Transaction& t) { work(t.Writer()); });
  }
  const gsl_RecordReader& Read() {
    m_read = gsl_model::Model(m_path, gsl_model::Access::Read).ReadAll();
    return *m_read;
  }

private:
  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("model.gslm");
  std::unique_ptr<const gsl_RecordReader> m_read;
};

} // namespace

using Databases = testing::Types<InTable, InDatabase>;
INSTANTIATE_TYPED_TEST_SUITE_P(Model, RecordBorder, Databases, NamesOfStorages);

TEST(RecordTable, RootReplacesARootOfItsNameWhereThatIsAllowed) {
  RecordTable table;
  table.AddRoot(1, {});
  table.NameRoot("a");
  const gsl_RecordIndex second = table.AddRoot(2, {});
  EXPECT_THROW(table.NameRoot("a"), gsl_RecordError);
  table.AllowReplacing(true);
  table.NameRoot("a");
  EXPECT_FALSE(table.Counts(0));
  EXPECT_TRUE(table.Counts(1));
  EXPECT_EQ(table.FindRoot("a"), 1u);
  // The name goes back to the first root.
  table.TakeBack(second);
  EXPECT_TRUE(table.Counts(0));
  EXPECT_EQ(table.FindRoot("a"), 0u);
}

TEST(RecordTable, RenamedRootGivesTheNameBack) {
  RecordTable table;
  table.AllowReplacing(true);
  table.AddRoot(1, {});
  table.NameRoot("a");
  table.AddRoot(2, {});
  table.NameRoot("a");
  table.NameRoot("b");
  EXPECT_EQ(table.FindRoot("a"), 0u);
  EXPECT_EQ(table.FindRoot("b"), 1u);
  EXPECT_TRUE(table.Counts(0));
}

TEST(RecordTable, RemovedRootStaysRemovedWhenItsSuccessorIsTakenBack) {
  RecordTable table;
  table.AllowReplacing(true);
  table.AddRoot(1, {});
  table.NameRoot("a");
  EXPECT_TRUE(table.RemoveRoot("a"));
  EXPECT_FALSE(table.RemoveRoot("a"));
  EXPECT_FALSE(table.RemoveRoot("b"));
  EXPECT_FALSE(table.Counts(0));
  const gsl_RecordIndex second = table.AddRoot(2, {});
  table.NameRoot("a");
  EXPECT_TRUE(table.Counts(1));
  table.TakeBack(second);
  EXPECT_FALSE(table.Counts(0));
}

TEST(RecordTable, RemovedRootIsTheOneOfTheName) {
  RecordTable table;
  for (const char* const name : {"a", "b"}) {
    table.AddRoot(1, {});
    table.NameRoot(name);
  }
  EXPECT_TRUE(table.RemoveRoot("a"));
  EXPECT_TRUE(table.Counts(1));
  EXPECT_TRUE(table.RemoveRoot("b"));
  EXPECT_FALSE(table.RemoveRoot("b"));
  EXPECT_FALSE(table.Counts(1));
}

TEST(RecordTable, RootThatWasReadCounts) {
  RecordTable table;
  table.AppendRoot(0, "");
  table.AppendRoot(1, "b");
  EXPECT_TRUE(table.Counts(0));
  EXPECT_TRUE(table.Counts(1));
}

TEST(RecordTable, FieldsOfOneNameKeepTheirNumbers) {
  RecordTable table;
  const gsl_RecordIndex root = table.AddRoot(1, {});
  // The second "y" comes after the same field as the first one.
  const gsl_RecordPlace places[] = {{"x", 1}, {"y", 2}, {"x", 1}, {"y", 3}, {"x", 1}, {"z", 3}};
  for (const gsl_RecordPlace& place : places)
    table.AddInteger(root, place, 0);
  std::size_t i = 0;
  for (const gsl_RecordField& field : table.Fields(table.Root(0))) {
    ASSERT_LT(i, std::size(places));
    EXPECT_EQ(field.name, places[i].name) << i;
    EXPECT_EQ(field.index, places[i].index) << i;
    ++i;
  }
  EXPECT_EQ(i, std::size(places));
}

TEST(RecordTable, NameThatFindsNoMemoryIsNotGiven) {
  const std::string before(100, 'b');
  const std::string name(100, 'n');
  bool hasFailed = true;
  long failures = 0;
  for (; hasFailed; failures += hasFailed ? 1 : 0) {
    RecordTable table;
    table.AddRoot(1, {});
    table.NameRoot(before);
    hasFailed = false;
    try {
      const OneFailingAllocation failure(failures);
      table.NameRoot(name);
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    EXPECT_EQ(table.RootName(0), hasFailed ? before : name);
    EXPECT_EQ(table.FindRoot(before), hasFailed ? 0u : 1u);
    EXPECT_EQ(table.FindRoot(name), hasFailed ? 1u : 0u);
  }
  EXPECT_GT(failures, 0);
}

TEST(RecordTable, RootThatFindsNoMemoryIsTakenBackWhole) {
  bool hasFailed = true;
  long failures = 0;
  for (; hasFailed; failures += hasFailed ? 1 : 0) {
    RecordTable table;
    table.AddInteger(table.AddRoot(1, {}), {"n", 0}, 1);
    gsl_RecordIndex root = 1;
    hasFailed = false;
    try {
      const OneFailingAllocation failure(failures);
      root = table.AddRoot(2, {});
      table.NameRoot("a root with a name that is too long for a short string");
      table.NameClass(3, "a class with a name that is too long for a short string");
      const gsl_RecordIndex inner = table.AddRecord(root, {"inner", 0}, true, 3, {});
      table.AddString(inner, {"text", 0}, "some text that is too long for a short string");
      const double values[] = {1, 2};
      table.SetDoubles(table.AddRecord(root, {"m", 0}, false, 3, {}), values, 1, 2);
    } catch (const std::bad_alloc&) {
      hasFailed = true;
    }
    table.TakeBack(root);
    EXPECT_EQ(table.RootCount(), 1u);
    EXPECT_EQ(table.Records().size(), 1u);
    EXPECT_EQ(table.AllFields().size(), 1u);
    EXPECT_EQ(table.ClassName(3), "");
  }
  EXPECT_GT(failures, 8);
}
