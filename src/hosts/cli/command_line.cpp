#include "hosts/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <array>
#include <utility>

#include "hosts/cli/host_texts.h"
#include "hosts/cli/language.h"
#include "registry/Stringhelper.h"

namespace scrubwell::cli {

namespace {

// The options as they were typed.
struct RawOptions {
  OfflineOptions target;
  std::vector<std::string> drives;
  std::vector<std::string> plugins;
  std::string format = "text";
  std::string output;
  std::string language;
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

std::optional<ReportFormat> FormatByName(std::string_view name) {
  if (name == "text") return ReportFormat::Text;
  if (name == "json") return ReportFormat::Json;
  return std::nullopt;
}

void Dress(CLI::App& app) {
  app.option_defaults()->group(Say(texts::OptionsLabel));
  app.set_help_flag("-h,--help", Say(texts::HelpFlag));
  const auto formatter = std::make_shared<CLI::Formatter>();
  formatter->label("Usage", Say(texts::UsageLabel));
  formatter->label("OPTIONS",
                   Say(texts::OptionsUsage).substr(1, Say(texts::OptionsUsage).size() - 2));
  formatter->label("SUBCOMMAND", Say(texts::CommandUsage));
  formatter->label("REQUIRED", Say(texts::RequiredLabel));
  formatter->column_width(34);
  app.formatter(formatter);
}

void AddLanguage(CLI::App& app, RawOptions& raw) {
  app.add_option("--lang", raw.language, Say(texts::LangOption))->type_name("de|en");
}

CLI::App* AddScan(CLI::App& app, RawOptions& raw) {
  CLI::App* scan = app.add_subcommand("scan", Say(texts::ScanCommand));
  Dress(*scan);
  scan->group(Say(texts::CommandsLabel));
  scan->footer(Say(texts::ExitCodes));
  scan->add_option("--windows", raw.target.folder, Say(texts::WindowsOption))
      ->type_name(Say(texts::FolderType))
      ->required();
  scan->add_option("--user", raw.target.user, Say(texts::UserOption))
      ->type_name(Say(texts::NameType));
  scan->add_option("--drive", raw.drives, Say(texts::DriveOptionText))
      ->type_name(Say(texts::DriveType))
      ->expected(1)
      ->take_all();
  scan->add_option("--plugins", raw.plugins, Say(texts::PluginsOption))
      ->type_name("ID,...")
      ->expected(1)
      ->delimiter(',')
      ->take_all();
  scan->add_option("--format", raw.format, Say(texts::FormatOption))->type_name("text|json");
  scan->add_option("--output", raw.output, Say(texts::OutputOption))
      ->type_name(Say(texts::FileType));
  AddLanguage(*scan, raw);
  return scan;
}

CLI::App* AddPlugins(CLI::App& app, RawOptions& raw) {
  CLI::App* plugins = app.add_subcommand("plugins", Say(texts::PluginsCommand));
  Dress(*plugins);
  plugins->group(Say(texts::CommandsLabel));
  AddLanguage(*plugins, raw);
  return plugins;
}

ParsedCommand Fail(const TText& text, std::string_view value) {
  return {std::nullopt, Say(text, {value})};
}

ParsedCommand ScanFrom(RawOptions raw) {
  ScanCommand scan;
  const std::optional<ReportFormat> format = FormatByName(raw.format);
  if (!format) return Fail(texts::UnknownFormat, raw.format);
  scan.format = *format;
  for (const std::string& text : raw.drives) {
    std::optional<DriveOption> drive = ParseDrive(text);
    if (!drive) return Fail(texts::BadDrive, text);
    raw.target.drives.push_back(std::move(*drive));
  }
  for (const std::string& id : raw.plugins) scan.plugins.push_back(FromUtf8(id));
  scan.target = std::move(raw.target);
  scan.output = std::move(raw.output);
  return {std::move(scan), {}};
}

// The parser library speaks English only; what users get to see of its complaints is said here.
ParsedCommand Complain(const CLI::App& app, const CLI::ParseError& error) {
  const auto extras = app.remaining(true);
  if (!extras.empty()) return Fail(texts::UnknownArgument, extras.front());
  if (app.get_subcommands().empty()) return {std::nullopt, Say(texts::MissingCommand)};
  const std::string what = error.what();
  if (error.get_name() == "RequiredError") {
    return Fail(texts::MissingOption, what.substr(0, what.find(' ')));
  }
  return Fail(texts::BadArguments, what.substr(0, what.find_first_of(": ")));
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
  SetPackageLanguage(known.value_or(EnvironmentLanguage()));
  if (!known && !language.empty()) return Fail(texts::UnknownLanguage, language);

  RawOptions raw;
  CLI::App app(Say(texts::Program), "scrubwell");
  Dress(app);
  app.set_version_flag("--version", "scrubwell " SCRUBWELL_VERSION, Say(texts::VersionFlag));
  app.require_subcommand(1);
  AddLanguage(app, raw);
  const CLI::App* scan = AddScan(app, raw);
  const CLI::App* plugins = AddPlugins(app, raw);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {PrintCommand{app.help()}, {}};
  } catch (const CLI::CallForVersion& version) {
    return {PrintCommand{std::string(version.what()) + '\n'}, {}};
  } catch (const CLI::ParseError& error) {
    return Complain(app, error);
  }
  if (plugins->parsed()) return {PluginsCommand{}, {}};
  return scan->parsed() ? ScanFrom(std::move(raw)) : Fail(texts::MissingCommand, {});
}

}  // namespace scrubwell::cli
