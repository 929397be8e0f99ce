#include "hosts/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <utility>

#include "hosts/cli/environment.h"
#include "hosts/cli/nearest.h"
#include "hosts/cli/targets.h"
#include "hosts/report/columns.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/json_writer.h"
#include "hosts/report/language.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// In place of a user's name.
constexpr std::string_view AllUsers = "all";

// The options as they were typed.
struct RawOptions {
  TargetOptions target;
  std::vector<std::string> folders;  // all that were given for the one
  std::string place;                 // one without its option
  bool live = false;
  std::vector<std::string> drives;
  std::vector<std::string> plugins;
  std::string format;
  std::string output;
  std::string language;
  bool all = false;
  std::vector<std::string> ids;
  bool dryRun = false;
  bool yes = false;
  bool untilClean = false;
  std::string backup;
  std::string session;
  bool list = false;
  std::string exportFile;
  std::string action;
  std::string id;
  bool machine = false;
  std::string reason;
  std::vector<std::string> exclude;
  std::vector<std::string> kinds;
  std::string filter;
  std::string since;
  std::string failOn;
  bool details = false;
  std::string limit;
  bool listKinds = false;
  std::vector<std::string> words;
  std::string view;
  std::string key;
  std::string keep;
  std::string olderThan;
  bool jsonValid = false;
};

// Looked for before the line is understood, so that its errors speak the right language already.
std::string LanguageArgument(int argc, const char* const* argv) {
  constexpr std::string_view option = "--lang";
  std::string found;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument(argv[i]);
    if (argument == option && i + 1 < argc) found = argv[i + 1];
    if (argument.starts_with("--lang=")) found = argument.substr(option.size() + 1);
  }
  return found;
}

struct FormatName {
  std::string_view name;
  ReportFormat format;
};
// The first two are for every command, the others show what a scan has found.
constexpr std::array<FormatName, 6> Formats = {{
    {"text", ReportFormat::Text},
    {"json", ReportFormat::Json},
    {"jsonl", ReportFormat::JsonLines},
    {"csv", ReportFormat::Csv},
    {"html", ReportFormat::Html},
    {"sarif", ReportFormat::Sarif},
}};
constexpr std::size_t CommonFormats = 2;

std::string FormatList(std::size_t count, std::string_view separator) {
  std::string list;
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) list += separator;
    list += Formats[i].name;
  }
  return list;
}

// Where the explanations stand.
constexpr std::size_t kHelpColumn = 34;

void Dress(CLI::App& app) {
  app.option_defaults()->group(Say(texts::OptionsLabel));
  app.set_help_flag("-h,--help", Say(texts::HelpFlag));
  const auto formatter = std::make_shared<CLI::Formatter>();
  formatter->label("Usage", Say(texts::UsageLabel));
  formatter->label("OPTIONS",
                   Say(texts::OptionsUsage).substr(1, Say(texts::OptionsUsage).size() - 2));
  formatter->label("Positionals", Say(texts::ArgumentsLabel));
  formatter->label("SUBCOMMAND", Say(texts::CommandUsage));
  formatter->label("REQUIRED", Say(texts::RequiredLabel));
  formatter->column_width(kHelpColumn);
  app.formatter(formatter);
}

void AddLanguage(CLI::App& app, RawOptions& raw) {
  app.add_option("--lang", raw.language, Say(texts::LangOption))->type_name("de|en")->take_last();
}

// Of options that the program takes only to say why it does not follow them.
constexpr const char* kNotInHelp = "";

CLI::App* AddCommand(CLI::App& app, RawOptions& raw, const char* name, const TText& text) {
  CLI::App* command = app.add_subcommand(name, Say(text));
  Dress(*command);
  command->group(Say(texts::CommandsLabel));
  AddLanguage(*command, raw);
  return command;
}

// The folder in place of its option.
void AddPlace(CLI::App& app, RawOptions& raw) {
  if (TargetIsRunningSystem()) return;
  app.add_option(Say(texts::FolderType), raw.place, Say(texts::PlaceArgument))->type_name("");
}

