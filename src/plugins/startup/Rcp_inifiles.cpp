#include "plugins/startup/Rcp_inifiles.h"

#include <algorithm>

#include "registry/Stringhelper.h"
#include "texts/inifiles.h"

namespace scrubwell {
namespace {

namespace text = texts::inifiles;

enum Kind : std::int32_t {
  kMissingProgram = 1,
  kOrphanedExtension = 2,
  kInvalidLink = 3,
  kMissingDriver = 4,
  kEmptyDriver = 5,
  kMissingSaver = 6,
};

constexpr TCategory kCategory{
    .className = u"TRCPIniFiles",
    .imageIndex = 7,
    .iconID = 14001,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr int kIcon = 14000;
constexpr std::array<TProblemKind, 6> kKinds{{
    {kMissingProgram, kIcon, text::kProgramCaption, text::kProgramShort, text::kProgramDetail},
    {kOrphanedExtension, kIcon, text::kExtensionCaption, text::kExtensionShort,
     text::kExtensionDetail},
    {kInvalidLink, kIcon, text::kEmbeddingCaption, text::kEmbeddingShort, text::kEmbeddingDetail},
    {kMissingDriver, kIcon, text::kDriverCaption, text::kDriverShort, text::kDriverDetail},
    {kEmptyDriver, kIcon, text::kEmptyCaption, text::kEmptyShort, text::kEmptyDetail},
    {kMissingSaver, kIcon, text::kSaverCaption, text::kSaverShort, text::kSaverDetail},
}};

constexpr UnicodeView kWinIni = u"win.ini";
constexpr UnicodeView kSystemIni = u"system.ini";
constexpr UnicodeView kWindows = u"windows";
constexpr UnicodeView kRun = u"run";
constexpr UnicodeView kLoad = u"load";
constexpr UnicodeView kExtensions = u"extensions";
constexpr UnicodeView kEmbedding = u"embedding";
constexpr UnicodeView kBoot = u"boot";
constexpr UnicodeView kDrivers = u"drivers";
constexpr UnicodeView kScreenSaver = u"SCRNSAVE.EXE";
constexpr UnicodeView kDrivers32 = u"drivers32";
constexpr UnicodeView kNoScreenSaver = u"(None)";  // the system's own mark, no file's name
constexpr char16_t kBuiltIn = u'*';
constexpr int kServerField = 3;  // of "description,short description,server,formats"

// No entry's text is a NUL, so this tells what can't be read from what is empty.
constexpr UnicodeView kUnreadable{u"\0", 1};

bool IsMissing(UnicodeView file) {
  return FileIsOnFixedDrive(file, false) && !FindFile(file);
}

std::int32_t NameCount(UnicodeView names) {
  return static_cast<std::int32_t>(std::ranges::count(names, u'\0'));
}

TStringList NamesOf(UnicodeView names) {
  TStringList list;
  for (std::size_t from = 0; from < names.size();) {
    const std::size_t end = std::min(names.find(u'\0', from), names.size());
    list.emplace_back(names.substr(from, end - from));
    from = end + 1;
  }
  return list;
}

// True when the entry holds another text afterwards.
bool Rewrite(UnicodeView file, UnicodeView section, UnicodeView entry, UnicodeView line,
             UnicodeView rest) {
  if (rest == line) return false;
  BackupFile(file);
  WritePPString(file, section, entry, rest);
  return GetPPString(file, section, entry, kUnreadable) != line;
}

UnicodeString Item(UnicodeView name, UnicodeView value) {
  return UnicodeString(name).append(u":").append(value);
}

}  // namespace

TRCPIniFiles::TRCPIniFiles() : TRCPlugin(kCategory, kKinds) {}

void TRCPIniFiles::Init() {
  FWinDir = GetWinDir();
  FRunLine = GetPPString(FWinDir + UnicodeString(kWinIni), kWindows, kRun, {});
  FLoadLine = GetPPString(FWinDir + UnicodeString(kWinIni), kWindows, kLoad, {});
  FExtensions = EnumPPEntries(FWinDir + UnicodeString(kWinIni), kExtensions);
  FEmbedding = EnumPPEntries(FWinDir + UnicodeString(kWinIni), kEmbedding);
  FBootDrivers = GetPPString(FWinDir + UnicodeString(kSystemIni), kBoot, kDrivers, {});
  FDrivers32 = EnumPPEntries(FWinDir + UnicodeString(kSystemIni), kDrivers32);
  SetFScanItemCount(ParamXCount(FRunLine, u',') + ParamXCount(FLoadLine, u',') +
                    NameCount(FExtensions) + NameCount(FEmbedding) +
                    ParamXCount(FBootDrivers, u' ') + NameCount(FDrivers32));
  FState = rcpInited;
}

void TRCPIniFiles::Scan() {
  ErrorCount = 0;
  if (ScanPrograms(kRun, FRunLine) && ScanPrograms(kLoad, FLoadLine) && ScanExtensions() &&
      ScanEmbedding() && ScanBootDrivers() && ScanScreenSaver() && ScanDrivers32())
    FState = rcpScanned;
}

bool TRCPIniFiles::ScanPrograms(UnicodeView entry, UnicodeView line) {
  for (const UnicodeString& field : ParamXAll(line, u',')) {
    const UnicodeView file = Trim(field);
    if (!ShowScanItem(file)) return false;
    if (!IsMissing(file)) continue;
    AddError(kMissingProgram,
             {Item(u"section", kWindows), Item(u"value", entry), Item(u"missingfile", file)});
  }
  return true;
}

bool TRCPIniFiles::ScanExtensions() {
  for (const UnicodeString& name : NamesOf(FExtensions)) {
    if (!ShowScanItem(name)) return false;
    const UnicodeString command =
        GetPPString(FWinDir + UnicodeString(kWinIni), kExtensions, name, {});
    if (IsMissing(command))
      AddError(kOrphanedExtension, {Item(u"caption", name), Item(u"missingfile", command)});
  }
  return true;
}

bool TRCPIniFiles::ScanEmbedding() {
  for (const UnicodeString& name : NamesOf(FEmbedding)) {
    if (!ShowScanItem(name)) return false;
    const UnicodeString server = ParamX(
        GetPPString(FWinDir + UnicodeString(kWinIni), kEmbedding, name, {}), u',', kServerField);
    if (IsMissing(server))
      AddError(kInvalidLink, {Item(u"caption", name), Item(u"missingfile", server)});
  }
  return true;
}

bool TRCPIniFiles::ScanBootDrivers() {
  for (const UnicodeString& field : ParamXAll(FBootDrivers, u' ')) {
    const UnicodeView file = Trim(field);
    if (!ShowScanItem(file)) return false;
    if (!IsMissing(file)) continue;
    AddError(kMissingDriver,
             {Item(u"section", kBoot), Item(u"subkey", kDrivers), Item(u"missingfile", file)});
  }
  return true;
}

bool TRCPIniFiles::ScanScreenSaver() {
  const UnicodeString file =
      GetPPString(FWinDir + UnicodeString(kSystemIni), kBoot, kScreenSaver, {});
  if (file.empty()) return true;
  if (!ShowScanItem(file)) return false;
  if (!SameText(file, kNoScreenSaver) && IsMissing(file))
    AddError(kMissingSaver,
             {Item(u"section", kBoot), Item(u"subkey", kScreenSaver), Item(u"missingfile", file)});
  return true;
}

bool TRCPIniFiles::ScanDrivers32() {
  for (const UnicodeString& name : NamesOf(FDrivers32)) {
    if (!ShowScanItem(name)) return false;
    const UnicodeString value =
        GetPPString(FWinDir + UnicodeString(kSystemIni), kDrivers32, name, kUnreadable);
    if (value != kUnreadable) Check_SystemIni_Driver(name, value);
  }
  return true;
}

void TRCPIniFiles::Check_SystemIni_Driver(UnicodeView entryName, UnicodeView value) {
  const UnicodeView list = Trim(value);
  const UnicodeString section = Item(u"section", kDrivers32);
  const UnicodeString entry = Item(u"subkey", entryName);
  if (Trim(Replace(list, u",", u" ")).empty()) {
    AddError(kEmptyDriver, {section, entry, Item(u"missingfile", list)});
    return;
  }
  for (const UnicodeString& file : ParamXAll(list, u',')) {
    if (file.starts_with(kBuiltIn) || !IsMissing(file)) continue;
    AddError(kMissingDriver, {section, entry, Item(u"missingfile", file)});
  }
}

bool TRCPIniFiles::CleanError(const TSweepError& error) {
  switch (error.ErrorType) {
    case kMissingProgram:
      return Clean_Program(error);
    case kOrphanedExtension:
      return Clean_Entry(kWinIni, kExtensions, GetErrorStringValue(error.Data, u"caption"));
    case kInvalidLink:
      return Clean_Entry(kWinIni, kEmbedding, GetErrorStringValue(error.Data, u"caption"));
    case kMissingDriver:
      return Clean_Driver(error);
    case kEmptyDriver:
    case kMissingSaver:
      return Clean_Entry(kSystemIni, GetErrorStringValue(error.Data, u"section"),
                         GetErrorStringValue(error.Data, u"subkey"));
    default:
      return false;
  }
}

// The line stays, even when nothing is left on it.
bool TRCPIniFiles::Clean_Program(const TSweepError& error) {
  const UnicodeString file = GetWinDir().append(kWinIni);
  const UnicodeString section = GetErrorStringValue(error.Data, u"section");
  const UnicodeString entry = GetErrorStringValue(error.Data, u"value");
  const UnicodeString line = GetPPString(file, section, entry, kUnreadable);
  if (line == kUnreadable) return false;
  const UnicodeString rest =
      RemoveParamX(line, u',', GetErrorStringValue(error.Data, u"missingfile"));
  // The name in other letter case is a problem of its own, and goes with the first of them.
  return rest == line || Rewrite(file, section, entry, line, rest);
}

bool TRCPIniFiles::Clean_Driver(const TSweepError& error) {
  const UnicodeString file = GetWinDir().append(kSystemIni);
  const UnicodeString section = GetErrorStringValue(error.Data, u"section");
  const UnicodeString entry = GetErrorStringValue(error.Data, u"subkey");
  const UnicodeString line = GetPPString(file, section, entry, kUnreadable);
  if (line == kUnreadable) return false;
  // Deliberately a blank for both sections, although the scan splits drivers32 entries at commas:
  // only a driver that stands alone, or behind a blank, is taken out there. Another list keeps its
  // text, and its problem counts as not repaired.
  const UnicodeString rest =
      RemoveParamX(line, u' ', GetErrorStringValue(error.Data, u"missingfile"));
  const bool isBootLine = SameText(section, kBoot) && SameText(entry, kDrivers);
  if (rest.empty() && !isBootLine) return Clean_Entry(kSystemIni, section, entry);
  return Rewrite(file, section, entry, line, rest);
}

bool TRCPIniFiles::Clean_Entry(UnicodeView file, UnicodeView section, UnicodeView entry) {
  const UnicodeString path = GetWinDir().append(file);
  const UnicodeString line = GetPPString(path, section, entry, kUnreadable);
  if (line == kUnreadable) return false;
  BackupFile(path);
  DeletePPString(path, section, entry);
  return GetPPString(path, section, entry, kUnreadable) != line;
}

}  // namespace scrubwell
