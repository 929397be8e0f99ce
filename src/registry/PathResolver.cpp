#include "registry/PathResolver.h"

#include <algorithm>
#include <optional>

#include "registry/CommandLine.h"
#include "registry/Hashlist.h"
#include "registry/Stringhelper.h"
#include "registry/TextTable.h"

namespace scrubwell::paths {
namespace {

constexpr std::size_t kLongestText = 32767;
constexpr std::size_t kMostCached = 1U << 16;

// What a name without an extension may stand for: programs as the shell and the loader complete
// them. The order is the shell's.
constexpr UnicodeView kExtensions[] = {u".exe", u".com", u".bat", u".cmd", u".lnk", u".pif",
                                       u".dll", u".drv", u".sys", u".cpl", u".ocx"};

constexpr UnicodeView kAppPaths = u"Software\\Microsoft\\Windows\\CurrentVersion\\App Paths\\";

struct Memory {
  detail::TextMap<std::optional<UnicodeString>> variables[3];  // by view
  detail::TextTable<Lookup> lookups[3];                        // by what is wanted
  std::optional<TStringList> searchFolders;
  bool searchFoldersKnown = true;
};
Memory& Remembered() {
  static Memory memory;
  return memory;
}

ITrace* g_trace = nullptr;

const std::optional<UnicodeString>& Variable(UnicodeView name, View view) {
  auto& known = Remembered().variables[static_cast<std::size_t>(view)];
  const UnicodeString key = UpperCase(name);
  if (const auto it = known.find(key); it != known.end()) return it->second;
  UnicodeString value;
  std::optional<UnicodeString> entry;
  if (Platform().system.Environment(name, view, value) == Status::Ok) entry = std::move(value);
  return known.insert_or_assign(key, std::move(entry)).first->second;
}

// Whether the text between two percent signs can be a variable's name at all; "1\" \"" of
// `"%1" "%2"` can not.
bool LooksLikeVariable(UnicodeView name) {
  if (name.empty() || name.front() <= u' ' || name.back() <= u' ') return false;
  if (name.front() >= u'0' && name.front() <= u'9') return false;
  return name.find_first_of(u"\\/:*?\"<>|,;=") == UnicodeView::npos;
}

bool IsDriveLetter(char16_t c) {
  const char16_t up = UpCase(c);
  return up >= u'A' && up <= u'Z';
}

bool StartsWithText(UnicodeView text, UnicodeView prefix) {
  return text.size() >= prefix.size() && SameText(text.substr(0, prefix.size()), prefix);
}

bool HasIllegalUnit(UnicodeView path) {
  return std::any_of(path.begin(), path.end(), [](char16_t c) {
    return c < u' ' || c == u'*' || c == u'?' || c == u'<' || c == u'>' || c == u'|' || c == u'"';
  });
}

Status StatAs(UnicodeView path, FsView view, Want want) {
  FileInfo info;
  const Status status = Platform().files.Stat(path, view, info);
  if (status != Status::Ok) return status;
  return info.isFolder && want != Want::FileOrFolder ? Status::Absent : Status::Ok;
}

// Whether what is not found on the drive is missing.
bool CanProve(char16_t letter, Want want) {
  const DriveKind kind = Platform().files.Drive(letter);
  if (kind != DriveKind::Network || want != Want::FileOnAnyDrive) return kind == DriveKind::Fixed;
  FileInfo root;
  return Platform().files.Stat(UnicodeString{letter, u':', u'\\'}, FsView::Physical, root) ==
             Status::Ok &&
         root.isFolder;
}

// Whether the name is seen from the current folder (".\x") or from one above it ("..\x").
bool IsFromCurrentFolder(UnicodeView name) {
  const std::size_t dots = std::min(name.find_first_not_of(u'.'), name.size());
  return (dots == 1 || dots == 2) &&
         (dots == name.size() || name[dots] == u'\\' || name[dots] == u'/');
}

UnicodeString SystemFolder() {
  return Platform().system.WindowsDir() + u"\\System32";
}

// The folders a bare name is searched in, in the order of process creation. What the current and
// the application's folder would be can't be known, so they are no part of it.
const TStringList& SearchFolders(bool& complete) {
  Memory& memory = Remembered();
  if (!memory.searchFolders) {
    const UnicodeString windows = Platform().system.WindowsDir();
    TStringList folders = {SystemFolder(), windows + u"\\System", windows};
    for (const View view : {View::Native, View::Bits64}) {
      const auto& path = Variable(u"Path", view);
      if (!path) memory.searchFoldersKnown = false;
      const UnicodeView list = path ? UnicodeView(*path) : UnicodeView();
      for (int i = 1; i <= ParamXCount(list, u';'); ++i) {
        UnicodeString folder(
            ExcludeTrailingPathDelimiter(RemoveQuotationMarks(Trim(ParamX(list, u';', i)))));
        const auto same = [&](const UnicodeString& f) { return SameText(f, folder); };
        if (folder.empty() || std::any_of(folders.begin(), folders.end(), same)) continue;
        folders.push_back(std::move(folder));
      }
      if (!Platform().system.IsWow64()) break;
    }
    memory.searchFolders = std::move(folders);
  }
  complete = memory.searchFoldersKnown;
  return *memory.searchFolders;
}

// The program registered under this name for starting without a path.
Status ProbeAppPath(UnicodeView name, UnicodeString& found) {
  Verdict verdict;
  for (const RootKey root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    for (const TZmRegOptions opts : {TZmRegOptions{zmreg32Bit}, TZmRegOptions{zmreg64Bit}}) {
      const UnicodeString key = UnicodeString(kAppPaths).append(name);
      RegValue value;
      const Status status = Platform().registry.GetValue({root, key, ViewOf(opts)}, u"", value);
      if (status != Status::Ok) {
        verdict.Add(status);
        continue;
      }
      const TStringList texts = Expansions(RemoveQuotationMarks(Trim(RegValueText(value))));
      if (texts.empty()) verdict.Add(Status::Unknown);
      for (const UnicodeString& text : texts) {
        if (verdict.Add(Probe(text, Want::File, found))) return Status::Ok;
      }
    }
  }
  return verdict.Get();
}

// A name without a drive, as it stands, below each folder of the search order.
Status ProbeSearchOrder(UnicodeView name, Want want, UnicodeString& found) {
  Verdict verdict;
  bool complete = true;
  const TStringList& folders = SearchFolders(complete);
  if (g_trace != nullptr) g_trace->Searched(name, folders);
  for (const UnicodeString& folder : folders) {
    if (verdict.Add(Probe(folder + u"\\" + UnicodeString(name), want, found))) return Status::Ok;
  }
  if (!complete) verdict.Add(Status::Unknown);
  if (name.find_first_of(u"\\/") == UnicodeView::npos && verdict.Get() != Status::Ok) {
    verdict.Add(ProbeAppPath(name, found));
  }
  return verdict.Get();
}

Status ProbeAsItStands(UnicodeView name, Want want, UnicodeString& found) {
  if (IsDrivePath(name)) return Probe(name, want, found);
  if (name.size() >= 2 && name[1] == u':') return Status::Unknown;  // relative to a drive's folder
  if (name.starts_with(u"\\\\") || name.starts_with(u"//")) return Status::Unknown;
  if (name.find(u':') != UnicodeView::npos) return Status::Unknown;  // an address or a moniker
  if (IsFromCurrentFolder(name)) return Status::Unknown;
  if (name.starts_with(u"\\") || name.starts_with(u"/")) {
    if (StartsWithText(name, u"\\Device\\")) return Status::Unknown;
    return Probe(Platform().system.WindowsDir().substr(0, 2) + UnicodeString(name), want, found);
  }
  return ProbeSearchOrder(name, want, found);
}

}  // namespace

TStringList Expansions(UnicodeView text) {
  TStringList out;
  bool allResolved = true;
  const auto add = [&](View view) {
    bool resolved = true;
    UnicodeString expanded = ExpandEnvironment(text, view, resolved);
    allResolved = allResolved && resolved;
    if (std::find(out.begin(), out.end(), expanded) == out.end()) {
      out.push_back(std::move(expanded));
    }
  };
  add(View::Native);
  if (text.find(u'%') != UnicodeView::npos && Platform().system.IsWow64()) {
    add(View::Bits32);
    add(View::Bits64);
  }
  // A view that gives the text no meaning may hold what the others lack.
  if (!allResolved) out.clear();
  if (g_trace != nullptr) g_trace->Expanded(text, out);
  return out;
}

UnicodeString WithoutNtPrefix(UnicodeView path) {
  constexpr UnicodeView devices = u"\\\\.\\";
  for (const UnicodeView prefix : {u"\\??\\", u"\\\\?\\", u"\\DosDevices\\", devices.data()}) {
    if (!StartsWithText(path, prefix)) continue;
    const UnicodeView rest = path.substr(prefix.size());
    // Only a drive is a path; a device or a share behind the prefix stays what it is.
    const bool isDrive = rest.size() >= 2 && IsDriveLetter(rest[0]) && rest[1] == u':';
    if (isDrive && prefix != devices) return UnicodeString(rest);
    return UnicodeString(u"\\Device\\").append(rest);
  }
  if (StartsWithText(path, u"\\SystemRoot\\")) {
    return Platform().system.WindowsDir().append(path.substr(11));
  }
  return UnicodeString(path);
}

bool IsDrivePath(UnicodeView path) {
  return path.size() >= 3 && IsDriveLetter(path[0]) && path[1] == u':' &&
         (path[2] == u'\\' || path[2] == u'/');
}

Status Probe(UnicodeView path, Want want, UnicodeString& found) {
  if (!IsDrivePath(path) || path.size() > kLongestText || HasIllegalUnit(path)) {
    return Status::Unknown;
  }
  if (!CanProve(UpCase(path[0]), want)) return Status::Unknown;
  Verdict verdict;
  verdict.Add(StatAs(path, FsView::Physical, want));
  if (verdict.Get() != Status::Ok && Platform().system.IsWow64()) {
    verdict.Add(StatAs(path, FsView::Redirected, want));
  }
  if (verdict.Get() == Status::Ok) found = path;
  // A percent sign that no variable explains may be part of a name, but more likely stands for
  // something that is filled in later.
  if (verdict.Get() == Status::Absent && path.find(u'%') != UnicodeView::npos) {
    return Status::Unknown;
  }
  return verdict.Get();
}

Status ProbeName(UnicodeView text, Want want, UnicodeString& found) {
  const UnicodeString name = WithoutNtPrefix(Trim(text));
  if (name.empty() || HasIllegalUnit(name) || name.front() == u'@') return Status::Unknown;
  Verdict verdict;
  if (verdict.Add(ProbeAsItStands(name, want, found))) return Status::Ok;
  if (ExtractFileExt(name).empty() && !name.ends_with(u'\\') && !name.ends_with(u'/')) {
    const Want file = want == Want::FileOrFolder ? Want::File : want;
    for (const UnicodeView extension : kExtensions) {
      const UnicodeString complete = name + UnicodeString(extension);
      if (verdict.Add(ProbeAsItStands(complete, file, found))) return Status::Ok;
    }
  }
  if (name.find(u'%') != UnicodeString::npos) return Status::Unknown;
  return verdict.Get();
}

Lookup Resolve(UnicodeView text, Want want) {
  auto& known = Remembered().lookups[static_cast<std::size_t>(want)];
  if (const Lookup* const before = known.Find(text)) return *before;
  Lookup result;
  const UnicodeView trimmed = Trim(text);
  if (!trimmed.empty() && trimmed.size() <= kLongestText && trimmed.front() != u'@') {
    Verdict program;
    Verdict argument;
    Verdict log;
    for (const UnicodeString& expanded : Expansions(trimmed)) {
      Lookup one = ResolveCommand(expanded, want);
      argument.Add(one.argument);
      log.Add(one.log);
      const bool first = result.found.empty();
      if (program.Add(one.program) && first) result = std::move(one);
    }
    result.program = program.Get();
    result.argument = argument.Get();
    result.log = log.Get();
  }
  if (known.Size() >= kMostCached) known.Clear();
  known.Add(text, result);
  return result;
}

void SetTrace(ITrace* trace) {
  g_trace = trace;
}

void ForgetLookups() {
  Remembered() = {};
}

}  // namespace scrubwell::paths

namespace scrubwell {

using paths::LooksLikeVariable;
using paths::Variable;

UnicodeString ExpandEnvironment(UnicodeView text, View view, bool& resolved) {
  UnicodeString out;
  std::size_t at = 0;
  while (true) {
    const std::size_t open = text.find(u'%', at);
    const std::size_t close =
        open == UnicodeView::npos ? UnicodeView::npos : text.find(u'%', open + 1);
    if (close == UnicodeView::npos) return out.append(text.substr(at));
    out.append(text.substr(at, open - at));
    const UnicodeView name = text.substr(open + 1, close - open - 1);
    const bool possible = LooksLikeVariable(name);
    if (possible) {
      if (const auto& value = Variable(name, view)) {
        out.append(*value);
        at = close + 1;
        continue;
      }
      resolved = false;
    }
    // The second sign may open the next variable.
    out.append(text.substr(open, close - open));
    at = close;
  }
}

}  // namespace scrubwell
