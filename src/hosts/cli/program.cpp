#include "hosts/cli/program.h"

#include <algorithm>
#include <cstdlib>
#include <exception>

#include "hosts/cli/commands.h"
#include "hosts/cli/console.h"
#include "hosts/cli/environment.h"
#include "hosts/cli/nearest.h"
#include "hosts/cli/output_file.h"
#include "hosts/driver/null_platform.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/problem_kinds.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// Lines longer than this are hard to read, however wide the terminal is.
constexpr std::size_t MaxWidth = 100;
constexpr std::size_t PlainWidth = 80;

std::string NoSuchPlugin(const UnicodeString& id) {
  std::vector<std::string> known;
  for (const TRCPlugin* plugin : *Plugins) known.push_back(ToUtf8(plugin->FPluginID));
  const std::string meant = Nearest(ToUtf8(id), known);
  std::string sentence = Say(texts::UnknownPlugin, {ToUtf8(id)});
  return meant.empty() ? sentence : sentence + "; " + Say(texts::DidYouMean, {meant});
}

// The complaint about the first category or kind that there is none of.
std::optional<std::string> FindUnknown(const ScanOptions& options) {
  for (const TStringList* ids : {&options.plugins, &options.exclude}) {
    for (const UnicodeString& id : *ids) {
      if (FindPlugin(id) == nullptr) return NoSuchPlugin(id);
    }
  }
  for (const KindChoice& choice : options.choice.kinds) {
    const TRCPlugin* plugin = FindPlugin(choice.plugin);
    if (plugin == nullptr) return NoSuchPlugin(choice.plugin);
    for (const std::int32_t kind : choice.kinds) {
      if (std::ranges::find(plugin->Kinds(), kind, &TProblemKind::kind) != plugin->Kinds().end()) {
        continue;
      }
      return Say(texts::UnknownKind, {ToUtf8(plugin->FPluginID) + ':' + std::to_string(kind)});
    }
  }
  return std::nullopt;
}

// Started by a double click: the window goes as soon as the program does.
int Greet() {
  SetPackageLanguage(PreferredLanguage());
  WriteTo(Stream::Output, Say(texts::Greeting, {SCRUBWELL_VERSION}));
  ReadsYes();
  return NoProblems;
}

}  // namespace

int Fail(ExitCode code, std::string_view sentence) {
  // Some sentences come complete from where they arose.
  if (sentence.ends_with('.')) sentence.remove_suffix(1);
  // Names in it may come from the disk.
  std::string whole = Printable(FromUtf8(InReportLanguage(sentence)));
  if (!whole.ends_with('?')) whole += '.';
  WriteTo(Stream::Error, "scrubwell: " + whole + '\n');
  return code;
}

ExitCode CodeOf(OpenFailure failure) {
  return failure == OpenFailure::WrongUse ? WrongUse : Unreadable;
}

ExitCode CodeOf(CleanFailure failure) {
  if (failure == CleanFailure::Stopped) return Stopped;
  return failure == CleanFailure::WrongUse ? WrongUse : Unreadable;
}

std::size_t ReportWidth(bool toFile) {
  return std::min(toFile ? PlainWidth : TerminalWidth(Stream::Output, PlainWidth), MaxWidth);
}

TextLook LookFor(const std::string& output) {
  const char* refused = std::getenv("NO_COLOR");
  TextLook look;
  look.width = ReportWidth(!output.empty());
  const bool wanted = refused == nullptr || *refused == '\0';
  look.colours = output.empty() && wanted && ShowsColours(Stream::Output);
  return look;
}

// Kinds name their category, so that no other needs to be looked at.
std::optional<std::string> ApplyChoice(const ScanOptions& options) {
  if (auto unknown = FindUnknown(options)) return unknown;
  SetAllPluginStatus(options.plugins.empty() && options.choice.kinds.empty());
  for (const UnicodeString& id : options.plugins) FindPlugin(id)->Active = true;
  for (const KindChoice& choice : options.choice.kinds) FindPlugin(choice.plugin)->Active = true;
  for (const UnicodeString& id : options.exclude) FindPlugin(id)->Active = false;
  const bool any = std::ranges::any_of(*Plugins, &TRCPlugin::Active);
  return any ? std::nullopt : std::optional(Say(texts::NoCategoryLeft));
}

int Run(const PrintCommand& command) {
  const auto error = WriteOutput({}, command.text);
  return error ? Fail(WrongUse, *error) : NoProblems;
}

int Run(const PluginsCommand& command) {
  NullPlatform nothing;
  const LoadedPackage package(nothing.Platform());
  std::size_t width = 0;
  for (const TRCPlugin* plugin : *Plugins) width = std::max(width, plugin->FPluginID.size());
  std::string list;
  for (const TRCPlugin* plugin : *Plugins) {
    UnicodeString line = plugin->FPluginID;
    line.resize(width + 2, u' ');
    list += ToUtf8(line + plugin->Caption) + '\n';
    if (!command.kinds) continue;
    for (const TProblemKind& kind : plugin->Kinds()) {
      const ProblemKind* known = FindKind(plugin->FPluginID, kind.kind);
      const std::string number = std::to_string(kind.kind);
      list.append(width + 4 - std::min(number.size(), width), ' ');
      list += number + "  " + ToUtf8(LoadText(known ? known->title : kind.caption)) + '\n';
    }
  }
  return Run(PrintCommand{list});
}

int RunProgram(const std::vector<std::string>& arguments) {
  try {
    if (arguments.size() < 2 && HasOwnConsole()) return Greet();
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    const int count = static_cast<int>(pointers.size());
    pointers.push_back(nullptr);
    const ParsedCommand parsed = ParseCommandLine(count, pointers.data());
    if (!parsed.command) return Fail(WrongUse, parsed.error);
    return std::visit([](const auto& command) { return Run(command); }, *parsed.command);
  } catch (const std::exception& error) {
    return Fail(Unreadable, Say(texts::Unexpected, {error.what()}));
  }
}

}  // namespace scrubwell::hosts
