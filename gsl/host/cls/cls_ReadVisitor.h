#ifndef CLS_READ_VISITOR_H
#define CLS_READ_VISITOR_H

#include "cls_AttributeType.h"
#include "cls_FieldHandle.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "mem_Export.h"

#include <any>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

class cls_ListReader;
class gsl_RecordReader;
struct gsl_RecordField;

/// One load from a reader of records. It remembers the shared objects that it has read. So objects
/// that were shared when they were written are shared again.
class GSL_HOST_API cls_Load {
public:
  /// The reader must outlive the load, and its records must not change meanwhile.
  explicit cls_Load(const gsl_RecordReader& reader);
  ~cls_Load();
  cls_Load(const cls_Load&) = delete;
  cls_Load& operator=(const cls_Load&) = delete;

  /// Returns the number of roots of the reader.
  std::size_t RootCount() const;

private:
  friend class cls_ListReader;
  friend class cls_ReadVisitor;

  /// Returns the text. Short texts that were asked for recently share one buffer.
  cow_String TextOf(std::string_view text);

  static constexpr std::size_t kRecentTexts = 16;

  const gsl_RecordReader& m_reader;
  std::array<cow_String, kRecentTexts> m_texts;
  /// By the number of the object: the holder, or nothing while the object is being read.
  std::unordered_map<std::uint64_t, std::any> m_objects;
};

/// Reads one record of a load. Fields are found by name, in any order; a record may have others.
/// Among fields of one name the field right after the field read before counts, otherwise the
/// first.
///
/// Absent    a field that the record does not have reads as the caller's default. A child for such
///           a field, or for a null, is absent itself: it has no fields, and its uid is null.
/// Threads   a load and its visitors belong to one thread at a time, also where they are const.
/// Errors    cls_RecordException for a field of another kind than requested, a nested record of
///           another class, an object that contains itself, and nesting deeper than kMostNesting;
///           what the reader throws; std::bad_alloc.
class GSL_HOST_API cls_ReadVisitor {
public:
  /// The deepest nesting of records that is read.
  static constexpr unsigned int kMostNesting = 1000;

  /// Reads root number `root` of the load.
  cls_ReadVisitor(cls_Load& load, std::size_t root);
  /// Reads the root of that name. Throws when no root has that name.
  cls_ReadVisitor(cls_Load& load, const cow_String& rootName);
  /// Reads the record that belongs to a field. A field that only refers to a shared object is
  /// refused: values that are read from references would multiply what is stored once.
  cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field);

  /// Returns whether there is no such record.
  [[nodiscard]] bool IsAbsent() const { return m_record == kNoRecord; }
  /// Returns 0 when absent.
  unsigned int TypeId() const { return m_typeId; }
  /// Returns the null uid when absent.
  cls_Uid GetUid() const { return m_uid; }

  int ReadInteger(const cls_FieldHandle& field, int defaultValue) const;
  double ReadDouble(const cls_FieldHandle& field, double defaultValue) const;
  [[nodiscard]] bool ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const;
  cow_String ReadString(const cls_FieldHandle& field, const cow_String& defaultValue) const;

  /// Throws unless this record is absent, or its class is that class or is registered as derived
  /// from it. The message names the place of the record and both classes.
  void CheckTypeId(unsigned int typeId) const {
    if (m_typeId != typeId && !IsAbsent()) CheckDerived(typeId);
  }

  /// Reads the object that a field holds or refers to into a holder. An object that this load has
  /// read before is shared. The holder is empty for a null and for a missing field. After an
  /// exception it is as it was.
  template <class Holder>
  void ReadObject(const cls_FieldHandle& field, Holder& holder) const;

  /// Returns a new object of the class that this record names: T, or a registered class that
  /// derives from T. Returns null when absent.
  template <class T>
  [[nodiscard]] T* Create() const;

  /// Throws unless this record is absent or a collection of that type.
  void CheckCollectionType(int type) const;
  /// Writes the elements of a cls_UnsignedList, or no elements when absent.
  void ReadUnsigneds(std::vector<unsigned int>& elements) const;
  /// Writes the entries of a cls_DoubleMatrix row by row, or a matrix of 0 by 0 when absent.
  void ReadDoubles(std::vector<double>& entries, std::size_t& rows, std::size_t& columns) const;
  /// Returns a new reader for the entries of a cls_ObjectList; the caller owns it.
  [[nodiscard]] cls_ListReader* GetListReader() const;

