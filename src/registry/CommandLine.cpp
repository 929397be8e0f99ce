#include "registry/CommandLine.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Wildcards.h"

namespace scrubwell::paths {
namespace {

constexpr int kDeepestNesting = 4;
constexpr std::size_t kMostPrefixes = 64;

Lookup ResolveNested(UnicodeView command, Want want, int depth);

bool HasDrive(UnicodeView text) {
  return IsDrivePath(WithoutNtPrefix(text));
}

// Where an unquoted program's name may end: at a blank, and at what people glue to it. A slash is
// part of a path until the name has an extension.
bool MayEndName(UnicodeView text, std::size_t at) {
  const char16_t c = text[at];
  if (c == u'/') return !ExtractFileExt(text.substr(0, at)).empty();
  return c <= u' ' || c == u',' || c == u';' || c == u'"';
}

// How much of the text can be a file's name.
struct NameRange {
  std::size_t limit = 0;
  bool mayGoOn = false;  // the name may well go on behind the limit, where nobody can follow it
};

// A mark that no name has ends the name before the word that holds it: a second drive, a
// placeholder that is filled in later. That word is an argument, and not the name's own rest
// ("C:\Some Folder\*.x"), only when the name is complete before it.
NameRange RangeOfName(UnicodeView text) {
  const std::size_t drive = text.find(u':');
  const bool drivePath = HasDrive(text);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t c = text[at];
    if (c == u'"') return {at, false};
    const bool stops = UnicodeView(u"*?<>|%").find(c) != UnicodeView::npos ||
                       (c == u':' && !(drivePath && at == drive));
    if (!stops) continue;
    const std::size_t blank = text.substr(0, at).rfind(u' ');
    if (blank == UnicodeView::npos) return {0, true};
    const UnicodeView word = text.substr(blank, at - blank);
    return {blank, word.find(u'\\') != UnicodeView::npos ||
                       ExtractFileExt(Trim(text.substr(0, blank))).empty()};
  }
  return {text.size(), false};
}

// The first growing prefix that is a file; Absent only when every prefix is provably none.
Status GrowingPrefix(UnicodeView text, Want want, UnicodeString& found, std::size_t& length) {
  Verdict verdict;
  const NameRange range = RangeOfName(text);
  std::size_t tried = 0;
  for (std::size_t end = 1; end <= range.limit; ++end) {
    if (end < range.limit && (!MayEndName(text, end) || text[end - 1] <= u' ')) continue;
    if (++tried > kMostPrefixes) return Status::Unknown;
    length = end;
    // A folder can only be meant by the whole text: "C:\Tools x\y.exe" does not mean "C:\Tools".
    const Want wanted = end == text.size() ? want : Want::File;
    if (verdict.Add(ProbeName(text.substr(0, end), wanted, found))) return Status::Ok;
  }
  length = text.size();
  if (range.mayGoOn) verdict.Add(Status::Unknown);
  return verdict.Get();
}

struct Split {
  Status status = Status::Unknown;
  UnicodeString found;
  UnicodeString name;  // the program as written
  UnicodeView rest;
};

Split SplitUnquoted(UnicodeView text, Want want) {
  Split split;
  std::size_t length = 0;
  split.status = GrowingPrefix(text, want, split.found, length);
  split.name = text.substr(0, length);
  split.rest = text.substr(length);
  return split;
}

Split SplitProgram(UnicodeView text, Want want) {
  if (text.front() == u'\'') text.remove_prefix(1);
  if (!text.empty() && text.back() == u'\'') text.remove_suffix(1);
  if (text.empty()) return {};
  if (text.front() != u'"') return SplitUnquoted(text, want);
  const std::size_t close = text.find(u'"', 1);
  const UnicodeView inner =
      text.substr(1, close == UnicodeView::npos ? UnicodeView::npos : close - 1);
  Split split;
  split.name = inner;
  split.rest = close == UnicodeView::npos ? UnicodeView() : text.substr(close + 1);
  split.status = ProbeName(inner, want, split.found);
  if (split.status != Status::Absent || Trim(inner).empty()) return split;
  // Arguments inside the quotation marks occur: "C:\x.exe /s".
  Split again = SplitUnquoted(Trim(inner), want);
  return again.status == Status::Absent ? split : again;
}

// ---- What launchers are told to use -------------------------------------------------------

// A file argument. A relative one lies in a folder that nobody knows here.
Status ProbeArgument(UnicodeView text, bool searched) {
  text = Trim(text);
  if (text.empty()) return Status::Unknown;
  UnicodeString found;
  if (text.front() == u'"') {
    const UnicodeView inner = text.substr(1, text.find(u'"', 1) - 1);
    if (!searched && !HasDrive(inner)) return Status::Unknown;
    return ProbeName(inner, Want::FileOrFolder, found);
  }
  if (!searched && !HasDrive(text)) return Status::Unknown;
  std::size_t length = 0;
  return GrowingPrefix(text, Want::FileOrFolder, found, length);
}

// Takes switches ("/s", "-q") off the front.
UnicodeView WithoutSwitches(UnicodeView text) {
  text = Trim(text);
  while (!text.empty() && (text.front() == u'/' || text.front() == u'-')) {
    const std::size_t blank = text.find(u' ');
    if (blank == UnicodeView::npos) return {};
    text = Trim(text.substr(blank));
  }
  return text;
}

// "x.dll,Entry arguments": the text up to the comma, or up to a blank.
Status DllOfEntry(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  if (!text.empty() && text.front() == u'"') return ProbeArgument(text, true);
  return ProbeArgument(text.substr(0, text.find(u',')), true);
}

Status LastArgument(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  text = Trim(text);
  if (!text.empty() && text.back() == u'"' && text.size() > 1) {
    const std::size_t open = text.rfind(u'"', text.size() - 2);
    return open == UnicodeView::npos ? Status::Unknown : ProbeArgument(text.substr(open), true);
  }
  return ProbeArgument(WithoutSwitches(text), true);
}

Status FirstFile(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  return ProbeArgument(WithoutSwitches(text), false);
}

// "x.chm::/page.htm"
Status HelpFile(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  text = WithoutSwitches(text);
  if (!text.empty() && text.front() == u'"') text = text.substr(1, text.find(u'"', 1) - 1);
  return ProbeArgument(text.substr(0, text.find(u"::")), false);
}

// "/e,path", "/select,path", or a path
Status ExplorerFolder(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  text = Trim(text);
  const std::size_t comma = text.rfind(u',');
  if (!text.empty() && text.front() == u'/') {
    if (comma == UnicodeView::npos) return Status::Unknown;
    text = text.substr(comma + 1);
  }
  return ProbeArgument(text, false);
}

// "x.cpl,@2"
Status ControlPanel(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  text = Trim(text);
  if (text.find(u".cpl") == UnicodeView::npos && text.find(u".CPL") == UnicodeView::npos) {
    return Status::Unknown;
  }
  return ProbeArgument(text.substr(0, text.find(u',')), true);
}

// "-fC:\x\Uninst.isu", the switch glued to the name, quoted or not
Status InstallLogSwitch(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  for (std::size_t at = 0; at + 2 < text.size(); ++at) {
    const bool starts = at == 0 || text[at - 1] <= u' ';
    if (!starts || (text[at] != u'-' && text[at] != u'/') || UpCase(text[at + 1]) != u'F') continue;
    UnicodeView name = text.substr(at + 2);
    if (name.front() == u'"') return ProbeArgument(name, false);
    // The next switch ends an unquoted name.
    for (const UnicodeView next : {u" -", u" /"}) name = name.substr(0, name.find(next));
    return ProbeArgument(name, false);
  }
  return Status::Unknown;
}

// "/A C:\A B\INSTALL.LOG": all that follows the switches is one path
Status RestOfLine(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  return ProbeArgument(WithoutSwitches(text), false);
}

// The uninstaller's own data beside it: unins000.exe needs unins000.dat
Status Companion(UnicodeView /*text*/, const Split& program, int /*depth*/) {
  UnicodeString found;
  const UnicodeView stem =
      UnicodeView(program.found)
          .substr(0, program.found.size() - ExtractFileExt(program.found).size());
  return Probe(UnicodeString(stem).append(u".dat"), Want::File, found);
}

Status JavaArchive(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  const std::size_t at = text.find(u"-jar ");
  return at == UnicodeView::npos ? Status::Unknown : ProbeArgument(text.substr(at + 5), false);
}

// A package file; a product code is no file.
Status InstallerPackage(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  const UnicodeView rest = WithoutSwitches(text);
  if (rest.empty() || rest.front() == u'{') return Status::Unknown;
  return ProbeArgument(rest, false);
}

// The command behind "/c" or "/k". The interpreter's own commands have no file, and a line of
// several commands says nothing as a whole.
Status ShellCommand(UnicodeView text, const Split& /*program*/, int depth) {
  std::size_t at = 0;
  while (true) {
    at = text.find(u'/', at);
    if (at == UnicodeView::npos || at + 2 > text.size()) return Status::Unknown;
    const char16_t letter = UpCase(text[at + 1]);
    if (letter == u'C' || letter == u'K') break;
    ++at;
  }
  UnicodeView command = Trim(text.substr(at + 2));
  if (command.find_first_of(u"&|<>^%") != UnicodeView::npos) return Status::Unknown;
  constexpr UnicodeView start = u"start ";
  if (command.size() > start.size() && SameText(command.substr(0, start.size()), start)) {
    command = Trim(command.substr(start.size()));
    // The first quoted text is the window's title.
    if (command.starts_with(u'"')) {
      const std::size_t close = command.find(u'"', 1);
      if (close == UnicodeView::npos) return Status::Unknown;
      command = Trim(command.substr(close + 1));
    }
    command = WithoutSwitches(command);
  }
  if (command.starts_with(u"\"\"") && command.ends_with(u'"')) {
    command = command.substr(1, command.size() - 2);
  }
  const UnicodeView name = command.starts_with(u'"') ? command.substr(1) : command;
  if (!HasDrive(name)) return Status::Unknown;
  const Lookup nested = ResolveNested(command, Want::File, depth + 1);
  return nested.program == Status::Ok ? nested.argument : nested.program;
}

// What the file is to the command line: what it is there to run or open, or the record that an
// uninstaller can't work without.
enum class Role : std::uint8_t { Target, Log };

struct Launcher {
  UnicodeView mask;  // of the program's file name
  Status (*file)(UnicodeView arguments, const Split& program, int depth);
  Role role = Role::Target;
};
constexpr Launcher kLaunchers[] = {
    {u"rundll32.exe", DllOfEntry},
    {u"rundll.exe", DllOfEntry},
    {u"regsvr32.exe", LastArgument},
    {u"cmd.exe", ShellCommand},
    {u"command.com", ShellCommand},
    {u"wscript.exe", FirstFile},
    {u"cscript.exe", FirstFile},
    {u"mshta.exe", FirstFile},
    {u"hh.exe", HelpFile},
    {u"explorer.exe", ExplorerFolder},
    {u"control.exe", ControlPanel},
    {u"isun*.exe", InstallLogSwitch, Role::Log},
    {u"uninst.exe", InstallLogSwitch, Role::Log},
    {u"unwise*.exe", RestOfLine, Role::Log},
    {u"unins???.exe", Companion, Role::Log},
    {u"java.exe", JavaArchive},
    {u"javaw.exe", JavaArchive},
    {u"msiexec.exe", InstallerPackage},
};

Lookup ResolveNested(UnicodeView command, Want want, int depth) {
  Lookup result;
  command = Trim(command);
  if (command.empty() || depth > kDeepestNesting) return result;
  Split split = SplitProgram(command, want);
  result.program = split.status;
  result.arguments = Trim(split.rest);
  if (split.status == Status::Ok) {
    const UnicodeView program = ExtractFileName(split.found);
    for (const Launcher& launcher : kLaunchers) {
      if (!MatchesMask(program, launcher.mask)) continue;
      const Status file = launcher.file(result.arguments, split, depth);
      (launcher.role == Role::Target ? result.argument : result.log) = file;
      break;
    }
  }
  result.found = std::move(split.found);
  return result;
}

// "C:\A;C:\B;": missing only when all of them are. What has no drive lies in a folder that nobody
// knows.
Status ProbeList(UnicodeView list, UnicodeString& found) {
  Verdict verdict;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find(u';', at), list.size());
    const UnicodeString part = RemoveQuotationMarks(Trim(list.substr(at, end - at)));
    at = end + 1;
    if (part.empty()) continue;
    const bool known = HasDrive(part);
    if (verdict.Add(known ? ProbeName(part, Want::FileOrFolder, found) : Status::Unknown)) break;
  }
  return verdict.Get();
}

}  // namespace

Lookup ResolveCommand(UnicodeView command, Want want) {
  Lookup result = ResolveNested(WithoutNtPrefix(command), want, 0);
  const bool isList = want == Want::FileOrFolder && command.find(u';') != UnicodeView::npos;
  if (isList && result.program != Status::Ok) result.program = ProbeList(command, result.found);
  return result;
}

}  // namespace scrubwell::paths
