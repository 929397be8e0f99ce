#include "backends/memory/memory_world.h"

#include <algorithm>

namespace scrubwell {

// ---- System, texts, shell -----------------------------------------------------------------

Status MemorySystem::Environment(UnicodeView name, View view, UnicodeString& out) {
  const Status status = shared_.faults.Pass(name);
  if (status != Status::Ok) return status;
  if (isWow64 && view != View::Bits64) {
    const auto it = variables32.find(name);
    if (it != variables32.end()) return out = it->second, Status::Ok;
  }
  const auto it = variables.find(name);
  if (it == variables.end()) return Status::Absent;
  out = it->second;
  return Status::Ok;
}

UnicodeString MemoryText::FromAnsi(std::string_view bytes) {
  UnicodeString out;
  for (const char byte : bytes) out += static_cast<unsigned char>(byte);
  return out;
}

std::string MemoryText::ToAnsi(UnicodeView text) {
  std::string out;
  for (const char16_t unit : text) out += unit < 0x100 ? static_cast<char>(unit) : '?';
  return out;
}

Status MemoryShell::SpecialFolder(int csidl, UnicodeString& out) {
  const Status status = shared_.faults.Pass(u"CSIDL " + IntToStr(csidl));
  if (status != Status::Ok) return status;
  const auto it = folders.find(csidl);
  if (it == folders.end()) return Status::Unknown;
  out = it->second;
  return Status::Ok;
}

Status MemoryShell::LinkTarget(UnicodeView linkFile, UnicodeString& out) {
  const Status status = shared_.faults.Pass(linkFile);
  if (status != Status::Ok) return status;
  const auto it = links.find(linkFile);
  if (it == links.end()) return Status::Unknown;
  out = it->second;
  return out.empty() ? Status::Absent : Status::Ok;
}

Status MemoryShell::ItemListPath(const Bytes& list, UnicodeString& out) {
  const Status status = shared_.faults.Pass(u"item list");
  if (status != Status::Ok) return status;
  const auto it = lists.find(list);
  if (it == lists.end()) return Status::Unknown;
  out = it->second;
  return out.empty() ? Status::Absent : Status::Ok;
}

Status MemoryResources::StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) {
  const Status status = shared_.faults.Pass(file);
  if (status != Status::Ok) return status;
  const auto it = strings.find(file);
  if (it == strings.end()) return Status::Unknown;
  const auto text = it->second.find(id);
  if (text == it->second.end()) return Status::Absent;
  out = text->second;
  return Status::Ok;
}

Status MemoryResources::Version(UnicodeView file, FileVersion& out) {
  const Status status = shared_.faults.Pass(file);
  if (status != Status::Ok) return status;
  const auto it = versions.find(file);
  if (it == versions.end()) return Status::Absent;
  out = it->second;
  return Status::Ok;
}

UnicodeString MemoryImages::FileName(int id, int /*category*/) {
  return u"icon" + IntToStr(id) + u".svg";
}

// ---- INI files ----------------------------------------------------------------------------

struct MemoryProfiles::Text {
  UnicodeString path;
  TStringList lines;  // without line ends

  [[nodiscard]] static UnicodeView KeyOf(UnicodeView line) {
    const UnicodeView trimmed = Trim(line);
    const std::size_t equals = trimmed.find(u'=');
    if (trimmed.empty() || trimmed.front() == u';' || equals == UnicodeView::npos) return {};
    return Trim(trimmed.substr(0, equals));
  }
  static bool IsSection(UnicodeView line) { return Trim(line).substr(0, 1) == u"["; }

  // The lines of a section's body; false when there is no such section.
  bool Body(UnicodeView section, std::size_t& begin, std::size_t& end) const {
    const UnicodeString head = u"[" + UnicodeString(section) + u"]";
    begin = 0;
    while (begin < lines.size() && !SameText(Trim(lines[begin]), head)) ++begin;
    if (begin == lines.size()) return false;
    end = ++begin;
    while (end < lines.size() && !IsSection(lines[end])) ++end;
    return true;
  }
  // The line of an entry, or lines.size().
  [[nodiscard]] std::size_t Line(UnicodeView section, UnicodeView key) const {
    std::size_t begin = 0;
    std::size_t end = 0;
    if (!Body(section, begin, end)) return lines.size();
    for (std::size_t i = begin; i < end; ++i)
      if (!KeyOf(lines[i]).empty() && SameText(KeyOf(lines[i]), key)) return i;
    return lines.size();
  }
};

