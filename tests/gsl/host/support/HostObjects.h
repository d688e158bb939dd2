#ifndef TEST_HOST_OBJECTS_H
#define TEST_HOST_OBJECTS_H

#include "cls_ClassRegistrar.h"
#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"

#include <memory>

/// A counted holder as the visitors ask for one.
template <class T>
class TestHolder {
public:
  TestHolder() = default;
  static TestHolder Adopt(T* object) {
    TestHolder holder;
    holder.object.reset(object);
    return holder;
  }
  const T* Get() const { return object.get(); }
  T* Edit() { return object.get(); }
  long Owners() const { return object.use_count(); }

private:
  std::shared_ptr<T> object;
};

/// A record with one integer and one shared object that may be of the same class.
class TestNode {
public:
  static constexpr unsigned int kTypeId = 0x7F100001u;
  static constexpr unsigned int TypeId() { return kTypeId; }

  TestNode() = default;
  explicit TestNode(int number) : value(number), uid(cls_Uid::AllocateUid()) {}
  explicit TestNode(const cls_ReadVisitor& visitor)
      : value(visitor.ReadInteger({-1, "value"}, 0)), uid(visitor.GetUid()) {
    visitor.ReadObject({-1, "next"}, next);
  }
  virtual ~TestNode() = default;

  virtual void DBWrite(const cls_WriteVisitor& visitor) const {
    if (visitor.StartWrite(kTypeId, uid) == 0) return;
    WriteFields(visitor);
  }

  int value = 0;
  TestHolder<TestNode> next;
  cls_Uid uid;

protected:
  void WriteFields(const cls_WriteVisitor& visitor) const {
    visitor.WriteInteger({-1, "value"}, value);
    if (next.Get() != nullptr) {
      next.Get()->DBWrite(cls_WriteVisitor(visitor, {-1, "next"}, next));
    } else {
      visitor.WriteNullObject({-1, "next"}, kTypeId);
    }
  }
};

/// A member before the base, so that a pointer to the base has another address.
class TestPrefix {
public:
  virtual ~TestPrefix() = default;
  double padding = 1.5;
};

class TestDerivedNode : public TestPrefix, public TestNode {
public:
  static constexpr unsigned int kTypeId = 0x7F100002u;
  static constexpr unsigned int TypeId() { return kTypeId; }

  explicit TestDerivedNode(int number) : TestNode(number) {}
  explicit TestDerivedNode(const cls_ReadVisitor& visitor)
      : TestNode(visitor), extra(visitor.ReadInteger({-1, "extra"}, 0)) {}

  void DBWrite(const cls_WriteVisitor& visitor) const override {
    if (visitor.StartWrite(kTypeId, uid) == 0) return;
    WriteFields(visitor);
    visitor.WriteInteger({-1, "extra"}, extra);
  }

  static void InitializeMetadata(cls_ClassRegistrar& registrar) {
    registrar.AddClassMD(new cls_TypeAdapter<TestDerivedNode>("TestDerivedNode", 1, 1u))
        .AddBase(TestNode::kTypeId, [](void* object) -> void* {
          return static_cast<TestNode*>(static_cast<TestDerivedNode*>(object));
        });
  }

  int extra = 0;
};

#endif
