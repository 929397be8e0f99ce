#include "backends/common/ini_profiles.h"

#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell {
namespace {

constexpr UnicodeView kMappings =
    u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\IniFileMapping\\";

UnicodeString TextOf(const RegValue& value) {
  return IsTextType(value.type) ? RegValueText(value) : UnicodeString();
}

bool TakeText(UnicodeView& text, UnicodeView prefix) {
  if (!SameText(text.substr(0, prefix.size()), prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// The root that a mapping's target names; None when it is none that we know.
RootKey TakeRoot(UnicodeView& text, UnicodeView& prefix) {
  if (TakeText(text, u"USR:")) return RootKey::CurrentUser;
  if (TakeText(text, u"SYS:")) return prefix = u"SOFTWARE\\", RootKey::LocalMachine;
  if (TakeText(text, u"\\Registry\\Machine\\")) return RootKey::LocalMachine;
  if (TakeText(text, u"\\Registry\\User\\")) return RootKey::Users;
  return RootKey::None;
}

}  // namespace

// A mapping's text: flags ("!" writes both, "#" copies at the first logon, "@" keeps the file out),
// then the root, then the key.
Status IniProfiles::ReadMapping(const UnicodeString& place, UnicodeView value, UnicodeView below,
                                Mapping& out) {
  RegValue stored;
  const Status status = registry_.GetValue({RootKey::LocalMachine, place}, value, stored);
  if (status != Status::Ok) return status;
  const UnicodeString whole = TextOf(stored);
  UnicodeView text = whole;
  out = {};
  while (!text.empty() && UnicodeView(u"!#@").find(text.front()) != UnicodeView::npos) {
    if (text.front() == u'@') out.fileToo = false;
    if (text.front() == u'!') out.both = true;
    text.remove_prefix(1);
  }
  UnicodeView prefix;
  out.root = TakeRoot(text, prefix);
  if (out.root == RootKey::None) return Status::Absent;
  out.path = UnicodeString(prefix) + UnicodeString(text);
  if (!below.empty()) out.path += u"\\" + UnicodeString(below);
  out.mapped = true;
  return Status::Ok;
}

Status IniProfiles::FindMapping(UnicodeView file, UnicodeView section, UnicodeView key,
                                Mapping& out) {
  out = {};
  // A file in another folder is never mapped.
  const UnicodeView folder = ExtractFilePath(file);
  if (!folder.empty() && !SameText(folder, windowsDir_)) return Status::Ok;
  const UnicodeString place = UnicodeString(kMappings) + UnicodeString(ExtractFileName(file));
  const UnicodeString sectionPlace = place + u"\\" + UnicodeString(section);
  Status status = Status::Absent;
  if (!key.empty()) status = ReadMapping(sectionPlace, key, {}, out);
  if (status == Status::Absent) status = ReadMapping(sectionPlace, {}, {}, out);
  if (status == Status::Absent) status = ReadMapping(place, section, {}, out);
  if (status == Status::Absent) status = ReadMapping(place, {}, section, out);
  return status == Status::Absent ? Status::Ok : status;
}

UnicodeString IniProfiles::FullName(UnicodeView file) const {
  return ExtractFilePath(file).empty() ? windowsDir_ + u"\\" + UnicodeString(file)
                                       : UnicodeString(file);
}

IniProfiles::Document& IniProfiles::Open(UnicodeView file) {
  const UnicodeString path = FullName(file);
  const auto [it, isNew] = documents_.try_emplace(UpperCase(path));
  Document& document = it->second;
  if (!isNew) return document;
  Bytes bytes;
  document.status = files_.Read(path, FsView::Physical, ini::kMaxFileSize, bytes);
  if (document.status != Status::Ok) return document;
  ini::Codec codec;
  codec.decode = [this](std::string_view text) { return text_.FromAnsi(text); };
  codec.encode = [this](UnicodeView text) { return text_.ToAnsi(text); };
  document.status = document.ini.Parse(bytes, std::move(codec));
  return document;
}

Status IniProfiles::Get(UnicodeView file, UnicodeView section, UnicodeView key,
                        UnicodeString& out) {
  Mapping mapping;
  if (const Status found = FindMapping(file, section, key, mapping); found != Status::Ok) {
    return found;
  }
  if (mapping.mapped) {
    RegValue value;
    const Status status = registry_.GetValue({mapping.root, mapping.path}, key, value);
    if (status == Status::Ok) {
      // A number or the like is no empty text.
      if (!IsTextType(value.type)) return Status::Unknown;
      return out = TextOf(value), Status::Ok;
    }
    if (status != Status::Absent || !mapping.fileToo) return status;
  }
  const Document& document = Open(file);
  return document.status != Status::Ok ? document.status : document.ini.Get(section, key, out);
}

Status IniProfiles::Entries(UnicodeView file, UnicodeView section, TStringList& out) {
  out.clear();
  Mapping mapping;
  if (const Status found = FindMapping(file, section, {}, mapping); found != Status::Ok) {
    return found;
  }
  if (mapping.mapped) {
    std::vector<RegValue> values;
    const Status status = registry_.EnumValues({mapping.root, mapping.path}, values);
    for (const RegValue& value : values) {
      if (!value.name.empty()) out.push_back(value.name);
    }
    if (status != Status::Absent || !mapping.fileToo) return status;
  }
  const Document& document = Open(file);
  return document.status != Status::Ok ? document.status : document.ini.Entries(section, out);
}

Status IniProfiles::Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) {
  const auto inRegistry = [&](const KeyRef& place, const RegValue& old) {
    const std::uint32_t type = old.type == REGT_EXPAND_SZ ? REGT_EXPAND_SZ : REGT_SZ;
    return registry_.SetValue(place, {UnicodeString(key), type, TextData(value)});
  };
  return Change(file, section, key, inRegistry,
                [&](ini::Document& document) { return document.Set(section, key, value); });
}

Status IniProfiles::Remove(UnicodeView file, UnicodeView section, UnicodeView key) {
  const auto inRegistry = [&](const KeyRef& place, const RegValue&) {
    return registry_.DeleteValue(place, key);
  };
  return Change(file, section, key, inRegistry,
                [&](ini::Document& document) { return document.Remove(section, key); });
}

Status IniProfiles::Change(UnicodeView file, UnicodeView section, UnicodeView key,
                           const RegistryEdit& inRegistry, const FileEdit& inFile) {
  Mapping mapping;
  if (const Status found = FindMapping(file, section, key, mapping); found != Status::Ok) {
    return found;
  }
  if (!mapping.mapped) return ChangeFile(file, inFile);
  const KeyRef place{mapping.root, mapping.path};
  RegValue old;
  Status status = registry_.GetValue(place, key, old);
  if (status == Status::Absent && mapping.fileToo) return ChangeFile(file, inFile);
  if (status == Status::Ok) status = inRegistry(place, old);
  if (status != Status::Ok || !mapping.both) return status;
  status = ChangeFile(file, inFile);
  return status == Status::Absent ? Status::Ok : status;
}

Status IniProfiles::ChangeFile(UnicodeView file, const FileEdit& edit) {
  Document& document = Open(file);
  if (document.status != Status::Ok) return document.status;
  ini::Document changed = document.ini;
  if (const Status status = edit(changed); status != Status::Ok) return status;
  const Status status = files_.Write(FullName(file), changed.Bytes());
  if (status == Status::Ok) document.ini = std::move(changed);
  return status;
}

}  // namespace scrubwell
