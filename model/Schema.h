#ifndef MODEL_SCHEMA_H
#define MODEL_SCHEMA_H

#include "Database.h"

#include <cstdint>

namespace gsl_model {

/// The application id of a model, "gslm", and the version of its tables.
constexpr std::int64_t kApplicationId = 0x67736C6D;
constexpr std::int64_t kVersion = 1;

/// Writes the tables of a model without roots into an empty database, in one transaction.
void CreateTables(Database& database);

/// Throws unless the database is a model of this version that SQLite finds undamaged. `isWhole`
/// also compares each index with its table.
void CheckTables(Database& database, bool isWhole);

} // namespace gsl_model

#endif
