#include <gtest/gtest.h>

#include "plugins/system/Rcp_systemaddon.h"
#include "registry/Stringhelper.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const std::string kHelpers = R"(Microsoft\Windows\CurrentVersion\Explorer\Browser Helper Objects)";
const std::string kSoftware = "HKEY_LOCAL_MACHINE\\SOFTWARE\\";
constexpr UnicodeView kSettings = u"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Settings\\";

TEST(SystemAddOn, FindsAndCleans) {
  CheckText<TRCPSystemAddOn>(
      R"(
      # codecs healthy, or not to be told
      {W}{K} : wave = wdmaud.drv ; : msacm.x = C:\c\x.acm ; : vidc.net = E:\here.dll
      {W}{K} : vidc.num = dword:1 ; : vidc.sub = .\gone.dll ; : vidc.none = {}
      + C:\Windows\SysWOW64\wdmaud.drv ; C:\c\x.acm ; drive E: network ; E:\here.dll
      # codecs in both views; the default value ends the walk of its key
      {W}{K} : a = gone.drv ; {W}{K} = x ; : b = gone.drv ; {LM}{K} : c = E:\gone.acm
      + drive E: network
      ? 1{32}{K}{v}a{f}gone.drv ; 1{64}{K}{v}c{f}E:\gone.acm
      ! {-Wv}{K} "a" ; {-v}{K} "c"
      # helpers: one class in one view, another in none, and what is none (~)
      {W}{H}\{A} ; {LM}{H}\{A} ; {LM}{H}\{B} ; {LM}{H}\AutoRunsDISABLED ; {LM}{H}\Disabled
      CLSID\{A}
      ? 2|caption:{A}{32}{H}\{A}|missingkey:32:HKEY_CLASSES_ROOT\CLSID\{A}|item:0
      ? 2|caption:{B}{64}{H}\{B}|missingkey:64:HKEY_CLASSES_ROOT\CLSID\{B}|item:2
      ! {-Wk}{H}\{A} ; {-k}{H}\{B}
      # one view on a 32-bit system
      & 32-bit
      {LM}{H}\{A} ; {LM}{K} : a = gone.drv
      ? 1{32}{K}{v}a{f}gone.drv
      ? 2|caption:{A}{32}{H}\{A}|missingkey:32:HKEY_CLASSES_ROOT\CLSID\{A}|item:0
      ! {-v}{K} "a" ; {-k}{H}\{A})",
      {{"{K}", "Microsoft\\Windows NT\\CurrentVersion\\Drivers32"}, {"{H}", kHelpers}});
}

TEST(SystemAddOn, CleansOnlyTheObjectThatTheProblemMeans) {
  World world(Classes(kSoftware + "Wow6432Node\\" + kHelpers + "\\{A}"));
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
  World world(Classes(kSoftware + "Wow6432Node\\" + kHelpers + "\\{A} ; " + kSoftware + kHelpers +
                      "\\{A} ; " + R"(CLSID\{A} =   
      CLSID\{A}\InprocServer = ; CLSID\{A}\LocalServer32 = b.exe ; CLSID\{A}\InprocServer32 =  a.dll
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
