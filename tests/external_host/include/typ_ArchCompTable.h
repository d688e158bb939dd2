#ifndef TYP_ARCH_COMP_TABLE_H
#define TYP_ARCH_COMP_TABLE_H

#include "xh_Export.h"

/// A row of a type table.
struct typ_Entry {
  unsigned int category;
  unsigned int revision;
  const char* label;
};

/// A type table, by its first and last row.
class XH_API typ_ArchCompEntry {
public:
  typ_ArchCompEntry(const typ_Entry* rows, unsigned int count);

  const typ_Entry* xh_First() const { return m_first; }
  const typ_Entry* xh_Last() const { return m_last; }

private:
  const typ_Entry* m_first;
  const typ_Entry* m_last;
};

class XH_API typ_ArchCompTable {
public:
  static void InsertEntry(unsigned int module, const typ_ArchCompEntry& entry);
  /// Returns null for a module without a table.
  static const typ_ArchCompEntry* xh_Lookup(unsigned int module);
};

#endif
