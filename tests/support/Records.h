#ifndef TEST_SUPPORT_RECORDS_H
#define TEST_SUPPORT_RECORDS_H

#include "cls_ListWriter.h"
#include "cls_ReadVisitor.h"
#include "cls_RecordStore.h"
#include "cls_WriteVisitor.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

/// A store whose roots are the records of the objects.
template <class... C>
cls_RecordStore Written(const C&... objects) {
  cls_RecordStore store;
  cls_Save save(store);
  (objects.DBWrite(cls_WriteVisitor(save)), ...);
  return store;
}

/// The root as an object of class C.
template <class C>
C ReadBack(const cls_RecordStore& store, std::size_t root = 0) {
  cls_Load load(store);
  return C(cls_ReadVisitor(load, root));
}

/// A store with one record of that type, whose fields `write` writes.
inline cls_RecordStore Recorded(unsigned int typeId, const cls_Uid& uid,
                                const std::function<void(const cls_WriteVisitor&)>& write) {
  cls_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor visitor(save);
  visitor.StartWrite(typeId, uid);
  write(visitor);
  return store;
}

namespace record_text {

using Kind = cls_RecordStore::Kind;

inline std::string Hex(unsigned int typeId) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", typeId);
  return text;
}

inline void Append(const cls_RecordStore& store, cls_RecordStore::Index record, int indent,
                   std::ostream& out);

inline void Append(const cls_RecordStore& store, const cls_RecordStore::Field& field, int indent,
                   std::ostream& out) {
  out << std::string(static_cast<std::size_t>(indent), ' ');
  const std::string name = store.Name(field);
  if (!name.empty()) out << field.index << ' ' << name << ' ';
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
    out << "string " << store.String(field).CStr() << '\n';
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

inline void Append(const cls_RecordStore& store, cls_RecordStore::Index record, int indent,
                   std::ostream& out) {
  out << Hex(store.TypeId(record));
  if (store.Collection(record) != cls_NoCollection) out << " of " << store.Collection(record);
  const auto unsigneds = store.Unsigneds(record);
  for (std::size_t i = 0; i < unsigneds.count; ++i)
    out << ' ' << unsigneds.values[i];
  const auto doubles = store.Doubles(record);
  for (std::size_t i = 0; i < doubles.rows * doubles.columns; ++i)
    out << ' ' << doubles.values[i];
  out << '\n';
  for (auto* field = store.First(record); field != nullptr; field = store.Next(*field))
    Append(store, *field, indent, out);
}

} // namespace record_text

/// The records as lines of text: type id, then "index name kind value" for each field, nested
/// records indented. Identities are left out.
inline std::string TextOf(const cls_RecordStore& store) {
  std::ostringstream out;
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    record_text::Append(store, store.Root(i), 2, out);
  return out.str();
}

/// Writes something else in place of the field at `path` ("_point/_x"), or nothing.
struct FieldEdit {
  std::string path;
  std::function<void(const cls_WriteVisitor&, const cls_FieldHandle&)> write;
};

