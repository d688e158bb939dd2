#include "gsl_Module.h"

#include "cls_MetadataRegistrar.h"
#include "gsl_Util.h"
#include "mem_LifeCycle.h"
#include "mem_Modules.h"
#include "typ_ArchCompTable.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace {

std::string events;

void Note(const char* prefix, bool isStart, int count) {
  events += std::string(isStart ? "+" : "-") + prefix + std::to_string(count) + " ";
}

/// Records whether there were settings while a host library started or stopped.
bool settingsSeen = false;

void LookForSettings(const char*, bool, int) {
  settingsSeen = settingsSeen || omi_Singleton<gsl_Util>::Exists();
}

/// Collects the calls to the host libraries.
class Module : public testing::Test {
protected:
  Module() : before(mem_LifeCycle::SetListener(&Note)) { events.clear(); }
  ~Module() override { mem_LifeCycle::SetListener(before); }

private:
  mem_LifeCycle::Listener before;
};

const std::string kStarts = "+mem5 +typ5 +pnt5 +omni5 +atr5 +cow5 +nex5 +g3d5 +omu5 ";
const std::string kStops = "-omu4 -g3d4 -nex4 -cow4 -atr4 -omni4 -pnt4 -typ4 -mem4 ";

} // namespace

TEST_F(Module, StartsTheHostLibrariesInTheOrderOfTheirPrefixes) {
  int count = 0;
  gsl_initialize(count);
  gsl_finalize(count);
  // These libraries have something to start: cls starts with nex, and ftr has nothing to start.
  std::string expected;
  std::ifstream prefixes(HOST_PREFIXES);
  for (std::string prefix; std::getline(prefixes, prefix);) {
    const bool isComment = prefix.rfind('#', 0) == 0;
    if (!isComment && prefix != "cls" && prefix != "ftr") expected += "+" + prefix + "1 ";
  }
  ASSERT_FALSE(expected.empty()) << HOST_PREFIXES;
  EXPECT_EQ(events.substr(0, events.find('-')), expected);
}

TEST_F(Module, StartsTheHostLibrariesInOrderAndStopsThemInReverse) {
  int count = 4;
  gsl_initialize(count);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(events, kStarts);
  EXPECT_TRUE(mem_IsInitialized("mem"));
  EXPECT_TRUE(mem_IsInitialized("omu"));
  gsl_finalize(count);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(events, kStarts + kStops);
  EXPECT_FALSE(mem_IsInitialized("mem"));
  EXPECT_FALSE(mem_IsInitialized("omu"));
}

TEST_F(Module, TwoStartsAndOneStopLeaveTheHostLibrariesStarted) {
  int count = 4;
  gsl_initialize(count);
  gsl_initialize(count);
  gsl_finalize(count);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(events, kStarts);
  EXPECT_TRUE(mem_IsInitialized("mem"));
  EXPECT_TRUE(omi_Singleton<gsl_Util>::Exists());
  gsl_finalize(count);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(events, kStarts + kStops);
}

TEST_F(Module, NestedCallsDoNothingInBetween) {
  int count = 4;
  for (int i = 0; i < 100; ++i)
    gsl_initialize(count);
  for (int i = 0; i < 99; ++i)
    gsl_finalize(count);
  EXPECT_EQ(events, kStarts);
  EXPECT_EQ(count, 5);
  gsl_finalize(count);
  EXPECT_EQ(events, kStarts + kStops);
}

TEST_F(Module, RepeatedStartDoesTheWorkAgain) {
  int count = 4;
  for (int i = 0; i < 3; ++i) {
    gsl_initialize(count);
    gsl_finalize(count);
  }
  EXPECT_EQ(events, kStarts + kStops + kStarts + kStops + kStarts + kStops);
  EXPECT_EQ(count, 4);
}

