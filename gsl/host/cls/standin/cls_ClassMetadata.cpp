#include "cls_ClassMetadata.h"

#include <utility>

cls_ClassMetadata::cls_ClassMetadata(std::unique_ptr<cls_TypeAdapterBase> typeAdapter,
                                     int classFlags)
    : m_adapter(std::move(typeAdapter)), m_dtor(nullptr), m_flags(classFlags) {}

cls_ClassMetadata::~cls_ClassMetadata() = default;

cls_ClassMetadata& cls_ClassMetadata::AddDtor(Destructor destroy) {
  m_dtor = destroy;
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddAttribute(const char* name, cls_AttributeType type,
                                                   unsigned int argument,
                                                   cls_CollectionType collection) {
  m_attributes.push_back({name, type, argument, collection});
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddBase(unsigned int typeId, Conversion convert) {
  m_bases.push_back({typeId, convert});
  return *this;
}
