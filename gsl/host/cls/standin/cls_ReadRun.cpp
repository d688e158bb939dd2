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

cow_String cls_ReadRun::ReadText(std::uint32_t number) const {
  return m_load.ReadStoredText(number);
}
