#include "cls_ClassMetadata.h"

#include <utility>

cls_ClassMetadata::cls_ClassMetadata(std::unique_ptr<cls_TypeAdapterBase> typeAdapter,
                                     int classFlags)
    : adapter(std::move(typeAdapter)), dtor(nullptr), flags(classFlags) {}

cls_ClassMetadata::~cls_ClassMetadata() = default;

cls_ClassMetadata& cls_ClassMetadata::AddDtor(Destructor destroy) {
  dtor = destroy;
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddAttribute(const char* name, cls_AttributeType type,
                                                   unsigned int argument,
                                                   cls_CollectionType collection) {
  attributes.push_back({name, type, argument, collection});
  return *this;
}

cls_ClassMetadata& cls_ClassMetadata::AddBase(unsigned int typeId, Conversion convert) {
  bases.push_back({typeId, convert});
  return *this;
}
