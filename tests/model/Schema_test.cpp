#include "Schema.h"

#include "DatabaseSamples.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

using namespace database_samples;
using gsl_model::Statement;

class GslModelSchema : public testing::Test {
protected:
  GslModelSchema() { CreateEveryKind(m_path); }

  std::string MessageAfter(const char* sql) {
    RunSql(m_path, sql);
    return MessageOfReading(m_path);
  }

  TemporaryFolder m_folder;
  std::string m_path = m_folder.Path("model.gslm");
};

} // namespace

TEST_F(GslModelSchema, ForeignAndNewerDatabasesAreNamed) {
  EXPECT_EQ(MessageAfter("PRAGMA application_id = 17"),
            m_path + ": is not a model: it is a database with the application id 17, but a model "
                     "has 1735617645");
  RunSql(m_path, "PRAGMA application_id = 1735617645");
  EXPECT_EQ(MessageAfter("PRAGMA user_version = 2"),
            m_path + ": has format version 2, which is newer, but this library reads version 1");
  EXPECT_EQ(MessageAfter("PRAGMA user_version = 0"),
            m_path + ": is damaged: it has format version 0, but this library reads version 1");
  EXPECT_EQ(MessageAfter("PRAGMA user_version = 1"), "no error");
}

TEST_F(GslModelSchema, TablesAreTheTablesOfTheVersion) {
  EXPECT_EQ(MessageAfter("CREATE INDEX further ON records(class); CREATE VIEW mine AS SELECT 1"),
            "no error");
  EXPECT_EQ(MessageAfter("ALTER TABLE records ADD COLUMN further INTEGER"),
            m_path + ": is damaged: its table records has other columns than version 1 of a model");
}

TEST_F(GslModelSchema, MissingTableIsNamed) {
  EXPECT_EQ(MessageAfter("DROP VIEW contents"), m_path + ": is damaged: it has no contents");
}

TEST_F(GslModelSchema, TriggerIsRefused) {
  EXPECT_EQ(MessageAfter("CREATE TRIGGER t AFTER DELETE ON roots BEGIN DELETE FROM model; END"),
            m_path + ": has a trigger t, but a model has no triggers");
}

/// A writer checks indices too; a reader does not use them.
TEST_F(GslModelSchema, IndexThatDoesNotFitItsTableIsRefusedByAWriter) {
  RunSql(m_path, "CREATE INDEX further ON records(serial)");
  std::string bytes = BytesOf(m_path);
  const std::size_t column = bytes.find("further ON records(serial)") + 19;
  bytes.replace(column, 6, "prefix");
  m_folder.Write("model.gslm", bytes);
  EXPECT_EQ(MessageOfReading(m_path), "no error");
  const std::string message =
      MessageOf([&] { const Model model(m_path, Access::Write, kNoPatience); });
  EXPECT_EQ(message.find(m_path + ": is damaged: row "), 0u) << message;
}

TEST_F(GslModelSchema, MessageOfADamagedFileIsTheProblemWithoutItsTitle) {
  const std::int64_t page =
      NumberFrom(m_path, "SELECT rootpage FROM sqlite_schema WHERE name = 'names'");
  const std::int64_t pageSize = NumberFrom(m_path, "PRAGMA page_size");
  std::string bytes = BytesOf(m_path);
  // How many bytes of the page are free between its rows.
  bytes[static_cast<std::size_t>((page - 1) * pageSize + 7)] ^= 1;
  m_folder.Write("model.gslm", bytes);
  const std::string message = MessageOfReading(m_path);
  EXPECT_EQ(message.find(m_path + ": is damaged: "), 0u) << message;
  EXPECT_EQ(message.find('*'), std::string::npos) << message;
  EXPECT_NE(message.find("page " + std::to_string(page)), std::string::npos) << message;
}

TEST_F(GslModelSchema, TablesAreStrictAndTheConnectionIsCareful) {
  Database database(m_path, Database::Access::Read, kNoPatience);
  EXPECT_EQ(database.Integer("SELECT count(*) FROM pragma_table_list WHERE type = 'table' AND "
                             "strict = 0 AND name NOT LIKE 'sqlite_%'"),
            0);
  EXPECT_EQ(database.Integer("PRAGMA application_id"), 0x67736C6D);
  EXPECT_EQ(database.Integer("PRAGMA user_version"), 1);
  EXPECT_EQ(database.Integer("PRAGMA foreign_keys"), 1);
  EXPECT_EQ(database.Integer("PRAGMA trusted_schema"), 0);
  EXPECT_EQ(database.Integer("SELECT count(*) FROM pragma_foreign_key_check"), 0);
}

/// The view shows each double as the number that SQLite makes of its decimals.
TEST_F(GslModelSchema, ViewShowsDoublesAsNumbers) {
  const struct {
    double value;
    const char* sql;
  } cases[] = {
      {1.5, "1.5"},
      {-0.1, "-0.1"},
      {0.0, "0.0"},
      {-0.0, "'-0.0'"},
      {1e300, "1e300"},
      {-1.7976931348623157e308, "-1.7976931348623157e308"},
      {2.2250738585072014e-308, "2.2250738585072014e-308"},
      {4.9406564584124654e-324, "4.9406564584124654e-324"},
      {-1.2345e-310, "-1.2345e-310"},
      {9007199254740993.0, "9007199254740992.0"},
      {HUGE_VAL, "'inf'"},
      {-HUGE_VAL, "'-inf'"},
      {std::nan(""), "'nan'"},
  };
  Model model(m_path);
  for (const auto& [value, sql] : cases) {
    model.Write([&, shown = value](Transaction& t) {
      static_cast<void>(t.Remove("value"));
      gsl_RecordWriter& to = t.Writer();
      to.AddDouble(to.AddRoot(1, {}), {"shown", 0}, shown);
      to.NameRoot("value");
    });
    EXPECT_EQ(NumberFrom(m_path, std::string("SELECT count(*) FROM contents WHERE name = 'shown' "
                                             "AND kind = 'double' AND value = ") +
                                     sql),
              1)
        << sql;
  }
  EXPECT_EQ(NumberFrom(m_path, "SELECT value FROM contents WHERE name = 'count'"), -7);
}