TEST_F(Module, StopWithoutAStartUnbalancesUntilTheNextStart) {
  int count = 4;
  gsl_finalize(count);
  EXPECT_EQ(count, 4);
  gsl_initialize(count);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(events, "");
  gsl_initialize(count);
  EXPECT_EQ(events, kStarts);
  gsl_finalize(count);
  EXPECT_EQ(events, kStarts + kStops);
}

TEST_F(Module, SettingsComeBackWithTheirDefaults) {
  int count = 0;
  gsl_initialize(count);
  omi_Singleton<gsl_Util>::Instance().SetOldDisplayFactor(true);
  omi_Singleton<gsl_Util>::Instance().linearTolerance = 0.5;
  gsl_finalize(count);
  EXPECT_FALSE(omi_Singleton<gsl_Util>::Exists());
  gsl_initialize(count);
  EXPECT_TRUE(omi_Singleton<gsl_Util>::Exists());
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().displayFactor, 11.25);
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().linearTolerance, 1e-6);
  gsl_finalize(count);
}

TEST_F(Module, SettingsLiveOnlyWhileEveryHostLibraryRuns) {
  mem_LifeCycle::SetListener(&LookForSettings);
  settingsSeen = false;
  int count = 0;
  gsl_initialize(count);
  EXPECT_FALSE(settingsSeen);
  EXPECT_TRUE(omi_Singleton<gsl_Util>::Exists());
  gsl_finalize(count);
  EXPECT_FALSE(settingsSeen);
}

TEST_F(Module, SettingsSurviveANestedStop) {
  int count = 0;
  gsl_initialize(count);
  gsl_initialize(count);
  omi_Singleton<gsl_Util>::Instance().SetOldDisplayFactor(true);
  gsl_finalize(count);
  EXPECT_EQ(omi_Singleton<gsl_Util>::Instance().displayFactor, 15.0);
  gsl_finalize(count);
}

TEST_F(Module, TypeTableAndClassesStayAfterTheStop) {
  int count = 0;
  gsl_initialize(count);
  const cls_ClassRegistrar& classes =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  const std::size_t registered = classes.ClassCount();
  EXPECT_GE(registered, 12u);
  gsl_finalize(count);
  EXPECT_EQ(classes.ClassCount(), registered);
  EXPECT_EQ(typ_ArchCompTable::FindEntry(778).RowCount(), 15u);
  gsl_initialize(count);
  EXPECT_EQ(classes.ClassCount(), registered);
  gsl_finalize(count);
}

TEST_F(Module, TypeTableIsExactlyThis) {
  int count = 0;
  gsl_initialize(count);
  gsl_finalize(count);
  struct Row {
    unsigned int kind, secondWord;
    const char* name;
  };
  // This table is typed by hand. The second word of the vector is not a mistake of this test.
  const Row expected[] = {{0, 1, nullptr},
                          {7, 1, "gsl_Point"},
                          {7, 1, "gsl_Matrix"},
                          {7, 50987009, "gsl_Vector"},
                          {7, 1, "gsl_Plane"},
                          {7, 1, "gsl_Dot"},
                          {7, 1, "gsl_StLine"},
                          {7, 1, "gsl_BBox"},
                          {7, 1, "gsl_Segment"},
                          {7, 1, "gsl_ArrayPoint"},
                          {7, 1, "gsl_LineArray"},
                          {7, 1, "gsl_ModelSegment"},
                          {7, 1, "gsl_ModelSegmentArray"},
                          {7, 1, "gsl_PlaneArray"},
                          {7, 1, "gsl_DotArray"}};
  const typ_ArchCompEntry table = typ_ArchCompTable::FindEntry(778);
  ASSERT_EQ(table.RowCount(), 15u);
  for (unsigned int i = 0; i < 15; ++i) {
    EXPECT_EQ(table.Row(i).kind, expected[i].kind) << i;
    EXPECT_EQ(table.Row(i).secondWord, expected[i].secondWord) << i;
    EXPECT_STREQ(table.Row(i).className, expected[i].name) << i;
  }
}
