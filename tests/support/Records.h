#ifndef TEST_SUPPORT_RECORDS_H
#define TEST_SUPPORT_RECORDS_H

#include "cls_ListWriter.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "gsl_RecordStore.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

/// Returns a store whose roots are the records of the objects.
template <class... C>
gsl_RecordStore Written(const C&... objects) {
  gsl_RecordStore store;
  cls_Save save(store);
  (objects.DBWrite(cls_WriteVisitor(save)), ...);
  return store;
}

/// Returns the root as an object of class C.
template <class C>
C ReadBack(const gsl_RecordStore& store, std::size_t root = 0) {
  cls_Load load(store);
  return C(cls_ReadVisitor(load, root));
}

inline cls_Uid UidOf(const gsl_RecordReader& store, gsl_RecordIndex record) {
  return cls_Uid(store.Identity(record).prefix, store.Identity(record).serial);
}

/// Returns a store with one record of that type, whose fields `write` writes.
inline gsl_RecordStore Recorded(unsigned int typeId, const cls_Uid& uid,
                                const std::function<void(const cls_WriteVisitor&)>& write) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor visitor(save);
  visitor.StartWrite(typeId, uid);
  write(visitor);
  return store;
}

namespace record_text {

using Kind = gsl_RecordKind;

inline std::string Hex(unsigned int typeId) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", typeId);
  return text;
}

inline void Append(const gsl_RecordReader& store, gsl_RecordIndex record, int indent,
                   std::ostream& out);

inline void Append(const gsl_RecordReader& store, const gsl_RecordField& field, int indent,
                   std::ostream& out) {
  out << std::string(static_cast<std::size_t>(indent), ' ');
  if (!field.name.empty()) out << field.index << ' ' << field.name << ' ';
  switch (field.kind) {
  case Kind::Integer:
    out << "integer " << field.integer << '\n';
    break;
  case Kind::Double:
    out << "double " << std::hexfloat << field.real << std::defaultfloat << '\n';
    break;
  case Kind::Boolean:
    out << "boolean " << (field.boolean ? "true" : "false") << '\n';
    break;
  case Kind::String:
    out << "string " << field.text << '\n';
    break;
  case Kind::Null:
    out << "null " << Hex(field.link) << '\n';
    break;
  case Kind::Reference:
    out << "reference " << Hex(store.TypeId(field.link)) << '\n';
    break;
  case Kind::Record:
  case Kind::Object:
    out << (field.kind == Kind::Object ? "object " : "record ");
    Append(store, field.link, indent + 2, out);
    break;
  }
}

inline void Append(const gsl_RecordReader& store, gsl_RecordIndex record, int indent,
                   std::ostream& out) {
  out << Hex(store.TypeId(record));
  if (store.Collection(record) != gsl_RecordCollection::None) {
    out << " of " << static_cast<int>(store.Collection(record));
  }
  std::vector<std::uint32_t> unsigneds;
  store.ReadUnsigneds(record, unsigneds);
  for (const std::uint32_t value : unsigneds)
    out << ' ' << value;
  std::vector<double> doubles;
  std::size_t rows = 0;
  std::size_t columns = 0;
  store.ReadDoubles(record, doubles, rows, columns);
  for (const double value : doubles)
    out << ' ' << value;
  out << '\n';
  for (const gsl_RecordField& field : store.Fields(record))
    Append(store, field, indent, out);
}

} // namespace record_text

/// Returns the records as lines of text: the type id, then "index name kind value" for each field.
/// Nested records are indented, and identities are left out.
inline std::string TextOf(const gsl_RecordReader& store) {
  std::ostringstream out;
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    record_text::Append(store, store.Root(i), 2, out);
  return out.str();
}

/// Writes another value in place of the field at `path` ("_point/_x"), or nothing.
struct FieldEdit {
  std::string path;
  std::function<void(const cls_WriteVisitor&, const cls_FieldHandle&)> write;
};

