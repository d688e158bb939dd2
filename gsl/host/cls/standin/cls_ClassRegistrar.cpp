#include "cls_ClassRegistrar.h"

#include "cls_ReadVisitor.h"
#include "cls_RecordException.h"

#include <algorithm>

namespace {

constexpr const char* kSourceUnit = "gsl/host/cls/cls_ClassRegistrar";

[[noreturn]] void Refuse(const char* why, int line, const cls_Uid& uid) {
  nex_Exception::Throw(cls_RecordException(why, uid), kSourceUnit, line);
}

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
  m_placeOf.emplace(typeId, m_classes.size() - 1);
  return *m_classes.back();
}

const cls_ClassMetadata* cls_ClassRegistrar::FindClass(unsigned int typeId) const {
  const auto found = m_placeOf.find(typeId);
  return found != m_placeOf.end() ? m_classes[found->second].get() : nullptr;
}

bool cls_ClassRegistrar::InheritanceCheck(unsigned int dynType, unsigned int queried) const {
  std::vector<cls_ClassMetadata::Conversion> path;
  return FindPath(dynType, queried, path);
}

bool cls_ClassRegistrar::FindPath(unsigned int from, unsigned int to,
                                  std::vector<cls_ClassMetadata::Conversion>& path) const {
  struct Step {
    unsigned int typeId;
    std::size_t previous;
    cls_ClassMetadata::Conversion convert;
  };
  if (from == to) return true;
  // The search goes breadth first over the declared bases and visits each class once, so that it
  // ends for bases that were declared in a circle.
  std::vector<Step> steps = {{from, 0, nullptr}};
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const cls_ClassMetadata* const here = FindClass(steps[i].typeId);
    if (here == nullptr) continue;
    for (const cls_ClassMetadata::Base& base : here->Bases()) {
      const bool seen = std::any_of(steps.begin(), steps.end(),
                                    [&](const Step& s) { return s.typeId == base.typeId; });
      if (seen) continue;
      steps.push_back({base.typeId, i, base.convert});
      if (base.typeId != to) continue;
      for (std::size_t at = steps.size() - 1; at != 0; at = steps[at].previous)
        path.push_back(steps[at].convert);
      std::reverse(path.begin(), path.end());
      return true;
    }
  }
  return false;
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
