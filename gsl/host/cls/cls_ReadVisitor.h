#ifndef CLS_READ_VISITOR_H
#define CLS_READ_VISITOR_H

#include "cls_FieldHandle.h"
#include "cls_RecordStore.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "mem_Export.h"

#include <any>
#include <cstddef>
#include <new>
#include <string>
#include <type_traits>
#include <unordered_map>

class cls_ListReader;

/// One load from a store. It remembers the shared objects that it has read, so that what was shared
/// when it was written is shared again.
class GSL_HOST_API cls_Load {
public:
  /// The store must outlive the load and stay as it is meanwhile.
  explicit cls_Load(const cls_RecordStore& store);
  ~cls_Load();
  cls_Load(const cls_Load&) = delete;
  cls_Load& operator=(const cls_Load&) = delete;

  std::size_t RootCount() const { return store.RootCount(); }

private:
  friend class cls_ListReader;
  friend class cls_ReadVisitor;

  const cls_RecordStore& store;
  /// By record: the holder, or nothing while the object is being read.
  std::unordered_map<cls_RecordStore::Index, std::any> objects;
};

/// Reads one record of a load. Fields are found by name, in any order; a record may have others.
/// Of fields of one name, the one right behind the field read before counts, else the first.
///
/// Absent    a field that the record does not have gives the caller's default. A child for such a
///           field, or for a null, is absent itself: every field is missing, the uid is null.
/// Threads   a load and its visitors belong to one thread at a time, also where they are const.
/// Errors    cls_RecordException for a field of another kind than asked for, a nested record of
///           another class, an object that contains itself, and nesting deeper than kMostNesting;
///           std::bad_alloc.
class GSL_HOST_API cls_ReadVisitor {
public:
  static constexpr unsigned int kMostNesting = 1000;

  /// Root number `root` of the load.
  cls_ReadVisitor(cls_Load& load, std::size_t root);
  /// The record that belongs to a field. What only refers to a shared object is refused: values
  /// read from references would multiply what is stored once.
  cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field);

  [[nodiscard]] bool IsAbsent() const { return record == cls_RecordStore::kNone; }
  /// 0 when absent.
  unsigned int TypeId() const;
  /// Null when absent.
  cls_Uid GetUid() const;

  int ReadInteger(const cls_FieldHandle& field, int defaultValue) const;
  double ReadDouble(const cls_FieldHandle& field, double defaultValue) const;
  [[nodiscard]] bool ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const;
  cow_String ReadString(const cls_FieldHandle& field, const cow_String& defaultValue) const;

  /// Throws unless this record is absent or of that class, or of one registered as derived from it.
  /// The message names the place of the record and both classes.
  void CheckTypeId(unsigned int typeId) const;

  /// Reads the object that a field holds or refers to into a holder: the one that this load has
  /// read already, or a new one. Empty for a null and for a missing field.
  template <class Holder>
  void ReadObject(const cls_FieldHandle& field, Holder& holder) const;

  /// A new object from this record, of the class that the record names: T, or a registered class
  /// derived from it. Null when absent.
  template <class T>
  [[nodiscard]] T* Create() const;

  /// Throws unless this record is absent or a collection of that type.
  void CheckCollectionType(int type) const;
  /// The elements of a cls_UnsignedList; none when absent.
  cls_RecordStore::UnsignedArray ReadUnsigneds() const;
  /// The entries of a cls_DoubleMatrix; 0 by 0 when absent.
  cls_RecordStore::DoubleArray ReadDoubles() const;
  /// A new reader for the entries of a cls_ObjectList.
  [[nodiscard]] cls_ListReader* GetListReader() const;

private:
  friend class cls_ListReader;

  using Field = cls_RecordStore::Field;

  static constexpr std::size_t kNoEntry = static_cast<std::size_t>(-1);

  /// Where a record was found, for messages: in a field of the record `holder`, or as a root; and
  /// as which entry, where a list is there. The name lives in the store.
  struct Place {
    cls_RecordStore::Index holder;
    const char* field;
    std::size_t root;
    std::size_t entry;
  };

  cls_ReadVisitor(cls_Load& load, cls_RecordStore::Index record, unsigned int depth,
                  const Place& place);
  cls_ReadVisitor(const cls_ReadVisitor& parent, const Field* field);

  const Field* Find(const cls_FieldHandle& field) const;
  const Field* Find(const cls_FieldHandle& field, cls_RecordStore::Kind kind) const;
  /// The record that belongs to the field, or that it shares; kNone for a null and for no field.
  cls_RecordStore::Index OwnRecord(const Field* field) const;
  cls_RecordStore::Index ObjectRecord(const Field* field) const;
  [[noreturn]] void RefuseKind(const Field& field, const char* wanted) const;
  /// Null for an object that was not read yet, which is then marked as being read.
  [[nodiscard]] std::any* KnownObject(cls_RecordStore::Index object) const;
  void Remember(cls_RecordStore::Index object, std::any holder) const;
  void Forget(cls_RecordStore::Index object) const noexcept;
  [[noreturn]] void RefuseHolder(cls_RecordStore::Index object) const;
  [[nodiscard]] void* CreateDerived(unsigned int typeId) const;
  Place PlaceOf(const Field* field) const;
  std::string DescribePlace() const;

  /// Takes the mark of an object being read away again when its reading fails.
  struct BeingRead {
    const cls_ReadVisitor& visitor;
    cls_RecordStore::Index object;
    bool done = false;
    ~BeingRead() {
      if (!done) visitor.Forget(object);
    }
  };

  cls_Load& load;
  cls_RecordStore::Index record;
  unsigned int depth;
  Place foundAt;
  /// Where the next field is looked for first: fields are mostly read in the order written.
  mutable const Field* expected;
};

template <class Holder>
void cls_ReadVisitor::ReadObject(const cls_FieldHandle& field, Holder& holder) const {
  using T = std::remove_const_t<std::remove_pointer_t<decltype(holder.Get())>>;
  const Field* const found = Find(field);
  const cls_RecordStore::Index object = ObjectRecord(found);
  if (object == cls_RecordStore::kNone) {
    holder = Holder();
    return;
  }
  if (const std::any* const known = KnownObject(object)) {
    const Holder* const other = std::any_cast<Holder>(known);
    if (other == nullptr) RefuseHolder(object);
    holder = *other;
    return;
  }
  BeingRead guard{*this, object};
  const cls_ReadVisitor child(load, object, depth + 1, PlaceOf(found));
  holder = Holder::Adopt(child.Create<T>());
  // A holder that finds no memory stays empty; the object must not go missing silently.
  if (holder.Get() == nullptr) throw std::bad_alloc();
  Remember(object, holder);
  guard.done = true;
}

template <class T>
T* cls_ReadVisitor::Create() const {
  if (IsAbsent()) return nullptr;
  if (TypeId() == T::TypeId()) return new T(*this);
  return static_cast<T*>(CreateDerived(T::TypeId()));
}

#endif
