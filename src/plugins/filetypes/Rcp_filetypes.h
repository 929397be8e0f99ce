// File associations: extensions, the file types they name, applications, and what Explorer keeps
// for each extension, where they refer to things that are no longer there or hold nothing.
#pragma once

#include "plugins/classes/class_checks.h"
#include "registry/Hashlist.h"
#include "registry/Wildcards.h"

namespace scrubwell {

class TRCPFileTypes : public TRCPClasses {
 public:
  TRCPFileTypes();
  /// Always true: what has another shape than its kind implies is left alone and counts as done.
  /// Deletions override the rights of the keys they delete.
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

  void Check_Shell(UnicodeView key, const classes::TCaption& caption);
  /// The class that a key names in its subkey "CLSID", or in a value of that name.
  void Check_CLSID(const ClassOwner& owner, bool clsidIsSubkey);
  /// Reports an Explorer entry whose "Extension" value names no known file type. No step of the
  /// scan does this.
  void Check_Extension(UnicodeView key, const classes::TCaption& caption);

 private:
  struct CleanRule;

  bool ScanExtensions();
  bool ScanOtherKeys();
  void Check_ExtensionKey(const UnicodeString& name);
  void Check_MissingType(const UnicodeString& name, const UnicodeString& type);
  void Check_FileType(UnicodeView key, const classes::TCaption& caption);
  void Check_ShellEx(const ClassOwner& owner) { CheckHandlers(owner); }
  void Check_DefaultIcon(const ClassOwner& owner) { CheckIcon(owner); }
  void Check_IsEmpty(const UnicodeString& key);
  void Check_IsContentEmpty(const UnicodeString& key);
  void ReportEmpty(std::int32_t kind, RootKey root, const UnicodeString& key, UnicodeView caption);

  void Clean_ShellEx(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_FileType(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_FileType_Shell(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_FileType_Shell_Verb(RootKey root, UnicodeView path, TZmRegOptions opts);

  TStringList FRootKeys;
  TStringList FApplications;
  TStringList FSystemFileAssociations;
  TStringList FFileExts;
  TStringList FMimeTypes;
  THashList FCheckedTypes;  // lower-case
  TWildcardMatcher FExclusions;
};

}  // namespace scrubwell
