#ifndef OMU_BASE_VARRAY_H
#define OMU_BASE_VARRAY_H

#include "mem_Export.h"

/// Growing array of untyped pointers, the storage of the object arrays. It does not own the objects
/// of the pointers.
///
/// Growth   through mem_Realloc to the capacity times the ratio. A step adds at least four entries
///          and a sixteenth, so that a ratio of at most 1, or NaN, makes room too. It adds at most
///          the capacity or 2^20 entries, whichever is more, so that no stored ratio exhausts
///          memory.
/// Errors   std::bad_alloc, with the array as it was.
class GSL_HOST_API omu_BaseVarray {
public:
  /// The ratio of an array that names none.
  static constexpr double kDefaultGrowthRatio = 2.0;

  omu_BaseVarray();
  /// Makes an empty array with room for `initialCapacity` entries.
  omu_BaseVarray(unsigned int initialCapacity, double ratio);
  omu_BaseVarray(const omu_BaseVarray&) = delete;
  omu_BaseVarray& operator=(const omu_BaseVarray&) = delete;
  /// Take the storage and the ratio. The source is then empty and without storage.
  omu_BaseVarray(omu_BaseVarray&& other) noexcept;
  omu_BaseVarray& operator=(omu_BaseVarray&& other) noexcept;

  unsigned int Count() const { return m_count; }
  /// Returns the number of elements that fit without growing.
  unsigned int Capacity() const { return m_capacity; }
  double GrowthRatio() const { return m_growthRatio; }
  /// Changes the ratio; see GrowthRatio().
  void SetGrowthRatio(double ratio) { m_growthRatio = ratio; }

  /// Appends an entry, which may be null.
  void add(void* element);

protected:
  virtual ~omu_BaseVarray();

  /// Does not check the range.
  void* Entry(unsigned int i) const { return m_entries[i]; }
  /// Returns the elements.
  void* const* Entries() const { return m_entries; }
  /// Replaces element number i.
  void SetEntry(unsigned int i, void* element) { m_entries[i] = element; }
  /// Removes the elements without destroying them.
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