void AddTarget(CLI::App& app, RawOptions& raw, const TText& windows) {
  const bool live = TargetIsRunningSystem();
  CLI::Option* user = app.add_option("--user", raw.target.user, Say(texts::UserOption))
                          ->type_name(Say(texts::NameType));
  CLI::Option* drive = app.add_option("--drive", raw.drives, Say(texts::DriveOptionText))
                           ->type_name(Say(texts::DriveType))
                           ->expected(1)
                           ->allow_extra_args(false)
                           ->take_all();
  CLI::Option* folder = app.add_option("--windows", raw.folders, Say(windows))
                            ->type_name(Say(texts::FolderType))
                            ->expected(1)
                            ->allow_extra_args(false)
                            ->take_all();
  CLI::Option* running = app.add_flag("--live", raw.live, Say(texts::LiveOption));
  if (!live) running->group(kNotInHelp);
  for (CLI::Option* option : {user, drive, folder}) {
    if (live) option->group(kNotInHelp);
  }
}

void AddList(CLI::App& app, const char* name, std::vector<std::string>& list, const TText& text) {
  app.add_option(name, list, Say(text))
      ->type_name("ID,...")
      ->expected(1)
      ->delimiter(',')
      ->allow_extra_args(false)
      ->take_all();
}

void AddFormat(CLI::App& app, RawOptions& raw, std::size_t formats = CommonFormats) {
  app.add_option("--format", raw.format, Say(texts::FormatOption))
      ->type_name(FormatList(formats, "|"));
  app.add_flag("--json-valid", raw.jsonValid, Say(texts::JsonValidOption));
}

void AddBackup(CLI::App& app, RawOptions& raw) {
  const bool live = TargetIsRunningSystem();
  app.add_option("--backup", raw.backup, Say(live ? texts::LiveBackupOption : texts::BackupOption))
      ->type_name(Say(texts::FolderType));
}

// What a scan and everything that begins with one understand.
void AddScanOptions(CLI::App& app, RawOptions& raw, std::size_t formats) {
  AddTarget(app, raw, texts::WindowsOption);
  AddList(app, "--plugins", raw.plugins, texts::PluginsOption);
  AddList(app, "--exclude", raw.exclude, texts::ExcludeOption);
  AddFormat(app, raw, formats);
  app.add_option("--output", raw.output, Say(texts::OutputOption))->type_name(Say(texts::FileType));
}

void AddChoice(CLI::App& app, RawOptions& raw) {
  app.add_option("--kind", raw.kinds, Say(texts::KindOption))
      ->type_name("ID:N,...")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all();
  app.add_option("--filter", raw.filter, Say(texts::FilterOption))->type_name("TEXT");
}

CLI::App* AddScan(CLI::App& app, RawOptions& raw) {
  CLI::App* scan = AddCommand(app, raw, "scan", texts::ScanCommand);
  scan->footer(Say(texts::ExitCodes));
  AddPlace(*scan, raw);
  AddScanOptions(*scan, raw, Formats.size());
  AddChoice(*scan, raw);
  scan->add_option("--since", raw.since, Say(texts::SinceOption))->type_name(Say(texts::FileType));
  scan->add_option("--fail-on", raw.failOn, Say(texts::FailOnOption))->type_name("new|any|none");
  scan->add_flag("--all", raw.all, Say(texts::AllHiddenOption));
  scan->add_flag("--details", raw.details, Say(texts::DetailsOption));
  scan->add_option("--limit", raw.limit, Say(texts::LimitOption))->type_name("N");
  return scan;
}

CLI::App* AddClean(CLI::App& app, RawOptions& raw) {
  CLI::App* clean = AddCommand(app, raw, "clean", texts::CleanCommand);
  clean->footer(Say(texts::CleanExitCodes));
  AddPlace(*clean, raw);
  AddScanOptions(*clean, raw, CommonFormats);
  AddChoice(*clean, raw);
  clean->add_flag("--all", raw.all, Say(texts::AllOption));
  AddList(*clean, "--select", raw.ids, texts::SelectOption);
  clean->add_flag("--dry-run", raw.dryRun, Say(texts::DryRunOption));
  clean->add_flag("--yes", raw.yes, Say(texts::YesOption));
  clean->add_flag("--until-clean", raw.untilClean, Say(texts::UntilCleanOption));
  AddBackup(*clean, raw);
  return clean;
}

