// The browser's address history and cache index on the running system.
#pragma once

#include <map>
#include <string>

#include "backends/windows/com.h"

// After the general header.
#include <urlhist.h>

namespace scrubwell::windows {

ComFactory<IUrlHistoryStg2> SystemUrlHistory();

/// All that is kept of a visited address, by name: the cache index's entries under theirs, with
/// times, kind and header, and the title that the history has under none.
using UrlFacts = std::map<std::string, Bytes>;

/// Where the history object has no answer, the visited names of the cache index stand in: they are
/// what it is made of.
class WindowsBrowser final : public IBrowserHistory {
 public:
  WindowsBrowser(bool mayChange, IRegistry& registry, ComFactory<IUrlHistoryStg2> create)
      : mayChange_(mayChange), registry_(registry), create_(std::move(create)) {}
  int BrowserVersion() override;
  Status Urls(TStringList& out) override;
  Status QueryUrl(UnicodeView url) override;
  Status RemoveUrl(UnicodeView url) override;
  Status CacheNames(TStringList& out) override;

  /// Absent when the address is nowhere.
  Status Save(UnicodeView url, UrlFacts& out);
  Status Restore(UnicodeView url, const UrlFacts& facts);

 private:
  bool Connect();

  bool mayChange_;
  IRegistry& registry_;
  ComFactory<IUrlHistoryStg2> create_;
  ComPtr<IUrlHistoryStg2> history_;
};

}  // namespace scrubwell::windows
