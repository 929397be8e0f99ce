#include "backends/common/reg_places.h"

#include <algorithm>

#include "registry/Stringhelper.h"

namespace scrubwell {

namespace {

struct PathRule {
  UnicodeView from;
  UnicodeView to;
};

// The first rule that fits is applied, then the next round begins, so that rules build on others.
constexpr PathRule kRoots[] = {
    {u"HKEY_LOCAL_MACHINE", u"HKLM"},      {u"HKEY_USERS", u"HKU"},
    {u"HKEY_CURRENT_USER", u"HKCU"},       {u"HKEY_CLASSES_ROOT", u"HKCR"},
    {u"HKCR", u"HKLM\\SOFTWARE\\Classes"},
};
constexpr PathRule kPlaces[] = {
    {u"HKLM\\SYSTEM\\CurrentControlSet", u"HKLM\\SYSTEM\\ControlSet001"},
    {u"HKLM\\SOFTWARE\\Wow6432Node\\Classes", u"HKLM\\SOFTWARE\\Classes\\Wow6432Node"},
};

// Whether the path is the prefix or lies below it.
bool Below(UnicodeView path, UnicodeView prefix) {
  return path.size() >= prefix.size() && SameText(path.substr(0, prefix.size()), prefix) &&
         (path.size() == prefix.size() || path[prefix.size()] == u'\\');
}

void Rewrite(UnicodeString& path, const PathRule& rule) {
  if (Below(path, rule.from)) path.replace(0, rule.from.size(), rule.to);
}

UnicodeString CollapseSlashes(UnicodeView path) {
  UnicodeString out;
  for (const char16_t unit : path)
    if (unit != u'\\' || (!out.empty() && out.back() != u'\\')) out += unit;
  if (!out.empty() && out.back() == u'\\') out.pop_back();
  return out;
}

}  // namespace

bool HivePlaceOf(UnicodeView fullPath, UnicodeView userSid, HivePlace& out) {
  UnicodeString path = CollapseSlashes(fullPath);
  for (const PathRule& rule : kRoots) Rewrite(path, rule);
  if (Below(path, u"HKCU")) {
    if (userSid.empty()) return false;
    path.replace(0, 4, u"HKU\\" + UnicodeString(userSid));
  }
  for (const PathRule& rule : kPlaces) Rewrite(path, rule);
  const std::size_t first = path.find(u'\\');
  if (first == UnicodeString::npos || !(Below(path, u"HKLM") || Below(path, u"HKU"))) return false;
  const std::size_t second = std::min(path.find(u'\\', first + 1), path.size());
  out.mount = path.substr(0, second);
  out.path = path.substr(std::min(second + 1, path.size()));
  constexpr UnicodeView classes = u"Software\\Classes";
  const bool ofUser = SameText(UnicodeView(out.mount).substr(0, 7), u"HKU\\S-1");
  if (ofUser && Below(out.path, classes) && out.mount.find(u'_') == UnicodeString::npos) {
    out.mount += u"_Classes";
    out.path.erase(0, std::min(classes.size() + 1, out.path.size()));
  }
  return true;
}

}  // namespace scrubwell