CLI::App* AddExplain(CLI::App& app, RawOptions& raw) {
  CLI::App* explain = AddCommand(app, raw, "explain", texts::ExplainCommand);
  explain->footer(Say(texts::OtherExitCodes));
  explain->add_option("ID", raw.id, Say(texts::IdArgument))->required();
  AddPlace(*explain, raw);
  AddScanOptions(*explain, raw, CommonFormats);
  return explain;
}

CLI::App* AddReg(CLI::App& app, RawOptions& raw) {
  CLI::App* reg = AddCommand(app, raw, "reg", texts::RegCommand);
  reg->footer(Say(texts::RegExitCodes));
  reg->add_option("KEY", raw.words, Say(texts::KeyArgument))
      ->type_name(Say(texts::KeyType))
      ->expected(1, 3)
      ->required();
  AddTarget(*reg, raw, texts::WindowsOption);
  reg->add_option("--view", raw.view, Say(texts::ViewOption))->type_name("32|64");
  reg->add_option("--key", raw.key, Say(texts::FindKeyOption))->type_name(Say(texts::KeyType));
  AddFormat(*reg, raw);
  return reg;
}

CLI::App* AddPlugins(CLI::App& app, RawOptions& raw) {
  CLI::App* plugins = AddCommand(app, raw, "plugins", texts::PluginsCommand);
  plugins->add_flag("--kinds", raw.listKinds, Say(texts::ListKindsOption));
  return plugins;
}

CLI::App* AddUndo(CLI::App& app, RawOptions& raw) {
  CLI::App* undo = AddCommand(app, raw, "undo", texts::UndoCommand);
  undo->footer(Say(texts::UndoExitCodes));
  undo->add_option("SESSION", raw.session, Say(texts::SessionArgument));
  AddPlace(*undo, raw);
  AddTarget(*undo, raw, texts::UndoWindowsOption);
  AddList(*undo, "--item", raw.ids, texts::ItemOption);
  undo->add_flag("--list", raw.list, Say(texts::ListOption));
  AddBackup(*undo, raw);
  undo->add_option("--export", raw.exportFile, Say(texts::ExportOption))
      ->type_name(Say(texts::FileType));
  AddFormat(*undo, raw);
  return undo;
}

CLI::App* AddSessions(CLI::App& app, RawOptions& raw) {
  CLI::App* sessions = AddCommand(app, raw, "sessions", texts::SessionsCommand);
  sessions->add_option("ACTION", raw.action, Say(texts::SessionsAction))
      ->type_name("list|prune")
      ->required();
  sessions->add_option("--keep", raw.keep, Say(texts::KeepOption))->type_name("N");
  sessions->add_option("--older-than", raw.olderThan, Say(texts::OlderOption))
      ->type_name(Say(texts::DaysType));
  sessions->add_flag("--dry-run", raw.dryRun, Say(texts::PruneDryRunOption));
  sessions->add_flag("--yes", raw.yes, Say(texts::YesOption));
  AddBackup(*sessions, raw);
  AddFormat(*sessions, raw);
  return sessions;
}

CLI::App* AddRecover(CLI::App& app, RawOptions& raw) {
  CLI::App* recover = AddCommand(app, raw, "recover", texts::RecoverCommand);
  AddPlace(*recover, raw);
  AddTarget(*recover, raw, texts::WindowsOption);
  AddBackup(*recover, raw);
  AddFormat(*recover, raw);
  return recover;
}

CLI::App* AddIgnore(CLI::App& app, RawOptions& raw) {
  CLI::App* ignore = AddCommand(app, raw, "ignore", texts::IgnoreCommand);
  ignore->add_option("ACTION", raw.action, Say(texts::ActionArgument))
      ->type_name("add|list|remove")
      ->required();
  ignore->add_option("ID", raw.id, Say(texts::IdArgument));
  AddPlace(*ignore, raw);
  AddTarget(*ignore, raw, texts::WindowsOption);
  AddList(*ignore, "--plugins", raw.plugins, texts::PluginsOption);
  ignore->add_flag("--machine", raw.machine, Say(texts::MachineOption));
  ignore->add_option("--reason", raw.reason, Say(texts::ReasonOption))->type_name("TEXT");
  AddBackup(*ignore, raw);
  AddFormat(*ignore, raw);
  return ignore;
}

ParsedCommand Fail(const TText& text, std::string_view value) {
  return {std::nullopt, Say(text, {value})};
}

