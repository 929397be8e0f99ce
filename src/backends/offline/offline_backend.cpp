#include "backends/offline/offline_backend.h"

#include "backends/offline/mounted_devices.h"
#include "backends/offline/offline_parts.h"
#include "backends/offline/pending.h"
#include "backends/offline/registry_read.h"
#include "backends/offline/session_parts.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

using offline::Installation;
using offline::UserProfile;

constexpr unsigned kDefaultCodePage = 1252;

// Hives that the running system has in the machine's root beside those that are always needed.
constexpr UnicodeView kFurtherHives[] = {u"SAM", u"SECURITY", u"COMPONENTS", u"DRIVERS"};

}  // namespace

unsigned offline::CodePageOf(const Installation& installation) {
  const UnicodeString text = offline::HiveText(
      installation.system->Raw(), installation.controlSetKey + u"\\Control\\Nls\\CodePage", u"ACP");
  return static_cast<unsigned>(std::max(0, StrToIntDef(text, kDefaultCodePage)));
}

namespace {

ComposedSettings SettingsOf(const Installation& installation, const UserProfile* user) {
  ComposedSettings settings;
  if (user != nullptr) settings.userSid = user->sid;
  settings.is64Bit = installation.is64Bit;
  settings.rules =
      installation.IsWindows7OrLater() ? ViewRules::Windows7 : ViewRules::BeforeWindows7;
  return settings;
}

}  // namespace

bool OfflineBackend::Parts::AddDrives(const TargetOptions& options, std::string& error) {
  for (const DriveOption& drive : options.drives) {
    if (!drives.Add(drive.letter, drive.folder, drive.kind, error)) return false;
  }
  return true;
}

bool OfflineBackend::Parts::PickUser(const std::string& wanted, std::string& error) {
  users = offline::FindUsers(files, installation, notes);
  const auto accountNumber = [this](UnicodeView account) -> std::optional<std::uint32_t> {
    Status why = Status::Ok;
    std::string ignored;
    offline::RegfHive* const sam = hives.Open(installation.Config(u"SAM"), why, ignored);
    if (sam == nullptr) return {};
    const UnicodeString path = u"SAM\\Domains\\Account\\Users\\Names\\" + UnicodeString(account);
    regf::CellOffset key = regf::NoCell;
    RegValue value;
    if (sam->Raw().Descend(sam->Raw().Root(), path, key) != Status::Ok) return {};
    // The number stands where other values have their type.
    if (sam->Raw().Value(key, {}, value) != Status::Ok) return {};
    return value.type;
  };
  user = offline::ChooseUser(users, FromUtf8(wanted), accountNumber);
  if (user == nullptr && !wanted.empty()) {
    error = wanted + ": no such user (or several) on this Windows";
    return false;
  }
  if (user == nullptr) {
    notes.Note(u"No user profile was found; entries of users are not checked");
  } else if (wanted.empty() && users.size() > 1) {
    std::size_t people = 0;
    for (const UserProfile& each : users) people += each.isService || each.hive.empty() ? 0 : 1;
    if (people > 1) {
      notes.Note(u"Several users; " + user->name + u" used this Windows last and is checked");
    }
  }
  return true;
}

void OfflineBackend::Parts::TellHive(UnicodeView place, const UnicodeString& path) {
  offline::DiskPlace file;
  if (files.Place(path, file) != Status::Ok) return;
  const bool isOnVolume = &file.Root() == &drives.Get(installation.Letter())->root;
  target.hives.push_back({UnicodeString(place), isOnVolume ? file.Relative() : file.Text()});
}

void OfflineBackend::Parts::MountFile(UnicodeView place, const UnicodeString& path) {
  FileInfo info;
  const Status there = files.Stat(path, FsView::Physical, info);
  if (there == Status::Absent) return;
  TellHive(place, path);
  world->registry.MountLazily(place, [this, path](Status& why) -> IHive* {
    std::string error;
    offline::RegfHive* const hive = hives.Open(path, why, error);
    if (hive == nullptr) notes.Note(FromUtf8(error) + u"; its keys are not checked");
    return hive;
  });
}

void OfflineBackend::Parts::MountUsers() {
  for (const UserProfile& each : users) {
    const UnicodeString place = u"HKU\\" + each.sid;
    if (!each.hive.empty()) MountFile(place, each.hive);
    if (!each.classes.empty()) MountFile(place + u"_Classes", each.classes);
  }
  MountFile(u"HKU\\.DEFAULT", installation.Config(u"DEFAULT"));
}

void OfflineBackend::Parts::MountHives() {
  world->registry.Mount(u"HKLM\\SOFTWARE", *installation.software);
  world->registry.Mount(u"HKLM\\SYSTEM", *installation.system);
  for (const UnicodeView name : {UnicodeView(u"SOFTWARE"), UnicodeView(u"SYSTEM")}) {
    TellHive(u"HKLM\\" + UnicodeString(name), installation.Config(name));
  }
  for (const UnicodeView name : kFurtherHives) {
    MountFile(u"HKLM\\" + UnicodeString(name), installation.Config(name));
  }
  MountUsers();
  // The chosen user's hives are needed anyway; opening them now puts their notes in front.
  KeyInfo info;
  if (user == nullptr) return;
  world->registry.OpenKey({RootKey::CurrentUser, {}}, info);
  world->registry.OpenKey({RootKey::CurrentUser, u"Software\\Classes"}, info);
}

offline::DiskPlace OfflineBackend::Parts::ConfigFolder() {
  // The software hive lies in it, so it is there.
  return installation.software->Place().Folder();
}

