#include "support/ask.h"

#include <algorithm>

#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell::test {

namespace {

struct Question {
  std::string_view verb;
  std::string_view view;
  UnicodeString path;
  UnicodeString name;
};

Question Read(std::string_view query) {
  Question q;
  const std::size_t first = query.find(' ');
  const std::size_t second = query.find(' ', first + 1);
  q.verb = query.substr(0, first);
  q.view = query.substr(first + 1, second - first - 1);
  std::string_view rest = query.substr(second + 1);
  const std::size_t arrow = rest.find(" > ");
  if (arrow != std::string_view::npos) q.name = FromUtf8(rest.substr(arrow + 3));
  q.path = FromUtf8(rest.substr(0, arrow));
  return q;
}

RootKey RootOf(UnicodeView name) {
  constexpr std::pair<UnicodeView, RootKey> roots[] = {{u"HKLM", RootKey::LocalMachine},
                                                       {u"HKCU", RootKey::CurrentUser},
                                                       {u"HKCR", RootKey::ClassesRoot},
                                                       {u"HKU", RootKey::Users},
                                                       {u"HKCC", RootKey::CurrentConfig}};
  for (const auto& [text, root] : roots)
    if (text == name) return root;
  return RootKey::None;
}

std::string Answer(Status status, const TStringList& items) {
  if (status != Status::Ok) return StatusName(status);
  UnicodeString out;
  for (const UnicodeString& item : items) out += (&item == items.data() ? u"" : u",") + item;
  return ToUtf8(out);
}

std::string AskValues(IRegistry& registry, const KeyRef& key, const Question& q) {
  std::vector<RegValue> values(1);
  const Status status = q.verb == "get" ? registry.GetValue(key, q.name, values[0])
                                        : registry.EnumValues(key, values);
  TStringList lines;
  for (const RegValue& value : values) lines.push_back(reg::FormatValue(value));
  return Answer(status, lines);
}

Status Change(IRegistry& registry, const KeyRef& key, const Question& q) {
  if (q.verb == "create") return registry.CreateKey(key);
  if (q.verb == "delete") return registry.DeleteKey(key, false);
  if (q.verb == "force") return registry.DeleteKey(key, true);
  if (q.verb == "drop") return registry.DeleteValue(key, q.name);
  if (q.verb == "candelete") return registry.CheckAccess(key, Access::Delete);
  if (q.verb == "canwrite") return registry.CheckAccess(key, Access::Write);
  const std::size_t equals = q.name.find(u'=');
  return registry.SetValue(
      key, {q.name.substr(0, equals), REGT_SZ, TextData(UnicodeView(q.name).substr(equals + 1))});
}

}  // namespace

const char* StatusName(Status status) {
  constexpr const char* names[] = {"Ok", "Absent", "Denied", "Corrupt", "Unknown"};
  return names[static_cast<std::size_t>(status)];
}

std::string Ask(IRegistry& registry, std::string_view query) {
  const Question q = Read(query);
  const std::size_t slash = std::min(q.path.find(u'\\'), q.path.size());
  const View view = q.view == "64"     ? View::Bits64
                    : q.view == "32"   ? View::Bits32
                    : q.view == "both" ? View::Invalid
                                       : View::Native;
  const UnicodeView path = UnicodeView(q.path).substr(std::min(slash + 1, q.path.size()));
  const KeyRef key{RootOf(UnicodeView(q.path).substr(0, slash)), path, view};
  if (q.verb == "keys") {
    TStringList names;
    const Status status = registry.EnumKeys(key, names);
    return Answer(status, names);
  }
  if (q.verb == "values" || q.verb == "get") return AskValues(registry, key, q);
  if (q.verb != "open") return StatusName(Change(registry, key, q));
  KeyInfo info;
  const Status status = registry.OpenKey(key, info);
  if (status != Status::Ok) return StatusName(status);
  return std::to_string(info.subkeyCount) + " " + std::to_string(info.valueCount);
}

std::string Ask(IFiles& files, std::string_view query) {
  const Question q = Read(query);
  const FsView view = q.view == "32" ? FsView::Redirected : FsView::Physical;
  if (q.verb == "erase") return StatusName(files.EraseFile(q.path));
  if (q.verb == "rmdir") return StatusName(files.EraseFolder(q.path));
  if (q.verb == "drive") return std::to_string(static_cast<int>(files.Drive(q.path[0])));
  if (q.verb == "list") {
    std::vector<DirEntry> entries;
    const Status status = files.List(q.path, view, entries);
    TStringList names;
    for (const DirEntry& entry : entries)
      names.push_back(entry.name + (entry.isFolder ? u"\\" : u""));
    std::sort(names.begin(), names.end());
    return Answer(status, names);
  }
  if (q.verb == "read") {
    Bytes data;
    const Status status = files.Read(q.path, view, 1000, data);
    return status == Status::Ok ? std::string(data.begin(), data.end()) : StatusName(status);
  }
  FileInfo info;
  const Status status = files.Stat(q.path, view, info);
  if (status != Status::Ok) return StatusName(status);
  std::uint64_t size = 0;
  if (info.isFolder) return "folder";
  const Status sized = files.Size(q.path, view, size);
  return "file " + (sized == Status::Ok ? std::to_string(size) : std::string(StatusName(sized)));
}

}  // namespace scrubwell::test
