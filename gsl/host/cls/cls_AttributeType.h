#ifndef CLS_ATTRIBUTE_TYPE_H
#define CLS_ATTRIBUTE_TYPE_H

/// Kinds of attribute that a class registers, under the numbers of the persistence library.
enum cls_AttributeType {
  cls_IntegerAttribute = 5,
  cls_DoubleAttribute = 10,
  cls_BooleanAttribute = 13,
  cls_EnumerationAttribute = 14,
  cls_ObjectAttribute = 15
};

/// The kind of a record that is a collection. The numbers are stored.
enum cls_CollectionType {
  cls_NoCollection = 0,
  cls_ObjectList = 1,
  cls_UnsignedList = 57,
  cls_DoubleMatrix = 82
};

/// Type id of the persistence library's own collections.
constexpr unsigned int cls_kCollectionTypeId = 0x00230001u;

#endif
