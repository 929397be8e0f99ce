#include "hosts/driver/evidence.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "hosts/driver/problem_id.h"
#include "hosts/driver/scan_driver.h"
#include "registry/PathResolver.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell {

namespace {

// An item of a scan that asks more than this has gone through a list; the rest tells nothing new.
constexpr std::size_t kMostAnswers = 500;
constexpr std::size_t kMostValues = 20;

// What is kept of the item that is scanned just now, and what the problem's own keys have answered
// since the scan began.
class Notebook final : public paths::ITrace {
 public:
  // From here on everything is noted that leads to the problem.
  void Begin(const TSweepError& problem) {
    *this = {};
    digest_ = ProblemDigest(problem);
    for (const UnicodeString& item : problem.Data) {
      UnicodeView value = UnicodeView(item).substr(item.find(u':') + 1);
      named_.insert(UpperCase(value));
      if (value.starts_with(u"32:") || value.starts_with(u"64:")) value.remove_prefix(3);
      named_.insert(UpperCase(value));
    }
    active_ = true;
  }
  Evidence End() {
    LookForProblem();
    active_ = false;
    if (!kept_.complete) return {};
    return std::move(kept_);
  }

  // Whether to note an answer. The problem ends it: what follows belongs to others.
  bool Listens() {
    if (active_) LookForProblem();
    return active_;
  }
  void ItemBegins() {
    if (!Listens()) return;
    item_ = {};
    seen_.clear();
    // So that each item asks for itself what it needs to know.
    paths::ForgetLookups();
  }

  void Add(RegistryAnswer answer) {
    const UnicodeString key = UpperCase(RegKeyToStr(answer.root, answer.path, false));
    const UnicodeString sign =
        u"r" + Sign(answer.question, answer.view) + key + u"\n" + answer.name;
    // The ignore list is the driver's business.
    if (answer.path == IgnoredProblemsKey() || !First(sign)) return;
    KeepTelling(answer.values);
    if (IsNamed(key) && pinnedSeen_.insert(sign).second) Keep(pinned_.registry, answer);
    Keep(item_.registry, std::move(answer));
  }
  void Add(VariableAnswer answer) {
    if (First(u"v" + Sign(answer.status, answer.view) + UpperCase(answer.name))) {
      Keep(item_.variables, std::move(answer));
    }
  }
  void Add(FileAnswer answer) {
    const UnicodeString path = UpperCase(answer.path);
    const UnicodeString sign = u"f" + Sign(answer.question, answer.view) + path;
    if (!First(sign)) return;
    if (IsNamed(path) && pinnedSeen_.insert(sign).second) Keep(pinned_.files, answer);
    Keep(item_.files, std::move(answer));
  }
  // Lists are read before the items begin: of those only what the problem names is kept.
  // `part` is what of the text the problem may name.
  void Add(SourceAnswer answer, UnicodeView part = {}) {
    const UnicodeString sign = u"o" + Sign(answer.kind, answer.status) + UpperCase(answer.asked);
    const bool named = IsNamed(UpperCase(answer.text)) || IsNamed(UpperCase(answer.asked)) ||
                       (!part.empty() && IsNamed(UpperCase(part)));
    if (named && pinnedSeen_.insert(sign).second) pinned_.sources.push_back(std::move(answer));
  }
  void Expanded(UnicodeView text, const TStringList& meanings) override {
    if (text.find(u'%') != UnicodeView::npos) AddStep({UnicodeString(text), false, meanings});
  }
  void Searched(UnicodeView name, const TStringList& folders) override {
    AddStep({UnicodeString(name), true, folders});
  }

 private:
  void AddStep(PathStep step) {
    if (Listens() && First((step.searched ? u"s" : u"e") + step.text)) {
      Keep(item_.paths, std::move(step));
    }
  }
  template <class A, class B>
  static UnicodeString Sign(A a, B b) {
    return {static_cast<char16_t>(u'0' + static_cast<int>(a)),
            static_cast<char16_t>(u'0' + static_cast<int>(b))};
  }
  bool First(UnicodeString sign) { return seen_.insert(std::move(sign)).second; }
  [[nodiscard]] bool IsNamed(const UnicodeString& upper) const { return named_.contains(upper); }

  template <class Answer>
  static void Keep(std::vector<Answer>& answers, Answer answer) {
    if (answers.size() < kMostAnswers) answers.push_back(std::move(answer));
  }

  // Of a key with many values those that the problem names, then the first ones.
  void KeepTelling(std::vector<RegValue>& values) const {
    if (values.size() <= kMostValues) return;
    std::stable_partition(values.begin(), values.end(), [this](const RegValue& value) {
      return IsNamed(UpperCase(value.name)) || IsNamed(UpperCase(RegValueText(value)));
    });
    values.resize(kMostValues);
  }