using Complaint = std::optional<ParsedCommand>;

// A decimal number of at most nine digits.
std::optional<std::int32_t> NumberFrom(std::string_view text) {
  constexpr std::size_t digits = 9;
  if (text.empty() || text.size() > digits) return std::nullopt;
  std::int32_t number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  return number;
}

// "Fonts:1,3"
std::optional<KindChoice> KindsFrom(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == 0 || colon == std::string_view::npos) return std::nullopt;
  KindChoice choice{FromUtf8(text.substr(0, colon)), {}};
  for (std::string_view rest = text.substr(colon);;) {
    rest.remove_prefix(1);
    const std::size_t end = std::min(rest.find(','), rest.size());
    const std::optional<std::int32_t> number = NumberFrom(rest.substr(0, end));
    if (!number) return std::nullopt;
    choice.kinds.push_back(*number);
    rest.remove_prefix(end);
    if (rest.empty()) return choice;
  }
}

// What the ending of the output's name asks for; empty when it asks for nothing.
std::string_view FormatOfFile(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  if (dot == std::string_view::npos) return {};
  const UnicodeString ending = FromUtf8(path.substr(dot + 1));
  if (SameText(ending, u"txt")) return "text";
  const auto* const found = std::ranges::find_if(
      Formats, [&](const auto& entry) { return SameText(FromUtf8(entry.name), ending); });
  return found == Formats.end() || found->name == "text" ? std::string_view() : found->name;
}

Complaint ConvertFormat(const RawOptions& raw, bool scan, ScanOptions& options) {
  const std::size_t known = scan ? Formats.size() : CommonFormats;
  std::string_view wanted = raw.format;
  if (wanted.empty()) wanted = FormatOfFile(raw.output);
  if (wanted.empty()) wanted = Formats.front().name;
  const auto* const end = Formats.begin() + known;
  const auto* found =
      std::find_if(Formats.begin(), end, [&](const auto& entry) { return entry.name == wanted; });
  if (found == end) {
    return ParsedCommand{std::nullopt,
                         Say(texts::UnknownFormat, {wanted, FormatList(known, ", ")})};
  }
  options.format = found->format;
  return std::nullopt;
}

// What this build can't be asked for, each in a sentence of its own.
Complaint RefuseTarget(const RawOptions& raw) {
  if (!TargetIsRunningSystem()) {
    if (raw.live) return ParsedCommand{std::nullopt, Say(texts::NotLive)};
    return std::nullopt;
  }
  if (!raw.folders.empty()) return Fail(texts::OnlyLive, "--windows");
  if (!raw.drives.empty()) return Fail(texts::OnlyLive, "--drive");
  if (!raw.target.user.empty()) return Fail(texts::OnlyOwnUser, "--user");
  return std::nullopt;
}

// One folder, with its option or without.
Complaint ConvertFolder(RawOptions& raw, bool isNeeded) {
  if (!raw.place.empty()) raw.folders.push_back(raw.place);
  if (raw.folders.size() > 1) return Fail(texts::SecondFolder, raw.folders[1]);
  if (!raw.folders.empty() && raw.folders.front().empty()) {
    return Fail(texts::EmptyFolder, "--windows");
  }
  if (!raw.folders.empty()) raw.target.folder = raw.folders.front();
  if (raw.folders.empty() && isNeeded) return Fail(texts::MissingFolder, "--windows");
  return std::nullopt;
}

// What a command takes of what all of them share.
struct Shape {
  bool scan = false;         // every format, and all users
  bool needsFolder = false;  // where it does not work on the running system
};

// The parts of the options that need more than to be copied. Nothing when all is well.
Complaint Convert(RawOptions& raw, Shape shape, ScanOptions& options) {
  const bool scan = shape.scan;
  if (auto complaint = RefuseTarget(raw)) return complaint;
  if (auto complaint = ConvertFolder(raw, shape.needsFolder)) return complaint;
  if (auto complaint = ConvertFormat(raw, scan, options)) return complaint;
  for (const std::string& text : raw.drives) {
    std::optional<DriveOption> drive = ParseDrive(text);
    if (!drive) return Fail(texts::BadDrive, text);
    raw.target.drives.push_back(std::move(*drive));
  }
  for (const std::string& text : raw.kinds) {
    std::optional<KindChoice> kinds = KindsFrom(text);
    if (!kinds) return Fail(texts::BadKind, text);
    options.choice.kinds.push_back(std::move(*kinds));
  }
  for (const std::string& id : raw.plugins) options.plugins.push_back(FromUtf8(id));
  for (const std::string& id : raw.exclude) options.exclude.push_back(FromUtf8(id));
  options.choice.text = FromUtf8(raw.filter);
  if (!scan && raw.target.user == AllUsers) return Fail(texts::AllUsersScanOnly, AllUsers);
  options.target = std::move(raw.target);
  if (raw.output != "-") options.output = std::move(raw.output);
  return std::nullopt;
}

