#ifndef CLS_CLASS_REGISTRAR_H
#define CLS_CLASS_REGISTRAR_H

#include "cls_ClassMetadata.h"
#include "mem_Export.h"

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

class cls_ReadVisitor;

/// Keeps the persistent classes in the order of their first registration.
///
/// Threads  registering needs the process's one starting thread; afterwards every query is safe
///          from any thread.
class GSL_HOST_API cls_ClassRegistrar {
public:
  cls_ClassRegistrar();
  ~cls_ClassRegistrar();
  cls_ClassRegistrar(const cls_ClassRegistrar&) = delete;
  cls_ClassRegistrar& operator=(const cls_ClassRegistrar&) = delete;

  /// Registers the adapter's class and takes over the adapter. A class that is registered already
  /// keeps its place, and what it declared before is forgotten. After an exception the registrar is
  /// as it was, and the adapter is deleted.
  cls_ClassMetadata& AddClassMD(cls_TypeAdapterBase* adapter);

  std::size_t ClassCount() const { return m_classes.size(); }
  /// Returns class number i. The index is not checked.
  const cls_ClassMetadata& Class(std::size_t i) const { return *m_classes[i]; }
  /// Returns null for a class that is not registered.
  const cls_ClassMetadata* FindClass(unsigned int typeId) const;

  /// Returns whether `dynType` is `queried` or derives from it. This is true for one class and
  /// itself, also when the class is not registered. Allocates nothing for a class with at most 31
  /// bases, direct and indirect; with more it may throw std::bad_alloc.
  [[nodiscard]] bool InheritanceCheck(unsigned int dynType, unsigned int queried) const;

  /// Returns a new object of the class that the record names, as a pointer to the class `typeId`.
  /// Throws cls_RecordException when the record's class is not registered or does not derive from
  /// the class `typeId`.
  [[nodiscard]] void* Create(const cls_ReadVisitor& visitor, unsigned int typeId) const;

private:
  friend class cls_MetadataRegistrar;

  [[nodiscard]] bool FindPath(unsigned int from, unsigned int to,
                              std::vector<cls_ClassMetadata::Conversion>& path) const;

  std::vector<std::unique_ptr<cls_ClassMetadata>> m_classes;
  std::unordered_map<unsigned int, std::size_t> m_placeOf;
  int m_flagsOfNewClasses;
};

#endif
