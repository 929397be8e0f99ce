#include "plugins/startup/Rcp_autostart.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/autostart.h"

namespace scrubwell {
namespace {

namespace text = texts::autostart;

enum Kind : std::int32_t { kMissingProgram = 1, kInvalidTask = 2 };

constexpr TCategory kCategory{
    .className = u"TRCPAutostart",
    .imageIndex = 9,
    .iconID = 7002,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 2> kKinds{{
    {kMissingProgram, 7000, text::kEntryCaption, text::kEntryShort, text::kEntryDetail},
    {kInvalidTask, 7001, text::kTaskCaption, text::kTaskShort, text::kTaskDetail},
}};

constexpr UnicodeView kRun = u"Software\\Microsoft\\Windows\\CurrentVersion\\Run";
// Where entries are parked that somebody switched off.
constexpr UnicodeView kRunOff = u"Software\\Microsoft\\Windows\\CurrentVersion\\Run-";
constexpr UnicodeView kRunServices = u"Software\\Microsoft\\Windows\\CurrentVersion\\RunServices";

constexpr TZmRegOptions kView32{zmreg32Bit};
constexpr TZmRegOptions kView64{zmreg64Bit};

// In the order of the scan; the 64-bit view is there only beside a 32-bit one.
constexpr std::array<KeyPlace, 8> kSources{{
    {HKEY_LOCAL_MACHINE, kRun, kView32},
    {HKEY_LOCAL_MACHINE, kRun, kView64},
    {HKEY_LOCAL_MACHINE, kRunOff, kView32},
    {HKEY_LOCAL_MACHINE, kRunOff, kView64},
    {HKEY_LOCAL_MACHINE, kRunServices, kView32},
    {HKEY_LOCAL_MACHINE, kRunServices, kView64},
    {HKEY_CURRENT_USER, kRun, kView32},
    {HKEY_CURRENT_USER, kRunOff, kView32},
}};

bool IsIgnoredAutostartEntries(UnicodeView valueName, UnicodeView keyPath) {
  return SameText(valueName, u"WBLOGON") &&
         SameText(keyPath,
                  u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Run");
}

// A job's name as its data item holds it: UTF-8 bytes widened as if they were ANSI text. Stored
// lists of ignored problems depend on this form.
UnicodeString JobItem(UnicodeView job) {
  return Platform().text.FromAnsi(ToUtf8(job));
}

UnicodeString JobOfItem(UnicodeView item) {
  return FromUtf8(Platform().text.ToAnsi(item));
}

}  // namespace

TRCPAutostart::TRCPAutostart() : TRCPlugin(kCategory, kKinds) {}

void TRCPAutostart::Init() {
  std::size_t count = 0;
  for (std::size_t i = 0; i < kSources.size(); ++i) {
    const KeyPlace& source = kSources[i];
    FEntries[i] = {};
    if (source.opts == kView64 && !IsCurrentProcessWow64()) continue;
    EnumRegValuesEx(source.root, source.key, FEntries[i].names, FEntries[i].data, source.opts);
    count += FEntries[i].names.size();
  }
  InitSchedulerInterface();
  // Tasks are not counted, so a scan that meets some reports more than 1000 per mille in the end.
  SetFScanItemCount(static_cast<std::int32_t>(count));
  FState = rcpInited;
}

// The scheduler's library must come from the folder of this process's own view.
void TRCPAutostart::InitSchedulerInterface() {
  TZMFsRedirection& redirection = TZMFsRedirection::GetInstance();
  const bool before = redirection.GetEnabled();
  redirection.SetEnabled(true);
  FHasScheduler = Platform().tasks.Connect() == Status::Ok;
  redirection.SetEnabled(before);
}

void TRCPAutostart::Scan() {
  ErrorCount = 0;
  for (std::size_t i = 0; i < kSources.size(); ++i) {
    const KeyPlace& source = kSources[i];
    const UnicodeString keyPath = RegKeyToStr(source.root, source.key, false);
    for (std::size_t j = 0; j < FEntries[i].names.size(); ++j) {
      if (!ShowScanItem(FEntries[i].names[j])) return;
      Check_Autostart(FEntries[i].names[j], FEntries[i].data[j], source.opts, keyPath);
    }
  }
  if (FHasScheduler && !ScanTasks()) return;
  FState = rcpScanned;
}

// The data is a command line; the whole of it is shown as what is missing.
void TRCPAutostart::Check_Autostart(UnicodeView valueName, UnicodeView fileName,
                                    TZmRegOptions flags, UnicodeView keyPath) {
  if (valueName.empty() || IsIgnoredAutostartEntries(valueName, keyPath)) return;
  if (!FileIsOnFixedDrive(fileName, false) || FindFileOrDir(fileName)) return;
  RootKey root = RootKey::None;
  UnicodeString key;
  TZmRegOptions ignored;
  GetRegKeyFromString(keyPath, root, key, ignored);
  if (!RegValueIsText(root, key, valueName, flags)) return;
  const UnicodeString name(valueName);
  AddError(kMissingProgram,
           {u"existingkey:" + BuildErrorRegKeyParameter(keyPath, flags), u"existingvalue:" + name,
            u"caption:" + name, u"missingfile:" + UnicodeString(fileName)});
}

bool TRCPAutostart::ScanTasks() {
  TStringList jobs;
  if (Platform().tasks.Names(jobs) != Status::Ok) return true;
  UnicodeString application;
  for (const UnicodeString& job : jobs) {
    // A damaged task tells nothing.
    if (Platform().tasks.Application(job, application) != Status::Ok) continue;
    if (!ShowScanItem(job)) return false;
    Check_Task(job, application);
  }
  return true;
}

void TRCPAutostart::Check_Task(UnicodeView job, UnicodeView application) {
  if (!FileIsOnFixedDrive(application, false) || PathFileExistsWrapper(application)) return;
  const UnicodeView name = job.substr(0, job.size() - ExtractFileExt(job).size());
  AddError(kInvalidTask,
           {u"displayname:" + UnicodeString(name), u"missingfile:" + UnicodeString(application),
            u"jobfile:" + JobItem(job)});
}

bool TRCPAutostart::CleanError(const TSweepError& error) {
  switch (error.ErrorType) {
    case kMissingProgram:
      return DeleteErrorRegValue(error);
    case kInvalidTask:
      return Clean_Task(error);
    default:
      return false;
  }
}

bool TRCPAutostart::Clean_Task(const TSweepError& error) {
  ITasks& tasks = Platform().tasks;
  const UnicodeString item = GetErrorStringValue(error.Data, u"jobfile");
  UnicodeString job = JobOfItem(item);
  if (JobItem(job) != item) {
    // A code page of several bytes a character doesn't give every byte back. The one task that
    // would make the same item is meant.
    TStringList jobs;
    if (tasks.Names(jobs) != Status::Ok) return false;
    const auto same = [&](const UnicodeString& name) { return JobItem(name) == item; };
    if (std::ranges::count_if(jobs, same) != 1) return false;
    job = *std::ranges::find_if(jobs, same);
  }
  return tasks.Remove(job) == Status::Ok;
}

}  // namespace scrubwell
