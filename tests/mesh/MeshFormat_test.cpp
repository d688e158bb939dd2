#include "MeshFormat.h"

#include <gtest/gtest.h>

using namespace gsl_mesh;

TEST(MeshFormat, NamesAreExtensionsInAnyCase) {
  EXPECT_EQ(MeshFormatNamed("stl"), MeshFormat::Stl);
  EXPECT_EQ(MeshFormatNamed("PLY"), MeshFormat::Ply);
  EXPECT_EQ(MeshFormatNamed("Obj"), MeshFormat::Obj);
  EXPECT_EQ(MeshFormatNamed("off"), MeshFormat::Off);
  for (const char* name : {"", "st", "stlx", ".stl", "3mf", "gltf", "assimp", "unknown"}) {
    EXPECT_EQ(MeshFormatNamed(name), MeshFormat::Unknown) << name;
  }
}

TEST(MeshFormat, EveryFormatThatHasANameIsFoundByIt) {
  for (const MeshFormat format :
       {MeshFormat::Stl, MeshFormat::Ply, MeshFormat::Obj, MeshFormat::Off}) {
    EXPECT_EQ(MeshFormatNamed(NameOf(format)), format);
  }
  EXPECT_EQ(NameOf(MeshFormat::Obj), "obj");
  EXPECT_EQ(NameOf(MeshFormat::Assimp), "");
  EXPECT_EQ(NameOf(MeshFormat::Unknown), "");
}

TEST(MeshFormat, NamesMakeASentence) {
  EXPECT_EQ(MeshFormatNames("."), ".stl, .ply, .obj or .off");
  EXPECT_EQ(MeshFormatNames(""), "stl, ply, obj or off");
}

TEST(MeshFormat, ExtensionFollowsTheLastDot) {
  EXPECT_EQ(ExtensionOf("a.b/part.STL"), "stl");
  EXPECT_EQ(ExtensionOf("a.stl/part"), "");
  EXPECT_EQ(ExtensionOf("part."), "");
  EXPECT_EQ(ExtensionOf("part"), "");
  EXPECT_EQ(ExtensionOf("part.tar.gz"), "gz");
}
