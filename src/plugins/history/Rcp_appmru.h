// Lists of recently used files in the registry: the Open and Save dialogs, programs that number
// their entries, empty open-with keys, and the local files among the browser's visited addresses.
#pragma once

#include "framework/Rc_baseplugin.h"
#include "registry/Iecache.h"
#include "registry/Zmtracecleaner.h"

namespace scrubwell {

enum TMRUType : std::int32_t { mruNumbered = 2 };

/// A program's list whose value names are a text and a decimal number behind it.
struct TMRUList {
  std::int32_t Reserved = 0;
  TMRUType Type = mruNumbered;
  RootKey Root = RootKey::CurrentUser;
  UnicodeView Key;
  UnicodeView ValueName;
};
std::span<const TMRUList> MRULists();

class TRCPAppMRU : public TRCPlugin {
 public:
  TRCPAppMRU();
  /// Always true. Addresses stay in the browser's cache: deliberately nothing is changed for them.
  bool CleanError(const TSweepError& error) override;
  void Init() override;
  void Scan() override;

  void Check_History(UnicodeView fileName, UnicodeView valueName, UnicodeView keyPath);
  void OnIECacheEntry(TIECache& sender, const UnicodeString& entry);

 private:
  void ReadOpenSaveLists();
  void ReadNumberedLists();
  void NoteForRepair(RootKey root, const UnicodeString& key, const UnicodeString& valueName,
                     UnicodeView target);
  void RepairAfterLast();
  void AddEntries(const UnicodeString& key, const std::function<bool(UnicodeView)>& isEntry);

  TStringList FKeyPaths;
  TStringList FValueNames;
  TStringList FValueData;
  TStringList FFileExts;
  TStringList FCacheFiles;
  std::vector<TTracePlugin*> FToRepair;
};

}  // namespace scrubwell