ParsedCommand ScanFrom(const RawOptions& raw, ScanOptions options) {
  ScanCommand scan;
  scan.all = raw.all;
  scan.details = raw.details;
  scan.since = raw.since;
  scan.failOn = raw.since.empty() ? FailOn::Any : FailOn::New;
  scan.allUsers = options.target.user == AllUsers;
  if (scan.allUsers) options.target.user.clear();
  if (!raw.limit.empty()) {
    const std::optional<std::int32_t> limit = NumberFrom(raw.limit);
    if (!limit) return Fail(texts::BadNumber, raw.limit);
    scan.limit = static_cast<std::size_t>(*limit);
  }
  if (raw.failOn == "any") scan.failOn = FailOn::Any;
  if (raw.failOn == "none") scan.failOn = FailOn::None;
  const bool known = raw.failOn.empty() || raw.failOn == "any" || raw.failOn == "none";
  if (!known && raw.failOn != "new") return Fail(texts::UnknownFailOn, raw.failOn);
  if (!known && raw.since.empty()) return Fail(texts::NeedsSince, "--fail-on new");
  scan.scan = std::move(options);
  return {std::move(scan), {}};
}

ParsedCommand CleanFrom(const RawOptions& raw, ScanOptions options) {
  if (raw.all == !raw.ids.empty()) return {std::nullopt, Say(texts::AllOrSelect)};
  CleanSelection selection{raw.all, raw.ids, options.choice};
  CleanCommand clean{std::move(options), std::move(selection), raw.dryRun, raw.yes, raw.untilClean,
                     raw.backup};
  return {std::move(clean), {}};
}

ParsedCommand ExplainFrom(const RawOptions& raw, ScanOptions options) {
  return {ExplainCommand{raw.id, std::move(options)}, {}};
}

ParsedCommand RegFrom(const RawOptions& raw, ScanOptions options) {
  RegCommand reg;
  reg.target = std::move(options.target);
  reg.format = options.format;
  if (raw.view == "32") reg.view = View::Bits32;
  if (raw.view == "64") reg.view = View::Bits64;
  if (reg.view == View::Native && !raw.view.empty()) return Fail(texts::UnknownView, raw.view);
  const bool find = raw.words.front() == "find";
  if (find && (raw.words.size() < 2 || raw.words[1].empty())) {
    return Fail(texts::MissingOption, "TEXT");
  }
  const std::size_t own = find ? 2 : 1;
  if (raw.words.size() > own) return Fail(texts::UnknownArgument, raw.words[own]);
  if (!find && !raw.key.empty()) return Fail(texts::UnknownArgument, "--key");
  reg.key = find ? raw.key : raw.words.front();
  if (find) reg.find = raw.words[1];
  return {std::move(reg), {}};
}

ParsedCommand UndoFrom(const RawOptions& raw, ScanOptions options) {
  UndoCommand undo{std::move(options.target),
                   raw.backup,
                   raw.session,
                   raw.ids,
                   raw.list,
                   raw.exportFile,
                   options.format};
  return {std::move(undo), {}};
}

ParsedCommand SessionsFrom(const RawOptions& raw, ScanOptions options) {
  const bool prune = raw.action == "prune";
  if (!prune && raw.action != "list") return Fail(texts::UnknownSessionsAction, raw.action);
  SessionsCommand sessions{prune, {}, raw.dryRun, raw.yes, raw.backup, options.format};
  for (const auto& [text, limit] : {std::pair(&raw.keep, &sessions.limits.keep),
                                    std::pair(&raw.olderThan, &sessions.limits.minDays)}) {
    if (text->empty()) continue;
    const std::optional<std::int32_t> number = NumberFrom(*text);
    if (!number) return Fail(texts::BadNumber, *text);
    *limit = static_cast<std::size_t>(*number);
  }
  const bool limited = sessions.limits.keep || sessions.limits.minDays;
  if (prune && !limited) return {std::nullopt, Say(texts::NeedsLimit)};
  if (!prune && limited) return Fail(texts::UnknownArgument, "--keep, --older-than");
  return {std::move(sessions), {}};
}

