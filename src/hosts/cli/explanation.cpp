#include "hosts/cli/explanation.h"

#include <array>

#include "hosts/cli/clean_report.h"
#include "hosts/driver/scan_driver.h"
#include "hosts/report/columns.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/registry_text.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// In the order of the enumerations.
constexpr std::array<TText, 5> kAnswers = {texts::AnswerFound, texts::AnswerAbsent,
                                           texts::AnswerDenied, texts::AnswerCorrupt,
                                           texts::AnswerUnknown};
constexpr std::array<std::string_view, 5> kAnswerNames = {"found", "absent", "denied", "corrupt",
                                                          "unknown"};
constexpr std::array<std::string_view, 5> kRegistryQuestions = {"key", "subkeys", "values", "value",
                                                                "access"};
constexpr std::array<std::string_view, 3> kFileQuestions = {"entry", "folder", "content"};
constexpr std::array<std::string_view, 5> kSourceKinds = {"ini", "task", "firewall", "shortcut",
                                                          "address"};

constexpr std::size_t kMostBytes = 32;
constexpr std::size_t kMostLines = 40;

template <class Table, class Enum>
const auto& At(const Table& table, Enum value) {
  return table.at(static_cast<std::size_t>(value));
}

// ---- Text -----------------------------------------------------------------------------------

class TextForm {
 public:
  TextForm(std::string& out, const TextLook& look) : out_(out), look_(look), style_(look.colours) {}

  void Write(const Explanation& e) {
    const TSweepError& problem = (*SweepErrors)[e.index];
    style_.Dim(out_, e.id);
    out_ += "  ";
    style_.Heading(out_, Printable(problem.Caption));
    out_ += '\n';
    if (const TRCPlugin* plugin = FindPlugin(problem.PluginID)) {
      Wrapped(Say(texts::CategoryLine, {Printable(plugin->Caption), ToUtf8(plugin->FPluginID),
                                        std::to_string(problem.ErrorType)}));
    }
    Wrapped(Printable(problem.ShortDescription));
    Wrapped(Printable(PlainText(problem.Description)));
    Heading(texts::DataHeading);
    for (const UnicodeString& item : problem.Data) {
      const std::size_t colon = std::min(item.find(u':'), item.size() - 1);
      out_ += "  ";
      style_.Dim(out_, Printable(UnicodeView(item).substr(0, colon + 1)));
      out_ += ' ' + Printable(UnicodeView(item).substr(colon + 1)) + '\n';
    }
    Write(e.evidence);
    WriteChangesOf(e, problem);
  }

 private:
  void Wrapped(const std::string& text) { AppendWrapped(out_, text, 2, look_.width); }
  void Heading(const TText& text) {
    out_ += '\n';
    style_.Heading(out_, Say(text));
    out_ += '\n';
  }
  void Line(std::size_t indent, const std::string& text) {
    out_.append(indent, ' ');
    out_ += text + '\n';
  }

  void Write(const Evidence& evidence) {
    if (!evidence.complete) {
      out_ += '\n';
      Wrapped(Say(texts::NotRepeated));
      return;
    }
    if (evidence.registry.empty() && evidence.files.empty() && evidence.sources.empty()) {
      out_ += '\n';
      Wrapped(Say(texts::NoEvidence));
    }
    if (!evidence.registry.empty()) WriteRegistry(evidence.registry);
    if (!evidence.sources.empty()) WriteSources(evidence.sources);
    if (!evidence.variables.empty() || !evidence.paths.empty()) WritePaths(evidence);
    if (!evidence.files.empty()) WriteFiles(evidence.files);
  }

  // The first lines; of more only how many.
  template <class Answers, class Writer>
  void Limited(const Answers& answers, const Writer& write) {
    const std::size_t count =
        look_.limit > 0 ? std::min(answers.size(), look_.limit) : answers.size();
    for (std::size_t i = 0; i < count; ++i) write(answers[i]);
    if (count < answers.size()) {
      Line(2, Say(texts::MoreOmitted, {std::to_string(answers.size() - count)}));
    }
  }

  void WriteRegistry(const std::vector<RegistryAnswer>& answers) {
    Heading(texts::RegistryHeading);
    std::string last;
    Limited(answers, [&](const RegistryAnswer& answer) {
      // Rights only decide whether an entry is looked at.
      if (answer.question == RegistryQuestion::Access) return;
      std::string key = KeyText({answer.root, answer.path, answer.view});
      if (answer.view == View::Bits32) key += " (" + Say(texts::Bits32) + ')';
      if (answer.view == View::Bits64) key += " (" + Say(texts::Bits64) + ')';
      if (key != last) Line(2, key);
      last = key;
      Line(4, AnswerText(answer));
      for (const RegValue& value : answer.values) {
        if (answer.question == RegistryQuestion::Values) Line(6, ValueLine(value, kMostBytes));
      }
    });
  }

