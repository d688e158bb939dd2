#include "Schema.h"

#include <cstddef>
#include <map>
#include <string>

namespace gsl_model {

namespace {

constexpr const char* kTables[] = {
    "CREATE TABLE model(id INTEGER PRIMARY KEY CHECK (id = 1), writer TEXT NOT NULL, "
    "roots_sum INTEGER NOT NULL) STRICT",
    "CREATE TABLE classes(id INTEGER PRIMARY KEY, name ANY NOT NULL, checksum INTEGER NOT NULL) "
    "STRICT",
    "CREATE TABLE names(id INTEGER PRIMARY KEY, name ANY NOT NULL, number INTEGER NOT NULL, "
    "UNIQUE (name, number)) STRICT",
    "CREATE TABLE records(id INTEGER PRIMARY KEY, class INTEGER NOT NULL REFERENCES classes, "
    "prefix INTEGER NOT NULL, serial INTEGER NOT NULL, collection INTEGER NOT NULL, "
    "rows INTEGER, columns INTEGER, elements BLOB) STRICT",
    "CREATE TABLE fields(record INTEGER NOT NULL REFERENCES records, position INTEGER NOT NULL, "
    "name INTEGER REFERENCES names, kind INTEGER NOT NULL, value ANY, link INTEGER REFERENCES "
    "records DEFERRABLE INITIALLY DEFERRED, PRIMARY KEY (record, position)) STRICT, WITHOUT ROWID",
    "CREATE INDEX fields_by_link ON fields(link) WHERE link IS NOT NULL",
    "CREATE TABLE roots(id INTEGER PRIMARY KEY, name ANY UNIQUE, record INTEGER NOT NULL UNIQUE "
    "REFERENCES records, class INTEGER NOT NULL REFERENCES classes, prefix INTEGER NOT NULL, "
    "serial INTEGER NOT NULL, bytes INTEGER NOT NULL, checksum INTEGER NOT NULL) STRICT",
};

/// The number of a hexadecimal digit.
std::string Digit(int position) {
  return "instr('123456789ABCDEF', substr(h, " + std::to_string(position) + ", 1))";
}

/// 2^n for an n from 0 to 557, exact: the product of nine powers of at most 2^62.
std::string PowerOfTwo(const std::string& n) {
  std::string product = "1.0";
  for (int i = 0; i < 9; ++i)
    product += " * (1 << max(0, min(62, " + n + " - " + std::to_string(62 * i) + ")))";
  return "(" + product + ")";
}

/// A view that shows doubles as numbers: m * 2^e from their bits. The factor is applied in two
/// steps, because 2^e alone may be too large or too small. In SQLite << and | have one precedence.
std::string ViewOfFields() {
  std::string mantissa = "0";
  for (int position = 4; position <= 16; ++position)
    mantissa += " | (" + Digit(position) + " << " + std::to_string(4 * (16 - position)) + ")";
  const std::string half = "(abs(e) / 2)";
  const std::string rest = "(abs(e) - abs(e) / 2)";
  return "CREATE VIEW contents AS SELECT record, position, number, name, "
         "CASE kind WHEN 0 THEN 'integer' WHEN 1 THEN 'double' WHEN 2 THEN 'boolean' "
         "WHEN 3 THEN 'string' WHEN 4 THEN 'record' WHEN 5 THEN 'object' ELSE 'null' END AS kind, "
         "CASE WHEN kind <> 1 THEN value "
         "WHEN x = 2047 AND m <> 0 THEN 'nan' "
         "WHEN x = 2047 THEN iif(s, '-inf', 'inf') "
         "WHEN x = 0 AND m = 0 THEN iif(s, '-0.0', 0.0) "
         "ELSE iif(s, -1.0, 1.0) * iif(e < 0, 1.0 * w / " +
         PowerOfTwo(half) + " / " + PowerOfTwo(rest) + ", 1.0 * w * " + PowerOfTwo(half) + " * " +
         PowerOfTwo(rest) +
         ") END AS value, link FROM (SELECT *, m | iif(x = 0, 0, 1 << 52) AS w, "
         "max(x, 1) - 1075 AS e FROM (SELECT *, " +
         Digit(1) + " >> 3 AS s, ((" + Digit(1) + " & 7) << 8) | (" + Digit(2) + " << 4) | " +
         Digit(3) + " AS x, " + mantissa +
         " AS m FROM (SELECT record, position, names.number AS number, names.name AS name, kind, "
         "value, link, hex(value) AS h FROM fields LEFT JOIN names ON names.id = fields.name)))";
}

/// The statement that made each table, index and view, by its name.
std::map<std::string, std::string> Statements() {
  std::map<std::string, std::string> statements;
  const auto add = [&](const std::string& sql) {
    const std::size_t begin = sql.find(' ', sql.find(' ') + 1) + 1;
    statements.emplace(sql.substr(begin, sql.find_first_of("( ", begin) - begin), sql);
  };
  for (const char* const sql : kTables)
    add(sql);
  add(ViewOfFields());
  return statements;
}

void CheckStatements(Database& database) {
  std::map<std::string, std::string> expected = Statements();
  Statement found(database, "SELECT type, name, sql FROM sqlite_schema");
  while (found.Step()) {
    const std::string type(found.Bytes(0));
    const std::string name(found.Bytes(1));
    const auto known = expected.find(name);
    if (known != expected.end()) {
      if (found.Bytes(2) != known->second) {
        std::string what = "its " + type;
        what += ' ' + name;
        what += " has other columns than version ";
        database.FailDamaged(what + std::to_string(kVersion) + " of a model");
      }
      expected.erase(known);
    } else if (type == "trigger") {
      database.Fail("has a trigger " + name + ", but a model has no triggers");
    }
  }
  if (expected.empty()) return;
  database.FailDamaged("it has no " + expected.begin()->first);
}

} // namespace

void CreateTables(Database& database) {
  database.Run("BEGIN IMMEDIATE");
  // Another program may have been faster.
  if (database.Integer("SELECT count(*) FROM sqlite_schema") != 0) return database.Commit();
  const auto pragma = [&](const char* name, std::int64_t value) {
    database.Run(("PRAGMA " + std::string(name) + " = " + std::to_string(value)).c_str());
  };
  pragma("application_id", kApplicationId);
  pragma("user_version", kVersion);
  for (const char* const sql : kTables)
    database.Run(sql);
  database.Run(ViewOfFields().c_str());
  database.Run("INSERT INTO model VALUES (1, 'gsl_geometry " GSL_MODEL_VERSION "', 0)");
  database.Commit();
}

void CheckTables(Database& database, bool isWhole) {
  const std::int64_t application = database.Integer("PRAGMA application_id");
  if (application != kApplicationId) {
    database.Fail("is not a model: it is a database with the application id " +
                  std::to_string(application) + ", but a model has " +
                  std::to_string(kApplicationId));
  }
  database.ReleaseLog();
  const std::int64_t version = database.Integer("PRAGMA user_version");
  if (version > kVersion) {
    database.Fail("has format version " + std::to_string(version) +
                  ", which is newer, but this library reads version " + std::to_string(kVersion));
  }
  if (version != kVersion) {
    database.FailDamaged("it has format version " + std::to_string(version) +
                         ", but this library reads version " + std::to_string(kVersion));
  }
  CheckStatements(database);
  Statement check(database, isWhole ? "PRAGMA integrity_check(1)" : "PRAGMA quick_check(1)");
  if (!check.Step()) database.FailDamaged("it cannot be checked");
  const std::string problem(check.Bytes(0));
  if (problem == "ok") return;
  // The first line may only be a title: "*** in database main ***".
  std::size_t begin = problem.compare(0, 3, "***") == 0 ? problem.find('\n') + 1 : 0;
  if (begin >= problem.size()) begin = 0;
  database.FailDamaged(problem.substr(begin, problem.find('\n', begin) - begin));
}

} // namespace gsl_model