namespace record_edit {

using Kind = gsl_RecordKind;

inline void Copy(const gsl_RecordStore& from, gsl_RecordIndex record, const std::string& prefix,
                 const FieldEdit& edit, const cls_WriteVisitor& to);

inline void CopyEntries(const gsl_RecordStore& from, gsl_RecordIndex record,
                        const std::string& prefix, const FieldEdit& edit,
                        const cls_WriteVisitor& to) {
  const std::unique_ptr<cls_ListWriter> list(to.GetListWriter());
  for (const gsl_RecordField& entry : from.Fields(record)) {
    if (entry.kind == Kind::Null) {
      list->WriteNull(entry.link);
    } else {
      const cls_WriteRequestListObj request(*list);
      Copy(from, entry.link, prefix, edit, cls_WriteVisitor(request));
    }
  }
}

inline void Copy(const gsl_RecordStore& from, gsl_RecordIndex record, const std::string& prefix,
                 const FieldEdit& edit, const cls_WriteVisitor& to) {
  to.StartWrite(from.TypeId(record), UidOf(from, record));
  const gsl_RecordCollection collection = from.Collection(record);
  if (collection == gsl_RecordCollection::Unsigneds) {
    const auto array = from.Unsigneds(record);
    to.WriteUnsigneds(array.values, array.count);
  } else if (collection == gsl_RecordCollection::Doubles) {
    const auto array = from.Doubles(record);
    to.WriteDoubles(array.values, array.rows, array.columns);
  } else if (collection == gsl_RecordCollection::Objects) {
    CopyEntries(from, record, prefix, edit, to);
    return;
  }
  for (const gsl_RecordField& field : from.Fields(record)) {
    const std::string name(field.name);
    const std::string path = prefix + name;
    const cls_FieldHandle handle(field.index, name.c_str());
    if (path == edit.path) {
      edit.write(to, handle);
      continue;
    }
    switch (field.kind) {
    case Kind::Integer:
      to.WriteInteger(handle, field.integer);
      break;
    case Kind::Double:
      to.WriteDouble(handle, field.real);
      break;
    case Kind::Boolean:
      to.WriteBoolean(handle, field.boolean);
      break;
    case Kind::String:
      to.WriteString(handle, cow_String(field.text.data(), field.text.size()));
      break;
    case Kind::Null:
      to.WriteNullObject(handle, field.link);
      break;
    case Kind::Record:
    case Kind::Object:
    case Kind::Reference:
      Copy(from, field.link, path + "/", edit, cls_WriteVisitor(to, handle));
      break;
    }
  }
}

} // namespace record_edit

/// Returns a store with the first root of `from`, changed by the edit. Shared objects become
/// separate copies.
inline gsl_RecordStore Edited(const gsl_RecordStore& from, const FieldEdit& edit) {
  gsl_RecordStore store;
  cls_Save save(store);
  record_edit::Copy(from, from.Root(0), "", edit, cls_WriteVisitor(save));
  return store;
}

inline gsl_RecordStore Without(const gsl_RecordStore& from, const std::string& path) {
  return Edited(from, {path, [](const cls_WriteVisitor&, const cls_FieldHandle&) {}});
}

/// Returns whether the bits are the same, so that NaN equals itself and 0.0 differs from -0.0.
inline bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

namespace record_comparison {

inline bool SameField(const gsl_RecordField& a, const gsl_RecordField& b) {
  if (a.kind != b.kind || a.index != b.index || a.name != b.name) return false;
  switch (a.kind) {
  case gsl_RecordKind::String:
    return a.text == b.text;
  case gsl_RecordKind::Double:
    return SameBits(a.real, b.real);
  case gsl_RecordKind::Boolean:
    return a.boolean == b.boolean;
  default:
    return a.link == b.link;
  }
}

inline bool SameElements(const gsl_RecordStore& a, const gsl_RecordStore& b,
                         gsl_RecordIndex record) {
  const auto u = a.Unsigneds(record);
  const auto v = b.Unsigneds(record);
  const auto d = a.Doubles(record);
  const auto e = b.Doubles(record);
  const std::size_t count = d.rows * d.columns;
  return u.count == v.count && std::equal(u.values, u.values + u.count, v.values) &&
         d.rows == e.rows && d.columns == e.columns &&
         (count == 0 || std::memcmp(d.values, e.values, count * sizeof(double)) == 0);
}

inline bool SameFields(const gsl_RecordStore& a, const gsl_RecordStore& b, gsl_RecordIndex record) {
  gsl_RecordReader::Position i = a.FirstField(record);
  gsl_RecordReader::Position j = b.FirstField(record);
  gsl_RecordField f;
  gsl_RecordField g;
  while (i != gsl_RecordReader::kEnd && j != gsl_RecordReader::kEnd) {
    i = a.ReadField(i, f);
    j = b.ReadField(j, g);
    if (!SameField(f, g)) return false;
  }
  return i == j;
}

} // namespace record_comparison

/// Returns whether the records are the same in the same order: types, identities, fields, values
/// bit for bit, and shared objects.
inline bool SameRecords(const gsl_RecordStore& a, const gsl_RecordStore& b) {
  using namespace record_comparison;
  if (a.RecordCount() != b.RecordCount() || a.RootCount() != b.RootCount()) return false;
  for (gsl_RecordIndex i = 0; i < a.RecordCount(); ++i) {
    const bool same = a.TypeId(i) == b.TypeId(i) && a.Identity(i) == b.Identity(i) &&
                      a.Collection(i) == b.Collection(i) && SameElements(a, b, i) &&
                      SameFields(a, b, i);
    if (!same) return false;
  }
  return true;
}

#endif
