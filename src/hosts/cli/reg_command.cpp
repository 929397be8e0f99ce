#include <algorithm>

#include "hosts/cli/commands.h"
#include "hosts/cli/console.h"
#include "hosts/cli/stop_signals.h"
#include "hosts/cli/targets.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/registry_text.h"
#include "hosts/report/system_sentence.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell::hosts {

namespace {

// Bytes of binary data that a line shows.
constexpr std::size_t kMostBytes = 32;
// Windows lets keys nest no deeper; deeper ones come of links that go round.
constexpr std::size_t kDeepest = 512;

// A key that outlives the text it was read from.
struct KeyName {
  RootKey root = RootKey::None;
  UnicodeString path;
  View view = View::Native;

  [[nodiscard]] KeyRef Ref() const { return {root, path, view}; }
};

// "HKLM\x", "64:HKEY_LOCAL_MACHINE\x" as problems and their links name keys, "regjump:64:..." as
// the links' targets do, "Computer\HKEY_..." as Windows' own editor does.
std::optional<KeyName> ParseKey(UnicodeView text) {
  KeyName key;
  for (const UnicodeView prefix : {UnicodeView(u"regjump:"), UnicodeView(u"Computer\\")}) {
    if (SameText(text.substr(0, prefix.size()), prefix)) text.remove_prefix(prefix.size());
  }
  if (text.size() > 3 && text[2] == u':') {
    if (text.starts_with(u"32")) key.view = View::Bits32;
    if (text.starts_with(u"64")) key.view = View::Bits64;
    text.remove_prefix(3);
  }
  while (text.ends_with(u'\\')) text.remove_suffix(1);
  const std::size_t slash = std::min(text.find(u'\\'), text.size());
  key.root = GetMainKeyFromString(text.substr(0, slash));
  key.path = text.substr(std::min(slash + 1, text.size()));
  return key.root == RootKey::None ? std::nullopt : std::optional(std::move(key));
}

std::string HeadLine(const KeyName& key) {
  std::string line = KeyText(key.Ref());
  if (key.view == View::Bits32) line += " (" + Say(texts::Bits32) + ')';
  if (key.view == View::Bits64) line += " (" + Say(texts::Bits64) + ')';
  return line;
}

struct KeyContent {
  TStringList subkeys;
  std::vector<RegValue> values;
};

std::string ContentText(const KeyName& key, const KeyContent& content) {
  std::string out = HeadLine(key) + '\n';
  if (!content.subkeys.empty()) {
    out += '\n' + Say(texts::SubkeysHeading, {std::to_string(content.subkeys.size())}) + '\n';
    for (const UnicodeString& name : content.subkeys) out += "  " + Printable(name) + '\n';
  }
  if (!content.values.empty()) {
    out += '\n' + Say(texts::ValuesHeading, {std::to_string(content.values.size())}) + '\n';
    for (const RegValue& value : content.values) out += "  " + ValueLine(value, kMostBytes) + '\n';
  }
  return out;
}

std::string ContentJson(const KeyName& key, const KeyContent& content) {
  std::string out;
  JsonWriter json(out);
  json.BeginObject();
  json.Key("scrubwell").Text(SCRUBWELL_VERSION);
  json.Key("key").Text(RegKeyToStr(key.root, key.path, false));
  json.Key("view").Number(ViewBits(key.view));
  json.Key("subkeys").BeginArray();
  for (const UnicodeString& name : content.subkeys) json.Text(name);
  json.EndArray();
  json.Key("values").BeginArray();
  for (const RegValue& value : content.values) WriteValue(json, value);
  json.EndArray();
  json.EndObject();
  return out += '\n';
}

int List(const RegCommand& command, IRegistry& registry, const KeyName& key) {
  KeyContent content;
  Status status = registry.EnumKeys(key.Ref(), content.subkeys);
  if (status == Status::Ok) status = registry.EnumValues(key.Ref(), content.values);
  if (status == Status::Absent) return Fail(ProblemsFound, Say(texts::KeyAbsent, {HeadLine(key)}));
  if (status != Status::Ok) return Fail(Unreadable, Say(texts::KeyUnreadable, {HeadLine(key)}));
  const bool json = command.format == ReportFormat::Json;
  return Run(PrintCommand{json ? ContentJson(key, content) : ContentText(key, content)});
}

// Walks keys from the top down and shows each hit as soon as it is found.
class Search {
 public:
  Search(const RegCommand& command, IRegistry& registry)
      : registry_(registry),
        text_(UpperCase(FromUtf8(*command.find))),
        json_(command.format == ReportFormat::Json) {}

