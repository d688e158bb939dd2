#ifndef CLS_WRITE_VISITOR_H
#define CLS_WRITE_VISITOR_H

#include "cls_AttributeType.h"
#include "cls_FieldHandle.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "mem_Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>

class cls_ListWriter;
class cls_WriteRequestListObj;
class gsl_RecordWriter;

/// One save to a writer of records. It remembers, and keeps alive, the shared objects that it has
/// written, so that it stores each object once.
class GSL_HOST_API cls_Save {
public:
  /// The writer must outlive the save.
  explicit cls_Save(gsl_RecordWriter& writer);
  ~cls_Save();
  cls_Save(const cls_Save&) = delete;
  cls_Save& operator=(const cls_Save&) = delete;

private:
  friend class cls_ListWriter;
  friend class cls_WriteVisitor;

  struct Key {
    const void* object;
    unsigned int typeId;
    cls_Uid uid;

    [[nodiscard]] bool operator==(const Key& o) const {
      return object == o.object && typeId == o.typeId && uid == o.uid;
    }
  };
  struct HashOfKey {
    std::size_t operator()(const Key& key) const {
      return std::hash<const void*>()(key.object) ^ std::hash<cls_Uid>()(key.uid);
    }
  };
  struct Written {
    std::uint32_t record;
    std::shared_ptr<const void> keptAlive;
  };

  static constexpr std::size_t kRecentClasses = 64;

  /// Gives the writer the name of a class that the registrar knows.
  void NameClass(unsigned int typeId) {
    if (m_namedClasses[PlaceOfRecent(typeId)] != typeId) FindClassName(typeId);
  }
  /// Classes of two modules differ in the upper bits of their type ids.
  static std::size_t PlaceOfRecent(unsigned int typeId) {
    return (typeId ^ typeId >> 12) % kRecentClasses;
  }
  void FindClassName(unsigned int typeId);
  void TakeBack(std::uint32_t root) noexcept;
  /// Ends a root that its visitor could not end. Takes it back where that throws again.
  void EndOpenRoot();

  static constexpr std::uint32_t kNoRecord = 0xFFFFFFFFu;

  gsl_RecordWriter& m_writer;
  /// The root that its visitor could not end.
  std::uint32_t m_openRoot = kNoRecord;
  std::unordered_map<Key, Written, HashOfKey> m_objects;
  std::array<unsigned int, kRecentClasses> m_namedClasses = {};
};

/// Writes one record of a save: the record is started, then its fields follow in order.
///
/// Lifetime  a child is used while its parent lives, the root while its save lives.
/// Threads   a save and its visitors belong to one thread at a time, also where they are const.
/// Order     a field of a record ends the records that its earlier fields hold, and a root ends the
///           root before it: what has ended takes no further fields.
/// Errors    cls_RecordException for a field before StartWrite, a second record in one place, and
///           nesting deeper than kMostNesting; what the writer throws. When an exception destroys a
///           root visitor, the records of its latest object are taken back. The destructor throws
///           nothing: a root that cannot end stays open. The next root of the save ends it, or
///           takes it back and throws what the writer throws; a store that is read before tries the
///           same, and keeps the root open where it throws.
class GSL_HOST_API cls_WriteVisitor {
public:
  /// The deepest nesting of records that is written.
  static constexpr unsigned int kMostNesting = 1000;

  /// Writes roots: every StartWrite starts a further one. The last root ends with the visitor.
  explicit cls_WriteVisitor(cls_Save& save);
  /// Writes a root under a name, which no other root has and which is not empty.
  cls_WriteVisitor(cls_Save& save, const cow_String& rootName);
  /// Writes a record that belongs to a field of the parent's record.
  cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field);
  /// Writes the object that a holder shares: the fields of several records may refer to it.
  /// Requires that `Holder` has Get(), and that the object lives and does not change as long as a
  /// copy of the holder exists.
  template <class Holder>
  cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                   const Holder& shared)
      : cls_WriteVisitor(parent, field, shared.Get(), &shared, &CopyOf<Holder>) {}
  /// Writes the entry that the request asked for.
  explicit cls_WriteVisitor(const cls_WriteRequestListObj& request);

  ~cls_WriteVisitor();
  cls_WriteVisitor(const cls_WriteVisitor&) = delete;
  cls_WriteVisitor& operator=(const cls_WriteVisitor&) = delete;

  /// Starts the record. Returns 0, and the caller writes nothing more, when this save has written
  /// the shared object before: then the field refers to it. A record that belongs to a field is
  /// never declined, whatever its uid is.
  int StartWrite(unsigned int typeId, const cls_Uid& uid) const;

  void WriteInteger(const cls_FieldHandle& field, int value) const;
  void WriteDouble(const cls_FieldHandle& field, double value) const;
  void WriteBoolean(const cls_FieldHandle& field, bool value) const;
  void WriteString(const cls_FieldHandle& field, const cow_String& value) const;
  /// Writes an explicit empty object of that type.
  void WriteNullObject(const cls_FieldHandle& field, unsigned int typeId) const;

  /// Makes the started record a collection. A record is one collection at most.
  void CheckCollectionType(int type) const;
  /// Writes the elements of a cls_UnsignedList, once.
  void WriteUnsigneds(const unsigned int* values, std::size_t count) const;
  /// Writes the entries of a cls_DoubleMatrix row by row, once.
  void WriteDoubles(const double* values, std::size_t rows, std::size_t columns) const;
  /// Returns a new writer for the entries of a cls_ObjectList; the caller owns it.
  [[nodiscard]] cls_ListWriter* GetListWriter() const;

private:
  friend class cls_ListWriter;

  static constexpr std::uint32_t kNoRecord = cls_Save::kNoRecord;

  using CopyHolder = std::shared_ptr<const void> (*)(const void*);

  template <class Holder>
  static std::shared_ptr<const void> CopyOf(const void* shared) {
    return std::make_shared<Holder>(*static_cast<const Holder*>(shared));
  }

  cls_WriteVisitor(cls_Save& save, std::uint32_t parentRecord, const cls_FieldHandle& place,
                   unsigned int depth);
  cls_WriteVisitor(const cls_WriteVisitor& parent, const cls_FieldHandle& field,
                   const void* sharedObject, const void* sharedHolder, CopyHolder copy);

  std::uint32_t Started() const;
  void StartRoot(unsigned int typeId, const cls_Uid& uid) const;
  int StartShared(unsigned int typeId, const cls_Uid& uid) const;
  void StartChild(unsigned int typeId, const cls_Uid& uid, bool isShared) const;
  void StartElements(int type) const;

  cls_Save& m_save;
  /// Empty for a root without a name, and for a record that is not a root.
  cow_String m_rootName;
  /// The record that holds the place of this visitor's record; kNoRecord for a root.
  std::uint32_t m_parentRecord;
  /// An entry of a list has no name.
  cls_FieldHandle m_place;
  unsigned int m_depth;
  const void* m_object;
  const void* m_holder;
  CopyHolder m_copyHolder;
  mutable std::uint32_t m_record;
  mutable bool m_declined;
  mutable bool m_hasElements;
  mutable int m_collection;
  /// Of a root, whose destructor compares.
  int m_exceptionsBefore;
};

#endif