  void LookForProblem() {
    for (; known_ < SweepErrors->Count(); ++known_) {
      if (ProblemDigest((*SweepErrors)[known_]) != digest_) continue;
      kept_ = Merged();
      kept_.complete = true;
      active_ = false;
      return;
    }
    known_ = SweepErrors->Count();
  }

  // What was read before the item began comes first.
  Evidence Merged() {
    Evidence merged = item_;
    const auto prepend = [](auto& all, const auto& earlier, const auto& same) {
      auto front = earlier;
      std::erase_if(front, [&](const auto& answer) {
        return std::any_of(all.begin(), all.end(),
                           [&](const auto& other) { return same(answer, other); });
      });
      all.insert(all.begin(), front.begin(), front.end());
    };
    prepend(merged.registry, pinned_.registry, [](const auto& a, const auto& b) {
      return a.question == b.question && a.root == b.root && a.view == b.view && a.name == b.name &&
             SameText(a.path, b.path);
    });
    prepend(merged.files, pinned_.files, [](const auto& a, const auto& b) {
      return a.question == b.question && a.view == b.view && SameText(a.path, b.path);
    });
    merged.sources = pinned_.sources;
    std::stable_partition(merged.registry.begin(), merged.registry.end(),
                          [this](const RegistryAnswer& answer) { return IsRelated(answer); });
    return merged;
  }

  // Whether the key is one that the problem names, or lies above or below it.
  [[nodiscard]] bool IsRelated(const RegistryAnswer& answer) const {
    const UnicodeString key = UpperCase(RegKeyToStr(answer.root, answer.path, false));
    return std::any_of(named_.begin(), named_.end(), [&key](const UnicodeString& named) {
      return !named.empty() && (named.starts_with(key) || key.starts_with(named));
    });
  }

