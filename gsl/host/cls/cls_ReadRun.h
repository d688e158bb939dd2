#ifndef CLS_READ_RUN_H
#define CLS_READ_RUN_H

#include "cls_AttributeType.h"
#include "cls_ReadVisitor.h"
#include "cls_xp1DArrayListUint.h"
#include "mem_Export.h"

#include <cstddef>
#include <cstdint>

/// Takes the fields of a class from a record that begins with them, one after the other. Names and
/// kinds were compared once for all records of one shape, so that a field takes a few instructions.
/// A host may leave this header out: then each field is read through its visitor.
///
/// Order    each field of the list is taken once, in the order of the list.
/// Threads  those of the visitor.
/// Errors   none of its own; what the functions throw that it calls.
class GSL_HOST_API cls_ReadRun {
public:
  /// What a field of the record must be for a run.
  struct Field {
    const char* name;       ///< the name it is stored under
    cls_AttributeType type; ///< the kind of value
  };
  /// The fields of a class in write order. A load keeps which shapes begin with them, so the list
  /// lives as long as each load that reads the class.
  struct Fields {
    const Field* first; ///< the first of `count` in a row
    std::size_t count;  ///< how many there are
  };

  /// Starts at the first field of a visitor. The visitor goes on after the fields that were taken
  /// when the run is destroyed.
  cls_ReadRun(const cls_ReadVisitor& visitor, const Fields& fields)
      : m_load(visitor.m_load), m_visitor(&visitor), m_depth(visitor.m_depth),
        m_at(visitor.m_stored.At()),
        m_fits(visitor.m_stored.IsAtFirst() && BeginsWith(*visitor.m_shape, fields)) {}
  /// Starts at the first field of the record that the next field of `owner` holds. A record of a
  /// derived class does not fit.
  cls_ReadRun(const cls_ReadRun& owner, unsigned int typeId, const Fields& fields)
      : m_load(owner.m_load), m_depth(owner.m_depth + 1), m_at(owner.m_at) {
    const cls_Load::Storage& storage = m_load.m_storage;
    std::uint64_t number = 0;
    m_after = cls_StoredFields::NumberAt(m_at, number);
    m_at = cls_StoredFields::NumberAt(storage.bytes + storage.offsets[number], number);
    cls_Load::Shape& shape = m_load.m_shapes[static_cast<std::size_t>(number)];
    m_fits = shape.typeId == typeId && m_depth <= cls_ReadVisitor::kMostNesting &&
             BeginsWith(shape, fields);
    m_at = cls_StoredFields::NumberAt(m_at, number);
    if (number == 0) return;
    std::uint64_t serial = 0;
    m_at = cls_StoredFields::NumberAt(m_at, serial);
    m_uid = cls_Uid(storage.prefixes[number - 1], serial);
  }
  ~cls_ReadRun() {
    if (m_visitor != nullptr && m_fits) m_visitor->m_stored.MoveTo(m_taken, m_at);
  }
  cls_ReadRun(const cls_ReadRun&) = delete;
  cls_ReadRun& operator=(const cls_ReadRun&) = delete;

  /// Returns whether the record begins with the fields, of which nothing may be taken otherwise.
  [[nodiscard]] bool Fits() const { return m_fits; }
  /// Returns the identity of a record that a field holds.
  cls_Uid GetUid() const { return m_uid; }

  /// Takes the next field, an integer.
  int TakeInteger() {
    std::uint64_t number = 0;
    m_at = m_load.m_storage.NumberAt(m_at, number);
    ++m_taken;
    return cls_StoredFields::IntegerOf(number);
  }
  /// Takes the next field, a number of 64 bits.
  double TakeDouble() {
    const double value = cls_StoredFields::DoubleAt(m_at);
    m_at += sizeof value;
    ++m_taken;
    return value;
  }
  /// Takes the next field, which is true or false.
  [[nodiscard]] bool TakeBoolean() {
    ++m_taken;
    return *m_at++ != 0;
  }
  /// Takes a text that names a value, and returns what `valueOf` makes of it. Values that were
  /// found are kept under `names`, an address that no other set of names has.
  template <class ValueOf>
  int TakeNamed(const void* names, const ValueOf& valueOf) {
    const auto number = static_cast<std::uint32_t>(TakeNumber());
    cls_Load::NumberedText& recent = m_load.m_storedTexts[number % cls_Load::kRecentTexts];
    if (recent.number == number && recent.names == names) return recent.value;
    const cow_String text = recent.number == number ? recent.text : ReadText(m_load, number);
    const int value = valueOf(text);
    // A long text is not kept.
    if (recent.number == number) {
      recent.names = names;
      recent.value = value;
    }
    return value;
  }
  /// Takes a field that holds a list of unsigned integers, with the identity of the list. Returns
  /// false, and takes nothing, where the run does not read such a record itself.
  [[nodiscard]] bool TakeUnsigneds(cls_xp1DArrayListUint& list) {
    const unsigned char* const after = ReadUnsigneds(m_load, m_depth, m_at, list);
    if (after == nullptr) return false;
    m_at = after;
    ++m_taken;
    return true;
  }
  /// Takes a field that holds a record: calls `read` with the visitor of this run, whose next field
  /// it is. Requires that the run was started with a visitor.
  template <class Read>
  void TakeObject(const Read& read) {
    m_visitor->m_stored.MoveTo(m_taken, m_at);
    TakeNumber();
    read(*m_visitor);
  }
  /// Goes on after the next field, which holds the record that `part` was started for.
  void SkipObject(const cls_ReadRun& part) {
    m_at = part.m_after;
    ++m_taken;
  }

private:
  /// Returns whether the records of a shape begin with the fields.
  [[nodiscard]] static bool BeginsWith(cls_Load::Shape& shape, const Fields& fields) {
    return shape.run == &fields || Compare(shape, fields);
  }
  [[nodiscard]] static bool Compare(cls_Load::Shape& shape, const Fields& fields);
  // Nothing out of line gets the address of a run, which stays in registers.
  static cow_String ReadText(cls_Load& load, std::uint32_t number);
  /// Reads the list that the field there holds, in a record at that depth. Returns where the field
  /// ends, or null where the record is not such a list.
  static const unsigned char* ReadUnsigneds(const cls_Load& load, unsigned int depth,
                                            const unsigned char* field,
                                            cls_xp1DArrayListUint& list);
  std::uint64_t TakeNumber() {
    std::uint64_t number = 0;
    m_at = cls_StoredFields::NumberAt(m_at, number);
    ++m_taken;
    return number;
  }

  cls_Load& m_load;
  const cls_ReadVisitor* m_visitor = nullptr;
  unsigned int m_depth;
  std::size_t m_taken = 0;
  const unsigned char* m_at;
  /// Where the field ends that holds the record, in the record of the owner.
  const unsigned char* m_after = nullptr;
  bool m_fits = false;
  cls_Uid m_uid;
};

#endif