  int Run(const std::vector<KeyName>& starts) {
    for (const KeyName& start : starts) Walk(start);
    if (error_ != 0) {
      return Fail(WrongUse,
                  Say(texts::CantWrite, {Say(texts::StandardOutput), SystemSentence(error_)}));
    }
    if (unread_ > 0) {
      const std::string unread = Say(texts::KeysUnread, {std::to_string(unread_)});
      WriteTo(Stream::Error, "scrubwell: " + unread + '\n');
    }
    if (StopRequested()) return Stopped;
    return hits_ > 0 ? NoProblems : ProblemsFound;
  }

 private:
  // The subkeys of one key on the way that are still to be visited, the last one next.
  struct Level {
    TStringList names;
    std::size_t pathLength = 0;
  };

  // Only names wait to be visited, not their paths, which a small hive can make very long.
  void Walk(KeyName key) {
    std::vector<Level> levels;
    Visit(key, levels);
    while (!levels.empty() && !StopRequested() && error_ == 0) {
      Level& level = levels.back();
      if (level.names.empty()) {
        levels.pop_back();
        continue;
      }
      key.path.resize(level.pathLength);
      if (!key.path.empty()) key.path += u'\\';
      key.path += level.names.back();
      level.names.pop_back();
      if (!IsAlias(key)) Visit(key, levels);
    }
  }

  void Visit(const KeyName& key, std::vector<Level>& levels) {
    const std::size_t slash = key.path.rfind(u'\\');
    const UnicodeView name =
        UnicodeView(key.path).substr(slash == UnicodeString::npos ? 0 : slash + 1);
    if (ContainsText(name, text_)) Show(key, nullptr, "key");
    if (registry_.EnumValues(key.Ref(), values_) != Status::Ok) {
      ++unread_;
      return;
    }
    for (const RegValue& value : values_) {
      if (ContainsText(value.name, text_)) {
        Show(key, &value, "name");
      } else if (ContainsText(RegValueText(value), text_)) {
        Show(key, &value, "data");
      }
    }
    if (levels.size() >= kDeepest) return;
    Level below{{}, key.path.size()};
    if (registry_.EnumKeys(key.Ref(), below.names) != Status::Ok) {
      ++unread_;
      return;
    }
    std::reverse(below.names.begin(), below.names.end());
    levels.push_back(std::move(below));
  }

  // What lies there lies beside it under its own name.
  static bool IsAlias(const KeyName& key) {
    return key.root == RootKey::LocalMachine && SameText(key.path, u"SYSTEM\\CurrentControlSet");
  }

  void Show(const KeyName& key, const RegValue* value, std::string_view where) {
    ++hits_;
    line_.clear();
    if (json_) {
      JsonWriter json(line_, JsonLayout::OneLine);
      json.BeginObject();
      json.Key("key").Text(RegKeyToStr(key.root, key.path, false));
      json.Key("view").Number(ViewBits(key.view));
      json.Key("found_in").Text(where);
      if (value != nullptr) WriteValue(json.Key("value"), *value);
      json.EndObject();
    } else {
      line_ = KeyText(key.Ref());
      if (value != nullptr) line_ += "  " + ValueLine(*value, kMostBytes);
    }
    line_ += '\n';
    error_ = WriteTo(Stream::Output, line_);
  }

  IRegistry& registry_;
  UnicodeString text_;
  bool json_;
  std::vector<RegValue> values_;
  std::string line_;
  std::size_t hits_ = 0;
  std::size_t unread_ = 0;
  int error_ = 0;
};

}  // namespace

int Run(const RegCommand& command) {
  std::vector<KeyName> keys = {{RootKey::LocalMachine, {}, {}}, {RootKey::Users, {}, {}}};
  if (!command.key.empty() || !command.find) {
    std::optional<KeyName> key = ParseKey(FromUtf8(command.key));
    if (!key) return Fail(WrongUse, Say(texts::UnknownRoot, {command.key}));
    keys = {std::move(*key)};
  }
  const OpenedTarget opened = OpenTarget(command.target);
  if (!opened.target) {
    return Fail(CodeOf(opened.failure), opened.error);
  }
  const bool twoViews = opened.target->Target().is64Bit;
  for (KeyName& key : keys) {
    if (command.view != View::Native) key.view = command.view;
    if (key.view == View::Native && twoViews) key.view = View::Bits64;
    if (!twoViews) key.view = View::Native;
  }
  IRegistry& registry = opened.target->Platform().registry;
  if (!command.find) return List(command, registry, keys.front());
  CatchStopSignals();
  KeyInfo info;
  if (keys.size() == 1 && registry.OpenKey(keys.front().Ref(), info) == Status::Absent) {
    return Fail(ProblemsFound, Say(texts::KeyAbsent, {HeadLine(keys.front())}));
  }
  return Search(command, registry).Run(keys);
}

}  // namespace scrubwell::hosts