ParsedCommand RecoverFrom(const RawOptions& raw, ScanOptions options) {
  return {RecoverCommand{std::move(options.target), raw.backup, options.format}, {}};
}

ParsedCommand IgnoreFrom(const RawOptions& raw, ScanOptions options) {
  static constexpr std::array<std::pair<std::string_view, IgnoreAction>, 3> actions = {{
      {"add", IgnoreAction::Add},
      {"list", IgnoreAction::List},
      {"remove", IgnoreAction::Remove},
  }};
  const auto* action = std::find_if(actions.begin(), actions.end(),
                                    [&](const auto& entry) { return entry.first == raw.action; });
  if (action == actions.end()) return Fail(texts::UnknownAction, raw.action);
  const bool takesId = action->second != IgnoreAction::List;
  if (takesId && raw.id.empty()) return Fail(texts::MissingOption, "ID");
  if (!takesId && !raw.id.empty()) return Fail(texts::UnknownArgument, raw.id);
  IgnoreCommand ignore{action->second,  raw.id,        std::move(options.target),
                       options.plugins, raw.machine,   raw.reason,
                       raw.backup,      options.format};
  return {std::move(ignore), {}};
}

ParsedCommand PluginsFrom(const RawOptions& raw, ScanOptions) {
  return {PluginsCommand{raw.listKinds}, {}};
}

ParsedCommand UnknownWord(const CLI::App& app, const std::string& word) {
  const std::vector<CLI::App*> commands = app.get_subcommands();
  std::vector<std::string> known;
  if (commands.empty()) {
    for (const CLI::App* command : app.get_subcommands({})) known.push_back(command->get_name());
  } else {
    for (const CLI::Option* option : commands.front()->get_options()) {
      for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
    }
  }
  std::string meant = Nearest(word.substr(0, word.find('=')), known);
  const bool isCommand = commands.empty() && !word.starts_with('-');
  // A folder alone wants to be looked at.
  if (isCommand && word.find('/') != std::string::npos) meant = "scrubwell scan " + word;
  std::string sentence = Say(isCommand ? texts::UnknownCommand : texts::UnknownArgument, {word});
  if (!meant.empty()) {
    sentence += "; " + Say(texts::DidYouMean, {meant});
  } else if (isCommand) {
    sentence += ' ' + Say(texts::SeeHelp);
  }
  return {std::nullopt, std::move(sentence)};
}

// The parser library speaks English only; what users get to see of its complaints is said here.
ParsedCommand Complain(const CLI::App& app, const RawOptions& raw, const CLI::ParseError& error) {
  // Before it is asked for what this build needs in its place.
  if (const auto complaint = RefuseTarget(raw)) return *complaint;
  const auto extras = app.remaining(true);
  if (!extras.empty()) return UnknownWord(app, extras.front());
  if (app.get_subcommands().empty()) return {std::nullopt, Say(texts::MissingCommand)};
  const std::string what = error.what();
  if (error.get_name() == "RequiredError") {
    return Fail(texts::MissingOption, what.substr(0, what.find(' ')));
  }
  if (error.get_name() == "ArgumentMismatch") {
    return Fail(texts::MissingValue, what.substr(0, what.find_first_of(": ")));
  }
  return Fail(texts::BadArguments, what.substr(0, what.find_first_of(": ")));
}

// Which of the words without an option is the folder. A session's name holds no slash.
void SortWords(bool isReg, RawOptions& raw) {
  if (TargetIsRunningSystem() || !raw.place.empty()) return;
  if (raw.action == "list" && !raw.id.empty()) raw.place = std::exchange(raw.id, {});
  if (raw.session.find('/') != std::string::npos) raw.place = std::exchange(raw.session, {});
  const std::size_t own = isReg && raw.words.front() == "find" ? 2 : 1;
  if (isReg && raw.words.size() == own + 1) {
    raw.place = raw.words.back();
    raw.words.pop_back();
  }
}

