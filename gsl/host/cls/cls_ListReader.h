#ifndef CLS_LIST_READER_H
#define CLS_LIST_READER_H

#include "cls_ReadVisitor.h"
#include "mem_Export.h"

#include <cstddef>
#include <cstdint>

/// Reads the entries of a list in order.
class GSL_HOST_API cls_ListReader {
public:
  cls_ListReader(const cls_ListReader&) = delete;
  cls_ListReader& operator=(const cls_ListReader&) = delete;

  /// Returns whether there is a further entry.
  [[nodiscard]] bool HasNext() const;

  /// Returns the next entry as a new object of the class that its record names: T, or a registered
  /// class that derives from T. Returns null for a null entry.
  template <class T>
  [[nodiscard]] T* ReadObject() {
    return Next().Create<T>();
  }

  /// Returns the next entry as a value. Throws for a null entry and for an entry of another class.
  template <class T>
  T ReadValue() {
    const cls_ReadVisitor entry = Next();
    if (entry.IsAbsent()) RefuseNull();
    entry.CheckTypeId(T::TypeId());
    return T(entry);
  }

private:
  friend class cls_ReadVisitor;

  explicit cls_ListReader(const cls_ReadVisitor& list);

  /// Returns an absent record for a null entry.
  cls_ReadVisitor Next();
  [[noreturn]] void RefuseNull() const;

  /// Goes on with the entries of the reader, from the entry that is next.
  void LeaveStorage();

  const cls_ReadVisitor& m_list;
  /// The next entry where the storage has it, or null.
  const unsigned char* m_stored;
  /// Otherwise, its position in the reader.
  std::uint64_t m_next;
  std::size_t m_taken;
};

#endif
