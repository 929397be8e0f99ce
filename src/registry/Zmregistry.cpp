#include "registry/Zmregistry.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

KeyRef Ref(RootKey root, UnicodeView key, TZmRegOptions opts) {
  return {root, key, ViewOf(opts)};
}

struct RootName {
  RootKey root;
  UnicodeView longName;
  UnicodeView shortName;
};
constexpr RootName kRootNames[] = {
    {RootKey::ClassesRoot, u"HKEY_CLASSES_ROOT", u"HKCR"},
    {RootKey::CurrentUser, u"HKEY_CURRENT_USER", u"HKCU"},
    {RootKey::LocalMachine, u"HKEY_LOCAL_MACHINE", u"HKLM"},
    {RootKey::Users, u"HKEY_USERS", u"HKU"},
    {RootKey::CurrentConfig, u"HKEY_CURRENT_CONFIG", u"HKCC"},
    {RootKey::DynData, u"HKEY_DYN_DATA", u"HKDD"},
    {RootKey::PerformanceData, u"HKEY_PERFORMANCE_DATA", u"HKPD"},
};

// The units of UTF-16LE data; an odd last byte is dropped.
UnicodeString Units(const Bytes& data) {
  UnicodeString out(data.size() / 2, u'\0');
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
  }
  return out;
}

UnicodeString UntilNul(UnicodeString text) {
  text.resize(std::min(text.size(), text.find(u'\0')));
  return text;
}

std::uint64_t LittleEndian(const Bytes& data) {
  std::uint64_t value = 0;
  for (std::size_t i = data.size(); i-- > 0;) value = value << 8 | data[i];
  return value;
}

// Texts of a multi-text, up to the empty one that ends it.
UnicodeString JoinedTexts(const Bytes& data) {
  const UnicodeString units = Units(data);
  UnicodeString out;
  for (std::size_t at = 0; at < units.size();) {
    const std::size_t end = std::min(units.find(u'\0', at), units.size());
    if (end == at) break;
    if (!out.empty()) out.push_back(u'\n');
    out.append(units, at, end - at);
    at = end + 1;
  }
  return out;
}

// Binary data is text only when it can hardly be anything else.
UnicodeString PrintableText(const Bytes& data) {
  if (data.size() % 2 != 0) return {};
  UnicodeString text = UntilNul(Units(data));
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c < u' ' || c == 0x7F || c >= 0xFFFE) return {};
    if (c >= 0xD800 && c <= 0xDFFF) {
      const bool pair =
          c <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
      if (!pair) return {};
      ++i;
    }
  }
  return text;
}

// Holds what an enumeration reads, so that counting values copies nothing twice.
Status ReadValues(RootKey root, UnicodeView key, TZmRegOptions opts, std::vector<RegValue>& out) {
  out.clear();
  return Platform().registry.EnumValues(Ref(root, key, opts), out);
}

Status Count(RootKey root, UnicodeView key, TZmRegOptions opts, KeyInfo& info) {
  info = {};
  return Platform().registry.OpenKey(Ref(root, key, opts), info);
}

bool HasAccess(RootKey root, UnicodeView key, TZmRegOptions opts, Access access) {
  return Platform().registry.CheckAccess(Ref(root, key, opts), access) == Status::Ok;
}

}  // namespace

bool ForceRegDelete = false;

std::int32_t ErrorCode(Status status) {
  switch (status) {
    case Status::Ok:
      return ERRC_SUCCESS;
    case Status::Absent:
      return ERRC_FILE_NOT_FOUND;
    case Status::Denied:
      return ERRC_ACCESS_DENIED;
    case Status::Corrupt:
      return ERRC_BADDB;
    case Status::Unknown:
      break;
  }
  return ERRC_CANTREAD;
}

View ViewOf(TZmRegOptions opts) {
  const bool wide = opts.Contains(zmreg64Bit);
  const bool narrow = opts.Contains(zmreg32Bit);
  if (wide && narrow) return View::Invalid;
  if (wide) return View::Bits64;
  return narrow ? View::Bits32 : View::Native;
}

void EnumRegKeysEx(RootKey root, UnicodeView key, TStringList& names, TZmRegOptions opts) {
  names.clear();
  if (Platform().registry.EnumKeys(Ref(root, key, opts), names) != Status::Ok) names.clear();
}

void EnumRegValuesEx(RootKey root, UnicodeView key, TStringList& names, TStringList& data,
                     TZmRegOptions opts) {
  names.clear();
  data.clear();
  std::vector<RegValue> values;
  if (ReadValues(root, key, opts, values) != Status::Ok) return;
  names.reserve(values.size());
  data.reserve(values.size());
  for (RegValue& value : values) {
    data.push_back(RegValueText(value));
    names.push_back(std::move(value.name));
  }
}