namespace record_edit {

using Kind = cls_RecordStore::Kind;

inline void Copy(const cls_RecordStore& from, cls_RecordStore::Index record,
                 const std::string& prefix, const FieldEdit& edit, const cls_WriteVisitor& to);

inline void CopyEntries(const cls_RecordStore& from, cls_RecordStore::Index record,
                        const std::string& prefix, const FieldEdit& edit,
                        const cls_WriteVisitor& to) {
  const std::unique_ptr<cls_ListWriter> list(to.GetListWriter());
  for (auto* entry = from.First(record); entry != nullptr; entry = from.Next(*entry)) {
    if (entry->kind == Kind::Null) {
      list->WriteNull(entry->link);
    } else {
      const cls_WriteRequestListObj request(*list);
      Copy(from, entry->link, prefix, edit, cls_WriteVisitor(request));
    }
  }
}

inline void Copy(const cls_RecordStore& from, cls_RecordStore::Index record,
                 const std::string& prefix, const FieldEdit& edit, const cls_WriteVisitor& to) {
  to.StartWrite(from.TypeId(record), from.Uid(record));
  const cls_CollectionType collection = from.Collection(record);
  if (collection == cls_UnsignedList) {
    const auto array = from.Unsigneds(record);
    to.WriteUnsigneds(array.values, array.count);
  } else if (collection == cls_DoubleMatrix) {
    const auto array = from.Doubles(record);
    to.WriteDoubles(array.values, array.rows, array.columns);
  } else if (collection == cls_ObjectList) {
    CopyEntries(from, record, prefix, edit, to);
    return;
  }
  for (auto* field = from.First(record); field != nullptr; field = from.Next(*field)) {
    const std::string path = prefix + from.Name(*field);
    const cls_FieldHandle handle(field->index, from.Name(*field));
    if (path == edit.path) {
      edit.write(to, handle);
      continue;
    }
    switch (field->kind) {
    case Kind::Integer:
      to.WriteInteger(handle, field->integer);
      break;
    case Kind::Double:
      to.WriteDouble(handle, field->real);
      break;
    case Kind::Boolean:
      to.WriteBoolean(handle, field->boolean);
      break;
    case Kind::String:
      to.WriteString(handle, from.String(*field));
      break;
    case Kind::Null:
      to.WriteNullObject(handle, field->link);
      break;
    case Kind::Record:
    case Kind::Object:
    case Kind::Reference:
      Copy(from, field->link, path + "/", edit, cls_WriteVisitor(to, handle));
      break;
    }
  }
}

} // namespace record_edit

/// A store with the first root of `from`, changed by the edit. Shared objects are copied apart.
inline cls_RecordStore Edited(const cls_RecordStore& from, const FieldEdit& edit) {
  cls_RecordStore store;
  cls_Save save(store);
  record_edit::Copy(from, from.Root(0), "", edit, cls_WriteVisitor(save));
  return store;
}

inline cls_RecordStore Without(const cls_RecordStore& from, const std::string& path) {
  return Edited(from, {path, [](const cls_WriteVisitor&, const cls_FieldHandle&) {}});
}

/// The same records in the same order: types, identities, fields, values bit for bit, and which
/// objects are shared.
inline bool SameRecords(const cls_RecordStore& a, const cls_RecordStore& b) {
  using Kind = cls_RecordStore::Kind;
  if (a.RecordCount() != b.RecordCount() || a.RootCount() != b.RootCount()) return false;
  for (cls_RecordStore::Index i = 0; i < a.RecordCount(); ++i) {
    const auto u = a.Unsigneds(i);
    const auto v = b.Unsigneds(i);
    const auto d = a.Doubles(i);
    const auto e = b.Doubles(i);
    const bool same = a.TypeId(i) == b.TypeId(i) && a.Uid(i) == b.Uid(i) &&
                      a.Collection(i) == b.Collection(i) && u.count == v.count &&
                      d.rows == e.rows && d.columns == e.columns &&
                      std::equal(u.values, u.values + u.count, v.values) &&
                      (d.rows * d.columns == 0 ||
                       std::memcmp(d.values, e.values, d.rows * d.columns * sizeof(double)) == 0);
    if (!same) return false;
    auto* f = a.First(i);
    auto* g = b.First(i);
    for (; f != nullptr && g != nullptr; f = a.Next(*f), g = b.Next(*g)) {
      if (f->kind != g->kind || f->index != g->index) return false;
      if (std::strcmp(a.Name(*f), b.Name(*g)) != 0) return false;
      const bool sameValue = f->kind == Kind::String ? a.String(*f) == b.String(*g)
                             : f->kind == Kind::Double
                                 ? std::memcmp(&f->real, &g->real, sizeof f->real) == 0
                             : f->kind == Kind::Boolean ? f->boolean == g->boolean
                                                        : f->link == g->link;
      if (!sameValue) return false;
    }
    if (f != nullptr || g != nullptr) return false;
  }
  return true;
}

/// The same bits, so that NaN equals itself and 0.0 differs from -0.0.
inline bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

#endif
