// The browser's address history of the chosen user.
#pragma once

#include <optional>
#include <unordered_set>

#include "backends/offline/offline_shell.h"

namespace scrubwell::offline {

/// What the address files of one user hold.
struct AddressIndex {
  Status status = Status::Unknown;
  TStringList visited;                          ///< names in the history's files
  TStringList cached;                           ///< names in the cache's file
  TStringList files;                            ///< the history's files that could be read
  std::unordered_set<UnicodeString> addresses;  ///< of the visited names
};

/// Reads the address files that the browser kept up to version 9. Later ones keep a database, which
/// is not read: the history is then Unknown.
class OfflineBrowser final : public IBrowserHistory {
 public:
  OfflineBrowser(IRegistry& registry, OfflineShell& shell, OfflineFiles& files, ITextServices& text,
                 INotes& notes)
      : registry_(registry), shell_(shell), files_(files), text_(text), notes_(notes) {}
  int BrowserVersion() override;
  Status Urls(TStringList& out) override;
  Status QueryUrl(UnicodeView url) override;
  Status RemoveUrl(UnicodeView url) override;
  Status CacheNames(TStringList& out) override;

 private:
  const AddressIndex& Load();
  void ReadFolder(UnicodeView folder, TStringList& names, AddressIndex& index);
  void ReadFile(UnicodeView file, TStringList& names, AddressIndex& index);

  IRegistry& registry_;
  OfflineShell& shell_;
  OfflineFiles& files_;
  ITextServices& text_;
  INotes& notes_;
  std::optional<AddressIndex> index_;
};

/// The address of a history name ("Visited: user@file:///C:/x"); empty when it has none.
UnicodeView AddressOfName(UnicodeView name);

}  // namespace scrubwell::offline
