#include <gtest/gtest.h>

#include "plugins/system/Rcp_sounds.h"
#include "registry/Stringhelper.h"
#include "support/class_text.h"

namespace scrubwell::test {
namespace {

// Lines as for classes; "A\" stands for the applications' key.
std::string Sounds(const std::string& lines) {
  return Classes(ReplaceAll(lines, "A\\", "HKEY_CURRENT_USER\\AppEvents\\Schemes\\Apps\\"));
}

std::string Problem(const std::string& key, const std::string& application,
                    const std::string& scheme, const std::string& event, const std::string& file) {
  return "1|existingkey:HKEY_CURRENT_USER\\AppEvents\\Schemes\\Apps\\" + key +
         "|application:" + application + "|scheme:" + scheme + "|event:" + event +
         "|missingfile:" + file;
}

std::string Emptied(const std::string& key) {
  return "set value HKCU\\AppEvents\\Schemes\\Apps\\" + key + " @=\"\"";
}

const std::string kMedia =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion : MediaPath = "
    "C:\\Windows\\Media\n";

TEST(Sounds, FindsAndEmpties) {
  const Case rows[] = {
      {.name = "no schemes"},
      {.name = "healthy, or not to be told",
       .registry = Sounds(kMedia + R"(A\.Default\Beep\.Current = C:\w\here.wav
           A\.Default\Beep\.Default = here.wav
           A\.Default\Ding\.Current = %SystemRoot%\Media\here.wav
           A\.Default\Ding\.Modified
           A\.Default\Ding\Quiet =
           A\.Default\Dong\.Current = D:\gone.wav)"),
       .files = "C:\\w\\here.wav\nC:\\Windows\\Media\\here.wav\ndrive D: network"},
      {.name = "labels where there are some",
       .registry = Sounds(R"(A\.Default = Windows
           A\.Default\Beep\.Current = C:\gone.wav
           A\.Default\Beep\Loud = gone.wav
           A\.Default\BOOP = Own Label
           A\.Default\BOOP\.CURRENT = C:\gone.wav
           A\Tool\Ding\Calm = C:\gone.wav
           HKEY_CURRENT_USER\AppEvents\EventLabels\BEEP =  The Beep
           HKEY_CURRENT_USER\AppEvents\EventLabels\Ding =
           HKEY_CURRENT_USER\AppEvents\Schemes\Names\LOUD = Very loud
           HKEY_CURRENT_USER\AppEvents\Schemes\Names\.Current = Never shown)"),
       .problems = {Problem(".Default\\Beep\\.Current", "Windows", "Aktuell", "The Beep",
                            "C:\\gone.wav"),
                    Problem(".Default\\Beep\\Loud", "Windows", "Very loud", "The Beep", "gone.wav"),
                    Problem(".Default\\BOOP\\.CURRENT", "Windows", "Aktuell", "Own Label",
                            "C:\\gone.wav"),
                    Problem("Tool\\Ding\\Calm", "Tool", "Calm", "Ding", "C:\\gone.wav")},
       .journal = Lines{Emptied(".Default\\Beep\\.Current"), Emptied(".Default\\Beep\\Loud"),
                        Emptied(".Default\\BOOP\\.CURRENT"), Emptied("Tool\\Ding\\Calm")}},
      {.name = "the media folder helps bare names alone; a key that can't be written",
       .registry = Sounds(kMedia + R"(A\T\E\.Current = %SystemRoot%\Media\gone.wav
           A\T\E\.Default = C:\gone.wav
           A\T\E\Bare = gone.wav
           A\T\E\Kept = C:\gone.wav
           A\T\E\Sub = sub\here.wav)"),
       .files = "C:\\Windows\\Media\\sub\\here.wav",
       .problems = {Problem("T\\E\\.Current", "T", "Aktuell", "E", "%SystemRoot%\\Media\\gone.wav"),
                    Problem("T\\E\\.Default", "T", ".Default", "E", "C:\\gone.wav"),
                    Problem("T\\E\\Bare", "T", "Bare", "E", "gone.wav")},
       .setup =
           [](World& world) {
             world.Backend().DenyWrite(
                 u"HKU\\S-1-5-21-1-2-3-1001\\AppEvents\\Schemes\\Apps\\T\\E\\Kept");
           }},
  };
  CheckCases<TRCPSounds>(rows);
  // Other rows have labels, which a fault may change.
  CheckFaults<TRCPSounds>(rows[3]);
}

TEST(Sounds, NeverMakesAKey) {
  World world(Sounds("A\\T\\E\\S = C:\\gone.wav"));
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
