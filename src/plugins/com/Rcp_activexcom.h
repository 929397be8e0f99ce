// Registered COM components: class identifiers, interfaces and type libraries that refer to
// libraries, classes or programs which are no longer there.
#pragma once

#include "plugins/classes/class_checks.h"

namespace scrubwell {

class TRCPActiveXCOM : public TRCPClasses {
 public:
  TRCPActiveXCOM();
  /// Always true: what has another shape than its kind implies is left alone and counts as done.
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

  /// Adds a problem, unless its key can't be deleted with the current rights: what could not be
  /// repaired is never shown.
  void AddError(std::int32_t kind, const TStringList& data);
  void Check_CLSID(UnicodeView clsid, const classes::TCaption& caption, TZmRegOptions opts);
  void Check_Interface(UnicodeView iid, const classes::TCaption& caption, TZmRegOptions opts);
  void Check_TypeLib(UnicodeView libid, TZmRegOptions opts);

 protected:
  void Report(std::int32_t kind, const TStringList& data) override { AddError(kind, data); }

 private:
  struct CleanRule;

  bool ScanClasses(const TStringList& names, TZmRegOptions opts);
  bool ScanInterfaces(const TStringList& names, TZmRegOptions opts);
  bool ScanTypeLibs(const TStringList& names, TZmRegOptions opts);

  void Check_CLSID_Servers(const ClassOwner& owner);
  void Check_CLSID_ProgID(const ClassOwner& owner);
  void Check_CLSID_Shell(const ClassOwner& owner) { CheckVerbs(owner); }
  void Check_CLSID_ShellEx(const ClassOwner& owner) { CheckHandlers(owner); }
  void Check_CLSID_DefaultIcon(const ClassOwner& owner) { CheckIcon(owner); }
  void Check_CLSID_TypeLib(const ClassOwner& owner);
  void Check_CLSID_AppID(const ClassOwner& owner);
  void Check_CLSID_ToolboxBitmap(const ClassOwner& owner);
  void Check_CLSID_PersistentHandler(const ClassOwner& owner);
  void Check_CLSID_AutoConvertTo(const ClassOwner& owner) {
    Check_CLSID_Replacement(owner, u"AutoConvertTo");
  }
  void Check_CLSID_TreatAs(const ClassOwner& owner) { Check_CLSID_Replacement(owner, u"TreatAs"); }
  void Check_CLSID_Replacement(const ClassOwner& owner, const UnicodeString& subkey);
  void ReportEmptyKey(const ClassOwner& owner, const UnicodeString& subkey);

  void Check_Interface_Stubs(const ClassOwner& owner);
  void Check_Interface_References(const ClassOwner& owner);
  void Check_TypeLib_Language(const UnicodeString& versionKey, UnicodeView language,
                              const classes::TCaption& caption, TZmRegOptions opts);
  void Check_TypeLib_HelpDir(const UnicodeString& versionKey, const classes::TCaption& caption,
                             TZmRegOptions opts);

  // Upward steps, each only for a path of the classes root that has the right number of parts.
  void Clean_Handler(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_CLSID(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_CLSID_Shell(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_CLSID_Shell_Verb(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_TypeLib(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_TypeLib_Version(RootKey root, UnicodeView path, TZmRegOptions opts);
  void Clean_TypeLib_Version_SubKey(RootKey root, UnicodeView path, TZmRegOptions opts);

  // The names below one area's root, by view. The 64-bit ones stay empty where there is one view.
  struct Area {
    TStringList names;
    TStringList names64;
  };
  Area FClasses;
  Area FInterfaces;
  Area FTypeLibs;
};

}  // namespace scrubwell
