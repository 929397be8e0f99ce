// Texts that name files: whatever they hold, a verdict comes out, and it is the same one when asked
// again. Nothing may be proven missing that is there.
#include <cstdlib>

#include "backends/memory/memory_backend.h"
#include "backends/offline/win_path.h"
#include "registry/PathResolver.h"
#include "registry/Stringhelper.h"
#include "registry/Wildcards.h"
#include "registry/Zmregistry.h"
#include "require.h"

namespace {

using namespace scrubwell;

void StartUp() {
  static MemoryBackend backend;
  static const std::string wrong = backend.AddFiles(
      "C:\\Windows\\System32\\rundll32.exe\nC:\\Windows\\System32\\cmd.exe\n"
      "C:\\Windows\\System32\\shell32.dll\nC:\\Windows\\SysWOW64\\regsvr32.exe\n"
      "C:\\Windows\\explorer.exe\nC:\\Program Files\\App\\app.exe\nC:\\Program Files\\A,B\\x.dll\n"
      "C:\\Tools\\tool.cmd\ndrive D: removable\n");
  Require(wrong.empty());
  SetPlatform(&backend.Platform());
}

bool Same(const paths::Lookup& a, const paths::Lookup& b) {
  return a.program == b.program && a.argument == b.argument && a.log == b.log &&
         a.found == b.found && a.arguments == b.arguments;
}

void Check(UnicodeView text, paths::Want want) {
  const paths::Lookup answer = paths::Resolve(text, want);
  Require(answer.program == Status::Ok || answer.found.empty());
  Require(Same(answer, paths::Resolve(text, want)));
  paths::ForgetLookups();
  Require(Same(answer, paths::Resolve(text, want)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  StartUp();
  const UnicodeString text = FromUtf8({reinterpret_cast<const char*>(bytes), size});
  Check(text, paths::Want::File);
  Check(text, paths::Want::FileOrFolder);
  paths::ForgetLookups();
  // A plain path that is there, or asked for with quotes, is never missing.
  offline::WinPath path;
  if (offline::ParsePath(text, path)) {
    const UnicodeString plain = offline::PathText(path);
    offline::WinPath again;
    Require(path.literal || (offline::ParsePath(plain, again) && again.parts == path.parts));
    FileInfo info;
    const Status status = Platform().files.Stat(plain, FsView::Physical, info);
    if (status == Status::Ok) Require(PathFileExistsWrapper(plain));
  }
  UnicodeString file;
  std::uint32_t id = 0;
  const bool isResource = ExtractResFileAndIDFromString(text, file, id);
  Require(isResource || (file.empty() && id == 0));
  PathCreateFromUrl(text, file);
  Require(QuotedPrintableDecode(QuotedPrintableEncode(text)) == text);
  (void)PathParseIconLocation(file = text);
  const std::size_t half = text.size() / 2;
  (void)MatchesMask(UnicodeView(text).substr(half), UnicodeView(text).substr(0, half));
  Require(MatchesMask(text, u"*") && (text.empty() || MatchesMask(text, u"?*")));
  return 0;
}
