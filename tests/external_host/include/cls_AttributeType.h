#ifndef CLS_ATTRIBUTE_TYPE_H
#define CLS_ATTRIBUTE_TYPE_H

/// This host has numbers of its own for kinds and collections.
enum cls_AttributeType {
  cls_DoubleAttribute = 'd',
  cls_IntegerAttribute = 'i',
  cls_BooleanAttribute = 'b',
  cls_EnumerationAttribute = 'e',
  cls_ObjectAttribute = 'o'
};

enum cls_CollectionType {
  cls_DoubleMatrix = 2,
  cls_UnsignedList = 4,
  cls_ObjectList = 8,
  cls_NoCollection = 16
};

constexpr unsigned int cls_kCollectionTypeId = 0x00110007u;

#endif
