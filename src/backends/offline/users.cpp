#include "backends/offline/users.h"

#include <algorithm>
#include <array>

#include "backends/offline/registry_read.h"
#include "formats/regf/cells.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kProfileList = u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

// Profile folders that no person owns.
constexpr std::array<UnicodeView, 6> kNoUsers = {u"Default", u"Default User", u"All Users",
                                                 u"Public",  u"LocalService", u"NetworkService"};

Status Exists(OfflineFiles& files, UnicodeView path) {
  FileInfo info;
  return files.Stat(path, FsView::Physical, info);
}

// When the hive was last written by its own word, which copying the file does not change.
std::uint64_t HiveTime(OfflineFiles& files, UnicodeView path) {
  Bytes head;
  if (path.empty() || files.ReadHead(path, regf::BaseBlockSize, head) != Status::Ok) return 0;
  return head.size() < regf::BaseBlockSize ? 0 : regf::Get64(head, regf::base::Time);
}

// Fills in the hives of the profile's folder.
void FindHives(OfflineFiles& files, UserProfile& user) {
  for (const UnicodeView name : {UnicodeView(u"\\NTUSER.DAT"), UnicodeView(u"\\NTUSER.MAN")}) {
    const UnicodeString path = user.folder + UnicodeString(name);
    if (user.hive.empty() && Exists(files, path) == Status::Ok) user.hive = path;
  }
  for (const UnicodeView place :
       {UnicodeView(u"\\AppData\\Local\\Microsoft\\Windows\\UsrClass.dat"),
        UnicodeView(u"\\Local Settings\\Application Data\\Microsoft\\Windows\\UsrClass.dat")}) {
    const UnicodeString path = user.folder + UnicodeString(place);
    const Status status = Exists(files, path);
    // A file that may be there is named too: opening it then says why it can't be read.
    if (status == Status::Ok || (status != Status::Absent && user.classes.empty())) {
      user.classes = path;
    }
    if (status == Status::Ok) break;
  }
  user.lastUsed =
      std::max({user.lastUsed, HiveTime(files, user.hive), HiveTime(files, user.classes)});
}

bool IsProfileSid(UnicodeView sid) {
  return sid.starts_with(u"S-1-") && !sid.ends_with(u".bak") && sid != u"S-1-5-18";
}

UserProfile FromProfileList(const regf::Hive& software, UnicodeView sid,
                            const Installation& installation) {
  const UnicodeString key = UnicodeString(kProfileList) + u"\\" + UnicodeString(sid);
  UserProfile user;
  user.sid = sid;
  user.isService = sid == u"S-1-5-19" || sid == u"S-1-5-20";
  user.folder = installation.Expand(HiveText(software, key, u"ProfileImagePath"));
  while (user.folder.ends_with(u'\\')) user.folder.pop_back();
  user.name = ExtractFileName(user.folder);
  const std::uint64_t high = HiveNumber(software, key, u"LocalProfileLoadTimeHigh").value_or(0);
  const std::uint64_t low = HiveNumber(software, key, u"LocalProfileLoadTimeLow").value_or(0);
  user.lastUsed = high << 32U | low;
  return user;
}

UnicodeString ProfilesFolder(OfflineFiles& files, const Installation& installation) {
  const UnicodeString drive = installation.systemRoot.substr(0, 2);
  const UnicodeString listed = installation.Expand(
      HiveText(installation.software->Raw(), kProfileList, u"ProfilesDirectory"));
  for (const UnicodeString& folder :
       {listed, drive + u"\\Users", drive + u"\\Documents and Settings"}) {
    if (!folder.empty() && Exists(files, folder) == Status::Ok) return folder;
  }
  return {};
}

bool IsUsersFolder(const DirEntry& entry) {
  return entry.isFolder && std::none_of(kNoUsers.begin(), kNoUsers.end(), [&](UnicodeView name) {
           return SameText(entry.name, name);
         });
}