  bool active_ = false;
  std::string digest_;
  std::unordered_set<UnicodeString> named_;
  std::unordered_set<UnicodeString> seen_;  // of this item
  std::unordered_set<UnicodeString> pinnedSeen_;
  Evidence item_;
  Evidence pinned_;
  Evidence kept_;
  std::int32_t known_ = 0;
};

class RecordedRegistry final : public IRegistry {
 public:
  RecordedRegistry(IRegistry& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  Status OpenKey(const KeyRef& key, KeyInfo& out) override {
    const Status status = inner_.OpenKey(key, out);
    if (!notes_.Listens()) return status;
    RegistryAnswer answer = About(RegistryQuestion::Key, key, status);
    if (status == Status::Ok) answer.counts = out;
    notes_.Add(std::move(answer));
    return status;
  }
  Status EnumKeys(const KeyRef& key, TStringList& out) override {
    const Status status = inner_.EnumKeys(key, out);
    if (!notes_.Listens()) return status;
    RegistryAnswer answer = About(RegistryQuestion::Subkeys, key, status);
    if (status == Status::Ok) answer.counts.subkeyCount = static_cast<std::uint32_t>(out.size());
    notes_.Add(std::move(answer));
    return status;
  }
  Status EnumValues(const KeyRef& key, std::vector<RegValue>& out) override {
    const Status status = inner_.EnumValues(key, out);
    if (!notes_.Listens()) return status;
    RegistryAnswer answer = About(RegistryQuestion::Values, key, status);
    if (status == Status::Ok) {
      answer.counts.valueCount = static_cast<std::uint32_t>(out.size());
      answer.values = out;
    }
    notes_.Add(std::move(answer));
    return status;
  }
  Status GetValue(const KeyRef& key, UnicodeView name, RegValue& out) override {
    const Status status = inner_.GetValue(key, name, out);
    if (!notes_.Listens()) return status;
    RegistryAnswer answer = About(RegistryQuestion::Value, key, status);
    answer.name = name;
    if (status == Status::Ok) answer.values = {out};
    notes_.Add(std::move(answer));
    return status;
  }
  Status SetValue(const KeyRef& key, const RegValue& value) override {
    return inner_.SetValue(key, value);
  }
  Status CreateKey(const KeyRef& key) override { return inner_.CreateKey(key); }
  Status DeleteKey(const KeyRef& key, bool force) override { return inner_.DeleteKey(key, force); }
  Status DeleteValue(const KeyRef& key, UnicodeView name) override {
    return inner_.DeleteValue(key, name);
  }
  Status CheckAccess(const KeyRef& key, Access access) override {
    const Status status = inner_.CheckAccess(key, access);
    if (notes_.Listens()) notes_.Add(About(RegistryQuestion::Access, key, status));
    return status;
  }

 private:
  static RegistryAnswer About(RegistryQuestion question, const KeyRef& key, Status status) {
    return {question, key.root, UnicodeString(key.path), key.view, {}, status, {}, {}};
  }

  IRegistry& inner_;
  Notebook& notes_;
};

class RecordedFiles final : public IFiles {
 public:
  RecordedFiles(IFiles& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  DriveKind Drive(char16_t letter) override { return inner_.Drive(letter); }
  Status Stat(UnicodeView path, FsView view, FileInfo& out) override {
    const Status status = inner_.Stat(path, view, out);
    return Noted(FileQuestion::Entry, path, view, status, status == Status::Ok && out.isFolder);
  }
  Status Size(UnicodeView path, FsView view, std::uint64_t& out) override {
    return Noted(FileQuestion::Entry, path, view, inner_.Size(path, view, out), false);
  }
  Status List(UnicodeView path, FsView view, std::vector<DirEntry>& out) override {
    return Noted(FileQuestion::Folder, path, view, inner_.List(path, view, out), true);
  }
  Status Read(UnicodeView path, FsView view, std::size_t limit, Bytes& out) override {
    return Noted(FileQuestion::Content, path, view, inner_.Read(path, view, limit, out), false);
  }
  Status Write(UnicodeView path, const Bytes& data) override { return inner_.Write(path, data); }
  Status EraseFile(UnicodeView path) override { return inner_.EraseFile(path); }
  Status EraseFolder(UnicodeView path) override { return inner_.EraseFolder(path); }
  Status Backup(UnicodeView path) override { return inner_.Backup(path); }

 private:
  Status Noted(FileQuestion question, UnicodeView path, FsView view, Status status, bool isFolder) {
    if (notes_.Listens()) notes_.Add({question, UnicodeString(path), view, status, isFolder});
    return status;
  }

  IFiles& inner_;
  Notebook& notes_;
};

class RecordedSystem final : public ISystem {
 public:
  RecordedSystem(ISystem& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  UnicodeString WindowsDir() override { return inner_.WindowsDir(); }
  Status Environment(UnicodeView name, View view, UnicodeString& out) override {
    const Status status = inner_.Environment(name, view, out);
    if (notes_.Listens()) {
      notes_.Add(VariableAnswer{UnicodeString(name), view, status,
                                status == Status::Ok ? out : UnicodeString()});
    }
    return status;
  }
  OsVersion Version() override { return inner_.Version(); }
  bool IsAdmin() override { return inner_.IsAdmin(); }
  bool IsWow64() override { return inner_.IsWow64(); }
  bool FsRedirection() override { return inner_.FsRedirection(); }
  void SetFsRedirection(bool enabled) override { inner_.SetFsRedirection(enabled); }
  void PumpMessages() override { inner_.PumpMessages(); }

 private:
  ISystem& inner_;
  Notebook& notes_;
};

class RecordedProfiles final : public IProfiles {
 public:
  RecordedProfiles(IProfiles& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  Status Get(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeString& out) override {
    const Status status = inner_.Get(file, section, key, out);
    if (!notes_.Listens()) return status;
    UnicodeString asked(file);
    asked.append(u" [").append(section).append(u"] ").append(key);
    const UnicodeString text = status == Status::Ok ? out : UnicodeString();
    const SourceAnswer answer{SourceKind::IniEntry, asked, status, text};
    notes_.Add(answer);
    // An entry may list several files; the problem names one of them.
    for (const char16_t separator : {u',', u' '}) {
      for (std::size_t from = 0; from < text.size();) {
        const std::size_t to = std::min(text.find(separator, from), text.size());
        notes_.Add(answer, Trim(UnicodeView(text).substr(from, to - from)));
        from = to + 1;
      }
    }
    return status;
  }
  Status Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) override {
    return inner_.Put(file, section, key, value);
  }
  Status Remove(UnicodeView file, UnicodeView section, UnicodeView key) override {
    return inner_.Remove(file, section, key);
  }
  Status Entries(UnicodeView file, UnicodeView section, TStringList& out) override {
    return inner_.Entries(file, section, out);
  }