void OfflineBackend::Parts::MapMountedDevices() {
  static constexpr UnicodeView kPrefix = u"\\DosDevices\\";
  std::vector<RegValue> values;
  world->registry.EnumValues({RootKey::LocalMachine, u"SYSTEM\\MountedDevices"}, values);
  UnicodeString letters;
  for (const RegValue& value : values) {
    // 12 and 24 bytes are partitions of fixed disks; other forms are devices with media.
    const bool isFixed = value.data.size() == 12 || value.data.size() == 24;
    if (!isFixed || value.name.size() != kPrefix.size() + 2) continue;
    if (!SameText(UnicodeView(value.name).substr(0, kPrefix.size()), kPrefix)) continue;
    const char16_t letter = UpCase(value.name[kPrefix.size()]);
    if (drives.Get(letter) != nullptr) continue;
    const std::string folder = offline::MountFolderOf(value.data);
    std::string error;
    if (!folder.empty() && drives.Add(letter, folder, DriveKind::Fixed, error, false)) {
      notes.Note(UnicodeString(1, letter) + u": is read from " + FromUtf8(folder) +
                 u", which this Windows names as its own; a clean changes nothing there");
      continue;
    }
    if (!letters.empty()) letters += u", ";
    letters += letter;
    letters += u':';
  }
  if (!letters.empty()) {
    notes.Note(u"Not given, so nothing on it is reported missing: drive " + letters);
  }
}

void OfflineBackend::Parts::DescribeTarget(const std::string& folder) {
  target.folder = folder;
  target.identity = offline::IdentityOf(installation);
  target.productName = installation.productName;
  target.version = installation.version;
  target.build = installation.build;
  target.is64Bit = installation.is64Bit;
  target.systemRoot = installation.systemRoot;
  target.driveLetter = installation.Letter();
  target.controlSet = installation.controlSet;
  for (const UserProfile& each : users) {
    if (!each.isService && !each.hive.empty()) target.users.push_back({each.name, each.sid});
  }
  if (user == nullptr) return;
  target.userName = user->name;
  if (user->sidKnown) target.userSid = user->sid;
}

OfflineOpenResult OfflineBackend::Open(const TargetOptions& options) {
  OfflineOpenResult opened = Open(options, nullptr);
  if (opened.backend == nullptr) return opened;
  Parts& parts = *opened.backend->parts_;
  offline::DiskRoot backups;
  const bool hasBackups =
      offline::OpenRoot(options.backupFolder.empty() ? DefaultBackupFolder() : options.backupFolder,
                        backups) == 0;
  const offline::PendingCommit pending =
      offline::FindPending({parts.ConfigFolder(), &parts.drives, hasBackups ? &backups : nullptr,
                            offline::IdentityOf(parts.installation)});
  using State = offline::PendingCommit::State;
  if (pending.state == State::None) return opened;
  if (pending.state == State::Foreign || pending.state == State::Elsewhere) {
    parts.notes.Note(FromUtf8(pending.record.Text()) +
                     u": no session in the backup folder knows this record of an interrupted "
                     u"clean; the files are shown as they are");
    return opened;
  }
  if (pending.state == State::Preparing) {
    parts.notes.Note(
        u"An earlier clean was interrupted before it changed anything; its left-over "
        u"files are to be removed with recover");
    return opened;
  }
  FinishedState finished;
  if (pending.state == State::Unreadable ||
      !offline::FinishedView(pending, finished.hives, finished.files)) {
    const std::string error = pending.error.empty()
                                  ? options.folder +
                                        ": an earlier clean was interrupted and can't "
                                        "be finished"
                                  : pending.error;
    return {nullptr, OpenFailure::Unreadable, error};
  }
  opened = Open(options, &finished);
  if (opened.backend == nullptr) return opened;
  opened.backend->parts_->notes.Note(
      u"An earlier clean was interrupted while it was written; what is shown is the state that "
      u"recover brings about");
  return opened;
}

OfflineOpenResult OfflineBackend::Open(const TargetOptions& options,
                                       const FinishedState* finished) {
  auto parts = std::make_unique<Parts>();
  if (finished != nullptr) parts->hives.SetReplaced(finished->hives);
  std::string error;
  if (!parts->drives.Add(u'C', options.folder, DriveKind::Fixed, error) ||
      !offline::FindInstallation(parts->drives, u'C', parts->files, parts->hives, parts->notes,
                                 parts->installation, error)) {
    return {nullptr, OpenFailure::Unreadable, std::move(error)};
  }
  if (!parts->AddDrives(options, error) || !parts->PickUser(options.user, error)) {
    return {nullptr, OpenFailure::WrongUse, std::move(error)};
  }
  if (finished != nullptr) parts->files.SetChanges(finished->files);
  parts->world =
      std::make_unique<Parts::World>(*parts, SettingsOf(parts->installation, parts->user));
  if (!parts->world->text.IsExact()) {
    parts->notes.Note(u"The system's code page is not known here; 1252 is used in its place");
  }
  parts->MountHives();
  parts->MapMountedDevices();
  parts->DescribeTarget(options.folder);
  return {
      std::unique_ptr<OfflineBackend>(new OfflineBackend(std::move(parts))), OpenFailure::None, {}};
}

OfflineBackend::OfflineBackend(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}
OfflineBackend::~OfflineBackend() = default;
TPlatform& OfflineBackend::Platform() {
  return parts_->world->platform;
}
const TargetFacts& OfflineBackend::Target() const {
  return parts_->target;
}
const std::vector<UnicodeString>& OfflineBackend::Notes() const {
  return parts_->notes.All();
}

}  // namespace scrubwell
