#include "plugins/classes/class_keys.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "registry/Zelmarwow64.h"

namespace scrubwell::classes {
namespace {

// A tree that is nested deeper than any real registration counts as different, which only ever
// leads to silence.
constexpr int kDeepest = 64;

// Up to so many subkeys, reading their names is cheaper than asking for one after the other.
constexpr std::int32_t kFewSubkeys = 64;

bool SameLists(const TStringList& a, const TStringList& b) {
  if (a.size() != b.size()) return false;
  if (a == b) return true;
  std::unordered_set<UnicodeString> known;
  for (const UnicodeString& text : b) known.insert(UpperCase(text));
  return std::ranges::all_of(
      a, [&](const UnicodeString& text) { return known.contains(UpperCase(text)); });
}

bool SameValues(RootKey root, UnicodeView path) {
  TStringList names[2];
  TStringList data[2];
  const TZmRegOptions views[] = {kView32, kView64};
  for (std::size_t i = 0; i < 2; ++i) {
    if (HasValues(root, path, views[i])) EnumRegValuesEx(root, path, names[i], data[i], views[i]);
  }
  return SameLists(names[0], names[1]) && SameLists(data[0], data[1]);
}

bool SameTree(RootKey root, const UnicodeString& path, int depth) {
  if (depth > kDeepest) return false;
  if (!KeyExist(root, path, kView32) || !KeyExist(root, path, kView64)) return true;
  TStringList names32;
  TStringList names64;
  if (HasSubKeys(root, path, kView32)) EnumRegKeysEx(root, path, names32, kView32);
  if (HasSubKeys(root, path, kView64)) EnumRegKeysEx(root, path, names64, kView64);
  if (!SameLists(names32, names64)) return false;
  // Deliberate: every subkey's verdict replaces the one before, so that only the last one counts.
  // What is reported depends on it; each verdict but the last therefore need not be asked for.
  const bool same = names32.empty() || SameTree(root, path + u"\\" + names32.back(), depth + 1);
  return same && SameValues(root, path);
}

}  // namespace

SubkeyNames::SubkeyNames(UnicodeView key, TZmRegOptions opts) : opts_(opts) {
  const std::int32_t count = GetSubKeyCount(HKEY_CLASSES_ROOT, key, opts);
  if (count > kFewSubkeys)
    key_ = key;
  else if (count > 0)
    EnumRegKeysEx(HKEY_CLASSES_ROOT, key, names_, opts);
}

bool SubkeyNames::Has(UnicodeView name) const {
  if (!key_.empty())
    return KeyExist(HKEY_CLASSES_ROOT, UnicodeString(key_).append(u"\\").append(name), opts_);
  return std::ranges::any_of(names_,
                             [name](const UnicodeString& known) { return SameText(known, name); });
}

const UnicodeString& TCaption::Text() const {
  if (compute_) text_ = std::exchange(compute_, nullptr)();
  return text_;
}

std::optional<UnicodeString> ReadText(UnicodeView key, UnicodeView name, TZmRegOptions opts) {
  UnicodeString text;
  const std::int32_t code = GetRegStringValue(HKEY_CLASSES_ROOT, key, name, text, opts);
  if (code != ERRC_SUCCESS && code != ERRC_FILE_NOT_FOUND) return std::nullopt;
  return text;
}

UnicodeString DefaultText(UnicodeView key, TZmRegOptions opts) {
  return GetRegStringValueDef(HKEY_CLASSES_ROOT, key, u"", u"", opts);
}

UnicodeString ResourceText(UnicodeView reference) {
  UnicodeString file;
  std::uint32_t id = 0;
  if (!ExtractResFileAndIDFromString(reference, file, id)) return {};
  return GetResourceString(file, id);
}

TZmRegOptions OtherView(TZmRegOptions opts) {
  return opts.Contains(zmreg64Bit) ? kView32 : kView64;
}

bool ExistsInAnyView(UnicodeView key, TZmRegOptions opts) {
  if (KeyExist(HKEY_CLASSES_ROOT, key, opts)) return true;
  return IsCurrentProcessWow64() && KeyExist(HKEY_CLASSES_ROOT, key, OtherView(opts));
}

bool RegKeysIdentic(RootKey root, UnicodeView path) {
  return !IsCurrentProcessWow64() || SameTree(root, UnicodeString(path), 0);
}

UnicodeString StripIconIndex(UnicodeView location) {
  const std::size_t mark = location.find_last_of(u"\\.");
  const std::size_t comma = location.find(u',', mark == UnicodeView::npos ? 0 : mark);
  return UnicodeString(location.substr(0, comma));
}

bool IsFileMissing(UnicodeView text, bool needsDrive) {
  // What was found is remembered, so that is asked first.
  return !FindFile(text) && FileIsOnFixedDrive(text, needsDrive);
}

int PartCount(UnicodeView path) {
  return ParamXCount(path, u'\\');
}

bool PartIs(UnicodeView path, int part, UnicodeView name) {
  return SameText(ParamX(path, u'\\', part), name);
}

}  // namespace scrubwell::classes
