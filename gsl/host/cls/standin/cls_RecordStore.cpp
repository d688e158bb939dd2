#include "cls_RecordStore.h"

#include "cls_RecordException.h"

#include <utility>

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_RecordStore";

/// The place of the next item of an array.
cls_RecordStore::Index NextIndex(std::size_t count) {
  if (count >= cls_RecordStore::kNone) {
    nex_Exception::Throw(cls_RecordException("The record store is full"), kSourceUnit, __LINE__);
  }
  return static_cast<cls_RecordStore::Index>(count);
}

template <class T>
std::size_t Held(const std::vector<T>& items) {
  return items.capacity() * sizeof(T);
}

} // namespace

const char* cls_RecordStore::Name(const Field& field) const {
  return field.name != kNone ? names[field.name].c_str() : "";
}

cls_RecordStore::UnsignedArray cls_RecordStore::Unsigneds(Index record) const {
  const Record& r = records[record];
  if (r.collection != cls_UnsignedList || r.array == kNone) return {nullptr, 0};
  const Array& array = arrays[r.array];
  return {unsigneds.data() + array.offset, array.rows};
}

cls_RecordStore::DoubleArray cls_RecordStore::Doubles(Index record) const {
  const Record& r = records[record];
  if (r.collection != cls_DoubleMatrix || r.array == kNone) return {nullptr, 0, 0};
  const Array& array = arrays[r.array];
  return {doubles.data() + array.offset, array.rows, array.columns};
}

void cls_RecordStore::Clear() {
  TakeBack(Mark{0, 0, 0, 0, 0, 0, 0});
}

std::size_t cls_RecordStore::MemoryUse() const {
  std::size_t bytes = Held(roots) + Held(records) + Held(fields) + Held(strings) + Held(arrays) +
                      Held(unsigneds) + Held(doubles);
  for (const cow_String& text : strings)
    bytes += text.Length();
  for (const std::string& name : names)
    bytes += name.capacity() + sizeof(std::string);
  return bytes;
}

cls_RecordStore::Index cls_RecordStore::InternName(const char* name) {
  const auto found = nameOf.find(name);
  if (found != nameOf.end()) return found->second;
  const Index index = NextIndex(names.size());
  names.emplace_back(name);
  nameOf.emplace(names.back(), index);
  return index;
}

cls_RecordStore::Index cls_RecordStore::AddRecord(unsigned int typeId, const cls_Uid& uid) {
  const Index index = NextIndex(records.size());
  records.push_back({typeId, cls_NoCollection, uid, kNone, kNone, kNone});
  return index;
}

cls_RecordStore::Field& cls_RecordStore::AddField(Index record, Index name, int index, Kind kind) {
  const Index place = NextIndex(fields.size());
  Field field = {};
  field.name = name;
  field.index = index;
  field.next = kNone;
  field.kind = kind;
  fields.push_back(field);
  Record& owner = records[record];
  if (owner.first == kNone) {
    owner.first = place;
  } else {
    fields[owner.last].next = place;
  }
  owner.last = place;
  return fields.back();
}

void cls_RecordStore::AddString(Field& field, const cow_String& text) {
  field.link = NextIndex(strings.size());
  strings.push_back(text);
}

void cls_RecordStore::SetUnsigneds(Index record, const unsigned int* values, std::size_t count) {
  const Index rows = NextIndex(count);
  const Index array = NextIndex(arrays.size());
  arrays.push_back({unsigneds.size(), rows, 1});
  unsigneds.insert(unsigneds.end(), values, values + count);
  records[record].array = array;
}

void cls_RecordStore::SetDoubles(Index record, const double* values, std::size_t rows,
                                 std::size_t columns) {
  const Index rowCount = NextIndex(rows);
  const Index columnCount = NextIndex(columns);
  const Index array = NextIndex(arrays.size());
  arrays.push_back({doubles.size(), rowCount, columnCount});
  doubles.insert(doubles.end(), values, values + rows * columns);
  records[record].array = array;
}

cls_RecordStore::Mark cls_RecordStore::Position() const {
  return {roots.size(),  records.size(),   fields.size(), strings.size(),
          arrays.size(), unsigneds.size(), doubles.size()};
}

void cls_RecordStore::TakeBack(const Mark& mark) {
  roots.resize(mark.roots);
  records.erase(records.begin() + static_cast<std::ptrdiff_t>(mark.records), records.end());
  fields.erase(fields.begin() + static_cast<std::ptrdiff_t>(mark.fields), fields.end());
  strings.resize(mark.strings);
  arrays.erase(arrays.begin() + static_cast<std::ptrdiff_t>(mark.arrays), arrays.end());
  unsigneds.resize(mark.unsigneds);
  doubles.resize(mark.doubles);
}
