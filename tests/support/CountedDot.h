#ifndef COUNTED_DOT_H
#define COUNTED_DOT_H

#include "gsl_Dot.h"

#include <atomic>
#include <new>

/// A datum point of a host module. It counts its live objects, its copies and its regenerations. A
/// test can forbid copies.
class CountedDot : public gsl_Dot {
public:
  explicit CountedDot(const gsl_Point& p, int markOfHost = 0) : gsl_Dot(p), mark(markOfHost) {
    ++live;
  }
  CountedDot(const CountedDot& other)
      : gsl_Dot(other), mark(other.mark), regenerated(other.regenerated), copyable(other.copyable) {
    ++live;
    ++copies;
  }
  CountedDot& operator=(const CountedDot&) = delete;
  ~CountedDot() override { --live; }

  CountedDot* Copy() const override {
    return copyable ? new (std::nothrow) CountedDot(*this) : nullptr;
  }
  bool Regenerate(const ftr_FeatureList* features) override {
    ++regenerated;
    lastFeatures = features;
    SetValues(GetPoint().x + 1.0, GetPoint().y, GetPoint().z);
    return false;
  }

  int mark;
  int regenerated = 0;
  bool copyable = true;

  static inline std::atomic<int> live{0};
  static inline std::atomic<int> copies{0};
  static inline std::atomic<const ftr_FeatureList*> lastFeatures{nullptr};
};

#endif