bool KeyExist(RootKey root, UnicodeView key, TZmRegOptions opts, bool /*flag*/) {
  KeyInfo info;
  return Count(root, key, opts, info) != Status::Absent;
}

bool HasSubKeys(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  const Status status = Count(root, key, opts, info);
  return status == Status::Ok ? info.subkeyCount > 0 : status != Status::Absent;
}

bool HasSubKeysEx(RootKey root, UnicodeView key, TZmRegOptions opts) {
  return HasSubKeys(root, key, opts);
}

bool HasValues(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  const Status status = Count(root, key, opts, info);
  return status == Status::Ok ? info.valueCount > 0 : status != Status::Absent;
}

int HasValuesEx(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  if (Count(root, key, opts, info) != Status::Ok) return 2;
  return info.valueCount > 0 ? 1 : 0;
}

bool KeyEmptyEx(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  if (Count(root, key, opts, info) != Status::Ok || info.subkeyCount > 0) return false;
  if (info.valueCount == 0) return true;
  if (info.valueCount > 1) return false;
  RegValue value;
  if (Platform().registry.GetValue(Ref(root, key, opts), u"", value) != Status::Ok) return false;
  return value.data.empty() || (IsTextType(value.type) && RegValueText(value).empty());
}

bool KeyEmptyExEx(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  return Count(root, key, opts, info) == Status::Ok && info.subkeyCount == 0 &&
         info.valueCount == 0;
}

std::int32_t GetSubKeyCount(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  return Count(root, key, opts, info) == Status::Ok ? static_cast<std::int32_t>(info.subkeyCount)
                                                    : 0;
}

std::int32_t GetValueCount(RootKey root, UnicodeView key, TZmRegOptions opts) {
  KeyInfo info;
  return Count(root, key, opts, info) == Status::Ok ? static_cast<std::int32_t>(info.valueCount)
                                                    : 0;
}

std::int32_t GetRegStringValue(RootKey root, UnicodeView key, UnicodeView name, UnicodeString& out,
                               TZmRegOptions opts) {
  out.clear();
  RegValue value;
  const Status status = Platform().registry.GetValue(Ref(root, key, opts), name, value);
  if (status != Status::Ok) return ErrorCode(status);
  if (!IsTextType(value.type)) return ERRC_UNSUPPORTED_TYPE;
  out = RegValueText(value);
  return ERRC_SUCCESS;
}

UnicodeString GetRegStringValueDef(RootKey root, UnicodeView key, UnicodeView name,
                                   UnicodeView fallback, TZmRegOptions opts) {
  UnicodeString text;
  if (GetRegStringValue(root, key, name, text, opts) != ERRC_SUCCESS) text = fallback;
  return text;
}

UnicodeString GetRegString(RootKey root, UnicodeView key, UnicodeView name, UnicodeView fallback,
                           TZmRegOptions opts) {
  return GetRegStringValueDef(root, key, name, fallback, opts);
}

std::int32_t GetRegDWORDValue(RootKey root, UnicodeView key, UnicodeView name, std::uint32_t& out,
                              TZmRegOptions opts) {
  out = 0;
  RegValue value;
  const Status status = Platform().registry.GetValue(Ref(root, key, opts), name, value);
  if (status != Status::Ok) return ErrorCode(status);
  if (value.data.size() != 4 || (value.type != REGT_DWORD && value.type != REGT_DWORD_BE)) {
    return ERRC_UNSUPPORTED_TYPE;
  }
  if (value.type == REGT_DWORD_BE) std::reverse(value.data.begin(), value.data.end());
  out = static_cast<std::uint32_t>(LittleEndian(value.data));
  return ERRC_SUCCESS;
}

void SetRegStringValue(RootKey root, UnicodeView key, UnicodeView name, UnicodeView value,
                       TZmRegOptions opts) {
  RegValue old;
  const bool expandable =
      Platform().registry.GetValue(Ref(root, key, opts), name, old) == Status::Ok &&
      old.type == REGT_EXPAND_SZ;
  Platform().registry.SetValue(
      Ref(root, key, opts),
      {UnicodeString(name), expandable ? REGT_EXPAND_SZ : REGT_SZ, TextData(value)});
}

