#include <gtest/gtest.h>

#include <stdexcept>

#include "framework/Rc_baseplugin.h"
#include "registry/Stringhelper.h"
#include "support/world.h"

namespace scrubwell::test {
namespace {

constexpr TText kName{u"Prüfung", u"Trial"};
constexpr TCategory kCategory{u"TRCPTrial", 5, 1, kName, kName, kName};
constexpr TText kFound{u"Fehlt: #x#", u"Missing: #x#"};
constexpr std::array<TProblemKind, 1> kKinds{{{1, 2, kFound, kFound, kFound}}};

// Fails to repair what says "stubborn", and asks for a stop at what says "stop".
class TRCPTrial : public TRCPlugin {
 public:
  TRCPTrial() : TRCPlugin(kCategory, kKinds) {}
  using TRCPlugin::AddError;
  using TRCPlugin::DeleteKeyIfEmpty;
  using TRCPlugin::ScanValueList;
  using TRCPlugin::SetFCleanItemCount;
  using TRCPlugin::SetFScanItemCount;
  using TRCPlugin::ShowScanItem;
  void Init() override {}
  void Scan() override {}
  bool CleanError(const TSweepError& error) override {
    const UnicodeString x = GetErrorStringValue(error.Data, u"x");
    if (x == u"stop") StopSearch = true;
    return x != u"stubborn";
  }
};

TEST(BasePlugin, AddsProblems) {
  const std::tuple<std::int32_t, TStringList, std::int32_t, std::int32_t, bool, UnicodeView>
      rows[] = {
          {2, {u"x:1"}, 1, 1, false, u""},
          {1, {}, 1, 1, false, u"Fehlt: #x#"},
          {1, {u"x:1", u"existingkey:64:HKEY_USERS\\a"}, 1, 1, false, u"Fehlt: 1"},
          {1, {u"existingkey:32: hkey_classes_root\\MAPI\\shell "}, 0, 0, false, u""},
          {1, {u"existingkey:HKEY_CLASSES_ROOT\\csc\\shell"}, 0, 0, false, u""},
          {1, {u"existingkey:64:HKCR\\mapi\\shell"}, 1, 1, true, u"Fehlt: #x#"},
          {1, {u"existingkey:32:HKEY_CLASSES_ROOT\\mapi\\shell\\open"}, 1, 1, false, u"Fehlt: #x#"},
          {1, {u"existingkey:32:HKEY_USERS\\ignored"}, 1, 0, false, u"Fehlt: #x#"},
      };
  for (const auto& [kind, data, records, visible, is64, caption] : rows) {
    World world;
    auto& plugin = world.Create<TRCPTrial>();
    TSweepError ignored;
    ignored.Data = {u"existingkey:32:HKEY_USERS\\ignored"};
    AddIgnoredProblem(
        u"n", BuildIgnoredProblemData(BuildErrorIdentificationString(ignored), u"1", u"", u""));
    for (int twice = 0; twice < 2; ++twice) plugin.AddError(kind, data);
    const std::string what = ToUtf8(data.empty() ? u"no data" : data.front());
    ASSERT_EQ(SweepErrors->Count(), records) << what;
    EXPECT_EQ(plugin.ErrorCount, visible) << what;
    EXPECT_TRUE(RealSweepErrorCount == visible && CategoryErrors == visible) << what;
    if (records == 0) continue;
    const TSweepError& e = (*SweepErrors)[0];
    EXPECT_EQ(e.Is64Bit, is64) << what;
    EXPECT_EQ(ToUtf8(e.Caption), ToUtf8(caption)) << what;
    EXPECT_EQ(e.IconID.empty(), kind != 1) << what;
    EXPECT_EQ(IsErrorSelectedForCleaning(0), visible == 1) << what;
    // Repaired and found again: a new problem.
    SetFixedState(0, true);
    plugin.AddError(kind, data);
    EXPECT_EQ(SweepErrors->Count(), 2) << what;
  }
}

TEST(BasePlugin, CountersFollowTheState) {
  // F and V set fixed and visible, f and v take them back.
  const std::pair<const char*, std::int32_t> rows[] = {
      {"FF", 0}, {"Ff", 1}, {"vv", 0}, {"vV", 1}, {"vFV", 0}, {"Fv", 0}, {"vFVf", 1}, {"Fvf", 0}};
  for (const auto& [steps, counted] : rows) {
    for (const bool known : {true, false}) {
      World world;
      auto& plugin = world.Create<TRCPTrial>();
      plugin.AddError(1, {u"x:1"});
      if (!known) plugin.FPluginID = u"Other";
      for (const char* s = steps; *s != 0; ++s) {
        for (const std::int32_t index : {0, 1}) {  // there is no second one
          if (*s == 'F' || *s == 'f') SetFixedState(index, *s == 'F');
          if (*s == 'V' || *s == 'v') SetVisibleState(index, *s == 'V');
        }
      }
      EXPECT_EQ(RealSweepErrorCount, counted) << steps;
      EXPECT_EQ(plugin.ErrorCount, known ? counted : 1) << steps;
      EXPECT_EQ(IsErrorVisible(0), counted == 1) << steps;
    }
  }
}

TEST(BasePlugin, CleansWhatIsSelected) {
  World world;
  auto& plugin = world.Create<TRCPTrial>();
  for (const UnicodeView x : {u"a", u"unselected", u"stubborn", u"hidden", u"b", u"stop", u"c"})
    plugin.AddError(1, {u"x:" + UnicodeString(x)});
  (*SweepErrors)[1].Selected = false;
  SetVisibleState(3, false);
  StopSearch = true;
  plugin.InitClean();
  EXPECT_FALSE(StopSearch);
  EXPECT_EQ(plugin.CleanWeight, 5);
  plugin.Clean();
  std::string fixed;
  for (std::int32_t i = 0; i < 7; ++i) fixed += (*SweepErrors)[i].Fixed ? 'F' : '-';
  EXPECT_EQ(fixed, "F---FF-");
  EXPECT_EQ(plugin.FCleanFailures, 1);
  EXPECT_EQ(plugin.FCleanItemsDone, 4);
  EXPECT_EQ(RealSweepErrorCount, 3);
}

TEST(BasePlugin, ReportsProgress) {
  World world;
  auto& plugin = world.Create<TRCPTrial>();
  std::vector<std::int32_t> shown;
  plugin.OnScanProgress = [&](TRCPlugin&, std::int32_t promille, UnicodeView, bool) {
    shown.push_back(promille);
  };
  plugin.SetFScanItemCount(16);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(plugin.ShowScanItem(u"x"));
  // One step for both: preparing a repair changes the scan's as well.
  plugin.SetFCleanItemCount(4);
  plugin.ShowScanItem(u"x");
  plugin.SetFScanItemCount(0);
  plugin.ShowScanItem(u"x");
  StopSearch = true;
  EXPECT_FALSE(plugin.ShowScanItem(u"x"));
  EXPECT_EQ(shown, (std::vector<std::int32_t>{62, 125, 188, 1000, 0}));
  EXPECT_EQ(plugin.FScanItemsDone, 1);
}

TEST(BasePlugin, DeletesAndReports) {
  World world("[HKCR\\full]\n@=\"\"\n[HKCR\\empty]\n[HKCR\\.ext]\n");
  auto& plugin = world.Create<TRCPTrial>();
  Lines shown;
  plugin.OnCleanProgress = [&](TRCPlugin&, std::int32_t, UnicodeView action, UnicodeView sub,
                               bool) { shown.push_back(ToUtf8(action) + ToUtf8(sub)); };
  for (const UnicodeView root : {u"", u"\\", u"\\\\"})
    EXPECT_FALSE(plugin.DeleteRegKeyWrapper(HKEY_LOCAL_MACHINE, root, {}));
  EXPECT_FALSE(plugin.DeleteKeyIfEmpty(HKEY_CLASSES_ROOT, u"full", {}));
  EXPECT_TRUE(plugin.DeleteKeyIfEmpty(HKEY_CLASSES_ROOT, u".ext", {}));
  EXPECT_FALSE(ShouldReSearch);
  EXPECT_TRUE(plugin.DeleteKeyIfEmpty(HKEY_CLASSES_ROOT, u"empty", {}));
  EXPECT_TRUE(ShouldReSearch);
  EXPECT_TRUE(plugin.DeleteRegValueWrapper(HKEY_CLASSES_ROOT, u"full", u"", {}));
  EXPECT_FALSE(plugin.DeleteRegValueWrapper(HKEY_CLASSES_ROOT, u"full", u"v", {}));
  EXPECT_EQ(shown,
            (Lines{"Lösche Registrierungsschlüssel:.ext", "Lösche Registrierungsschlüssel:empty",
                   "Lösche Registrierungswert:full - (Standardwert)",
                   "Lösche Registrierungswert:full - v"}));
  EXPECT_EQ(world.Journal(), (Lines{"delete key HKLM\\SOFTWARE\\Classes\\.ext",
                                    "delete key HKLM\\SOFTWARE\\Classes\\empty",
                                    "delete value HKLM\\SOFTWARE\\Classes\\full @"}));
}

TEST(BasePlugin, KeyItemsNameTheirView) {
  World world;
  auto& plugin = world.Create<TRCPTrial>();
  EXPECT_EQ(plugin.BuildErrorRegKeyParameter(u"k", {}), u"32:k");
  EXPECT_EQ(plugin.BuildErrorRegKeyParameter(u"k", {zmreg64Bit}), u"64:k");
  try {
    (void)plugin.BuildErrorRegKeyParameter(u"k", {zmreg64Bit, zmregNative});
    FAIL();
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(),
                 "[RC_BasePlugin: BuildErrorRegKeyParameter] RegOpts may not contain zmregNative! "
                 "(FPluginID=\"Trial\")");
  }
}

TEST(ErrorList, KnowsWhatStandsInIt) {
  TSweepErrorList list;
  const auto record = [](std::int32_t type, const TStringList& data) {
    auto made = std::make_unique<TSweepError>();
    made->PluginID = u"P";
    made->ErrorType = type;
    made->Data = data;
    return made;
  };
  EXPECT_FALSE(list.HasUnfixed(u"P", 1, TStringList{u"a"}));
  for (std::int32_t i = 0; i < 200; ++i) list.Add(record(i, {u"a", IntToStr(i)}));
  list.Put(3, record(3, {u"other"}));
  list[4].Fixed = true;
  list[5].Data = {u"in place"};
  list.Put(5, record(5, {u"again"}));
  const std::tuple<std::int32_t, TStringList, bool> kRows[] = {
      {0, {u"a", u"0"}, true},  {199, {u"a", u"199"}, true}, {0, {u"a", u"199"}, false},
      {0, {u"0", u"a"}, false}, {3, {u"a", u"3"}, false},    {3, {u"other"}, true},
      {4, {u"a", u"4"}, false}, {5, {u"a", u"5"}, false},    {5, {u"in place"}, false},
      {5, {u"again"}, true},
  };
  for (const auto& [type, data, there] : kRows) EXPECT_EQ(list.HasUnfixed(u"P", type, data), there);
  list.Clear();
  EXPECT_FALSE(list.HasUnfixed(u"P", 0, TStringList{u"a", u"0"}));
}

TEST(PluginList, FindsSwitchesAndSorts) {
  World world;
  TRCPTrial a, b, c;
  a.FPluginID = u"A", b.FPluginID = u"B", c.FPluginID = u"C";
  a.Caption = u"zebra", b.Caption = u"Yak", c.Caption = u"aardvark";
  EXPECT_TRUE(SetPluginStatus(u"C", false, 2));
  EXPECT_TRUE(SetPluginStatus(u"C", false, -1));
  EXPECT_FALSE(SetPluginStatus(u"c", true, 3));
  EXPECT_TRUE(!c.Active && c.GroupIndex == 2);
  a.ErrorCount = 2, b.ErrorCount = 3;
  EXPECT_EQ(GetGroupErrorCount(0), 5);
  EXPECT_EQ(GetGroupErrorCount(1), 0);
  Plugins->Sort();
  EXPECT_EQ(std::vector<TRCPlugin*>(Plugins->begin(), Plugins->end()),
            (std::vector<TRCPlugin*>{&b, &a, &c}));
  c.StopRequested = true;
  EXPECT_TRUE(Plugins->GetStopSearch());
  Plugins->SetStopSearch(false);
  EXPECT_FALSE(c.StopRequested);
  SetAllPluginStatus(true);
  EXPECT_TRUE(c.Active);
}

TEST(PluginList, OutlivedByAPlugin) {
  auto world = std::make_unique<World>();
  TRCPTrial late;
  EXPECT_EQ(Plugins->Count(), 1);
  world.reset();
  EXPECT_EQ(Plugins, nullptr);
  TRCPlugin* none = &late;
  EXPECT_TRUE(!GetPluginByID(u"Trial", none) && none == nullptr);
}

}  // namespace
}  // namespace scrubwell::test
