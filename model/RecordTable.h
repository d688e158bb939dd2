#ifndef MODEL_RECORD_TABLE_H
#define MODEL_RECORD_TABLE_H

#include "gsl_RecordReader.h"
#include "gsl_RecordWriter.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace gsl_model {

using Number = std::uint32_t;
constexpr Number kNone = 0xFFFFFFFFu;

/// A name of fields, with the number that the writer gave to them.
struct FieldName {
  std::string name;
  std::int32_t number;
};

/// The elements of a record that is a list of numbers.
struct Elements {
  std::vector<std::uint32_t> unsigneds;
  std::vector<double> doubles;
  std::size_t rows = 0, columns = 0;
};

[[nodiscard]] constexpr bool HasElements(gsl_RecordCollection collection) {
  return collection == gsl_RecordCollection::Unsigneds ||
         collection == gsl_RecordCollection::Doubles;
}

/// Records in memory: what a transaction has taken, or what was read from a database.
///
/// A record has a higher number than the record that holds it. No depth of nesting costs stack.
class RecordTable final : public gsl_RecordReader, public gsl_RecordWriter {
public:
  struct StoredRoot {
    const std::string* name; ///< null for a root without a name
    Number record;
    /// The root that had the name before, or kNone.
    Number replaced;
    bool isRemoved;
    /// How many there were when the root was started.
    std::size_t fieldsBefore, textsBefore, elementsBefore, classesBefore;
  };
  struct Class {
    std::uint32_t typeId;
    std::string name;
  };
  struct Record {
    std::uint32_t typeId;
    gsl_RecordCollection collection;
    gsl_RecordIdentity identity;
    Number firstField, lastField;
    Number elements; ///< kNone for none
    bool isShared;
  };
  struct Field {
    Number next; ///< the next field of the record, or kNone
    Number name; ///< kNone for an entry of a list
    gsl_RecordKind kind;
    union {
      std::int32_t integer;
      double real = 0.0;
      bool boolean;
      std::uint32_t link; ///< a record, or the type id of a null
      Number text;
    };
  };

  RecordTable();
  ~RecordTable() override;
  RecordTable(const RecordTable&) = delete;
  RecordTable& operator=(const RecordTable&) = delete;

  std::size_t RootCount() const override;
  gsl_RecordIndex Root(std::size_t i) const override;
  std::string_view RootName(std::size_t i) const override;
  std::size_t FindRoot(std::string_view name) const override;
  std::string_view ClassName(std::uint32_t typeId) const override;
  std::uint32_t TypeId(gsl_RecordIndex record) const override;
  gsl_RecordIdentity Identity(gsl_RecordIndex record) const override;
  gsl_RecordCollection Collection(gsl_RecordIndex record) const override;
  Position FirstField(gsl_RecordIndex record) const override;
  Position ReadField(Position position, gsl_RecordField& field) const override;
  void ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const override;
  void ReadDoubles(gsl_RecordIndex record, std::vector<double>& values, std::size_t& rows,
                   std::size_t& columns) const override;

  gsl_RecordIndex AddRoot(std::uint32_t typeId, const gsl_RecordIdentity& identity) override;
  void NameRoot(std::string_view name) override;
  void NameClass(std::uint32_t typeId, std::string_view name) override;
  gsl_RecordIndex AddRecord(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool isShared,
                            std::uint32_t typeId, const gsl_RecordIdentity& identity) override;
  void AddInteger(gsl_RecordIndex owner, const gsl_RecordPlace& place, std::int32_t value) override;
  void AddDouble(gsl_RecordIndex owner, const gsl_RecordPlace& place, double value) override;
  void AddBoolean(gsl_RecordIndex owner, const gsl_RecordPlace& place, bool value) override;
  void AddString(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                 std::string_view value) override;
  void AddReference(gsl_RecordIndex owner, const gsl_RecordPlace& place,
                    gsl_RecordIndex target) override;
  void AddNull(gsl_RecordIndex owner, const gsl_RecordPlace& place, std::uint32_t typeId) override;
  void SetCollection(gsl_RecordIndex record, gsl_RecordCollection collection) override;
  void SetUnsigneds(gsl_RecordIndex record, const std::uint32_t* values,
                    std::size_t count) override;
  void SetDoubles(gsl_RecordIndex record, const double* values, std::size_t rows,
                  std::size_t columns) override;
  void Finish() override;
  void TakeBack(gsl_RecordIndex root) override;

  /// Whether a root may take the name of an earlier root, which then counts no longer.
  void AllowReplacing(bool isAllowed) { m_isReplacing = isAllowed; }
  /// Removes the root that has the name. Returns whether there was one.
  [[nodiscard]] bool RemoveRoot(std::string_view name);
  /// Whether the root was neither removed nor replaced.
  [[nodiscard]] bool Counts(std::size_t root) const;

  const std::vector<Class>& Classes() const { return m_classes; }
  const std::vector<Record>& Records() const { return m_records; }
  const std::vector<Field>& AllFields() const { return m_fields; }
  const std::deque<FieldName>& Names() const { return m_names; }
  const std::string& Text(Number text) const { return m_texts[text]; }
  const Elements& ElementsOf(const Record& record) const;

  // What is read from a database is added in the order in which a walk meets it.
  Number AppendRecord(const Record& record);
  void AppendField(Number record, const Field& field);
  void Relink(Number field, gsl_RecordKind kind, Number record);
  Number AppendText(std::string_view text);
  Number AppendElements(Elements elements);
  Number NumberOfName(std::string_view name, std::int32_t number);
  void AppendRoot(Number record, std::string_view name);

private:
  /// The record, after every record that it holds has ended.
  void Reopen(gsl_RecordIndex record);
  void Push(gsl_RecordIndex record, const gsl_RecordPlace& place, const Field& field);
  void ReleaseName(const StoredRoot& root);
  Number NameOf(gsl_RecordIndex owner, const gsl_RecordPlace& place);

  std::vector<StoredRoot> m_roots;
  /// Owns the names.
  std::unordered_map<std::string, Number> m_rootNames;
  std::vector<Class> m_classes;
  std::unordered_map<std::uint32_t, std::size_t> m_classOfType;
  std::vector<Record> m_records;
  std::vector<Field> m_fields;
  std::deque<FieldName> m_names;
  /// By name: the name that followed it last, which is tried first.
  std::vector<Number> m_nameAfter;
  Number m_lastName = kNone;
  std::unordered_map<std::string, Number> m_nameNumbers;
  std::deque<std::string> m_texts;
  std::deque<Elements> m_elements;
  /// The records that have not ended, each in a field of the one before.
  std::vector<gsl_RecordIndex> m_open;
  bool m_isReplacing = false;
};

} // namespace gsl_model

#endif
