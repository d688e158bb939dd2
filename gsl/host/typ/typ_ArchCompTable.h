#ifndef TYP_ARCH_COMP_TABLE_H
#define TYP_ARCH_COMP_TABLE_H

#include "mem_Export.h"

/// A row of a module's type table. The module defines the meaning of the kind and the second word.
struct typ_Entry {
  unsigned int kind;       ///< what the module says that the row is
  unsigned int secondWord; ///< a number of the module's own
  /// Is null for the empty row at the head of a table.
  const char* className;
};

/// A module's type table: rows that the module owns and keeps for the life of the process.
class GSL_HOST_API typ_ArchCompEntry {
public:
  /// The rows must outlive the table.
  constexpr typ_ArchCompEntry(const typ_Entry* tableRows, unsigned int count)
      : m_rows(tableRows), m_rowCount(count) {}

  /// Returns the number of rows.
  unsigned int RowCount() const { return m_rowCount; }
  /// Does not check the range.
  const typ_Entry& Row(unsigned int i) const { return m_rows[i]; }

private:
  const typ_Entry* m_rows;
  unsigned int m_rowCount;
};

/// The type tables of all modules of the process, by module number. Every call is safe from any
/// thread.
class GSL_HOST_API typ_ArchCompTable {
public:
  /// Enters a module's table and replaces the table that the module had.
  static void InsertEntry(unsigned int module, const typ_ArchCompEntry& entry);
  /// Returns a table without rows for a module that has no table.
  static typ_ArchCompEntry FindEntry(unsigned int module);
};

#endif
