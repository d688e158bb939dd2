#include "omi_Singleton.h"

#include "SingletonProbe.h"
#include "gsl_Util.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(OmiSingleton, IsOneObjectAcrossSharedLibraries) {
  const ProbeAddresses first = AddressesInFirstLibrary();
  const ProbeAddresses second = AddressesInSecondLibrary();
  EXPECT_EQ(first.singleton, second.singleton);
  EXPECT_EQ(first.singleton, &omi_Singleton<SingletonProbe>::Instance());
  omi_Singleton<SingletonProbe>::Destroy();
}

TEST(OmiSingleton, AHeaderOnlyStaticWouldBeOneObjectPerLibrary) {
  EXPECT_NE(AddressesInFirstLibrary().headerOnly, AddressesInSecondLibrary().headerOnly);
  omi_Singleton<SingletonProbe>::Destroy();
}

TEST(OmiSingleton, ConstructorThatAsksForTheInstanceFindsItself) {
  const int before = SingletonProbe::Constructed();
  const SingletonProbe& probe = omi_Singleton<SingletonProbe>::Instance();
  EXPECT_EQ(probe.seenByConstructor, &probe);
  EXPECT_EQ(SingletonProbe::Constructed(), before + 1);
  omi_Singleton<SingletonProbe>::Destroy();
}

TEST(OmiSingleton, ObjectDestroyedInOneLibraryIsGoneFromAll) {
  AddressesInFirstLibrary();
  omi_Singleton<SingletonProbe>::Instance().value = 7;
  const int destroyed = SingletonProbe::Destroyed();
  EXPECT_TRUE(omi_Singleton<SingletonProbe>::Exists());
  omi_Singleton<SingletonProbe>::Destroy();
  EXPECT_FALSE(omi_Singleton<SingletonProbe>::Exists());
  EXPECT_EQ(SingletonProbe::Destroyed(), destroyed + 1);
  omi_Singleton<SingletonProbe>::Destroy();
  EXPECT_EQ(SingletonProbe::Destroyed(), destroyed + 1) << "nothing was there to destroy";
  EXPECT_FALSE(omi_Singleton<SingletonProbe>::Exists()) << "asking creates nothing";
  EXPECT_EQ(AddressesInSecondLibrary().singleton, AddressesInFirstLibrary().singleton);
  EXPECT_EQ(omi_Singleton<SingletonProbe>::Instance().value, 0);
  omi_Singleton<SingletonProbe>::Destroy();
}

namespace {

struct Reluctant {
  static bool refuse;
  Reluctant() {
    if (refuse) throw std::runtime_error("not yet");
  }
};

bool Reluctant::refuse = true;

} // namespace

TEST(OmiSingleton, AConstructorThatThrowsLeavesNoObject) {
  EXPECT_THROW(omi_Singleton<Reluctant>::Instance(), std::runtime_error);
  EXPECT_FALSE(omi_Singleton<Reluctant>::Exists());
  Reluctant::refuse = false;
  omi_Singleton<Reluctant>::Instance();
  EXPECT_TRUE(omi_Singleton<Reluctant>::Exists());
  omi_Singleton<Reluctant>::Destroy();
  Reluctant::refuse = true;
}

TEST(OmiSingleton, SettingsAreSharedWithTheGeometryLibrary) {
  gsl_Util& settings = omi_Singleton<gsl_Util>::Instance();
  const double before = settings.linearTolerance;
  settings.linearTolerance = 123.0;
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().linearTolerance, 123.0);
  settings.linearTolerance = before;
}