private:
  friend class cls_ListReader;

  static constexpr std::uint32_t kNoRecord = 0xFFFFFFFFu;
  /// In place of the number of an object: a record that no other field refers to.
  static constexpr std::uint64_t kUnshared = ~std::uint64_t{0};
  static constexpr std::size_t kNoEntry = static_cast<std::size_t>(-1);

  /// Where a record was found, for messages: in a field of the record `holder`, or as a root; and
  /// as which entry of a list. The name belongs to the reader.
  struct Place {
    std::uint32_t holder;
    std::string_view field;
    std::size_t root;
    std::size_t entry;
  };

  cls_ReadVisitor(cls_Load& load, std::uint32_t record, unsigned int depth, const Place& place);
  cls_ReadVisitor(const cls_ReadVisitor& parent, const gsl_RecordField* field);

  void CheckDerived(unsigned int typeId) const;
  cls_ReadVisitor Child(const cls_FieldHandle& handle) const;
  /// Is false for a field that the record does not have.
  [[nodiscard]] bool Find(const cls_FieldHandle& handle, gsl_RecordField& field) const;
  [[nodiscard]] bool FindPlain(const cls_FieldHandle& handle, int kind,
                               gsl_RecordField& field) const;
  /// Returns the record that belongs to the field, or kNoRecord for a null and for a null field.
  std::uint32_t OwnRecord(const gsl_RecordField* field) const;
  /// The record that the field holds or refers to, the number of the object, and where it was
  /// found.
  std::uint32_t FindObject(const cls_FieldHandle& handle, Place& place,
                           std::uint64_t& object) const;
  [[noreturn]] void RefuseKind(const gsl_RecordField& field, int wanted) const;
  /// Null for an object that was not read yet; it is then marked as being read.
  [[nodiscard]] const std::any* KnownObject(std::uint64_t object, std::uint32_t record) const;
  void Remember(std::uint64_t object, std::any holder) const;
  void Forget(std::uint64_t object) const noexcept;
  [[noreturn]] void RefuseHolder(std::uint32_t record) const;
  [[nodiscard]] void* CreateDerived(unsigned int typeId) const;
  Place PlaceOf(const gsl_RecordField* field) const;
  std::string DescribePlace() const;

  /// Removes the mark of an object that is being read when its reading fails.
  struct BeingRead {
    const cls_ReadVisitor& visitor;
    std::uint64_t object;
    bool done = false;
    ~BeingRead() {
      if (!done) visitor.Forget(object);
    }
  };

  cls_Load& m_load;
  std::uint32_t m_record;
  unsigned int m_depth;
  unsigned int m_typeId;
  int m_collection;
  cls_Uid m_uid;
  Place m_foundAt;
  std::uint64_t m_firstField;
  /// The position of the field that is compared first. Most fields are read in write order.
  mutable std::uint64_t m_expected;
};

template <class Holder>
void cls_ReadVisitor::ReadObject(const cls_FieldHandle& field, Holder& holder) const {
  using T = std::remove_const_t<std::remove_pointer_t<decltype(holder.Get())>>;
  Place place;
  std::uint64_t object = 0;
  const std::uint32_t record = FindObject(field, place, object);
  if (record == kNoRecord) {
    holder = Holder();
    return;
  }
  if (const std::any* const known = KnownObject(object, record)) {
    const Holder* const other = std::any_cast<Holder>(known);
    if (other == nullptr) RefuseHolder(record);
    holder = *other;
    return;
  }
  BeingRead guard{*this, object};
  const cls_ReadVisitor child(m_load, record, m_depth + 1, place);
  Holder made = Holder::Adopt(child.Create<T>());
  // A holder that finds no memory stays empty; without an exception the object would be lost.
  if (made.Get() == nullptr) throw std::bad_alloc();
  Remember(object, made);
  guard.done = true;
  holder = std::move(made);
}

template <class T>
T* cls_ReadVisitor::Create() const {
  if (IsAbsent()) return nullptr;
  if (TypeId() == T::TypeId()) return new T(*this);
  return static_cast<T*>(CreateDerived(T::TypeId()));
}

#endif