void SetRegDWORDValue(RootKey root, UnicodeView key, UnicodeView name, std::uint32_t value,
                      TZmRegOptions opts) {
  Bytes data;
  for (int shift = 0; shift < 32; shift += 8) {
    data.push_back(static_cast<std::uint8_t>(value >> shift));
  }
  Platform().registry.SetValue(Ref(root, key, opts),
                               {UnicodeString(name), REGT_DWORD, std::move(data)});
}

bool RegValueExists(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts) {
  RegValue value;
  return Platform().registry.GetValue(Ref(root, key, opts), name, value) != Status::Absent;
}

bool RegValueIsText(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts) {
  UnicodeString text;
  return GetRegStringValue(root, key, name, text, opts) == ERRC_SUCCESS;
}

void CreateRegKey(RootKey root, UnicodeView key, TZmRegOptions opts) {
  Platform().registry.CreateKey(Ref(root, key, opts));
}

std::int32_t DeleteRegKey(RootKey root, UnicodeView key, TZmRegOptions opts) {
  if (ParamXCount(key, u'\\') < 1) return ERRC_INVALID_PARAMETER;
  return ErrorCode(Platform().registry.DeleteKey(Ref(root, key, opts), ForceRegDelete));
}

std::int32_t DeleteRegValue(RootKey root, UnicodeView key, UnicodeView name, TZmRegOptions opts) {
  return ErrorCode(Platform().registry.DeleteValue(Ref(root, key, opts), name));
}

bool KeyIsDeletable(RootKey root, UnicodeView key, TZmRegOptions opts, bool /*flag*/) {
  return HasAccess(root, key, opts, Access::Delete);
}

bool KeyIsWriteable(RootKey root, UnicodeView key, TZmRegOptions opts, bool /*flag*/) {
  return HasAccess(root, key, opts, Access::Write);
}

UnicodeString GetRegMainKeyString(RootKey root, bool shortForm) {
  for (const RootName& name : kRootNames) {
    if (name.root == root) return UnicodeString(shortForm ? name.shortName : name.longName);
  }
  return {};
}

UnicodeString RegKeyToStr(RootKey root, UnicodeView key, bool shortForm) {
  UnicodeString out = GetRegMainKeyString(root, shortForm);
  if (!key.empty()) out.append(u"\\").append(key);
  return out;
}

RootKey GetMainKeyFromString(UnicodeView name) {
  for (const RootName& known : kRootNames) {
    if (SameText(name, known.longName) || SameText(name, known.shortName)) return known.root;
  }
  return RootKey::None;
}

bool GetRegKeyFromString(UnicodeView fullPath, RootKey& root, UnicodeString& key,
                         TZmRegOptions& opts) {
  const std::size_t slash = fullPath.find(u'\\');
  root = GetMainKeyFromString(fullPath.substr(0, slash));
  key = slash == UnicodeView::npos ? UnicodeView() : fullPath.substr(slash + 1);
  opts = {};
  if (root == RootKey::None) return false;
  for (const TZmRegOptions view :
       {TZmRegOptions{}, TZmRegOptions{zmreg32Bit}, TZmRegOptions{zmreg64Bit}}) {
    if (!KeyExist(root, key, view)) continue;
    opts = view;
    return true;
  }
  return false;
}

UnicodeString RegValueText(const RegValue& value) {
  switch (value.type) {
    case REGT_SZ:
    case REGT_EXPAND_SZ:
      return UntilNul(Units(value.data));
    case REGT_LINK:
      return Units(value.data);
    case REGT_MULTI_SZ:
      return JoinedTexts(value.data);
    case REGT_DWORD:
      if (value.data.size() == 4) {
        return IntToStr(static_cast<std::int64_t>(LittleEndian(value.data)));
      }
      break;
    case REGT_DWORD_BE:
      if (value.data.size() == 4) {
        const Bytes swapped(value.data.rbegin(), value.data.rend());
        return IntToStr(static_cast<std::int64_t>(LittleEndian(swapped)));
      }
      break;
    case REGT_QWORD:
      if (value.data.size() == 8) {
        const std::string digits = std::to_string(LittleEndian(value.data));
        return {digits.begin(), digits.end()};
      }
      break;
    default:
      break;
  }
  return PrintableText(value.data);
}

bool IsTextType(std::uint32_t type) {
  return type == REGT_SZ || type == REGT_EXPAND_SZ;
}

Bytes TextData(UnicodeView text) {
  Bytes data;
  data.reserve(text.size() * 2 + 2);
  for (const char16_t c : text) {
    data.push_back(static_cast<std::uint8_t>(c & 0xFF));
    data.push_back(static_cast<std::uint8_t>(c >> 8));
  }
  data.insert(data.end(), 2, 0);
  return data;
}

}  // namespace scrubwell
