#include "omu_BaseVarray.h"

#include "mem_Memory.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr unsigned int kMostEntries = std::numeric_limits<unsigned int>::max();
constexpr unsigned int kLeastStep = 4;
constexpr unsigned int kLeastStepDivisor = 16;
constexpr unsigned int kFreeStep = 1u << 20;

unsigned int Sum(unsigned int a, unsigned int b) {
  return a > kMostEntries - b ? kMostEntries : a + b;
}

unsigned int LeastGrown(unsigned int capacity) {
  return Sum(capacity, std::max(kLeastStep, capacity / kLeastStepDivisor));
}

unsigned int GrownBy(double ratio, unsigned int capacity) {
  const unsigned int least = LeastGrown(capacity);
  const unsigned int most = Sum(capacity, std::max(capacity, kFreeStep));
  const double wanted = static_cast<double>(capacity) * ratio;
  // The test is negated, so that a NaN takes the least step.
  if (!(wanted > static_cast<double>(least))) return least;
  return wanted < static_cast<double>(most) ? static_cast<unsigned int>(wanted) : most;
}

} // namespace

omu_BaseVarray::omu_BaseVarray() : omu_BaseVarray(0, kDefaultGrowthRatio) {}

omu_BaseVarray::omu_BaseVarray(unsigned int initialCapacity, double ratio)
    : m_entries(nullptr), m_count(0), m_capacity(0), m_growthRatio(ratio) {
  if (initialCapacity != 0 && !Resize(initialCapacity)) throw std::bad_alloc();
}

omu_BaseVarray::omu_BaseVarray(omu_BaseVarray&& other) noexcept
    : m_entries(std::exchange(other.m_entries, nullptr)), m_count(std::exchange(other.m_count, 0)),
      m_capacity(std::exchange(other.m_capacity, 0)), m_growthRatio(other.m_growthRatio) {}

omu_BaseVarray& omu_BaseVarray::operator=(omu_BaseVarray&& other) noexcept {
  if (this == &other) return *this;
  mem_Free(static_cast<void*>(m_entries));
  m_entries = std::exchange(other.m_entries, nullptr);
  m_count = std::exchange(other.m_count, 0);
  m_capacity = std::exchange(other.m_capacity, 0);
  m_growthRatio = other.m_growthRatio;
  return *this;
}

omu_BaseVarray::~omu_BaseVarray() {
  mem_Free(static_cast<void*>(m_entries));
}

void omu_BaseVarray::add(void* element) {
  if (m_count == m_capacity) Grow();
  m_entries[m_count++] = element;
}

void omu_BaseVarray::Grow() {
  if (m_capacity == kMostEntries) throw std::bad_alloc();
  if (Resize(GrownBy(m_growthRatio, m_capacity))) return;
  // When the ratio asks for more memory than there is, a small step may still fit.
  if (!Resize(LeastGrown(m_capacity))) throw std::bad_alloc();
}

bool omu_BaseVarray::Resize(unsigned int newCapacity) {
  const std::size_t slots = newCapacity;
  if (slots > std::numeric_limits<std::size_t>::max() / sizeof(void*)) return false;
  void* const block = mem_Realloc(static_cast<void*>(m_entries), slots * sizeof(void*));
  if (block == nullptr) return false;
  m_entries = static_cast<void**>(block);
  m_capacity = newCapacity;
  return true;
}
