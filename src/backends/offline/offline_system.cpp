#include "backends/offline/offline_system.h"

#include "backends/offline/registry_read.h"
#include "registry/Stringhelper.h"

namespace scrubwell::offline {
namespace {

constexpr UnicodeView kProfileList =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";
constexpr UnicodeView kWindowsKey = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr UnicodeView kControl = u"SYSTEM\\CurrentControlSet\\Control\\";
constexpr UnicodeView kShellFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

UnicodeString Either(UnicodeString text, UnicodeString fallback) {
  return text.empty() ? std::move(fallback) : std::move(text);
}

}  // namespace

void Variables::Set(UnicodeView name, UnicodeView value) {
  values_[UpperCase(name)] = value;
}

const UnicodeString* Variables::Get(UnicodeView name) const {
  const auto it = values_.find(UpperCase(name));
  return it == values_.end() ? nullptr : &it->second;
}

UnicodeString Variables::Expand(UnicodeView text) const {
  UnicodeString result;
  while (!text.empty()) {
    const std::size_t begin = text.find(u'%');
    const std::size_t end = begin == UnicodeView::npos ? begin : text.find(u'%', begin + 1);
    if (end == UnicodeView::npos) break;
    result += text.substr(0, begin);
    const UnicodeString* const value = Get(text.substr(begin + 1, end - begin - 1));
    // The second sign of an unknown variable may be the first of a known one.
    result += value != nullptr ? *value : UnicodeString(text.substr(begin, end - begin));
    text.remove_prefix(value != nullptr ? end + 1 : end);
  }
  return result += text;
}

Status OfflineSystem::Environment(UnicodeView name, View view, UnicodeString& out) {
  if (view == View::Invalid) return Status::Unknown;
  const UnicodeString* const value = All(view).Get(name);
  if (value == nullptr) return Status::Absent;
  out = *value;
  return Status::Ok;
}

const Variables& OfflineSystem::All(View view) {
  // A scan imitates a 32-bit process where there are two kinds.
  const bool wide = installation_.is64Bit && view == View::Bits64;
  std::optional<Variables>& variables = variables_[wide ? 1 : 0];
  if (!variables) variables = Build(wide);
  return *variables;
}

Variables OfflineSystem::Build(bool wide) {
  Variables variables;
  variables.Set(u"SystemRoot", installation_.systemRoot);
  variables.Set(u"SystemDrive", Drive());
  variables.Set(u"windir", installation_.systemRoot);
  AddMachineFolders(variables);
  const UnicodeString session = UnicodeString(kControl) + u"Session Manager\\Environment";
  AddKey(variables, {RootKey::LocalMachine, session}, false);
  AddProgramFolders(variables, wide);
  if (installation_.is64Bit && !wide) {
    if (const UnicodeString* const native = variables.Get(u"PROCESSOR_ARCHITECTURE")) {
      variables.Set(u"PROCESSOR_ARCHITEW6432", UnicodeString(*native));
    }
    variables.Set(u"PROCESSOR_ARCHITECTURE", u"x86");
  }
  if (user_ != nullptr) {
    AddUserFolders(variables);
    AddKey(variables, {RootKey::CurrentUser, u"Environment"}, true);
  }
  return variables;
}

void OfflineSystem::AddMachineFolders(Variables& variables) {
  const KeyRef list{RootKey::LocalMachine, kProfileList, View::Bits64};
  const auto text = [&](UnicodeView name) {
    return variables.Expand(RegistryText(registry_, list, name));
  };
  if (HasVistaFolders()) {
    const UnicodeString data = Either(text(u"ProgramData"), Drive() + u"\\ProgramData");
    variables.Set(u"ProgramData", data);
    variables.Set(u"ALLUSERSPROFILE", data);
    variables.Set(u"PUBLIC", Either(text(u"Public"), Drive() + u"\\Users\\Public"));
  } else {
    const UnicodeString profiles =
        Either(text(u"ProfilesDirectory"), Drive() + u"\\Documents and Settings");
    variables.Set(u"ALLUSERSPROFILE",
                  profiles + u"\\" + Either(text(u"AllUsersProfile"), u"All Users"));
  }
  const UnicodeString key = UnicodeString(kControl) + u"ComputerName\\ComputerName";
  const UnicodeString name = RegistryText(registry_, {RootKey::LocalMachine, key}, u"ComputerName");
  if (!name.empty()) variables.Set(u"COMPUTERNAME", name);
}

void OfflineSystem::AddProgramFolders(Variables& variables, bool wide) {
  const KeyRef key{RootKey::LocalMachine, kWindowsKey, View::Bits64};
  const auto text = [&](UnicodeView name, UnicodeView fallback) {
    return Either(variables.Expand(RegistryText(registry_, key, name)),
                  Drive() + UnicodeString(fallback));
  };
  const UnicodeString programs = text(u"ProgramFilesDir", u"\\Program Files");
  const UnicodeString common = text(u"CommonFilesDir", u"\\Program Files\\Common Files");
  variables.Set(u"ProgramFiles", programs);
  variables.Set(u"CommonProgramFiles", common);
  if (!installation_.is64Bit) return;
  const UnicodeString programs86 = text(u"ProgramFilesDir (x86)", u"\\Program Files (x86)");
  const UnicodeString common86 =
      text(u"CommonFilesDir (x86)", u"\\Program Files (x86)\\Common Files");
  variables.Set(u"ProgramFiles(x86)", programs86);
  variables.Set(u"CommonProgramFiles(x86)", common86);
  if (installation_.IsWindows7OrLater()) {
    variables.Set(u"ProgramW6432", programs);
    variables.Set(u"CommonProgramW6432", common);
  }
  if (wide) return;
  variables.Set(u"ProgramFiles", programs86);
  variables.Set(u"CommonProgramFiles", common86);
}

void OfflineSystem::AddUserFolders(Variables& variables) {
  variables.Set(u"USERPROFILE", user_->folder);
  const KeyRef key{RootKey::CurrentUser, kShellFolders};
  const auto add = [&](UnicodeView variable, UnicodeView value, UnicodeView fallback) {
    variables.Set(variable, variables.Expand(Either(RegistryText(registry_, key, value),
                                                    user_->folder + UnicodeString(fallback))));
  };
  if (HasVistaFolders()) {
    add(u"APPDATA", u"AppData", u"\\AppData\\Roaming");
    add(u"LOCALAPPDATA", u"Local AppData", u"\\AppData\\Local");
  } else {
    add(u"APPDATA", u"AppData", u"\\Application Data");
  }
}

void OfflineSystem::AddKey(Variables& variables, const KeyRef& key, bool appendPath) {
  std::vector<RegValue> values;
  registry_.EnumValues(key, values);
  // Plain texts come before those that may refer to them.
  for (const std::uint32_t type : {REGT_SZ, REGT_EXPAND_SZ}) {
    for (const RegValue& value : values) {
      if (value.type != type || value.name.empty()) continue;
      UnicodeString text = TextOf(value);
      if (type == REGT_EXPAND_SZ) text = variables.Expand(text);
      const UnicodeString* const before = variables.Get(value.name);
      if (appendPath && before != nullptr && SameText(value.name, u"Path")) {
        text = *before + u";" + text;
      }
      variables.Set(value.name, text);
    }
  }
}

}  // namespace scrubwell::offline
