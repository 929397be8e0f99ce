#include "hosts/report/hive_places.h"

#include <algorithm>
#include <array>

#include "registry/Stringhelper.h"
#include "registry/platform.h"

namespace scrubwell::hosts {

namespace {

constexpr UnicodeView kMachineSoftware = u"HKLM\\SOFTWARE";
constexpr UnicodeView kMachineSystem = u"HKLM\\SYSTEM";
constexpr UnicodeView kUserClasses = u"Software\\Classes";

// The first name of a path, which goes from it.
UnicodeView TakeFirst(UnicodeView& path) {
  const std::size_t end = std::min(path.find(u'\\'), path.size());
  const UnicodeView first = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return first;
}

UnicodeView SidOf(const ScanReport& report, std::int32_t index) {
  const UnicodeView owner = OwnerOf(report, index);
  if (report.users.empty()) return report.target.userSid;
  const auto user = std::ranges::find(report.users, owner, &ScannedUser::name);
  return user == report.users.end() ? UnicodeView() : UnicodeView(user->sid);
}

// The classes root shows a key of the user's where there is one, else the machine's.
bool IsUsersClass(const ScanReport& report, std::int32_t index, UnicodeView path,
                  UnicodeView view) {
  if (!report.users.empty()) return !OwnerOf(report, index).empty();
  return HasPlatform() && UserHasClass(path, view);
}

// Problems name roots in either form.
bool IsRoot(UnicodeView name, UnicodeView longForm, UnicodeView shortForm) {
  return SameText(name, longForm) || SameText(name, shortForm);
}

UnicodeString MountOf(const ScanReport& report, std::int32_t index, const ProblemPlace& place) {
  UnicodeView path = place.key;
  const UnicodeView root = TakeFirst(path);
  const UnicodeString user = UnicodeString(u"HKU\\").append(SidOf(report, index));
  if (IsRoot(root, u"HKEY_LOCAL_MACHINE", u"HKLM")) {
    return UnicodeString(u"HKLM\\").append(TakeFirst(path));
  }
  if (IsRoot(root, u"HKEY_USERS", u"HKU")) return UnicodeString(u"HKU\\").append(TakeFirst(path));
  if (IsRoot(root, u"HKEY_CURRENT_CONFIG", u"HKCC")) return UnicodeString(kMachineSystem);
  if (IsRoot(root, u"HKEY_CURRENT_USER", u"HKCU")) {
    const UnicodeView start = path.substr(0, kUserClasses.size());
    const bool ends = path.size() == start.size() || path[start.size()] == u'\\';
    return SameText(start, kUserClasses) && ends ? user + u"_Classes" : user;
  }
  if (!IsRoot(root, u"HKEY_CLASSES_ROOT", u"HKCR")) return {};
  return IsUsersClass(report, index, path, place.view) ? user + u"_Classes"
                                                       : UnicodeString(kMachineSoftware);
}

// A path of the scanned Windows, on its own drive.
std::string BelowTarget(const TargetFacts& target, UnicodeView path) {
  const bool isThere = path.size() > 3 && path[1] == u':' && path[2] == u'\\' &&
                       UpCase(path[0]) == UpCase(target.driveLetter);
  if (!isThere) return {};
  std::string file = ToUtf8(path.substr(3));
  std::ranges::replace(file, '\\', '/');
  return file;
}

// Entries that lie in no hive.
std::string OtherFile(const TargetFacts& target, const TSweepError& problem,
                      const ProblemPlace& place) {
  constexpr std::int32_t lastOfWinIni = 3;
  if (problem.PluginID == u"IniFiles") {
    const bool isWinIni = problem.ErrorType <= lastOfWinIni;
    return BelowTarget(target, target.systemRoot + (isWinIni ? u"\\win.ini" : u"\\system.ini"));
  }
  if (problem.PluginID == u"Autostart") {
    return BelowTarget(target, target.systemRoot + u"\\Tasks\\" +
                                   GetErrorStringValue(problem.Data, u"displayname") + u".job");
  }
  return BelowTarget(target, place.file);
}

}  // namespace

bool UserHasClass(UnicodeView path, UnicodeView view) {
  const UnicodeString key = UnicodeString(kUserClasses).append(u"\\").append(path);
  KeyInfo info;
  const View wanted = view == u"32" ? View::Bits32 : view == u"64" ? View::Bits64 : View::Native;
  return Platform().registry.OpenKey({RootKey::CurrentUser, key, wanted}, info) == Status::Ok;
}

std::string FileOfProblem(const ScanReport& report, std::int32_t index) {
  const TSweepError& problem = (*SweepErrors)[index];
  const ProblemPlace place = PlaceOf(problem);
  if (place.key.empty()) return OtherFile(report.target, problem, place);
  const UnicodeString mount = MountOf(report, index, place);
  const auto hive = std::ranges::find_if(
      report.target.hives, [&mount](const HiveFile& known) { return SameText(known.key, mount); });
  return hive == report.target.hives.end() ? std::string() : hive->file;
}

std::string UriOf(const std::string& path) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  constexpr std::string_view plain = "-._~/";
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
    if (isLetter || (byte >= '0' && byte <= '9') || plain.find(c) != std::string_view::npos) {
      uri += c;
    } else {
      uri += '%';
      uri += digits[byte >> 4];
      uri += digits[byte & 0xF];
    }
  }
  return uri;
}

}  // namespace scrubwell::hosts
