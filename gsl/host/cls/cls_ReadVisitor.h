#ifndef CLS_READ_VISITOR_H
#define CLS_READ_VISITOR_H

#include "cls_AttributeType.h"
#include "cls_FieldHandle.h"
#include "cls_StoredFields.h"
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
class cls_ReadRun;
class gsl_RecordReader;
class gsl_RecordStore;
struct gsl_RecordField;

/// One load from a reader of records. It remembers the shared objects that it has read. So objects
/// that were shared when they were written are shared again.
class GSL_HOST_API cls_Load {
public:
  /// The reader must outlive the load, and must not change meanwhile: the load keeps the places of
  /// its records. A store changes by a root that is added or taken back, and by TakeBytes.
  explicit cls_Load(const gsl_RecordReader& reader);
  ~cls_Load();
  cls_Load(const cls_Load&) = delete;
  cls_Load& operator=(const cls_Load&) = delete;

  /// Returns the number of roots of the reader.
  std::size_t RootCount() const;

private:
  friend class cls_ListReader;
  friend class cls_ReadRun;
  friend class cls_ReadVisitor;

  /// What the records of one shape have in common.
  struct Shape {
    unsigned int typeId;
    int collection;
    const cls_StoredFields::Slot* fields;
    /// A list of cls_ReadRun that the records were found to begin with.
    const void* run;
  };
  /// Where a store keeps its records, so that no field costs a call of the reader.
  struct Storage {
    const unsigned char* bytes = nullptr;
    const std::uint32_t* offsets = nullptr;
    const std::uint32_t* roots = nullptr;
    const std::uint64_t* prefixes = nullptr;
    std::size_t rootCount = 0;
    const unsigned char* endOfWords = nullptr;

    /// Reads a number whose length cannot be foreseen. Returns where it ends.
    const unsigned char* NumberAt(const unsigned char* at, std::uint64_t& number) const {
      return at < endOfWords ? cls_StoredFields::NumberInWord(at, number)
                             : cls_StoredFields::NumberAt(at, number);
    }
  };
  struct NumberedText {
    std::uint64_t number = ~std::uint64_t{0};
    cow_String text;
    /// What the text is among those names.
    const void* names = nullptr;
    int value = 0;
  };

  /// Returns the text. Short texts that were asked for recently share one buffer.
  cow_String TextOf(std::string_view text);
  /// Returns the text of that number in the store, and keeps a short text.
  cow_String ReadStoredText(std::uint32_t number);
  /// Looks where the records are, once. Does nothing for a reader that is not a store.
  void FindStorage();

  static constexpr std::size_t kRecentTexts = 16;

  const gsl_RecordReader& m_reader;
  /// The reader, when it is a store whose records can be read where they are.
  const gsl_RecordStore* m_store = nullptr;
  Storage m_storage;
  std::vector<Shape> m_shapes;
  std::vector<cls_StoredFields::Slot> m_fields;
  bool m_hasLooked = false;
  std::array<cow_String, kRecentTexts> m_texts;
  std::array<NumberedText, kRecentTexts> m_storedTexts;
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
  cls_ReadVisitor(cls_Load& load, std::size_t root)
      : m_load(load), m_foundAt{kNoRecord, {}, root, kNoEntry} {
    if (root < load.m_storage.rootCount) {
      StartStored(load.m_storage.roots[root]);
    } else {
      StartRoot(root);
    }
  }
  /// Reads the root of that name. Throws when no root has that name.
  cls_ReadVisitor(cls_Load& load, const cow_String& rootName);
  /// Reads the record that belongs to a field. A field that only refers to a shared object is
  /// refused: values that are read from references would multiply what is stored once.
  cls_ReadVisitor(const cls_ReadVisitor& parent, const cls_FieldHandle& field)
      : m_load(parent.m_load), m_depth(parent.m_depth + 1) {
    const bool isNext = parent.m_stored.IsNext(field.Name(), cls_StoredFields::Record);
    if (isNext && m_depth <= kMostNesting) {
      const cls_StoredFields::Slot& slot = parent.m_stored.Next();
      m_foundAt = {parent.m_record, {slot.name, slot.nameLength}, 0, kNoEntry};
      StartStored(parent.m_stored.TakeLink());
    } else {
      StartField(parent, field);
    }
  }

  /// Returns whether there is no such record.
  [[nodiscard]] bool IsAbsent() const { return m_record == kNoRecord; }
  /// Returns 0 when absent.
  unsigned int TypeId() const { return m_typeId; }
  /// Returns the null uid when absent.
  cls_Uid GetUid() const { return m_uid; }

