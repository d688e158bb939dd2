#ifndef RECORDS_RECORD_ROOTS_H
#define RECORDS_RECORD_ROOTS_H

#include "PlainBuffer.h"
#include "RecordTables.h"
#include "gsl_RecordField.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace gsl_records {

/// The roots of a store: those that were read from bytes, then those that were written.
class RecordRoots {
public:
  /// What taking back a root that was written needs.
  struct Start {
    gsl_RecordIndex key; ///< the number that its writer knows
    /// How many there were when the root was started.
    Number recordsBefore, objectsBefore;
  };

  std::size_t Size() const { return m_records.Size(); }
  /// The record of a root; kNone while the root is being written.
  Number Record(std::size_t root) const { return m_records[root]; }
  const Number* Records() const { return m_records.Begin(); }
  /// Null for a root without a name.
  const std::string* Name(std::size_t root) const {
    return root < m_names.Size() ? m_names[root] : nullptr;
  }
  /// Of a root that was written.
  const Start& StartOf(std::size_t root) const { return m_starts[root - ReadCount()]; }
  /// The first root that was written with that key or a higher one, or the number of roots.
  std::size_t FirstFrom(gsl_RecordIndex key) const {
    const Start* const begin = m_starts.Begin();
    const Start* const end = begin + m_starts.Size();
    const Start* const found = std::lower_bound(
        begin, end, key, [](const Start& start, gsl_RecordIndex k) { return start.key < k; });
    return ReadCount() + static_cast<std::size_t>(found - begin);
  }

  /// Returns where the records of roots go that are read next. Requires that no root was written.
  Number* RoomToRead(std::size_t count) { return m_records.Room(count); }
  /// Adds the roots whose records were written there.
  void AddFilled(std::size_t count) { m_records.SetEnd(m_records.Room(count) + count); }
  /// Adds a root that was read. Requires that no root was written.
  void AddRead(Number record) { m_records.Append(record); }
  /// Makes room for a root that is written.
  void MakeRoomToStart() {
    m_records.Room(1);
    m_starts.Room(1);
  }
  /// Adds a root that is being written. Throws nothing after MakeRoomToStart.
  void AddStarted(const Start& start) {
    m_records.Append(kNone);
    m_starts.Append(start);
  }
  void SetLastRecord(Number record) { m_records.Back() = record; }
  void MakeRoomForLastName() { m_names.Room(Size() - m_names.Size()); }
  /// Throws nothing after MakeRoomForLastName. The root keeps the pointer.
  void SetLastName(const std::string* name) {
    while (m_names.Size() < Size())
      m_names.Append(nullptr);
    m_names.Back() = name;
  }
  /// Requires that every root that was read stays.
  void Truncate(std::size_t size) {
    m_starts.Truncate(size - ReadCount());
    m_records.Truncate(size);
    m_names.Truncate(std::min(m_names.Size(), size));
  }
  std::size_t BytesHeld() const {
    return m_records.BytesHeld() + m_names.BytesHeld() + m_starts.BytesHeld();
  }

private:
  std::size_t ReadCount() const { return m_records.Size() - m_starts.Size(); }

  PlainBuffer<Number> m_records;
  /// Up to the last root that has a name.
  PlainBuffer<const std::string*> m_names;
  PlainBuffer<Start> m_starts;
};

} // namespace gsl_records

#endif
