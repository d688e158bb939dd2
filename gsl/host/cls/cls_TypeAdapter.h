#ifndef CLS_TYPE_ADAPTER_H
#define CLS_TYPE_ADAPTER_H

#include "mem_Export.h"

#include <type_traits>

class cls_ReadVisitor;

/// Makes objects of a registered class from their records.
class GSL_HOST_API cls_TypeAdapterBase {
public:
  virtual ~cls_TypeAdapterBase();
  cls_TypeAdapterBase(const cls_TypeAdapterBase&) = delete;
  cls_TypeAdapterBase& operator=(const cls_TypeAdapterBase&) = delete;

  /// Return the name and the numbers of the class. The persistence library defines the meaning of
  /// the numbers.
  const char* Name() const { return m_name; }
  int Number() const { return m_number; }
  unsigned int Argument() const { return m_argument; }

  /// Returns the number of the class whose objects are made.
  virtual unsigned int TypeId() const = 0;
  /// Returns a new object. The caller owns it and knows its class.
  [[nodiscard]] virtual void* Create(const cls_ReadVisitor& visitor) const = 0;

protected:
  /// Requires that `adapterName` outlives the adapter.
  cls_TypeAdapterBase(const char* adapterName, int adapterNumber, unsigned int adapterArgument);

private:
  const char* m_name;
  int m_number;
  unsigned int m_argument;
};

/// The adapter of class T. It constructs a T from a visitor, and from two null owners where T takes
/// owners.
template <class T>
class GSL_HOST_API cls_TypeAdapter : public cls_TypeAdapterBase {
public:
  /// Takes the name and the numbers of the class.
  cls_TypeAdapter(const char* adapterName, int adapterNumber, unsigned int adapterArgument)
      : cls_TypeAdapterBase(adapterName, adapterNumber, adapterArgument) {}

  unsigned int TypeId() const override { return T::TypeId(); }

  [[nodiscard]] void* Create(const cls_ReadVisitor& visitor) const override {
    if constexpr (std::is_constructible_v<T, const cls_ReadVisitor&>) {
      return new T(visitor);
    } else {
      return new T(visitor, nullptr, nullptr);
    }
  }
};

#endif