  static std::string AnswerText(const RegistryAnswer& answer) {
    const std::string said = Say(At(kAnswers, answer.status));
    if (answer.question == RegistryQuestion::Value) {
      if (!answer.values.empty()) return ValueLine(answer.values.front(), kMostBytes);
      const std::string name =
          answer.name.empty() ? Say(texts::DefaultValueName) : '"' + Printable(answer.name) + '"';
      return name + "  " + said;
    }
    if (answer.status != Status::Ok) return Say(texts::KeyOnly) + ": " + said;
    if (answer.question == RegistryQuestion::Subkeys) {
      return Say(texts::Subkeys, {std::to_string(answer.counts.subkeyCount)});
    }
    if (answer.question == RegistryQuestion::Values) {
      return Say(texts::Values, {std::to_string(answer.counts.valueCount)});
    }
    return Say(texts::KeyOnly) + ": " + said;
  }

  void WriteSources(const std::vector<SourceAnswer>& answers) {
    Heading(texts::SourcesHeading);
    Limited(answers, [&](const SourceAnswer& answer) {
      const bool says = answer.status == Status::Ok && !answer.text.empty();
      Line(2, Printable(answer.asked) + (says ? " = " + Printable(answer.text)
                                              : "  " + Say(At(kAnswers, answer.status))));
    });
  }

  void WritePaths(const Evidence& evidence) {
    Heading(texts::PathsHeading);
    for (const VariableAnswer& variable : evidence.variables) {
      std::string line = '%' + Printable(variable.name) + '%';
      if (variable.view == View::Bits32) line += " (" + Say(texts::Bits32) + ')';
      if (variable.view == View::Bits64) line += " (" + Say(texts::Bits64) + ')';
      line += " = ";
      line +=
          variable.status == Status::Ok ? Printable(variable.text) : Say(texts::UnknownVariable);
      Line(2, line);
    }
    Limited(evidence.paths, [&](const PathStep& step) {
      Line(2, '"' + Printable(step.text) + '"');
      if (step.searched) Line(4, Say(texts::SearchOrder));
      for (const UnicodeString& result : step.results) {
        Line(step.searched ? 6 : 4, (step.searched ? "" : "= ") + Printable(result));
      }
      if (!step.searched && step.results.empty()) Line(4, "= " + Say(texts::UnknownVariable));
    });
  }

  // Places that were tried one after the other with the same answer, in one line: the same path
  // as both kinds of programs see it, and with one extension after the other.
  struct FileLine {
    FileAnswer answer;
    std::string extensions;
    bool narrowToo = false;
  };
  static std::vector<FileLine> Joined(const std::vector<FileAnswer>& answers) {
    std::vector<FileLine> lines;
    for (const FileAnswer& answer : answers) {
      if (lines.empty() || !Joins(lines.back(), answer)) lines.push_back({answer, {}, false});
    }
    return lines;
  }

  // Whether the line has room for the answer; it is added to it then.
  static bool Joins(FileLine& line, const FileAnswer& answer) {
    const FileAnswer& first = line.answer;
    if (first.status != answer.status || first.question != answer.question) return false;
    const UnicodeView path = answer.path;
    const UnicodeView extension = ExtractFileExt(path);
    const bool same = path == first.path;
    const bool other = !extension.empty() && answer.status == Status::Absent &&
                       extension.find(u' ') == UnicodeView::npos &&
                       Stem(path) == (Stem(path) == first.path ? first.path : Stem(first.path));
    if (!same && !other) return false;
    if (answer.view == FsView::Redirected) {
      line.narrowToo = line.narrowToo || first.view == FsView::Physical;
    } else if (!same) {
      line.extensions += ' ' + Printable(extension);
    }
    return true;
  }
  static UnicodeView Stem(UnicodeView path) {
    return path.substr(0, path.size() - ExtractFileExt(path).size());
  }

  void WriteFiles(const std::vector<FileAnswer>& answers) {
    Heading(texts::FilesHeading);
    std::size_t width = 0;
    for (const TText& text : kAnswers) width = std::max(width, Columns(Say(text)));
    Limited(Joined(answers), [&](const FileLine& file) {
      std::string line = Say(At(kAnswers, file.answer.status));
      line.append(width + 2 - Columns(line), ' ');
      if (file.answer.question == FileQuestion::Folder) line += Say(texts::ListedFolder) + ' ';
      line += Printable(file.answer.path);
      if (file.answer.isFolder && file.answer.question == FileQuestion::Entry) {
        line += "  (" + Say(texts::AFolder) + ')';
      }
      if (!file.extensions.empty()) {
        line += "  (" + Say(texts::WithExtensions, {file.extensions.substr(1)}) + ')';
      }
      if (file.narrowToo) line += "  (" + Say(texts::SeenBy32Too) + ')';
      if (file.answer.view == FsView::Redirected) line += "  (" + Say(texts::SeenBy32) + ')';
      Line(2, line);
    });
  }