  int ReadInteger(const cls_FieldHandle& field, int defaultValue) const {
    const bool isNext = m_stored.IsNext(field.Name(), cls_StoredFields::Integer);
    return isNext ? m_stored.TakeInteger() : FindInteger(field, defaultValue);
  }
  double ReadDouble(const cls_FieldHandle& field, double defaultValue) const {
    const bool isNext = m_stored.IsNext(field.Name(), cls_StoredFields::Double);
    return isNext ? m_stored.TakeDouble() : FindDouble(field, defaultValue);
  }
  [[nodiscard]] bool ReadBoolean(const cls_FieldHandle& field, bool defaultValue) const {
    const bool isNext = m_stored.IsNext(field.Name(), cls_StoredFields::Boolean);
    return isNext ? m_stored.TakeBoolean() : FindBoolean(field, defaultValue);
  }
  cow_String ReadString(const cls_FieldHandle& field, const cow_String& defaultValue) const {
    const bool isNext = m_stored.IsNext(field.Name(), cls_StoredFields::Text);
    return isNext ? StoredText(m_stored.TakeLink()) : FindString(field, defaultValue);
  }

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
  friend class cls_ReadRun;

  static constexpr std::uint32_t kNoRecord = 0xFFFFFFFFu;
  /// How far ahead of a record its bytes are fetched.
  static constexpr std::size_t kAhead = 1024;
  /// In place of the number of an object: a record that no other field refers to.
  static constexpr std::uint64_t kUnshared = ~std::uint64_t{0};
  static constexpr std::size_t kNoEntry = static_cast<std::size_t>(-1);
  /// The position after the last field.
  static constexpr std::uint64_t kNoField = ~std::uint64_t{0};

  /// Where a record was found, for messages: in a field of the record `holder`, or as a root; and
  /// as which entry of a list. The name belongs to the reader.
  struct Place {
    std::uint32_t holder;
    std::string_view field;
    std::size_t root;
    std::size_t entry;
  };

  cls_ReadVisitor(cls_Load& load, std::uint32_t record, unsigned int depth, const Place& place);

  /// Starts at a record of the storage.
  void StartStored(std::uint32_t record) {
    const cls_Load::Storage& storage = m_load.m_storage;
    m_record = record;
    std::uint64_t number = 0;
    const unsigned char* at = storage.bytes + storage.offsets[record];
    // Objects are mostly read in the order of their records.
    __builtin_prefetch(at + kAhead);
    at = cls_StoredFields::NumberAt(at, number);
    cls_Load::Shape& shape = m_load.m_shapes[static_cast<std::size_t>(number)];
    m_shape = &shape;
    m_typeId = shape.typeId;
    m_collection = shape.collection;
    at = cls_StoredFields::NumberAt(at, number);
    if (number != 0) {
      std::uint64_t serial = 0;
      at = cls_StoredFields::NumberAt(at, serial);
      m_uid = cls_Uid(storage.prefixes[number - 1], serial);
    }
    m_stored = cls_StoredFields(shape.fields, at);
  }
  void StartRoot(std::size_t root);
  void StartField(const cls_ReadVisitor& parent, const cls_FieldHandle& handle);
  /// Starts at a record wherever it is, or at none. Refuses what is nested too deep.
  void Start(std::uint32_t record);
  /// Goes on with the fields of the reader, from the field that is next.
  void LeaveStorage() const;

  int FindInteger(const cls_FieldHandle& field, int defaultValue) const;
  double FindDouble(const cls_FieldHandle& field, double defaultValue) const;
  [[nodiscard]] bool FindBoolean(const cls_FieldHandle& field, bool defaultValue) const;
  cow_String FindString(const cls_FieldHandle& field, const cow_String& defaultValue) const;

  cow_String StoredText(std::uint32_t number) const {
    const cls_Load::NumberedText& recent = m_load.m_storedTexts[number % cls_Load::kRecentTexts];
    return recent.number == number ? recent.text : ReadStoredText(number);
  }
  cow_String ReadStoredText(std::uint32_t number) const;

  void CheckDerived(unsigned int typeId) const;
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
  std::uint32_t m_record = kNoRecord;
  unsigned int m_depth = 0;
  unsigned int m_typeId = 0;
  int m_collection = cls_NoCollection;
  cls_Uid m_uid;
  /// Of a record of the storage.
  cls_Load::Shape* m_shape = nullptr;
  Place m_foundAt;
  /// The fields as the storage has them, as long as they are read in write order.
  mutable cls_StoredFields m_stored;
  /// Otherwise, positions of the reader: of the first field, and of the field that is compared
  /// first.
  mutable std::uint64_t m_firstField = kNoField;
  mutable std::uint64_t m_expected = kNoField;
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
