#ifndef DATABASE_SAMPLES_H
#define DATABASE_SAMPLES_H

#include "Database.h"
#include "RandomNumbers.h"
#include "gsl_Model.h"

#include <chrono>
#include <string>

/// Models for the tests of databases.
namespace database_samples {

using gsl_model::Access;
using gsl_model::Database;
using gsl_model::Model;
using gsl_model::Transaction;

constexpr std::chrono::milliseconds kNoPatience{0};

template <class Work>
std::string MessageOf(const Work& work) {
  try {
    work();
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "no error";
}

/// Writes a root "part" of every kind of field, and a root without a name that shares its object.
inline void WriteEveryKind(gsl_RecordWriter& to, double x = 1.5) {
  to.NameClass(7, "my_Part");
  const gsl_RecordIndex part = to.AddRoot(7, {0x0123456789ABCDEFu, 9});
  to.NameRoot("part");
  to.AddInteger(part, {"count", 0}, -7);
  to.AddDouble(part, {"x", 1}, x);
  to.AddBoolean(part, {"on", -1}, true);
  to.AddString(part, {"text", -1}, "some text");
  to.AddString(part, {"bytes", -1}, std::string_view("\xff\0", 2));
  to.AddNull(part, {"end", -1}, 7);
  const gsl_RecordIndex shared = to.AddRecord(part, {"shared", -1}, true, 8, {1, 1});
  to.AddInteger(shared, {"n", -1}, 1);
  const std::uint32_t numbers[] = {0, 4294967295u};
  to.SetUnsigneds(to.AddRecord(part, {"ids", -1}, false, 8, {}), numbers, 2);
  const double entries[] = {0.1, -0.0};
  to.SetDoubles(to.AddRecord(part, {"matrix", -1}, false, 8, {}), entries, 1, 2);
  const gsl_RecordIndex list = to.AddRecord(part, {"list", -1}, false, 8, {});
  to.SetCollection(list, gsl_RecordCollection::Objects);
  to.AddNull(list, {}, 7);
  const gsl_RecordIndex second = to.AddRoot(9, {});
  to.AddReference(second, {"shared", -1}, shared);
}

inline void CreateEveryKind(const std::string& path) {
  Model(path).Write([](Transaction& t) { WriteEveryKind(t.Writer()); });
}

/// Runs SQL on the file, as another program would.
inline void RunSql(const std::string& path, const char* sql) {
  Database database(path, Database::Access::Write, kNoPatience);
  database.Run("PRAGMA synchronous = OFF");
  database.Run(sql);
}

inline std::int64_t NumberFrom(const std::string& path, std::string_view sql) {
  return Database(path, Database::Access::Read, kNoPatience).Integer(sql);
}

inline std::string MessageOfReading(const std::string& path) {
  return MessageOf([&] { Model(path, Access::Read, kNoPatience).ReadAll(); });
}

} // namespace database_samples

#endif