  void WriteChangesOf(const Explanation& e, const TSweepError& problem) {
    Heading(texts::RemovalHeading);
    if (!problem.Visible) {
      Wrapped(Say(texts::HiddenStays));
    } else if (e.changes.empty()) {
      Line(2, Say(texts::NothingToRemove));
    }
    out_ += ChangesText(e.changes);
  }

  std::string& out_;
  const TextLook& look_;
  TextStyle style_;
};

// ---- JSON -----------------------------------------------------------------------------------

void WriteRegistry(JsonWriter& json, const std::vector<RegistryAnswer>& answers) {
  json.BeginArray();
  for (const RegistryAnswer& answer : answers) {
    json.BeginObject();
    json.Key("asked").Text(At(kRegistryQuestions, answer.question));
    json.Key("key").Text(RegKeyToStr(answer.root, answer.path, false));
    json.Key("view").Number(ViewBits(answer.view));
    json.Key("name").Text(answer.name);
    json.Key("answer").Text(At(kAnswerNames, answer.status));
    json.Key("subkeys").Number(answer.counts.subkeyCount);
    json.Key("value_count").Number(answer.counts.valueCount);
    json.Key("values").BeginArray();
    for (const RegValue& value : answer.values) WriteValue(json, value);
    json.EndArray();
    json.EndObject();
  }
  json.EndArray();
}

void WriteVariables(JsonWriter& json, const std::vector<VariableAnswer>& answers) {
  json.BeginArray();
  for (const VariableAnswer& answer : answers) {
    json.BeginObject();
    json.Key("name").Text(answer.name);
    json.Key("view").Number(ViewBits(answer.view));
    json.Key("answer").Text(At(kAnswerNames, answer.status));
    json.Key("text").Text(answer.text);
    json.EndObject();
  }
  json.EndArray();
}

void WritePaths(JsonWriter& json, const std::vector<PathStep>& steps) {
  json.BeginArray();
  for (const PathStep& step : steps) {
    json.BeginObject();
    json.Key("text").Text(step.text);
    json.Key(step.searched ? "searched_in" : "means").BeginArray();
    for (const UnicodeString& result : step.results) json.Text(result);
    json.EndArray();
    json.EndObject();
  }
  json.EndArray();
}

void WriteSources(JsonWriter& json, const std::vector<SourceAnswer>& answers) {
  json.BeginArray();
  for (const SourceAnswer& answer : answers) {
    json.BeginObject();
    json.Key("kind").Text(At(kSourceKinds, answer.kind));
    json.Key("asked").Text(answer.asked);
    json.Key("answer").Text(At(kAnswerNames, answer.status));
    json.Key("text").Text(answer.text);
    json.EndObject();
  }
  json.EndArray();
}

void WriteFiles(JsonWriter& json, const std::vector<FileAnswer>& answers) {
  json.BeginArray();
  for (const FileAnswer& answer : answers) {
    json.BeginObject();
    json.Key("asked").Text(At(kFileQuestions, answer.question));
    json.Key("path").Text(answer.path);
    json.Key("redirected").Bool(answer.view == FsView::Redirected);
    json.Key("answer").Text(At(kAnswerNames, answer.status));
    json.Key("is_folder").Bool(answer.isFolder);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

std::string ExplanationText(const Explanation& explanation, const TextLook& look) {
  std::string out;
  TextLook limited = look;
  limited.limit = look.limit > 0 ? look.limit : kMostLines;
  TextForm(out, limited).Write(explanation);
  return out;
}

std::string ExplanationJson(const Explanation& explanation) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  WriteTarget(json.Key("target"), explanation.report.target);
  json.Key("problem").BeginObject();
  WriteProblemMembers(json, explanation.report, explanation.index, explanation.id);
  json.EndObject();
  json.Key("complete").Bool(explanation.evidence.complete);
  WriteRegistry(json.Key("registry"), explanation.evidence.registry);
  WriteVariables(json.Key("variables"), explanation.evidence.variables);
  WritePaths(json.Key("paths"), explanation.evidence.paths);
  WriteFiles(json.Key("files"), explanation.evidence.files);
  WriteSources(json.Key("sources"), explanation.evidence.sources);
  WriteChanges(json.Key("changes"), explanation.changes, explanation.journal);
  json.Key("notes").BeginArray();
  for (const UnicodeString& note : explanation.report.notes) json.Text(note);
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

}  // namespace scrubwell::hosts
