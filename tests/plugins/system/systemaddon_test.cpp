#include <gtest/gtest.h>

#include "plugins/system/Rcp_systemaddon.h"
#include "registry/Stringhelper.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

const std::string kDrivers = R"(Microsoft\Windows NT\CurrentVersion\Drivers32)";
const std::string kHelpers = R"(Microsoft\Windows\CurrentVersion\Explorer\Browser Helper Objects)";
const std::string kWow = "Wow6432Node\\";
constexpr UnicodeView kSettings = u"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\";

std::string Key(const std::string& key, const std::string& values = {}) {
  return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\" + key + "]\n" + values + "\n";
}

std::string Codec(const std::string& view, const std::string& name, const std::string& file) {
  return "1|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" + kDrivers +
         "|existingvalue:" + name + "|missingfile:" + file;
}

std::string Helper(const std::string& view, const std::string& clsid, int item) {
  return "2|caption:" + clsid + "|existingkey:" + view + ":HKEY_LOCAL_MACHINE\\Software\\" +
         kHelpers + "\\" + clsid + "|missingkey:" + view + ":HKEY_CLASSES_ROOT\\CLSID\\" + clsid +
         "|item:" + std::to_string(item);
}

TEST(SystemAddOn, FindsAndCleans) {
  const MemoryOptions bits32{.is64Bit = false};
  const std::string deleteKey = "delete key HKLM\\SOFTWARE\\";
  const std::string deleteValue = "delete value HKLM\\SOFTWARE\\";
  const Case rows[] = {
      {.name = "nothing registered"},
      {.name = "codecs healthy, or not to be told",
       .registry = Key(kWow + kDrivers, R"("wave"="wdmaud.drv"
"msacm.x"="C:\\c\\x.acm"
"vidc.net"="E:\\here.dll"
"vidc.num"=dword:1
"vidc.sub"=".\\gone.dll"
"vidc.none"="")"),
       .files = "C:\\Windows\\SysWOW64\\wdmaud.drv\nC:\\c\\x.acm\ndrive E: network\nE:\\here.dll"},
      {.name = "codecs in both views; the default value ends the walk of its key",
       .registry = Key(kWow + kDrivers, "\"a\"=\"gone.drv\"\n@=\"x\"\n\"b\"=\"gone.drv\"") +
                   Key(kDrivers, "\"c\"=\"E:\\\\gone.acm\""),
       .files = "drive E: network",
       .problems = {Codec("32", "a", "gone.drv"), Codec("64", "c", "E:\\gone.acm")},
       .journal =
           Lines{deleteValue + kWow + kDrivers + " \"a\"", deleteValue + kDrivers + " \"c\""}},
      {.name = "helpers: one class in one view, another in none, and what is none",
       .registry = Key(kWow + kHelpers + "\\{A}") + Key(kHelpers + "\\{A}") +
                   Key(kHelpers + "\\{B}") + Key(kHelpers + "\\AutoRunsDISABLED") +
                   Key(kHelpers + "\\Disabled") + Key("Classes\\CLSID\\{A}"),
       .problems = {Helper("32", "{A}", 0), Helper("64", "{B}", 2)},
       .journal = Lines{deleteKey + kWow + kHelpers + "\\{A}", deleteKey + kHelpers + "\\{B}"}},
      {.name = "one view on a 32-bit system",
       .registry = Key(kHelpers + "\\{A}") + Key(kDrivers, "\"a\"=\"gone.drv\""),
       .problems = {Codec("32", "a", "gone.drv"), Helper("32", "{A}", 0)},
       .journal = Lines{deleteValue + kDrivers + " \"a\"", deleteKey + kHelpers + "\\{A}"},
       .options = bits32},
  };
  CheckCases<TRCPSystemAddOn>(rows);
  for (const std::size_t row : {2U, 4U}) CheckFaults<TRCPSystemAddOn>(rows[row]);
}

TEST(SystemAddOn, CleansOnlyTheObjectThatTheProblemMeans) {
  World world(Key(kWow + kHelpers + "\\{A}"));
  auto& plugin = world.Create<TRCPSystemAddOn>();
  plugin.Init();
  const TStringList rows[] = {
      {u"item:x"},  {u"caption:x"}, {u"item:7"},
      {u"item:-1"}, {u"item:-2"},   {u"existingkey:32:HKEY_LOCAL_MACHINE\\Software\\X", u"item:0"}};
  for (const TStringList& data : rows) {
    TSweepError error;
    error.ErrorType = 2;
    error.Data = data;
    EXPECT_TRUE(plugin.CleanError(error));
    EXPECT_EQ(world.Journal(), Lines()) << ToUtf8(data.front());
  }
}

TEST(BrowserHelperObjects, TellsSwitchesAndDeletes) {
  World world(Key(kWow + kHelpers + "\\{A}") + Key(kHelpers + "\\{A}") + Classes(R"(CLSID\{A} =   
      CLSID\{A}\InprocServer =
      CLSID\{A}\LocalServer32 = b.exe
      CLSID\{A}\InprocServer32 =  a.dll
      W\CLSID\{A} = Name)"));
  TBrowserHelperObjects objects;
  EXPECT_EQ(objects.GetObject(0), nullptr);  // only the count loads the list
  ASSERT_EQ(objects.GetCount(), 2);
  EXPECT_EQ(objects.GetObject(2), nullptr);
  EXPECT_EQ(objects.GetObject(-1), nullptr);
  TBrowserHelperObject& narrow = *objects.GetObject(0);
  TBrowserHelperObject& wide = *objects.GetObject(1);
  EXPECT_TRUE(wide.Is64BitEntry() && !narrow.Is64BitEntry());
  EXPECT_TRUE(wide.IsValid() && narrow.IsValid());
  EXPECT_EQ(narrow.GetDisplayName(), u"Name");
  EXPECT_EQ(wide.GetDisplayName(), u"{A}");
  EXPECT_EQ(narrow.GetFile(), u"");
  EXPECT_EQ(wide.GetFile(), u" a.dll");

  EXPECT_FALSE(wide.GetDisabled());
  for (int twice = 0; twice < 2; ++twice) wide.SetDisabled(true);
  EXPECT_TRUE(narrow.GetDisabled());
  const UnicodeString key = UnicodeString(kSettings) + u"{A}";
  std::uint32_t flags = 0;
  EXPECT_EQ(GetRegStringValueDef(HKEY_CURRENT_USER, key, u"Version", u"", {}), u"*");
  EXPECT_EQ(GetRegDWORDValue(HKEY_CURRENT_USER, key, u"Flags", flags, {}), 0);
  EXPECT_EQ(flags, 1U);
  for (int twice = 0; twice < 2; ++twice) wide.SetDisabled(false);
  EXPECT_FALSE(KeyExist(HKEY_CURRENT_USER, key, {}));

  wide.Delete();
  wide.Delete();
  EXPECT_EQ(objects.GetCount(), 2);
  objects.Reload();
  ASSERT_EQ(objects.GetCount(), 1);
  EXPECT_FALSE(objects.GetObject(0)->Is64BitEntry());
}

}  // namespace
}  // namespace scrubwell::test
