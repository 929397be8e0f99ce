#include "plugins/system/Rcp_sounds.h"
#include "support/case_text.h"

namespace scrubwell::test {
namespace {

const Abbreviations kShort = {
    {"{a}", "1|existingkey:HKEY_CURRENT_USER\\AppEvents\\Schemes\\Apps\\"},
    {"{-", "set value HKCU\\AppEvents\\Schemes\\Apps\\"},
    {"-}", " @=\"\""},
    {"A\\", "HKEY_CURRENT_USER\\AppEvents\\Schemes\\Apps\\"},
    {"{media}", "{W}Microsoft\\Windows\\CurrentVersion : MediaPath = C:\\Windows\\Media"}};

TEST(Sounds, FindsAndEmpties) {
  CheckText<TRCPSounds>(R"(
      # healthy, or not to be told
      {media} ; A\.Default\Beep\.Current = C:\w\here.wav ; A\.Default\Beep\.Default = here.wav
      A\.Default\Ding\.Current = %SystemRoot%\Media\here.wav ; A\.Default\Ding\.Modified
      A\.Default\Ding\Quiet = {} ; A\.Default\Ding\Number = dword:1
      A\.Default\Dong\.Current = D:\gone.wav
      + C:\w\here.wav ; C:\Windows\Media\here.wav ; drive D: network
      # labels where there are some (~)
      A\.Default = Windows ; A\.Default\Beep\.Current = C:\gone.wav
      A\.Default\Beep\Loud = gone.wav ; A\.Default\BOOP = Own Label
      A\.Default\BOOP\.CURRENT = C:\gone.wav ; A\Tool\Ding\Calm = C:\gone.wav
      HKEY_CURRENT_USER\AppEvents\EventLabels\BEEP =  The Beep
      HKEY_CURRENT_USER\AppEvents\EventLabels\Ding = {}
      HKEY_CURRENT_USER\AppEvents\Schemes\Names\LOUD = Very loud
      HKEY_CURRENT_USER\AppEvents\Schemes\Names\.Current = Never shown
      ? {a}.Default\Beep\.Current|application:Windows|scheme:Aktuell|event:The Beep{f}C:\gone.wav
      ? {a}.Default\Beep\Loud|application:Windows|scheme:Very loud|event:The Beep{f}gone.wav
      ? {a}.Default\BOOP\.CURRENT|application:Windows|scheme:Aktuell|event:Own Label{f}C:\gone.wav
      ? {a}Tool\Ding\Calm|application:Tool|scheme:Calm|event:Ding{f}C:\gone.wav
      ! {-.Default\Beep\.Current-} ; {-.Default\Beep\Loud-} ; {-.Default\BOOP\.CURRENT-}
      ! {-Tool\Ding\Calm-}
      # the media folder helps bare names alone; a key that can't be written
      & deny-write HKU\S-1-5-21-1-2-3-1001\AppEvents\Schemes\Apps\T\E\Kept
      {media} ; A\T\E\.Current = %SystemRoot%\Media\gone.wav ; A\T\E\.Default = C:\gone.wav
      A\T\E\Bare = gone.wav ; A\T\E\Kept = C:\gone.wav ; A\T\E\Sub = sub\here.wav
      + C:\Windows\Media\sub\here.wav
      ? {a}T\E\.Current|application:T|scheme:Aktuell|event:E{f}%SystemRoot%\Media\gone.wav
      ? {a}T\E\.Default|application:T|scheme:.Default|event:E{f}C:\gone.wav
      ? {a}T\E\Bare|application:T|scheme:Bare|event:E{f}gone.wav)",
                        kShort);
}

TEST(Sounds, NeverMakesAKey) {
  World world(ReadCases("# one\nA\\T\\E\\S = C:\\gone.wav", kShort)[0].registry);
  world.Run<TRCPSounds>();
  DeleteRegKey(HKEY_CURRENT_USER, u"AppEvents\\Schemes\\Apps\\T", {});
  std::string shown;
  world.Plugin().OnCleanProgress = [&](TRCPlugin&, std::int32_t, UnicodeView action,
                                       UnicodeView sub,
                                       bool) { shown = ToUtf8(UnicodeString(action).append(sub)); };
  EXPECT_EQ(world.CleanAll(), Lines());
  EXPECT_EQ(shown, "Überschreibe Registrierungswert:AppEvents\\Schemes\\Apps\\T\\E\\S");
  EXPECT_EQ(RealSweepErrorCount, 0);
}

}  // namespace
}  // namespace scrubwell::test
