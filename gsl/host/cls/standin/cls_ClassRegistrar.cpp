#include "cls_ClassRegistrar.h"

#include "cls_ReadVisitor.h"
#include "cls_RecordException.h"

#include <algorithm>
#include <array>

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_ClassRegistrar";

[[noreturn]] void Refuse(const char* why, int line, const cls_Uid& uid) {
  nex_Exception::Throw(cls_RecordException(why, uid), kSourceUnit, line);
}

/// A class on the way from a class to its bases.
struct Step {
  unsigned int typeId;
  std::size_t previous;
  cls_ClassMetadata::Conversion convert;
};

/// The classes that a search has found. The first of them need no memory, so that a question about
/// a class with few bases allocates nothing.
class Steps {
public:
  /// Searches breadth first over the declared bases, until the last step is the class `to`. Visits
  /// each class once, so that it ends for bases that were declared in a circle.
  [[nodiscard]] bool Find(const cls_ClassRegistrar& classes, unsigned int from, unsigned int to) {
    Add({from, 0, nullptr});
    for (std::size_t i = 0; i < m_count; ++i) {
      const cls_ClassMetadata* const here = classes.FindClass(At(i).typeId);
      if (here == nullptr) continue;
      for (const cls_ClassMetadata::Base& base : here->Bases()) {
        if (HasSeen(base.typeId)) continue;
        Add({base.typeId, i, base.convert});
        if (base.typeId == to) return true;
      }
    }
    return false;
  }
  /// Returns the conversions from the first class to the last.
  std::vector<cls_ClassMetadata::Conversion> ConversionsToLast() const {
    std::vector<cls_ClassMetadata::Conversion> path;
    for (std::size_t at = m_count - 1; at != 0; at = At(at).previous)
      path.push_back(At(at).convert);
    std::reverse(path.begin(), path.end());
    return path;
  }

private:
  static constexpr std::size_t kFirst = 32;

  const Step& At(std::size_t i) const { return i < kFirst ? m_first[i] : m_others[i - kFirst]; }
  void Add(const Step& step) {
    if (m_count < kFirst) {
      m_first[m_count] = step;
    } else {
      m_others.push_back(step);
    }
    ++m_count;
  }
  [[nodiscard]] bool HasSeen(unsigned int typeId) const {
    for (std::size_t i = 0; i < m_count; ++i) {
      if (At(i).typeId == typeId) return true;
    }
    return false;
  }

  std::array<Step, kFirst> m_first;
  std::vector<Step> m_others;
  std::size_t m_count = 0;
};

} // namespace

cls_ClassRegistrar::cls_ClassRegistrar() : m_flagsOfNewClasses(0) {}

cls_ClassRegistrar::~cls_ClassRegistrar() = default;

cls_ClassMetadata& cls_ClassRegistrar::AddClassMD(cls_TypeAdapterBase* adapter) {
  std::unique_ptr<cls_TypeAdapterBase> owned(adapter);
  const unsigned int typeId = adapter->TypeId();
  std::unique_ptr<cls_ClassMetadata> made(
      new cls_ClassMetadata(std::move(owned), m_flagsOfNewClasses));
  const auto known = m_placeOf.find(typeId);
  if (known != m_placeOf.end()) {
    m_classes[known->second] = std::move(made);
    return *m_classes[known->second];
  }
  m_classes.push_back(std::move(made));
  try {
    m_placeOf.emplace(typeId, m_classes.size() - 1);
  } catch (...) {
    m_classes.pop_back();
    throw;
  }
  return *m_classes.back();
}

const cls_ClassMetadata* cls_ClassRegistrar::FindClass(unsigned int typeId) const {
  const auto found = m_placeOf.find(typeId);
  return found != m_placeOf.end() ? m_classes[found->second].get() : nullptr;
}

bool cls_ClassRegistrar::InheritanceCheck(unsigned int dynType, unsigned int queried) const {
  Steps steps;
  return dynType == queried || steps.Find(*this, dynType, queried);
}

bool cls_ClassRegistrar::FindPath(unsigned int from, unsigned int to,
                                  std::vector<cls_ClassMetadata::Conversion>& path) const {
  if (from == to) return true;
  Steps steps;
  if (!steps.Find(*this, from, to)) return false;
  path = steps.ConversionsToLast();
  return true;
}

void* cls_ClassRegistrar::Create(const cls_ReadVisitor& visitor, unsigned int typeId) const {
  const cls_ClassMetadata* const found = FindClass(visitor.TypeId());
  if (found == nullptr) Refuse("A record is of an unknown class", __LINE__, visitor.GetUid());
  std::vector<cls_ClassMetadata::Conversion> path;
  if (!FindPath(visitor.TypeId(), typeId, path)) {
    Refuse("A record is of another class than is wanted", __LINE__, visitor.GetUid());
  }
  void* object = found->Adapter().Create(visitor);
  for (const cls_ClassMetadata::Conversion convert : path)
    object = convert(object);
  return object;
}
