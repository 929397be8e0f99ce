#include "plugins/filetypes/Rcp_filetypes.h"

#include <algorithm>

#include "plugins/filetypes/filetypes_kinds.h"
#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/filetypes.h"

namespace scrubwell {

using namespace classes;
using namespace filetypes;

namespace {

namespace text = texts::filetypes;

constexpr TCategory kCategory{
    .className = u"TRCPFileTypes",
    .imageIndex = 2,
    .iconID = 9009,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

// Two pairs share an icon, the second one its texts as well; deliberate.
constexpr std::array<TProblemKind, 11> kKinds{{
    {kMissingProgram, 9000, text::kCaptionItem, text::kMissingProgramShort,
     text::kMissingProgramDetail},
    {kMissingType, 9001, text::kCaptionItem, text::kMissingTypeShort, text::kMissingTypeDetail},
    {kMissingClass, 9002, text::kCaptionItem, text::kMissingClassShort, text::kMissingClassDetail},
    {kMissingIcon, 9003, text::kCaptionItem, text::kMissingIconShort, text::kMissingIconDetail},
    {kMissingCommand, 9004, text::kCaptionItem, text::kMissingCommandShort,
     text::kMissingCommandDetail},
    {kMissingIdentifier, 9005, text::kCaptionItem, text::kMissingIdentifierShort,
     text::kMissingIdentifierDetail},
    {kEmptyIcon, 9006, text::kCaptionItem, text::kEmptyIconShort, text::kEmptyIconDetail},
    {kEmptyType, 9007, text::kCaptionItem, text::kEmptyTypeShort, text::kEmptyTypeDetail},
    {kNoVerbs, 9008, text::kCaptionItem, text::kNoVerbsShort, text::kNoVerbsDetail},
    {kUnknownType, 9004, text::kCaptionItem, text::kUnknownTypeShort, text::kUnknownTypeDetail},
    {kEmptyEntry, 9007, text::kCaptionItem, text::kEmptyTypeShort, text::kEmptyTypeDetail},
}};

constexpr ClassRules kRules{
    .kinds = {.missingProgram = kMissingProgram,
              .missingCommand = kMissingCommand,
              .noVerbs = kNoVerbs,
              .missingClass = kMissingClass,
              .missingIdentifier = kMissingIdentifier,
              .missingIcon = kMissingIcon,
              .emptyIcon = kEmptyIcon},
    .skippedHandlers = u"",
    .emptyDefaultIsNothing = true,
    .missingClassHasView = true,
    .iconNeedsDrive = false,
    .iconSameInBothViews = false,
};

// Extensions and file types of programs that register them in unusual ways.
constexpr std::array<UnicodeView, 29> kExclusions{u"QueueObject",    u"cil8tsfile",
                                                  u"orpkdtfile",     u"orppmifile",
                                                  u"eespmifile",     u"orpxfhfile",
                                                  u"slpxfhfile",     u"sabxfhfile",
                                                  u"log.alc.file",   u"acpexctl.*",
                                                  u"acpi.*",         u"acpp.*",
                                                  u"acstdstyle.*",   u"acstmgr.*",
                                                  u"acstltype.*",    u"acstlay.*",
                                                  u"aecdccontent.*", u"aecx.*",
                                                  u"autocad.*",      u"win_32",
                                                  u"nti*",           u"windowsinstaller.message",
                                                  u"imsiserver",     u"bwpfile",
                                                  u".imk",           u".que",
                                                  u"ZAMailSafe",     u".bwp",
                                                  u"MSCRYPT"};

constexpr UnicodeView kFileExts =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts";
constexpr double kWeightPerItem = 1.2;
// The area is scanned in the process's own view alone.
constexpr TZmRegOptions kOwnView{};

UnicodeString Below(UnicodeView key, UnicodeView name) {
  return UnicodeString(key).append(u"\\").append(name);
}

UnicodeString FriendlyName(UnicodeView key) {
  return ResourceText(
      GetRegStringValueDef(HKEY_CLASSES_ROOT, key, u"FriendlyTypeName", u"", kOwnView));
}

UnicodeString TypeCaption(const UnicodeString& type, const UnicodeString& extension) {
  const UnicodeString friendly = FriendlyName(type);
  if (!Trim(friendly).empty()) return friendly;
  const UnicodeString value = DefaultText(type, kOwnView);
  const UnicodeView given = Trim(value);
  return FormatText(LoadText(text::kTypeAndExtension),
                    {given.empty() ? UnicodeView(type) : given, extension});
}

UnicodeString ExtensionCaption(const UnicodeString& extension) {
  return FormatText(LoadText(text::kExtensionFile), {UpperCase(extension), extension});
}

UnicodeString KeyCaption(const UnicodeString& key) {
  UnicodeString caption = FriendlyName(key);
  if (Trim(caption).empty()) caption = DefaultText(key, kOwnView);
  if (Trim(caption).empty()) caption = key;
  if (caption == u"*") return FormatText(LoadText(text::kAllFiles), {caption});
  if (caption == u"Unknown") return FormatText(LoadText(text::kUnknownFiles), {caption});
  return caption;
}

// Whether a key has a value other than its default one, or it can't be told.
bool HasNamedValue(RootKey root, const UnicodeString& key) {
  TStringList names;
  TStringList data;
  EnumRegValuesEx(root, key, names, data, kOwnView);
  if (names.empty()) return HasValues(root, key, kOwnView);
  return std::ranges::any_of(names, [](const UnicodeString& name) { return !Trim(name).empty(); });
}

bool CLSIDExists(UnicodeView clsid) {
  return ExistsInAnyView(UnicodeString(u"CLSID\\").append(clsid),
                         IsCurrentProcessWow64() ? kView32 : kOwnView);
}

// Whether the class is there, or the file type has a class of its own for the whole machine. The
// latter is deliberately asked of the type and not of the class: only what a user registered for
// himself is ever judged.
bool FileType_CLSIDExists(UnicodeView fileTypeKey, UnicodeView clsid) {
  if (CLSIDExists(clsid)) return true;
  const UnicodeString own =
      Below(UnicodeString(u"SOFTWARE\\Classes\\").append(fileTypeKey), u"CLSID");
  if (!IsCurrentProcessWow64()) return KeyExist(HKEY_LOCAL_MACHINE, own, kOwnView);
  return KeyExist(HKEY_LOCAL_MACHINE, own, kView32) || KeyExist(HKEY_LOCAL_MACHINE, own, kView64);
}

}  // namespace

TRCPFileTypes::TRCPFileTypes() : TRCPClasses(kCategory, kKinds, kRules) {
  for (const UnicodeView mask : kExclusions) FExclusions.AddSearchMask(mask);
}

void TRCPFileTypes::Init() {
  FCheckedTypes.Clear();
  const struct {
    RootKey root;
    UnicodeView key;
    TStringList& names;
  } readings[] = {
      {HKEY_CLASSES_ROOT, u"", FRootKeys},
      {HKEY_CLASSES_ROOT, u"Applications", FApplications},
      {HKEY_CLASSES_ROOT, u"SystemFileAssociations", FSystemFileAssociations},
      {HKEY_CURRENT_USER, kFileExts, FFileExts},
      // Deliberately counted and never walked: progress ends short of its full share.
      {HKEY_CLASSES_ROOT, u"MIME\\Database\\Content Type", FMimeTypes},
  };
  std::size_t count = 0;
  for (const auto& reading : readings) {
    EnumRegKeysEx(reading.root, reading.key, reading.names, kOwnView);
    count += reading.names.size();
  }
  SetFScanItemCount(static_cast<std::int32_t>(count));
  ScanWeight = RoundHalfEven(FScanItemCount * kWeightPerItem);
  FState = rcpInited;
}

void TRCPFileTypes::Scan() {
  ErrorCount = 0;
  if (!ScanExtensions() || !ScanOtherKeys()) return;
  for (const UnicodeString& name : FApplications) {
    const UnicodeString key = Below(u"Applications", name);
    if (!ShowScanItem(key)) return;
    Check_Shell(key, TCaption(name));
  }
  for (const UnicodeString& name : FSystemFileAssociations) {
    const UnicodeString key = Below(u"SystemFileAssociations", name);
    if (!ShowScanItem(key)) return;
    Check_IsEmpty(key);
  }
  for (const UnicodeString& name : FFileExts) {
    if (!name.starts_with(u'.')) continue;
    const UnicodeString key = Below(kFileExts, name);
    if (!ShowScanItem(key)) return;
    Check_IsContentEmpty(key);
  }
  FState = rcpScanned;
}

bool TRCPFileTypes::ScanExtensions() {
  for (const UnicodeString& name : FRootKeys) {
    if (!name.starts_with(u'.') || FExclusions.Match(name) ||
        !KeyIsDeletable(HKEY_CLASSES_ROOT, name, kOwnView))
      continue;
    if (!ShowScanItem(name)) return false;
    Check_ExtensionKey(name);
  }
  return true;
}

void TRCPFileTypes::Check_ExtensionKey(const UnicodeString& name) {
  const UnicodeString type = DefaultText(name, kOwnView);
  if (type.empty()) {
    const TCaption caption([&] { return ExtensionCaption(name); });
    if (KeyEmptyEx(HKEY_CLASSES_ROOT, name, kOwnView))
      ReportEmpty(kEmptyType, HKEY_CLASSES_ROOT, name, caption.Text());
    else
      Check_FileType(name, caption);
    return;
  }
  const UnicodeString known = LowerCase(type);
  if (FExclusions.Match(type) || FCheckedTypes.Contains(known)) return;
  if (!KeyExist(HKEY_CLASSES_ROOT, type, kOwnView)) {
    Check_MissingType(name, type);
    return;
  }
  Check_FileType(type, TCaption([&] { return TypeCaption(type, name); }));
  FCheckedTypes.Add(known, this);
}

void TRCPFileTypes::Check_MissingType(const UnicodeString& name, const UnicodeString& type) {
  if (KeyExist(HKEY_CLASSES_ROOT, Below(name, u"CLSID"), kOwnView)) return;
  AddError(kMissingType, {ExistingKey(name, kOwnView), MissingKey(type, kOwnView),
                          u"caption:" + ExtensionCaption(name)});
}

bool TRCPFileTypes::ScanOtherKeys() {
  for (const UnicodeString& name : FRootKeys) {
    if (name.starts_with(u'.') || FExclusions.Match(name) ||
        FCheckedTypes.Contains(LowerCase(name)))
      continue;
    if (!ShowScanItem(name)) return false;
    if (KeyEmptyEx(HKEY_CLASSES_ROOT, name, kOwnView))
      ReportEmpty(kEmptyType, HKEY_CLASSES_ROOT, name, name);
    else
      Check_FileType(name, TCaption([&] { return KeyCaption(name); }));
  }
  return true;
}

void TRCPFileTypes::Check_FileType(UnicodeView key, const TCaption& caption) {
  const ClassOwner owner(key, caption, kOwnView);
  CheckVerbs(owner);
  Check_ShellEx(owner);
  Check_CLSID(owner, true);
  Check_DefaultIcon(owner);
}

void TRCPFileTypes::Check_Shell(UnicodeView key, const TCaption& caption) {
  CheckVerbs(ClassOwner(key, caption, kOwnView));
}

void TRCPFileTypes::Check_CLSID(const ClassOwner& owner, bool clsidIsSubkey) {
  const UnicodeString key = Below(owner.key, u"CLSID");
  UnicodeString clsid;
  if (clsidIsSubkey) {
    if (!owner.subkeys.Has(u"CLSID")) return;
    clsid = DefaultText(key, owner.opts);
  } else {
    clsid = GetRegStringValueDef(HKEY_CLASSES_ROOT, owner.key, u"CLSID", u"", owner.opts);
  }
  // Any text is taken for a class, well-formed or not.
  if (clsid.empty() || IgnoredCLSIDs->Contains(UpperCase(clsid)) ||
      FileType_CLSIDExists(owner.key, clsid))
    return;
  AddError(kMissingClass, {ExistingKey(key, owner.opts), CaptionItem(owner.caption),
                           MissingKey(u"CLSID\\" + clsid, owner.opts)});
}

void TRCPFileTypes::Check_IsEmpty(const UnicodeString& key) {
  if (KeyExist(HKEY_CLASSES_ROOT, key, kOwnView) && !HasSubKeys(HKEY_CLASSES_ROOT, key, kOwnView) &&
      !HasNamedValue(HKEY_CLASSES_ROOT, key))
    ReportEmpty(kEmptyEntry, HKEY_CLASSES_ROOT, key, key);
}

void TRCPFileTypes::Check_IsContentEmpty(const UnicodeString& key) {
  TStringList subkeys;
  EnumRegKeysEx(HKEY_CURRENT_USER, key, subkeys, kOwnView);
  if (subkeys.empty() &&
      (HasSubKeys(HKEY_CURRENT_USER, key, kOwnView) || !KeyExist(HKEY_CURRENT_USER, key, kOwnView)))
    return;
  // Deeper levels deliberately don't count: Explorer keeps nothing useful there.
  const bool content = HasNamedValue(HKEY_CURRENT_USER, key) ||
                       std::ranges::any_of(subkeys, [&](const UnicodeString& subkey) {
                         return HasValues(HKEY_CURRENT_USER, Below(key, subkey), kOwnView);
                       });
  if (!content) ReportEmpty(kEmptyEntry, HKEY_CURRENT_USER, key, key);
}

void TRCPFileTypes::Check_Extension(UnicodeView key, const TCaption& caption) {
  UnicodeString type;
  if (GetRegStringValue(HKEY_CLASSES_ROOT, key, u"Extension", type, kOwnView) != ERRC_SUCCESS ||
      KeyExist(HKEY_CLASSES_ROOT, type, kOwnView))
    return;
  AddError(kUnknownType, {ExistingKey(key, kOwnView), CaptionItem(caption)});
}

void TRCPFileTypes::ReportEmpty(std::int32_t kind, RootKey root, const UnicodeString& key,
                                UnicodeView caption) {
  AddError(kind,
           {u"existingkey:" + BuildErrorRegKeyParameter(RegKeyToStr(root, key, false), kOwnView),
            UnicodeString(u"caption:").append(caption)});
}

}  // namespace scrubwell
