#include "backends/offline/offline_resources.h"

#include <fcntl.h>

#include <algorithm>

#include "backends/offline/registry_read.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kInstalled = u"SYSTEM\\CurrentControlSet\\Control\\MUI\\UILanguages";
constexpr UnicodeView kInstallLanguage = u"SYSTEM\\CurrentControlSet\\Control\\Nls\\Language";

void AddName(TStringList& names, UnicodeView name) {
  const bool known = std::any_of(names.begin(), names.end(), [name](const UnicodeString& each) {
    return SameText(each, name);
  });
  if (!known && !name.empty()) names.emplace_back(name);
}

// The texts of a REG_MULTI_SZ value, or the one of a plain text.
TStringList TextsOf(const RegValue& value) {
  TStringList texts;
  RegValue rest{{}, REGT_SZ, value.data};
  while (value.type == REGT_MULTI_SZ || texts.empty()) {
    const UnicodeString text = TextOf(rest);
    if (text.empty()) break;
    texts.push_back(text);
    const std::size_t used = std::min(rest.data.size(), (text.size() + 1) * 2);
    rest.data.erase(rest.data.begin(), rest.data.begin() + static_cast<std::ptrdiff_t>(used));
  }
  return texts;
}

std::optional<pe::LangId> HexNumber(UnicodeView text) {
  std::uint32_t number = 0;
  if (text.empty() || text.size() > 8) return {};
  for (const char16_t unit : text) {
    const char16_t upper = UpCase(unit);
    if (upper >= u'0' && upper <= u'9') {
      number = number * 16 + (upper - u'0');
    } else if (upper >= u'A' && upper <= u'F') {
      number = number * 16 + (upper - u'A' + 10U);
    } else {
      return {};
    }
  }
  return static_cast<pe::LangId>(number & 0xFFFFU);
}

}  // namespace

const OfflineResources::Languages& OfflineResources::Preferred() {
  if (languages_) return *languages_;
  Languages& languages = languages_.emplace();
  struct Source {
    UnicodeView key;
    UnicodeView value;
  };
  static constexpr Source kUser[] = {
      {u"Control Panel\\Desktop", u"PreferredUILanguages"},
      {u"Control Panel\\Desktop\\MuiCached", u"MachinePreferredUILanguages"},
  };
  for (const Source& source : kUser) {
    RegValue value;
    if (registry_.GetValue({RootKey::CurrentUser, source.key}, source.value, value) != Status::Ok) {
      continue;
    }
    for (const UnicodeString& name : TextsOf(value)) AddName(languages.names, name);
  }
  TStringList installed;
  registry_.EnumKeys({RootKey::LocalMachine, kInstalled}, installed);
  for (const UnicodeString& name : installed) AddName(languages.names, name);
  for (const UnicodeString& name : languages.names) {
    RegValue value;
    const UnicodeString key = UnicodeString(kInstalled) + u"\\" + name;
    if (registry_.GetValue({RootKey::LocalMachine, key}, u"LCID", value) != Status::Ok) continue;
    if (const auto number = NumberOf(value)) {
      languages.numbers.push_back(static_cast<pe::LangId>(*number & 0xFFFFU));
    }
  }
  const UnicodeString machine =
      RegistryText(registry_, {RootKey::LocalMachine, kInstallLanguage}, u"InstallLanguage");
  if (const auto number = HexNumber(machine)) languages.numbers.push_back(*number);
  AddName(languages.names, u"en-US");
  return languages;
}

// Of a program file the headers and the resources are read, not the code between them.
Status OfflineResources::Open(UnicodeView file, regf::FileImage& bytes, pe::Image& image) {
  constexpr std::size_t kHeaders = 65'536;
  constexpr std::size_t kLargest = std::size_t{1} << 30U;
  // What a 32-bit process would load comes first.
  DiskPlace place;
  Status status = files_.Place(file, place, FsView::Redirected);
  if (status != Status::Ok) status = files_.Place(file, place, FsView::Physical);
  if (status != Status::Ok) return status;
  const UniqueFd fd = place.Open(O_RDONLY | O_NONBLOCK);
  std::string ignored;
  if (!fd.Good() || !bytes.Reserve(fd.Get(), kLargest, ignored)) return Status::Unknown;
  const auto whole = bytes.Content();
  if (!bytes.Load(fd.Get(), 0, std::min(kHeaders, whole.size()))) return Status::Unknown;
  status = image.Open(whole);
  const auto part = image.Resources();
  if (status != Status::Ok || part.empty()) return status;
  const auto from = static_cast<std::size_t>(part.data() - whole.data());
  return bytes.Load(fd.Get(), from, part.size()) ? Status::Ok : Status::Unknown;
}

Status OfflineResources::StringIn(UnicodeView file, std::uint32_t id, UnicodeString& out) {
  regf::FileImage bytes;
  pe::Image image;
  if (const Status status = Open(file, bytes, image); status != Status::Ok) return status;
  return image.String(id, Preferred().numbers, out);
}

Status OfflineResources::StringResource(UnicodeView file, std::uint32_t id, UnicodeString& out) {
  const TStringList& names = Preferred().names;
  const std::vector<UnicodeView> views(names.begin(), names.end());
  for (const UnicodeString& satellite : pe::SatellitePaths(file, views)) {
    if (StringIn(satellite, id, out) == Status::Ok) return Status::Ok;
  }
  return StringIn(file, id, out);
}

Status OfflineResources::Version(UnicodeView file, FileVersion& out) {
  regf::FileImage bytes;
  pe::Image image;
  pe::Version version;
  if (const Status opened = Open(file, bytes, image); opened != Status::Ok) return opened;
  const Status status = image.FileVersion(version);
  out = {version.major, version.minor, version.release, version.build};
  return status;
}

}  // namespace scrubwell::offline
