// A host in one page: opens the package as a module, shows it a Windows, scans, prints what was
// found, repairs it, and closes the module again.
//
//   embed FOLDER/scrubwell_package.so      (on Windows: scrubwell_package.dll)
//
// It links nothing of Scrubwell; the headers are enough.
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <iostream>

#include "plugins/module/interface.h"
#include "tiny_windows.h"

namespace {

using namespace scrubwell;

// To UTF-8; what is no valid UTF-16 becomes U+FFFD.
std::string Utf8(UnicodeView text) {
  constexpr std::uint32_t lead[] = {0, 0xC0, 0xE0, 0xF0};
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t point = text[i];
    if (point >= 0xD800 && point < 0xE000) {
      const std::uint32_t next = i + 1 < text.size() ? text[i + 1] : 0U;
      const bool pair = point < 0xDC00 && next >= 0xDC00 && next < 0xE000;
      point = pair ? 0x10000 + ((point - 0xD800) << 10U) + (next - 0xDC00) : 0xFFFD;
      if (pair) ++i;
    }
    const std::uint32_t tail = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    bytes.push_back(static_cast<char>(lead[tail] | point >> (6 * tail)));
    for (std::uint32_t left = tail; left-- > 0;)
      bytes.push_back(static_cast<char>(0x80 | (point >> (6 * left) & 0x3F)));
  }
  return bytes;
}

#ifdef _WIN32
void* OpenModule(const char* file) {
  return LoadLibraryA(file);
}
void CloseModule(void* module) {
  FreeLibrary(static_cast<HMODULE>(module));
}
void* FindFunction(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}
#else
void* OpenModule(const char* file) {
  return dlopen(file, RTLD_NOW | RTLD_LOCAL);
}
void CloseModule(void* module) {
  dlclose(module);
}
void* FindFunction(void* module, const char* name) {
  return dlsym(module, name);
}
#endif

// The module, open from here to the end of the block.
class Module {
 public:
  explicit Module(const char* file) : handle_(OpenModule(file)) {}
  ~Module() {
    if (handle_ != nullptr) CloseModule(handle_);
  }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  template <class Function>
  Function* Find(const char* name) const {
    return handle_ == nullptr ? nullptr : reinterpret_cast<Function*>(FindFunction(handle_, name));
  }

 private:
  void* handle_;
};

void FillWindows(embed::TinyWindows& windows) {
  windows.files.Add(u"C:\\Windows\\Fonts\\harbour.ttf");
  const UnicodeString version = u"HKLM\\Software\\Microsoft\\Windows NT\\CurrentVersion";
  windows.registry.AddText(version + u"\\Fonts", u"Harbour (TrueType)", u"harbour.ttf");
  windows.registry.AddText(version + u"\\Fonts", u"Möwe (TrueType)", u"moewe.ttf");
  windows.registry.AddText(version + u"\\Fonts", u"Elsewhere (TrueType)", u"E:\\elsewhere.ttf");
  windows.registry.AddText(
      u"HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\quill.exe", u"",
      u"C:\\Program Files\\Quill\\quill.exe");
}

// Every plugin counts its work before the first one scans, so that the overall progress, which
// weighs them by it, never runs backwards.
void Scan(const TPackageInterface& package) {
  const auto progress = package.CreateProgressManager();
  package.ClearSweepErrors();
  *package.RealSweepErrorCount = *package.CategoryErrors = 0;
  package.ClearIgnoredProblems();
  package.LoadIgnoredProblems();
  TPluginList& plugins = **package.Plugins;
  package.SetStopSearch(plugins, false);
  for (TRCPlugin* plugin : plugins) {
    plugin->ErrorCount = 0;
    if (!plugin->Active) continue;
    plugin->Init();
    progress->AddItem(plugin->FPluginID, plugin->FScanItemCount, plugin->ScanWeight);
    plugin->OnScanProgress = [&](TRCPlugin& sender, std::int32_t promille, UnicodeView, bool) {
      progress->SetProgress(sender.FPluginID, promille);
      // A host with a window would show it, and set the mark when its user has seen enough.
      if (package.GetStopSearch(plugins)) *package.StopSearch = true;
    };
  }
  for (TRCPlugin* plugin : plugins) {
    if (plugin->Active) plugin->Scan();
    if (plugin->FState == rcpScanned) progress->SetProgress(plugin->FPluginID, 1000);
    plugin->OnScanProgress = {};
  }
  std::cout << progress->GetDoneItems() << " of " << progress->TotalItems() << " items, "
            << progress->GetTotalProgress() << " per mille\n";
}

void PrintProblems(const TPackageInterface& package) {
  const TSweepErrorList& problems = **package.SweepErrors;
  for (std::int32_t i = 0; i < problems.Count(); ++i) {
    const TSweepError& problem = problems[i];
    const char* state = problem.Fixed ? "fixed  " : problem.Visible ? "found  " : "hidden ";
    std::cout << state << Utf8(problem.PluginID) << ": " << Utf8(problem.Caption) << "\n       "
              << Utf8(problem.ShortDescription) << '\n';
  }
}

// Puts the first problem on the list of the current user, where the next scan finds it.
bool HideFirst(const TPackageInterface& package) {
  const TSweepError& problem = (**package.SweepErrors)[0];
  const TIgnoredProblem entry{u"1", problem.PluginID, problem.Caption, u"is to come back"};
  return package.StoreIgnoredProblem(problem, entry, false) == Status::Ok;
}

void Clean(const TPackageInterface& package) {
  for (TRCPlugin* plugin : **package.Plugins) {
    if (!plugin->Active || plugin->ErrorCount == 0) continue;
    plugin->InitClean();
    plugin->Clean();
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: embed FOLDER/scrubwell_package.so\n";
    return 2;
  }
  // Outlives the package, which borrows it.
  embed::TinyWindows windows;
  FillWindows(windows);

  const Module module(argv[1]);
  auto* load = module.Find<decltype(ScrubwellLoad)>("ScrubwellLoad");
  auto* unload = module.Find<decltype(ScrubwellUnload)>("ScrubwellUnload");
  if (load == nullptr || unload == nullptr) {
    std::cerr << "embed: " << argv[1] << ": is no such module\n";
    return 3;
  }
  const TPackageInterface* package = load(&windows.platform, TLanguage::English);
  if (package == nullptr || package->Version != TPackageInterface::CurrentVersion) {
    std::cerr << "embed: this module is of another version\n";
    return 3;
  }
  std::cout << (*package->Plugins)->Count() << " plugins\n";
  Scan(*package);
  PrintProblems(*package);
  if (!HideFirst(*package)) std::cerr << "embed: can't write the ignore list\n";
  Scan(*package);
  Clean(*package);
  std::cout << "after the repair\n";
  PrintProblems(*package);
  Scan(*package);
  std::cout << *package->RealSweepErrorCount << " left\n";
  unload();
  return 0;
}
