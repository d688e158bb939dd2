#include "cls_MetadataRegistrar.h"

#include "HostObjects.h"

#include <gtest/gtest.h>

namespace {

void InitializeNode(cls_ClassRegistrar& registrar) {
  registrar.AddClassMD(new cls_TypeAdapter<TestNode>("TestNode", 1, 1u));
}

[[noreturn]] void Fail(cls_ClassRegistrar&) {
  throw 1;
}

} // namespace

TEST(ClsMetadataRegistrar, KeepsTheFlagsWithTheClass) {
  cls_MetadataRegistrar registrar;
  registrar.initClassMetadata(&InitializeNode, 7);
  EXPECT_EQ(registrar.ClassRegistrar().Class(0).Flags(), 7);
  EXPECT_THROW(registrar.initClassMetadata(&Fail, 5), int);
  InitializeNode(registrar.ClassRegistrar());
  EXPECT_EQ(registrar.ClassRegistrar().Class(0).Flags(), 0);
}

TEST(ClsMetadataRegistrar, TheProcessHasOne) {
  EXPECT_EQ(&omi_Singleton<cls_MetadataRegistrar>::Instance(),
            &omi_Singleton<cls_MetadataRegistrar>::Instance());
}