// Lines that fit a terminal: what is said of an option goes on below where it begins.
std::string WrapHelp(const std::string& help) {
  constexpr std::size_t width = 100;
  std::string out;
  for (std::size_t from = 0; from < help.size();) {
    const std::size_t to = std::min(help.find('\n', from), help.size());
    const std::string_view line(help.data() + from, to - from);
    const std::size_t indent = line.starts_with(' ') ? std::min(kHelpColumn, line.size()) : 0;
    const std::size_t begin = out.size();
    if (Columns(line) <= width) {
      out.append(line).append(1, '\n');
    } else {
      AppendWrapped(out, line.substr(indent), indent, width);
      out.replace(begin, indent, line.substr(0, indent));
    }
    from = to + 1;
  }
  return out;
}

}  // namespace

std::optional<DriveOption> ParseDrive(std::string_view text) {
  static constexpr std::array<std::pair<std::string_view, DriveKind>, 4> kinds = {{
      {":fixed", DriveKind::Fixed},
      {":removable", DriveKind::Removable},
      {":cdrom", DriveKind::CdRom},
      {":network", DriveKind::Network},
  }};
  if (text.size() < 3 || text[1] != '=') return std::nullopt;
  const char16_t letter = UpCase(static_cast<unsigned char>(text[0]));
  if (letter < u'A' || letter > u'Z') return std::nullopt;
  DriveOption drive{letter, {}, DriveKind::Fixed};
  std::string_view folder = text.substr(2);
  for (const auto& [suffix, kind] : kinds) {
    if (!folder.ends_with(suffix)) continue;
    folder.remove_suffix(suffix.size());
    drive.kind = kind;
    break;
  }
  if (folder.empty()) return std::nullopt;
  drive.folder = folder;
  return drive;
}

ParsedCommand ParseCommandLine(int argc, const char* const* argv) {
  const std::string language = LanguageArgument(argc, argv);
  const std::optional<TLanguage> known = LanguageByName(language);
  SetPackageLanguage(known.value_or(PreferredLanguage()));
  if (!known && !language.empty()) return Fail(texts::UnknownLanguage, language);

  RawOptions raw;
  CLI::App app(Say(TargetIsRunningSystem() ? texts::LiveProgram : texts::Program), "scrubwell");
  Dress(app);
  app.set_version_flag("--version", "scrubwell " SCRUBWELL_VERSION, Say(texts::VersionFlag));
  app.require_subcommand(1);
  AddLanguage(app, raw);
  using Finish = ParsedCommand (*)(const RawOptions&, ScanOptions);
  struct Entry {
    const CLI::App* command;
    Finish finish;
    bool needsFolder;
  };
  const bool needed = !TargetIsRunningSystem();
  const Entry commands[] = {
      {AddScan(app, raw), &ScanFrom, needed},        {AddClean(app, raw), &CleanFrom, needed},
      {AddUndo(app, raw), &UndoFrom, false},         {AddRecover(app, raw), &RecoverFrom, needed},
      {AddSessions(app, raw), &SessionsFrom, false}, {AddIgnore(app, raw), &IgnoreFrom, needed},
      {AddExplain(app, raw), &ExplainFrom, needed},  {AddReg(app, raw), &RegFrom, needed},
      {AddPlugins(app, raw), &PluginsFrom, false},
  };
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {PrintCommand{WrapHelp(app.help())}, {}};
  } catch (const CLI::CallForVersion& version) {
    return {PrintCommand{std::string(version.what()) + '\n'}, {}};
  } catch (const CLI::ParseError& error) {
    return Complain(app, raw, error);
  }
  WriteValidJsonText(raw.jsonValid);
  raw.target.backupFolder = raw.backup;
  ScanOptions options;
  for (const auto& [command, finish, needsFolder] : commands) {
    if (!command->parsed()) continue;
    SortWords(finish == &RegFrom, raw);
    const Shape shape{finish == &ScanFrom, needsFolder};
    if (auto complaint = Convert(raw, shape, options)) return *complaint;
    return finish(raw, std::move(options));
  }
  return Fail(texts::MissingCommand, {});
}

}  // namespace scrubwell::hosts
