#include "plugins/com/Rcp_activexcom.h"

#include "plugins/com/activexcom_kinds.h"
#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"
#include "texts/activexcom.h"

namespace scrubwell {

using namespace activexcom;
using namespace classes;

namespace {

namespace text = texts::activexcom;

constexpr TCategory kCategory{
    .className = u"TRCPActiveXCOM",
    .imageIndex = 3,
    .iconID = 5021,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

// The icons deliberately don't follow the kinds' order.
constexpr std::array<TProblemKind, 21> kKinds{{
    {kMissingServer, 5000, text::kCaptionItem, text::kMissingServerShort,
     text::kMissingServerDetail},
    {kMissingProgram, 5001, text::kCaptionItem, text::kMissingProgramShort,
     text::kMissingProgramDetail},
    {kMissingClass, 5002, text::kCaptionItem, text::kMissingClassShort, text::kMissingClassDetail},
    {kMissingIcon, 5003, text::kCaptionItem, text::kMissingIconShort, text::kMissingIconDetail},
    {kMissingTypeLib, 5004, text::kCaptionItem, text::kMissingTypeLibShort,
     text::kMissingTypeLibDetail},
    {kMissingBitmap, 5006, text::kCaptionItem, text::kMissingBitmapShort,
     text::kMissingBitmapDetail},
    {kMissingHandler, 5007, text::kCaptionItem, text::kMissingHandlerShort,
     text::kMissingHandlerDetail},
    {kMissingAppID, 5005, text::kCaptionItem, text::kMissingAppIDShort, text::kMissingAppIDDetail},
    {kInterfaceMissingClass, 5014, text::kCaptionItem, text::kInterfaceMissingClassShort,
     text::kInterfaceMissingClassDetail},
    {kInterfaceMissingInterface, 5015, text::kCaptionItem, text::kInterfaceMissingInterfaceShort,
     text::kInterfaceMissingInterfaceDetail},
    {kInterfaceMissingTypeLib, 5016, text::kCaptionItem, text::kInterfaceMissingTypeLibShort,
     text::kInterfaceMissingTypeLibDetail},
    {kTypeLibMissingFile, 5017, text::kCaptionItem, text::kTypeLibMissingFileShort,
     text::kTypeLibMissingFileDetail},
    {kTypeLibEmpty, 5018, text::kCaptionItem, text::kTypeLibEmptyShort, text::kTypeLibEmptyDetail},
    {kTypeLibMissingFolder, 5019, text::kCaptionItem, text::kTypeLibMissingFolderShort,
     text::kTypeLibMissingFolderDetail},
    {kTypeLibEmptyHelp, 5020, text::kCaptionItem, text::kTypeLibEmptyHelpShort,
     text::kTypeLibEmptyHelpDetail},
    {kEmptyProgID, 5009, text::kCaptionItem, text::kEmptyProgIDShort, text::kEmptyProgIDDetail},
    {kInvalidProgram, 5010, text::kInvalidProgramCaption, text::kInvalidProgramShort,
     text::kInvalidProgramDetail},
    {kMissingIdentifier, 5012, text::kCaptionItem, text::kMissingIdentifierShort,
     text::kMissingIdentifierDetail},
    {kEmptyIcon, 5013, text::kCaptionItem, text::kEmptyIconShort, text::kEmptyIconDetail},
    {kMissingCommand, 5011, text::kCaptionItem, text::kMissingCommandShort,
     text::kMissingCommandDetail},
    {kEmptyKey, 5008, text::kCaptionItem, text::kEmptyKeyShort, text::kEmptyKeyDetail},
}};

constexpr ClassRules kRules{
    .kinds = {.missingProgram = kMissingProgram,
              .missingCommand = kMissingCommand,
              .missingClass = kMissingClass,
              .missingIdentifier = kMissingIdentifier,
              .missingIcon = kMissingIcon,
              .emptyIcon = kEmptyIcon},
    // Passing over the folder views here means that their own exception is never asked about.
    .skippedHandlers = u"|maychangedefaultmenu|extshellfolderviews|",
    .emptyDefaultIsNothing = false,
    .missingClassHasView = false,
    .iconNeedsDrive = true,
    .iconSameInBothViews = true,
};

constexpr double kWeightPerItem = 1.7;

// The name that people know a class by.
UnicodeString ClassCaption(const UnicodeString& clsid, TZmRegOptions opts) {
  const UnicodeString key = u"CLSID\\" + clsid;
  UnicodeString caption;
  // Always a reference, while a localised text may also stand for itself.
  if (GetRegStringValue(HKEY_CLASSES_ROOT, key, u"FriendlyTypeName", caption, opts) == 0)
    caption = ResourceText(caption);
  if (Trim(caption).empty() &&
      GetRegStringValue(HKEY_CLASSES_ROOT, key, u"LocalizedString", caption, opts) == 0 &&
      caption.starts_with(u'@'))
    caption = ResourceText(caption);
  if (Trim(caption).empty()) caption = DefaultText(key, opts);
  if (Trim(caption).empty()) caption = clsid;
  return caption;
}

}  // namespace

TRCPActiveXCOM::TRCPActiveXCOM() : TRCPClasses(kCategory, kKinds, kRules) {}

void TRCPActiveXCOM::Init() {
  struct Reading {
    UnicodeView key;
    TStringList& names;
    TZmRegOptions opts;
  };
  const Reading readings[] = {
      {u"CLSID", FClasses.names, kView32},
      {u"Interface", FInterfaces.names, {}},
      {u"TypeLib", FTypeLibs.names, {}},
      {u"CLSID", FClasses.names64, kView64},
      {u"Interface", FInterfaces.names64, kView64},
      {u"TypeLib", FTypeLibs.names64, kView64},
  };
  const bool bothViews = IsCurrentProcessWow64();
  std::size_t count = 0;
  for (const Reading& reading : readings) {
    const bool wide = reading.opts == kView64;
    reading.names.clear();
    if (wide && !bothViews) continue;
    EnumRegKeysEx(HKEY_CLASSES_ROOT, reading.key, reading.names, reading.opts);
    count += reading.names.size();
    // After the last list there is nothing left that a stop could spare.
    if (&reading.names == &FTypeLibs.names64) break;
    Platform().system.PumpMessages();
    if (StopSearch) return;
  }
  SetFScanItemCount(static_cast<std::int32_t>(count));
  ScanWeight = RoundHalfEven(FScanItemCount * kWeightPerItem);
  FState = rcpInited;
}

void TRCPActiveXCOM::Scan() {
  ErrorCount = 0;
  if (!ScanClasses(FClasses.names, kView32) || !ScanClasses(FClasses.names64, kView64) ||
      !ScanInterfaces(FInterfaces.names, kView32) ||
      !ScanInterfaces(FInterfaces.names64, kView64) || !ScanTypeLibs(FTypeLibs.names, kView32) ||
      !ScanTypeLibs(FTypeLibs.names64, kView64))
    return;
  FState = rcpScanned;
}

bool TRCPActiveXCOM::ScanClasses(const TStringList& names, TZmRegOptions opts) {
  const UnicodeString progress = LoadText(text::kScanClass);
  for (const UnicodeString& name : names) {
    if (!ShowScanItem(FormatText(progress, {name}))) return false;
    if (!IsCLSIDKey(name)) continue;
    Check_CLSID(name, TCaption([&] { return ClassCaption(name, opts); }), opts);
  }
  return true;
}

bool TRCPActiveXCOM::ScanInterfaces(const TStringList& names, TZmRegOptions opts) {
  const UnicodeString progress = LoadText(text::kScanInterface);
  for (const UnicodeString& name : names) {
    if (!ShowScanItem(FormatText(progress, {name}))) return false;
    if (!IsCLSIDKey(name) || IgnoredInterfaces->Contains(UpperCase(name))) continue;
    const TCaption caption([&] {
      const UnicodeString given = DefaultText(u"Interface\\" + name, opts);
      return Trim(given).empty() ? name : given;
    });
    Check_Interface(name, caption, opts);
  }
  return true;
}

bool TRCPActiveXCOM::ScanTypeLibs(const TStringList& names, TZmRegOptions opts) {
  const UnicodeString progress = LoadText(text::kScanTypeLib);
  for (const UnicodeString& name : names) {
    if (!ShowScanItem(FormatText(progress, {name}))) return false;
    if (IsCLSIDKey(name)) Check_TypeLib(name, opts);
  }
  return true;
}

void TRCPActiveXCOM::AddError(std::int32_t kind, const TStringList& data) {
  const UnicodeString item = GetErrorStringValue(data, u"existingkey");
  const TZmRegOptions opts = item.starts_with(u"64:") ? kView64 : kView32;
  // The view's mark is always there.
  const UnicodeView path = UnicodeView(item).substr(std::min<std::size_t>(3, item.size()));
  const std::size_t slash = path.find(u'\\');
  const RootKey root = GetMainKeyFromString(path.substr(0, slash));
  const UnicodeView key = slash == UnicodeView::npos ? UnicodeView() : path.substr(slash + 1);
  if (KeyIsDeletable(root, key, opts)) TRCPlugin::AddError(kind, data);
}

}  // namespace scrubwell
