#include "plugins/software/Rcp_odbc.h"

#include "texts/odbc.h"

namespace scrubwell {
namespace {

namespace text = texts::odbc;

enum Kind : std::int32_t {
  kDriverFileMissing = 1,
  kSourceWithoutKey = 2,
  kSourceDriverMissing = 3,
  kDriverUnregistered = 4,
  kDriverInvalid = 5,
};

constexpr TCategory kCategory{
    .className = u"TRCPODBC",
    .imageIndex = 18,
    .iconID = 19201,
    .caption = text::kCaption,
    .shortDescription = text::kShortDescription,
    .description = text::kDescription,
};

constexpr std::array<TProblemKind, 5> kKinds{{
    {kDriverFileMissing, 19200, text::kDriverCaption, text::kDriverShort, text::kDriverDetail},
    {kSourceWithoutKey, 19200, text::kNoKeyCaption, text::kNoKeyShort, text::kNoKeyDetail},
    {kSourceDriverMissing, 19200, text::kSourceDriverCaption, text::kSourceDriverShort,
     text::kSourceDriverDetail},
    {kDriverUnregistered, 19200, text::kUnregisteredCaption, text::kUnregisteredShort,
     text::kUnregisteredDetail},
    {kDriverInvalid, 19200, text::kInvalidDriverCaption, text::kInvalidDriverShort,
     text::kInvalidDriverDetail},
}};

// Drivers are subkeys of the first key, data sources subkeys of the second. The third lists the
// data sources: each value's name is a data source, its data the name of the driver.
constexpr UnicodeView kDriversKey = u"HKLM\\Software\\ODBC\\ODBCINST.INI";
constexpr UnicodeView kSourcesKey = u"HKLM\\Software\\ODBC\\ODBC.INI";
constexpr UnicodeView kListingKey = u"HKLM\\Software\\ODBC\\ODBC.INI\\ODBC Data Sources";
constexpr UnicodeView kDriverValue = u"Driver";
constexpr std::int32_t kWeightPerItem = 4;

// Everything here is read and changed in the process's own view, and key items carry no view.
constexpr TZmRegOptions kOwnView{};

struct TKey {
  RootKey root = RootKey::None;
  UnicodeString path;
  bool exists = false;  // true also where that can't be told
};

TKey Resolve(UnicodeView fullPath) {
  TKey key;
  TZmRegOptions ignored;
  key.exists = GetRegKeyFromString(fullPath, key.root, key.path, ignored);
  return key;
}

TKey ResolveBelow(UnicodeView parent, UnicodeView name) {
  return Resolve(UnicodeString(parent).append(u"\\").append(name));
}

UnicodeString KeyItem(const TKey& key) {
  return u"existingkey:" + GetRegMainKeyString(key.root, false) + u"\\" + key.path;
}

UnicodeString ListingItem() {
  return UnicodeString(u"existingkey:").append(kListingKey);
}

UnicodeString Item(UnicodeView name, UnicodeView value) {
  return UnicodeString(name).append(u":").append(value);
}

// The key's driver file when it is proven missing, else an empty text. On which drive it lies is
// deliberately not asked: drivers are named by bare names as often as by paths.
UnicodeString MissingDriverFile(const TKey& key) {
  if (!RegValueExists(key.root, key.path, kDriverValue, kOwnView)) return {};
  UnicodeString file = GetRegStringValueDef(key.root, key.path, kDriverValue, u"", kOwnView);
  if (FindFileOnAnyDrive(file)) file.clear();
  return file;
}

}  // namespace

TRCPODBC::TRCPODBC() : TRCPlugin(kCategory, kKinds) {}

void TRCPODBC::Init() {
  FODBCDrivers.clear();
  FODBCDataSources.clear();
  FInvalidDrivers.clear();
  if (const TKey drivers = Resolve(kDriversKey); drivers.exists)
    FillODBCDriverKeys(drivers.root, drivers.path);
  if (const TKey listing = Resolve(kListingKey); listing.exists)
    FillODBCDatasourceKeys(listing.root, listing.path);
  SetFScanItemCount(static_cast<std::int32_t>(FODBCDrivers.size() + FODBCDataSources.size()));
  ScanWeight = FScanItemCount * kWeightPerItem;
  FState = rcpInited;
}

void TRCPODBC::FillODBCDriverKeys(RootKey root, UnicodeView keyPath) {
  if (StopSearch) return;
  EnumRegKeysEx(root, keyPath, FODBCDrivers, kOwnView);
  // Indexes of drivers stand beside the drivers and have no file.
  std::erase_if(FODBCDrivers, [&](const UnicodeString& name) {
    const UnicodeString key = UnicodeString(keyPath).append(u"\\").append(name);
    return !RegValueExists(root, key, kDriverValue, kOwnView);
  });
}

void TRCPODBC::FillODBCDatasourceKeys(RootKey root, UnicodeView keyPath) {
  TStringList drivers;
  EnumRegValuesEx(root, keyPath, FODBCDataSources, drivers, kOwnView);
  // Such a name is no data source's: its path would lead to another key.
  std::erase_if(FODBCDataSources, [](const UnicodeString& name) {
    return name.empty() || name.find(u'\\') != UnicodeString::npos;
  });
}

// No item is announced, so that progress stands still here; a stop is noticed after each item.
void TRCPODBC::Scan() {
  ErrorCount = 0;
  ScanODBCDrivers();
  ScanODBCDataSources();
}

void TRCPODBC::ScanODBCDrivers() {
  for (const UnicodeString& name : FODBCDrivers) {
    Check_Driver(name);
    if (StopSearch) break;
  }
  // Deliberately before the data sources and after a stop too: what was found of the drivers
  // holds.
  FState = rcpScanned;
}

void TRCPODBC::Check_Driver(UnicodeView name) {
  const TKey key = ResolveBelow(kDriversKey, name);
  if (!key.exists) return;
  const UnicodeString file = MissingDriverFile(key);
  if (file.empty()) return;
  FInvalidDrivers.emplace(name);
  AddError(kDriverFileMissing, {KeyItem(key), Item(u"existingvalue", kDriverValue),
                                Item(u"missingfile", file), Item(u"missingdrv", name)});
}

void TRCPODBC::ScanODBCDataSources() {
  for (const UnicodeString& name : FODBCDataSources) {
    Check_DataSource(name);
    if (StopSearch) break;
  }
}

void TRCPODBC::Check_DataSource(UnicodeView name) {
  const TKey key = ResolveBelow(kSourcesKey, name);
  if (!key.exists) {
    AddError(kSourceWithoutKey, {ListingItem(), Item(u"existingvalue", name)});
    return;
  }
  const UnicodeString file = MissingDriverFile(key);
  if (file.empty()) {
    Check_ListedDriver(name);
    return;
  }
  AddError(kSourceDriverMissing, {KeyItem(key), Item(u"existingvalue", kDriverValue),
                                  Item(u"missingds", name), Item(u"missingfile", file)});
}

void TRCPODBC::Check_ListedDriver(UnicodeView name) {
  const TKey listing = Resolve(kListingKey);
  UnicodeString driver;
  if (GetRegStringValue(listing.root, listing.path, name, driver, kOwnView) != ERRC_SUCCESS) return;
  const TStringList data{ListingItem(), Item(u"existingvalue", name), Item(u"missingdrv", driver)};
  if (!ResolveBelow(kDriversKey, driver).exists)
    AddError(kDriverUnregistered, data);
  else if (FInvalidDrivers.contains(driver))
    AddError(kDriverInvalid, data);
}

void TRCPODBC::Clean_Listing(UnicodeView dataSource) {
  const TKey listing = Resolve(kListingKey);
  if (listing.exists) DeleteRegValueWrapper(listing.root, listing.path, dataSource, kOwnView);
}

bool TRCPODBC::CleanError(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString name;
  TZmRegOptions ignored;
  switch (error.ErrorType) {
    case kDriverFileMissing:
      GetErrorRegKey(error, u"existingkey", root, key, ignored);
      DeleteRegKeyWrapper(root, key, kOwnView);
      break;
    case kSourceWithoutKey:
      GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, name, ignored);
      Clean_Listing(name);
      break;
    case kSourceDriverMissing:
      GetErrorRegValue(error, u"existingkey", u"missingds", root, key, name, ignored);
      DeleteRegKeyWrapper(root, key, kOwnView);
      Clean_Listing(name);
      break;
    case kDriverUnregistered:
      GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, name, ignored);
      DeleteRegValueWrapper(root, key, name, kOwnView);
      break;
    default:
      // Of an invalid driver's data source nothing is deleted, deliberately: the driver's own
      // problem removes the cause.
      break;
  }
  // Deliberately a success whatever came of it: what has gone already counts as repaired.
  return true;
}

}  // namespace scrubwell
