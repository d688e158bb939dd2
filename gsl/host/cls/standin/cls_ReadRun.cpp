#include "cls_ReadRun.h"

#include <string_view>

namespace {

/// How the value of an attribute is stored.
cls_StoredFields::Kind StoredKindOf(cls_AttributeType type) {
  switch (type) {
  case cls_IntegerAttribute:
    return cls_StoredFields::Integer;
  case cls_DoubleAttribute:
    return cls_StoredFields::Double;
  case cls_BooleanAttribute:
    return cls_StoredFields::Boolean;
  case cls_EnumerationAttribute:
    return cls_StoredFields::Text;
  case cls_ObjectAttribute:
    return cls_StoredFields::Record;
  }
  return cls_StoredFields::None;
}

} // namespace

bool cls_ReadRun::Compare(cls_Load::Shape& shape, const Fields& fields) {
  // The fields of a shape end in one that is of no kind.
  const cls_StoredFields::Slot* slot = shape.fields;
  for (std::size_t i = 0; i < fields.count; ++i, ++slot) {
    const Field& field = fields.first[i];
    if (slot->kind == cls_StoredFields::None || slot->kind != StoredKindOf(field.type))
      return false;
    if (std::string_view(slot->name, slot->nameLength) != field.name) return false;
  }
  shape.run = &fields;
  return true;
}

cow_String cls_ReadRun::ReadText(cls_Load& load, std::uint32_t number) {
  return load.ReadStoredText(number);
}

const unsigned char* cls_ReadRun::ReadUnsigneds(const cls_Load& load, unsigned int depth,
                                                const unsigned char* field,
                                                cls_xp1DArrayListUint& list) {
  const cls_Load::Storage& storage = load.m_storage;
  std::uint64_t number = 0;
  const unsigned char* const after = cls_StoredFields::NumberAt(field, number);
  const unsigned char* at = storage.bytes + storage.offsets[number];
  at = cls_StoredFields::NumberAt(at, number);
  const cls_Load::Shape& shape = load.m_shapes[static_cast<std::size_t>(number)];
  const bool hasElementsOnly = shape.fields->kind == cls_StoredFields::None;
  if (shape.collection != cls_UnsignedList || !hasElementsOnly) return nullptr;
  if (depth >= cls_ReadVisitor::kMostNesting) return nullptr;
  cls_Uid uid;
  at = cls_StoredFields::NumberAt(at, number);
  if (number != 0) {
    std::uint64_t serial = 0;
    at = cls_StoredFields::NumberAt(at, serial);
    uid = cls_Uid(storage.prefixes[number - 1], serial);
  }
  at = cls_StoredFields::NumberAt(at, number);
  list.m_elements.resize(static_cast<std::size_t>(number));
  for (unsigned int& element : list.m_elements) {
    at = cls_StoredFields::NumberAt(at, number);
    element = static_cast<unsigned int>(number);
  }
  list.m_uid = uid;
  return after;
}
