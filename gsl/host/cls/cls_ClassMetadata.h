#ifndef CLS_CLASS_METADATA_H
#define CLS_CLASS_METADATA_H

#include "cls_AttributeType.h"
#include "cls_TypeAdapter.h"
#include "mem_Export.h"

#include <memory>
#include <vector>

/// The declaration of a class about its records.
class GSL_HOST_API cls_ClassMetadata {
public:
  /// Destroys an object of the class.
  using Destructor = void (*)(void* object);
  /// Turns a pointer to an object into a pointer to its base.
  using Conversion = void* (*)(void* object);

  /// A field of the class, as it was declared.
  struct Attribute {
    const char* name;              ///< as in the record
    cls_AttributeType type;        ///< the kind of its value
    unsigned int argument;         ///< a number whose meaning depends on the type
    cls_CollectionType collection; ///< the kind of collection, if it is one
  };
  /// A base class, as it was declared.
  struct Base {
    unsigned int typeId; ///< the number of the base class
    Conversion convert;  ///< from the class to the base class
  };

  ~cls_ClassMetadata();
  cls_ClassMetadata(const cls_ClassMetadata&) = delete;
  cls_ClassMetadata& operator=(const cls_ClassMetadata&) = delete;

  /// Returns what makes objects of the class.
  const cls_TypeAdapterBase& Adapter() const { return *m_adapter; }
  /// Returns the number of the class.
  unsigned int TypeId() const { return m_adapter->TypeId(); }
  /// Returns the name of the class.
  const char* Name() const { return m_adapter->Name(); }
  /// Returns null for a class without a destructor.
  Destructor Dtor() const { return m_dtor; }
  const std::vector<Attribute>& Attributes() const { return m_attributes; }
  const std::vector<Base>& Bases() const { return m_bases; }
  /// Returns what was given to cls_MetadataRegistrar::initClassMetadata, or 0.
  int Flags() const { return m_flags; }

  /// Declares the destructor.
  cls_ClassMetadata& AddDtor(Destructor destroy);
  /// Adds the next attribute in write order. Requires that `name` outlives the metadata.
  cls_ClassMetadata& AddAttribute(const char* name, cls_AttributeType type, unsigned int argument,
                                  cls_CollectionType collection);
  /// Declares a direct base class. `convert` turns a pointer to an object into a pointer to its
  /// base.
  cls_ClassMetadata& AddBase(unsigned int typeId, Conversion convert);

private:
  friend class cls_ClassRegistrar;

  cls_ClassMetadata(std::unique_ptr<cls_TypeAdapterBase> typeAdapter, int classFlags);

  std::unique_ptr<cls_TypeAdapterBase> m_adapter;
  Destructor m_dtor;
  std::vector<Attribute> m_attributes;
  std::vector<Base> m_bases;
  int m_flags;
};

#endif