Status MemoryProfiles::Load(UnicodeView file, Text& out) {
  constexpr std::size_t limit = 1U << 20U;
  out.path = file;
  if (file.find_first_of(u"\\/:") == UnicodeView::npos) out.path.insert(0, u"C:\\Windows\\");
  Bytes data;
  const Status status = shared_.files.Read(out.path, FsView::Physical, limit, data);
  if (status != Status::Ok) return status;
  const UnicodeString text = FromUtf8({reinterpret_cast<const char*>(data.data()), data.size()});
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = std::min(text.find(u'\n', from), text.size());
    out.lines.push_back(text.substr(from, to - from));
    if (!out.lines.back().empty() && out.lines.back().back() == u'\r') out.lines.back().pop_back();
    from = to + 1;
  }
  return Status::Ok;
}

Status MemoryProfiles::Store(const Text& text, UnicodeView change) {
  UnicodeString all;
  for (const UnicodeString& line : text.lines) all += line + u"\r\n";
  const std::string bytes = ToUtf8(all);
  shared_.journal.Add(change);
  shared_.files.AddFile(text.path, {bytes.begin(), bytes.end()});
  return Status::Ok;
}

Status MemoryProfiles::Get(UnicodeView file, UnicodeView section, UnicodeView key,
                           UnicodeString& out) {
  Text text;
  const Status status = Load(file, text);
  if (status != Status::Ok) return status;
  const std::size_t line = text.Line(section, key);
  if (line == text.lines.size()) return Status::Absent;
  UnicodeView value = Trim(UnicodeView(text.lines[line]).substr(text.lines[line].find(u'=') + 1));
  const bool quoted = value.size() > 1 && value.front() == value.back() &&
                      (value.front() == u'"' || value.front() == u'\'');
  if (quoted) value = value.substr(1, value.size() - 2);
  out = value;
  return Status::Ok;
}

Status MemoryProfiles::Put(UnicodeView file, UnicodeView section, UnicodeView key,
                           UnicodeView value) {
  Text text;
  const Status status = Load(file, text);
  if (status != Status::Ok && status != Status::Absent) return status;
  const UnicodeString entry = UnicodeString(key) + u"=" + UnicodeString(value);
  const std::size_t line = text.Line(section, key);
  std::size_t begin = 0;
  std::size_t end = 0;
  if (line < text.lines.size()) {
    text.lines[line] = entry;
  } else if (text.Body(section, begin, end)) {
    text.lines.insert(text.lines.begin() + static_cast<std::ptrdiff_t>(end), entry);
  } else {
    text.lines.push_back(u"[" + UnicodeString(section) + u"]");
    text.lines.push_back(entry);
  }
  return Store(text, u"set entry " + text.path + u" [" + UnicodeString(section) + u"] " + entry);
}

Status MemoryProfiles::Remove(UnicodeView file, UnicodeView section, UnicodeView key) {
  Text text;
  const Status status = Load(file, text);
  if (status != Status::Ok) return status;
  const std::size_t line = text.Line(section, key);
  if (line == text.lines.size()) return Status::Absent;
  text.lines.erase(text.lines.begin() + static_cast<std::ptrdiff_t>(line));
  return Store(text, u"delete entry " + text.path + u" [" + UnicodeString(section) + u"] " +
                         UnicodeString(key));
}

Status MemoryProfiles::Entries(UnicodeView file, UnicodeView section, TStringList& out) {
  Text text;
  const Status status = Load(file, text);
  std::size_t begin = 0;
  std::size_t end = 0;
  if (status != Status::Ok) return status;
  if (!text.Body(section, begin, end)) return Status::Absent;
  out.clear();
  for (std::size_t i = begin; i < end; ++i)
    if (!Text::KeyOf(text.lines[i]).empty()) out.emplace_back(Text::KeyOf(text.lines[i]));
  return Status::Ok;
}

