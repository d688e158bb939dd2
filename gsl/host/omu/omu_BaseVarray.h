#ifndef OMU_BASE_VARRAY_H
#define OMU_BASE_VARRAY_H

#include "mem_Export.h"

/// Growing array of untyped pointers, the storage of the object arrays. It does not own what the
/// pointers lead to.
///
/// Growth   through mem_Realloc to the capacity times the ratio. A step adds at least four entries
///          and a sixteenth, so that also a ratio of at most 1, or NaN, makes room; and at most the
///          capacity or 2^20 entries, whichever is more, so that no stored ratio exhausts memory.
/// Errors   std::bad_alloc, with the array as it was.
class GSL_HOST_API omu_BaseVarray {
public:
  static constexpr double kDefaultGrowthRatio = 2.0;

  omu_BaseVarray();
  /// Room for `initialCapacity` entries.
  omu_BaseVarray(unsigned int initialCapacity, double ratio);
  omu_BaseVarray(const omu_BaseVarray&) = delete;
  omu_BaseVarray& operator=(const omu_BaseVarray&) = delete;
  /// Take the storage and the ratio; the source is empty then, without storage.
  omu_BaseVarray(omu_BaseVarray&& other) noexcept;
  omu_BaseVarray& operator=(omu_BaseVarray&& other) noexcept;

  unsigned int Count() const { return m_count; }
  unsigned int Capacity() const { return m_capacity; }
  double GrowthRatio() const { return m_growthRatio; }
  void SetGrowthRatio(double ratio) { m_growthRatio = ratio; }

  /// Appends; null is an entry too.
  void add(void* element);

protected:
  virtual ~omu_BaseVarray();

  /// No range check.
  void* Entry(unsigned int i) const { return m_entries[i]; }
  void* const* Entries() const { return m_entries; }
  void SetEntry(unsigned int i, void* element) { m_entries[i] = element; }
  void ForgetEntries() { m_count = 0; }

private:
  void Grow();
  [[nodiscard]] bool Resize(unsigned int newCapacity);

  void** m_entries;
  unsigned int m_count;
  unsigned int m_capacity;
  double m_growthRatio;
};

#endif
