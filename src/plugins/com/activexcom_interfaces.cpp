// The checks of one interface and of one type library.
#include "plugins/com/Rcp_activexcom.h"
#include "plugins/com/activexcom_kinds.h"
#include "registry/Stringhelper.h"

namespace scrubwell {

using namespace activexcom;
using namespace classes;

namespace {

constexpr std::array<UnicodeView, 3> kStubs{u"ProxyStubClsid", u"ProxyStubClsid32",
                                            u"OLEViewerIViewerCLSID"};

struct Reference {
  UnicodeView subkey;
  UnicodeView target;  // where the key is that the subkey's default value names
  Kind kind;
};
// A missing viewer class is deliberately reported twice: as a stub and, with the texts of a type
// library, as a reference.
constexpr std::array<Reference, 4> kReferences{{
    {u"BaseInterface", u"Interface", kInterfaceMissingInterface},
    {u"SynchronousInterface", u"Interface", kInterfaceMissingInterface},
    {u"TypeLib", u"TypeLib", kInterfaceMissingTypeLib},
    {u"OLEViewerIViewerCLSID", u"CLSID", kInterfaceMissingTypeLib},
}};

// Decimal locale numbers of up to three digits; the forms with hexadecimal letters are passed over.
bool IsLanguageSubkey(UnicodeView name) {
  constexpr std::int32_t none = 1000;
  return name.size() < 4 && StrToIntDef(name, none) < none;
}

UnicodeString Joined(UnicodeView a, UnicodeView b) {
  return UnicodeString(a).append(u"\\").append(b);
}

}  // namespace

void TRCPActiveXCOM::Check_Interface(UnicodeView iid, const TCaption& caption, TZmRegOptions opts) {
  if (IgnoredCLSIDs->Contains(UpperCase(iid))) return;
  const ClassOwner owner(Joined(u"Interface", iid), caption, opts);
  Check_Interface_Stubs(owner);
  Check_Interface_References(owner);
}

void TRCPActiveXCOM::Check_Interface_Stubs(const ClassOwner& owner) {
  for (const UnicodeView stub : kStubs) {
    if (!owner.subkeys.Has(stub)) continue;
    const UnicodeString key = Joined(owner.key, stub);
    const UnicodeString value = DefaultText(key, owner.opts);
    const UnicodeView id = Trim(value);
    if (id.empty()) continue;
    const UnicodeString upper = UpperCase(id);
    if (IgnoredCLSIDs->Contains(upper) || IgnoredLinkedCLSIDs->Contains(upper)) continue;
    const UnicodeString missing = Joined(u"CLSID", id);
    if (ExistsInAnyView(missing, owner.opts)) continue;
    AddError(kInterfaceMissingClass,
             {UnicodeString(u"stubtype:").append(stub), ExistingKey(key, owner.opts),
              CaptionItem(owner.caption), MissingKey(missing)});
  }
}

void TRCPActiveXCOM::Check_Interface_References(const ClassOwner& owner) {
  for (const Reference& reference : kReferences) {
    if (!owner.subkeys.Has(reference.subkey)) continue;
    const UnicodeString key = Joined(owner.key, reference.subkey);
    const UnicodeString value = DefaultText(key, owner.opts);
    const UnicodeView id = Trim(value);
    // The root of all interfaces is sometimes written by its name.
    if (id.empty() || SameText(id, u"iunknown")) continue;
    const UnicodeString missing = Joined(reference.target, id);
    if (ExistsInAnyView(missing, owner.opts)) continue;
    AddError(reference.kind,
             {ExistingKey(key, owner.opts), CaptionItem(owner.caption), MissingKey(missing)});
  }
}

void TRCPActiveXCOM::Check_TypeLib(UnicodeView libid, TZmRegOptions opts) {
  // Deliberately the table of classes, not the one of type libraries.
  if (IgnoredCLSIDs->Contains(UpperCase(libid))) return;
  const UnicodeString libraryKey = Joined(u"TypeLib", libid);
  TStringList versions;
  TStringList subkeys;
  EnumRegKeysEx(HKEY_CLASSES_ROOT, libraryKey, versions, opts);
  for (const UnicodeString& version : versions) {
    const UnicodeString versionKey = Joined(libraryKey, version);
    const TCaption caption([&] {
      const UnicodeString given = DefaultText(versionKey, opts);
      return UnicodeString(Trim(given).empty() ? libid : Trim(given));
    });
    EnumRegKeysEx(HKEY_CLASSES_ROOT, versionKey, subkeys, opts);
    for (const UnicodeString& subkey : subkeys) {
      if (IsLanguageSubkey(subkey))
        Check_TypeLib_Language(versionKey, subkey, caption, opts);
      else if (SameText(subkey, u"HELPDIR"))
        Check_TypeLib_HelpDir(versionKey, caption, opts);
    }
  }
}

void TRCPActiveXCOM::Check_TypeLib_Language(const UnicodeString& versionKey, UnicodeView language,
                                            const TCaption& caption, TZmRegOptions opts) {
  const UnicodeString subkey = Joined(language, u"win32");
  const UnicodeString key = Joined(versionKey, subkey);
  const std::optional<UnicodeString> value = ReadText(key, u"", opts);
  if (!value) return;
  const UnicodeView file = Trim(*value);
  const bool wrong = file.empty() ? KeyEmptyEx(HKEY_CLASSES_ROOT, key, opts) : !FindTypeLib(file);
  if (!wrong) return;
  TStringList data = {ExistingKey(key, opts),
                      u"subkey:" + Joined(ParamX(versionKey, u'\\', 3), subkey),
                      CaptionItem(caption)};
  if (!file.empty()) data.push_back(UnicodeString(u"missingfile:").append(file));
  AddError(file.empty() ? kTypeLibEmpty : kTypeLibMissingFile, data);
}

void TRCPActiveXCOM::Check_TypeLib_HelpDir(const UnicodeString& versionKey, const TCaption& caption,
                                           TZmRegOptions opts) {
  constexpr UnicodeView subkey = u"HELPDIR";
  const UnicodeString key = Joined(versionKey, subkey);
  const UnicodeString value = DefaultText(key, opts);
  const UnicodeView folder = Trim(value);
  // "[?" begins a path that an installer has still to fill in.
  const bool wrong = folder.empty()
                         ? KeyEmptyEx(HKEY_CLASSES_ROOT, key, opts)
                         : !folder.starts_with(u"[?") && FileIsOnFixedDrive(folder, false) &&
                               !FileOrDirExistsEx(folder);
  if (!wrong) return;
  TStringList data = {ExistingKey(key, opts),
                      u"subkey:" + Joined(ParamX(versionKey, u'\\', 3), subkey),
                      CaptionItem(caption)};
  if (!folder.empty()) data.push_back(UnicodeString(u"missingfile:").append(folder));
  AddError(folder.empty() ? kTypeLibEmptyHelp : kTypeLibMissingFolder, data);
}

}  // namespace scrubwell