// ---- Services, tasks, firewall ------------------------------------------------------------

Status MemoryServices::Query(UnicodeView service, ServiceInfo& out) {
  const Status status = shared_.faults.Pass(service);
  if (status != Status::Ok) return status;
  const auto it = services.find(service);
  if (it == services.end()) return Status::Absent;
  out = it->second;
  return Status::Ok;
}

Status MemoryTasks::Connect() {
  const Status status = shared_.faults.Pass(u"tasks");
  return status != Status::Ok ? status : connection;
}

Status MemoryTasks::Names(TStringList& out) {
  const Status status = Connect();
  out.clear();
  if (status == Status::Ok)
    for (const auto& [job, application] : jobs) out.push_back(job);
  return status;
}

Status MemoryTasks::Application(UnicodeView job, UnicodeString& out) {
  const Status status = shared_.faults.Pass(job);
  if (status != Status::Ok) return status;
  for (const auto& [name, application] : jobs)
    if (SameText(name, job)) return out = application, Status::Ok;
  return Status::Absent;
}

Status MemoryTasks::Remove(UnicodeView job) {
  const Status status = shared_.faults.Pass(job);
  if (status != Status::Ok) return status;
  const auto it = std::find_if(jobs.begin(), jobs.end(),
                               [&](const auto& entry) { return SameText(entry.first, job); });
  if (it == jobs.end()) return Status::Absent;
  shared_.journal.Add(u"remove task " + it->first);
  jobs.erase(it);
  return Status::Ok;
}

Status MemoryFirewall::Connect() {
  const Status status = shared_.faults.Pass(u"firewall");
  return status != Status::Ok ? status : connection;
}

Status MemoryFirewall::Applications(std::vector<FirewallApplication>& out) {
  const Status status = Connect();
  if (status == Status::Ok) out = applications;
  return status;
}

FirewallApplication* MemoryFirewall::Find(UnicodeView imageFile) {
  for (FirewallApplication& application : applications)
    if (SameText(application.imageFile, imageFile)) return &application;
  return nullptr;
}

Status MemoryFirewall::Remove(UnicodeView imageFile) {
  const Status status = shared_.faults.Pass(imageFile);
  if (status != Status::Ok) return status;
  const FirewallApplication* found = Find(imageFile);
  if (found == nullptr) return Status::Absent;
  if (removesDisabledOnly && found->enabled) return Status::Denied;
  shared_.journal.Add(u"remove firewall " + found->imageFile);
  applications.erase(applications.begin() + (found - applications.data()));
  return Status::Ok;
}

Status MemoryFirewall::SetEnabled(UnicodeView imageFile, bool enabled) {
  const Status status = shared_.faults.Pass(imageFile);
  if (status != Status::Ok) return status;
  FirewallApplication* found = Find(imageFile);
  if (found == nullptr) return Status::Absent;
  shared_.journal.Add((enabled ? u"enable firewall " : u"disable firewall ") + found->imageFile);
  found->enabled = enabled;
  return Status::Ok;
}

// ---- Browser ------------------------------------------------------------------------------

Status MemoryBrowser::Urls(TStringList& out) {
  const Status status = shared_.faults.Pass(u"urls");
  if (status == Status::Ok) out = urls;
  return status;
}

Status MemoryBrowser::QueryUrl(UnicodeView url) {
  const Status status = shared_.faults.Pass(url);
  if (status != Status::Ok) return status;
  return std::find(urls.begin(), urls.end(), url) == urls.end() ? Status::Absent : Status::Ok;
}

Status MemoryBrowser::RemoveUrl(UnicodeView url) {
  const Status status = QueryUrl(url);
  if (status != Status::Ok) return status;
  shared_.journal.Add(u"remove url " + UnicodeString(url));
  urls.erase(std::find(urls.begin(), urls.end(), url));
  return Status::Ok;
}

Status MemoryBrowser::CacheNames(TStringList& out) {
  const Status status = shared_.faults.Pass(u"cache");
  if (status == Status::Ok) out = cacheNames;
  return status;
}

}  // namespace scrubwell