 private:
  IProfiles& inner_;
  Notebook& notes_;
};

class RecordedTasks final : public ITasks {
 public:
  RecordedTasks(ITasks& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  Status Connect() override { return inner_.Connect(); }
  Status Names(TStringList& out) override { return inner_.Names(out); }
  Status Application(UnicodeView job, UnicodeString& out) override {
    const Status status = inner_.Application(job, out);
    if (notes_.Listens()) {
      notes_.Add(SourceAnswer{SourceKind::Task, UnicodeString(job), status,
                              status == Status::Ok ? out : UnicodeString()});
    }
    return status;
  }
  Status Remove(UnicodeView job) override { return inner_.Remove(job); }

 private:
  ITasks& inner_;
  Notebook& notes_;
};

class RecordedFirewall final : public IFirewall {
 public:
  RecordedFirewall(IFirewall& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  Status Connect() override { return inner_.Connect(); }
  Status Applications(std::vector<FirewallApplication>& out) override {
    const Status status = inner_.Applications(out);
    if (status != Status::Ok || !notes_.Listens()) return status;
    for (const FirewallApplication& rule : out) {
      notes_.Add(SourceAnswer{SourceKind::FirewallRule, rule.name, status, rule.imageFile});
    }
    return status;
  }
  Status Remove(UnicodeView imageFile) override { return inner_.Remove(imageFile); }
  Status SetEnabled(UnicodeView imageFile, bool enabled) override {
    return inner_.SetEnabled(imageFile, enabled);
  }

 private:
  IFirewall& inner_;
  Notebook& notes_;
};

class RecordedShell final : public IShell {
 public:
  RecordedShell(IShell& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  Status SpecialFolder(int csidl, UnicodeString& out) override {
    return inner_.SpecialFolder(csidl, out);
  }
  Status LinkTarget(UnicodeView linkFile, UnicodeString& out) override {
    const Status status = inner_.LinkTarget(linkFile, out);
    if (notes_.Listens()) {
      notes_.Add(SourceAnswer{SourceKind::Shortcut, UnicodeString(linkFile), status,
                              status == Status::Ok ? out : UnicodeString()});
    }
    return status;
  }
  Status ItemListPath(const Bytes& list, UnicodeString& out) override {
    return inner_.ItemListPath(list, out);
  }

 private:
  IShell& inner_;
  Notebook& notes_;
};

class RecordedBrowser final : public IBrowserHistory {
 public:
  RecordedBrowser(IBrowserHistory& inner, Notebook& notes) : inner_(inner), notes_(notes) {}

  int BrowserVersion() override { return inner_.BrowserVersion(); }
  Status Urls(TStringList& out) override {
    const Status status = inner_.Urls(out);
    if (status != Status::Ok || !notes_.Listens()) return status;
    for (const UnicodeString& url : out) {
      notes_.Add(SourceAnswer{SourceKind::Address, url, status, {}});
    }
    return status;
  }
  Status QueryUrl(UnicodeView url) override { return inner_.QueryUrl(url); }
  Status RemoveUrl(UnicodeView url) override { return inner_.RemoveUrl(url); }
  Status CacheNames(TStringList& out) override { return inner_.CacheNames(out); }

 private:
  IBrowserHistory& inner_;
  Notebook& notes_;
};

// Takes the listener off again, also when a plugin throws.
class TraceGuard {
 public:
  explicit TraceGuard(paths::ITrace& trace) { paths::SetTrace(&trace); }
  ~TraceGuard() { paths::SetTrace(nullptr); }
  TraceGuard(const TraceGuard&) = delete;
  TraceGuard& operator=(const TraceGuard&) = delete;
};

}  // namespace

struct EvidenceRecorder::Parts {
  explicit Parts(TPlatform& inner)
      : registry(inner.registry, notes),
        files(inner.files, notes),
        system(inner.system, notes),
        shell(inner.shell, notes),
        profiles(inner.profiles, notes),
        tasks(inner.tasks, notes),
        firewall(inner.firewall, notes),
        browser(inner.browser, notes),
        platform{registry,        files,        system,         inner.text,   shell,
                 inner.resources, profiles,     inner.services, tasks,        firewall,
                 browser,         inner.images, inner.notes,    inner.product} {}

  Notebook notes;
  RecordedRegistry registry;
  RecordedFiles files;
  RecordedSystem system;
  RecordedShell shell;
  RecordedProfiles profiles;
  RecordedTasks tasks;
  RecordedFirewall firewall;
  RecordedBrowser browser;
  TPlatform platform;
};

EvidenceRecorder::EvidenceRecorder(TPlatform& platform)
    : parts_(std::make_unique<Parts>(platform)) {}
EvidenceRecorder::~EvidenceRecorder() = default;

TPlatform& EvidenceRecorder::Platform() {
  return parts_->platform;
}

Evidence EvidenceRecorder::Record(const TSweepError& problem) {
  // The scan empties the list that the problem may come from.
  const TSweepError wanted = problem;
  SweepErrors->Clear();
  paths::ForgetLookups();
  Notebook& notes = parts_->notes;
  notes.Begin(wanted);
  const TraceGuard guard(notes);
  ScanDriver([&notes](const RunProgress&) { notes.ItemBegins(); }).Scan();
  return notes.End();
}

}  // namespace scrubwell
