#include "registry/CommandLine.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Wildcards.h"

namespace scrubwell::paths {
namespace {

constexpr int kDeepestNesting = 4;
constexpr std::size_t kMostPrefixes = 192;
constexpr int kMostLibraries = 16;
constexpr std::size_t kLongestPart = 255;  // of a path, in every file system there is

Lookup ResolveNested(UnicodeView command, Want want, int depth);

bool HasDrive(UnicodeView text) {
  return IsDrivePath(WithoutNtPrefix(text));
}

bool IsBlank(char16_t c) {
  return c == u' ' || c == u'\t';
}

// Takes the first word off the text: up to a blank outside of quotation marks.
UnicodeView TakeWord(UnicodeView& text) {
  text = Trim(text);
  bool quoted = false;
  std::size_t end = 0;
  for (; end < text.size() && (quoted || text[end] > u' '); ++end) {
    const bool isMark = text[end] == u'"' && (end == 0 || text[end - 1] != u'\\');
    if (isMark) quoted = !quoted;
  }
  const UnicodeView word = text.substr(0, end);
  text = Trim(text.substr(end));
  return word;
}

bool IsSwitch(UnicodeView word) {
  return !word.empty() && (word.front() == u'/' || word.front() == u'-');
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
// ("C:\Some Folder\*.x"), only when the name is complete before it. It surely is before a switch
// with a slash: no part of a path ends with a blank.
NameRange RangeOfName(UnicodeView text) {
  const std::size_t drive = text.find(u':');
  const bool drivePath = HasDrive(text);
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t c = text[at];
    if (c == u'"') return {at, false};
    if (c == u'/' && at > 0 && IsBlank(text[at - 1])) return {at - 1, false};
    const bool stops = UnicodeView(u"*?<>|%").find(c) != UnicodeView::npos ||
                       (c == u':' && !(drivePath && at == drive));
    if (!stops) continue;
    const std::size_t blank = text.substr(0, at).find_last_of(u" \t");
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
  std::size_t part = 0;  // where the last part of the path begins
  for (std::size_t end = 1; end <= range.limit; ++end) {
    if (text[end - 1] == u'\\' || text[end - 1] == u'/') part = end;
    if (end < range.limit && (!MayEndName(text, end) || text[end - 1] <= u' ')) continue;
    if (end - part > kLongestPart) {
      verdict.Add(Status::Absent);
      continue;
    }
    if (++tried > kMostPrefixes) return Status::Unknown;
    length = end;
    // A folder can only be meant by the whole text: "C:\Tools x\y.exe" does not mean "C:\Tools".
    const bool isPart = end < text.size() && want == Want::FileOrFolder;
    const Want wanted = isPart ? Want::File : want;
    if (verdict.Add(ProbeName(text.substr(0, end), wanted, found))) return Status::Ok;
  }
  length = text.size();
  if (range.mayGoOn) verdict.Add(Status::Unknown);
  return verdict.Get();
}

struct Split {
  Status status = Status::Unknown;
  UnicodeString found;
  UnicodeView rest;
};

Split SplitUnquoted(UnicodeView text, Want want) {
  Split split;
  std::size_t length = 0;
  split.status = GrowingPrefix(text, want, split.found, length);
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
  split.rest = close == UnicodeView::npos ? UnicodeView() : text.substr(close + 1);
  split.status = ProbeName(inner, want, split.found);
  if (split.status != Status::Absent || Trim(inner).empty()) return split;
  // Arguments inside the quotation marks occur: "C:\x.exe /s".
  Split again = SplitUnquoted(Trim(inner), want);
  return again.status == Status::Absent ? split : again;
}

// ---- What launchers are told to use -------------------------------------------------------

// A file argument. A relative one lies in a folder that nobody knows here; where it is `searched`
// for, a bare name is missing when no folder of the search order has it. A class or a product in
// braces is no file.
Status ProbeArgument(UnicodeView text, bool searched) {
  text = Trim(text);
  const bool quoted = text.starts_with(u'"');
  const UnicodeView name = quoted ? text.substr(1, text.find(u'"', 1) - 1) : text;
  if (name.empty() || name.front() == u'{') return Status::Unknown;
  const bool bare = name.substr(0, name.find(u',')).find_first_of(u"\\/") == UnicodeView::npos;
  if (!HasDrive(name) && !(searched && bare)) return Status::Unknown;
  UnicodeString found;
  if (quoted) return ProbeName(name, Want::FileOrFolder, found);
  std::size_t length = 0;
  return GrowingPrefix(text, Want::FileOrFolder, found, length);
}

// Takes switches ("/s", "-q") off the front.
UnicodeView WithoutSwitches(UnicodeView text) {
  text = Trim(text);
  while (IsSwitch(text)) TakeWord(text);
  return text;
}

// Whether an entry point can stand here: no name of one holds a backslash.
bool IsEntryPoint(UnicodeView text) {
  text = Trim(text);
  const std::size_t end = text.find_first_of(u", \t\\");
  return end == UnicodeView::npos || text[end] != u'\\';
}

// "x.dll,Entry arguments", quoted or not. A comma may be part of the library's path.
Status ProbeLibrary(UnicodeView text) {
  if (text.starts_with(u'"')) return ProbeArgument(text, true);
  std::size_t comma = text.find(u',');
  while (comma != UnicodeView::npos && !IsEntryPoint(text.substr(comma + 1)))
    comma = text.find(u',', comma + 1);
  return ProbeArgument(text.substr(0, comma), true);
}

// A library, perhaps behind "/d". Every other switch ("/sta", "-localserver") stands before a
// class, or nobody knows what it stands before.
Status DllOfEntry(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  while (IsSwitch(text)) {
    if (!SameText(TakeWord(text).substr(1), u"d")) return Status::Unknown;
  }
  return ProbeLibrary(text);
}

// Libraries, with switches anywhere before and behind them. What a switch says in quotation marks
// ("/i:some text") belongs to it.
Status Libraries(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  UnicodeString names;
  while (!text.empty()) {
    const UnicodeView before = text;
    const UnicodeView word = TakeWord(text);
    if (!IsSwitch(word)) names.append(before.substr(0, before.size() - text.size()));
  }
  UnicodeView rest = names;
  if (!rest.starts_with(u'"')) return ProbeArgument(rest, true);
  Verdict verdict;
  for (int count = 0; !rest.empty(); ++count) {
    if (count == kMostLibraries) return Status::Unknown;
    verdict.Add(ProbeArgument(TakeWord(rest), true));
  }
  return verdict.Get();
}

Status FirstFile(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  return ProbeArgument(WithoutSwitches(text), false);
}

// "x.chm::/page.htm". Behind a switch ("-decompile folder x.chm") the first name may be another.
Status HelpFile(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  if (IsSwitch(text)) return Status::Unknown;
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
  const bool named =
      text.find(u".cpl") != UnicodeView::npos || text.find(u".CPL") != UnicodeView::npos;
  if (!named || IsSwitch(text)) return Status::Unknown;
  return ProbeLibrary(text);
}

// "-fC:\x\Uninst.isu", the switch glued to the name, quoted or not
Status InstallLogSwitch(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  for (std::size_t at = 0; at + 2 < text.size(); ++at) {
    const bool starts = at == 0 || text[at - 1] <= u' ';
    if (!starts || (text[at] != u'-' && text[at] != u'/') || UpCase(text[at + 1]) != u'F') continue;
    return ProbeArgument(text.substr(at + 2), false);
  }
  return Status::Unknown;
}

// "/A C:\A B\INSTALL.LOG": all that follows the switches is one path
Status RestOfLine(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  return ProbeArgument(WithoutSwitches(text), false);
}

// The uninstaller's own data beside it: unins000.exe needs unins000.dat. Without a number it is
// another program of much the same name.
Status Companion(UnicodeView /*text*/, const Split& program, int /*depth*/) {
  UnicodeString found;
  const UnicodeView stem =
      UnicodeView(program.found)
          .substr(0, program.found.size() - ExtractFileExt(program.found).size());
  const UnicodeView number = stem.substr(stem.size() - 3);
  if (number.find_first_not_of(u"0123456789") != UnicodeView::npos) return Status::Unknown;
  return Probe(UnicodeString(stem).append(u".dat"), Want::File, found);
}

Status JavaArchive(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  const std::size_t at = text.find(u"-jar ");
  return at == UnicodeView::npos ? Status::Unknown : ProbeArgument(text.substr(at + 5), false);
}

// ---- The installer ------------------------------------------------------------------------

// What the word behind an installer's switch is, and how much of it is glued to the switch.
struct InstallerSwitch {
  enum class Use : std::uint8_t { Other, Package, Log } use = Use::Other;
  UnicodeView glued;
};

constexpr UnicodeView kPackageSwitches[] = {u"package", u"uninstall", u"update"};
constexpr UnicodeView kLogSwitch = u"log";
// A letter and the letters that may follow it.
struct InstallerLetter {
  char16_t letter;
  UnicodeView modes;
  InstallerSwitch::Use use;
};
constexpr InstallerLetter kInstallerLetters[] = {
    {u'I', u"", InstallerSwitch::Use::Package},
    {u'X', u"", InstallerSwitch::Use::Package},
    {u'A', u"", InstallerSwitch::Use::Package},
    {u'P', u"", InstallerSwitch::Use::Package},
    {u'J', u"UM", InstallerSwitch::Use::Package},
    {u'F', u"PECDOAMUSV", InstallerSwitch::Use::Package},
    {u'L', u"IWEARUCMOPVX*+!", InstallerSwitch::Use::Log},
};

// Long names begin with letters of the short ones ("/passive"): whatever stands there that is
// neither a mode nor the beginning of a name makes it another switch.
InstallerSwitch ReadInstallerSwitch(UnicodeView name) {
  using Use = InstallerSwitch::Use;
  if (SameText(name, kLogSwitch)) return {Use::Log, {}};
  for (const UnicodeView known : kPackageSwitches) {
    if (SameText(name, known)) return {Use::Package, {}};
  }
  for (const InstallerLetter& known : kInstallerLetters) {
    if (name.empty() || UpCase(name.front()) != known.letter) continue;
    UnicodeView rest = name.substr(1);
    if (HasDrive(rest)) return {known.use, rest};
    while (!rest.empty() && known.modes.find(UpCase(rest.front())) != UnicodeView::npos) {
      rest.remove_prefix(1);
    }
    const bool isName = rest.empty() || rest.front() == u'"' || rest.front() == u'{';
    if (isName || HasDrive(rest)) return {known.use, rest};
  }
  return {};
}

// The package that is installed, removed or mended. A log is yet to be written, and what stands
// behind no switch is a property.
Status InstallerPackage(UnicodeView text, const Split& /*program*/, int /*depth*/) {
  Verdict verdict;
  while (!text.empty()) {
    const UnicodeView line = text;
    const UnicodeView word = TakeWord(text);
    if (!IsSwitch(word)) continue;
    const InstallerSwitch read = ReadInstallerSwitch(word.substr(1));
    if (read.use == InstallerSwitch::Use::Other) continue;
    // An unquoted name may go on behind a blank, glued or not.
    const UnicodeView file = line.substr(word.size() - read.glued.size());
    if (read.use == InstallerSwitch::Use::Package) verdict.Add(ProbeArgument(file, false));
    if (read.glued.empty()) TakeWord(text);
  }
  return verdict.Get();
}

// ---- The command interpreter --------------------------------------------------------------

// What "start" is told to run: behind the window's title, and switches with what belongs to them.
UnicodeView BehindStart(UnicodeView command) {
  command = Trim(command);
  if (command.starts_with(u'"')) TakeWord(command);
  while (IsSwitch(command)) {
    const UnicodeString name = LowerCase(TakeWord(command).substr(1));
    if (name == u"d" || name == u"node" || name == u"affinity") TakeWord(command);
  }
  return command;
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
    command = BehindStart(command.substr(start.size()));
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
    {u"regsvr32.exe", Libraries},
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

// Extensions behind which arguments begin, whatever else stands on the line.
constexpr UnicodeView kProgramExtensions = u".exe|.com|.bat|.cmd|.lnk|.pif|.scr|.msc|.cpl|.msi|";

}  // namespace

Lookup ResolveCommand(UnicodeView command, Want want) {
  Lookup result = ResolveNested(WithoutNtPrefix(command), want, 0);
  const bool isList = want == Want::FileOrFolder && command.find(u';') != UnicodeView::npos;
  if (isList && result.program != Status::Ok) result.program = ProbeList(command, result.found);
  return result;
}

UnicodeView ProgramOf(UnicodeView command) {
  command = Trim(command);
  if (command.starts_with(u'"')) return command.substr(1, command.find(u'"', 1) - 1);
  UnicodeView rest = command;
  for (std::size_t at = 1; at < command.size(); ++at) {
    if (command[at] == u'"') rest = command.substr(0, at);
    if (rest.size() < command.size()) break;
    if (!IsBlank(command[at])) continue;
    const UnicodeView name = command.substr(0, at);
    const UnicodeView next = Trim(command.substr(at));
    const UnicodeString extension = LowerCase(ExtractFileExt(name));
    const bool complete =
        !extension.empty() && kProgramExtensions.find(extension + u'|') != UnicodeView::npos;
    if (complete || IsSwitch(next) || HasDrive(next)) rest = name;
  }
  return Trim(rest);
}

}  // namespace scrubwell::paths