// Folders with a user's hive that the profile list does not name.
std::vector<UserProfile> UnlistedProfiles(OfflineFiles& files, const Installation& installation,
                                          const std::vector<UserProfile>& listed) {
  std::vector<UserProfile> found;
  const UnicodeString folder = ProfilesFolder(files, installation);
  std::vector<DirEntry> entries;
  if (folder.empty() || files.List(folder, FsView::Physical, entries) != Status::Ok) return found;
  for (const DirEntry& entry : entries) {
    if (!IsUsersFolder(entry)) continue;
    UserProfile user;
    user.folder = folder + u"\\" + entry.name;
    user.name = entry.name;
    if (std::any_of(listed.begin(), listed.end(), [&](const UserProfile& other) {
          return SameText(other.folder, user.folder);
        })) {
      continue;
    }
    FindHives(files, user);
    if (!user.hive.empty()) found.push_back(std::move(user));
  }
  return found;
}

// A renamed or moved profile folder: one listed user without a folder, one folder without a user.
bool AdoptMovedProfile(std::vector<UserProfile>& listed, UserProfile& folder, INotes& notes) {
  const auto isHomeless = [](const UserProfile& user) {
    return user.hive.empty() && !user.isService;
  };
  const auto first = std::find_if(listed.begin(), listed.end(), isHomeless);
  if (first == listed.end() || std::any_of(first + 1, listed.end(), isHomeless)) return false;
  notes.Note(folder.folder + u": taken for the profile of " + first->sid + u", whose folder " +
             first->folder + u" is not there");
  folder.sid = first->sid;
  folder.lastUsed = std::max(folder.lastUsed, first->lastUsed);
  *first = std::move(folder);
  return true;
}

std::optional<std::uint32_t> LastNumber(UnicodeView sid) {
  const std::size_t dash = sid.rfind(u'-');
  if (dash == UnicodeView::npos) return {};
  const std::int32_t number = StrToIntDef(sid.substr(dash + 1), -1);
  return number < 0 ? std::nullopt : std::optional(static_cast<std::uint32_t>(number));
}

template <class Test>
const UserProfile* OnlyOne(const std::vector<UserProfile>& users, const Test& test) {
  const auto first = std::find_if(users.begin(), users.end(), test);
  if (first == users.end() || std::find_if(first + 1, users.end(), test) != users.end()) {
    return nullptr;
  }
  return &*first;
}

}  // namespace

std::vector<UserProfile> FindUsers(OfflineFiles& files, const Installation& installation,
                                   INotes& notes) {
  const regf::Hive& software = installation.software->Raw();
  std::vector<UserProfile> users;
  regf::CellOffset list = regf::NoCell;
  if (software.Descend(software.Root(), kProfileList, list) == Status::Ok) {
    const Status whole = software.ForEachSubkey(list, [&](const regf::Subkey& key) {
      const UnicodeString sid = key.facts.name.Text();
      if (IsProfileSid(sid)) users.push_back(FromProfileList(software, sid, installation));
    });
    if (whole != Status::Ok) notes.Note(u"the list of user profiles is damaged");
  }
  for (UserProfile& user : users) FindHives(files, user);
  std::vector<UserProfile> unlisted = UnlistedProfiles(files, installation, users);
  if (unlisted.size() == 1 && AdoptMovedProfile(users, unlisted.front(), notes)) unlisted.clear();
  std::uint32_t number = 1000;
  for (UserProfile& user : unlisted) {
    user.sidKnown = false;
    user.sid = u"S-1-5-21-4294967295-0-0-" + IntToStr(number++);
    users.push_back(std::move(user));
  }
  return users;
}

const UserProfile* ChooseUser(const std::vector<UserProfile>& users, UnicodeView wanted,
                              const AccountNumber& accountNumber) {
  if (!wanted.empty()) {
    const UserProfile* user = OnlyOne(users, [&](const UserProfile& candidate) {
      return SameText(candidate.name, wanted) || SameText(candidate.sid, wanted);
    });
    const auto number = user == nullptr ? accountNumber(wanted) : std::nullopt;
    if (!number) return user;
    return OnlyOne(users, [&](const UserProfile& candidate) {
      return candidate.sid.starts_with(u"S-1-5-21-") && LastNumber(candidate.sid) == number;
    });
  }
  const UserProfile* chosen = nullptr;
  for (const UserProfile& user : users) {
    if (user.isService || user.hive.empty()) continue;
    // A folder that no list names is an old one, unless there is nothing else.
    const auto rank = [](const UserProfile& of) { return std::pair(of.sidKnown, of.lastUsed); };
    if (chosen == nullptr || rank(user) > rank(*chosen)) chosen = &user;
  }
  return chosen;
}

}  // namespace scrubwell::offline
