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

  /// The name and the numbers that the class gave; the numbers are the persistence library's own.
  const char* Name() const { return name; }
  int Number() const { return number; }
  unsigned int Argument() const { return argument; }

  virtual unsigned int TypeId() const = 0;
  /// A new object; the caller owns it and knows its class.
  [[nodiscard]] virtual void* Create(const cls_ReadVisitor& visitor) const = 0;

protected:
  /// `adapterName` must outlive the adapter: a literal.
  cls_TypeAdapterBase(const char* adapterName, int adapterNumber, unsigned int adapterArgument);

private:
  const char* name;
  int number;
  unsigned int argument;
};

/// The adapter of class T: constructs it from a visitor, and where T asks for owners too, with
/// none.
template <class T>
class GSL_HOST_API cls_TypeAdapter : public cls_TypeAdapterBase {
public:
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
