// INI entries, tasks, firewall and browser history whose changes are held back: every answer shows
// them as made, while what is beneath stays as it is.
#pragma once

#include <unordered_set>

#include "backends/common/ini_profiles.h"
#include "backends/common/overlay_files.h"

namespace scrubwell {

/// The system itself answers for what nothing is planned for. Changes become those of the registry
/// or of the file's bytes, which is how they are shown and undone.
class OverlayProfiles final : public IProfiles {
 public:
  OverlayProfiles(IProfiles& base, OverlayFiles& files, IRegistry& registry, ITextServices& text,
                  UnicodeString windowsDir)
      : base_(base),
        files_(files),
        windowsDir_(std::move(windowsDir)),
        edited_(registry, files, text, windowsDir_) {}
  Status Get(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeString& out) override;
  Status Put(UnicodeView file, UnicodeView section, UnicodeView key, UnicodeView value) override;
  Status Remove(UnicodeView file, UnicodeView section, UnicodeView key) override;
  Status Entries(UnicodeView file, UnicodeView section, TStringList& out) override;

 private:
  IProfiles& For(UnicodeView file);
  Status Change(UnicodeView file, UnicodeView section, UnicodeView key, Status status);

  IProfiles& base_;
  OverlayFiles& files_;
  UnicodeString windowsDir_;
  IniProfiles edited_;
  std::unordered_set<UnicodeString> changed_;  // upper-cased file names as they were given
};

class OverlayTasks final : public ITasks {
 public:
  OverlayTasks(ITasks& base, IPlan& plan) : base_(base), plan_(plan) {}
  Status Connect() override { return base_.Connect(); }
  Status Names(TStringList& out) override;
  Status Application(UnicodeView job, UnicodeString& out) override;
  Status Remove(UnicodeView job) override;

 private:
  ITasks& base_;
  IPlan& plan_;
  std::unordered_set<UnicodeString> removed_;  // upper-cased
};

class OverlayFirewall final : public IFirewall {
 public:
  OverlayFirewall(IFirewall& base, IPlan& plan) : base_(base), plan_(plan) {}
  Status Connect() override { return base_.Connect(); }
  Status Applications(std::vector<FirewallApplication>& out) override;
  Status Remove(UnicodeView imageFile) override;
  /// Denied: it is a means of removing an entry, which is never in want of it here.
  Status SetEnabled(UnicodeView imageFile, bool enabled) override;

 private:
  IFirewall& base_;
  IPlan& plan_;
  std::unordered_set<UnicodeString> removed_;  // upper-cased
};

class OverlayBrowser final : public IBrowserHistory {
 public:
  OverlayBrowser(IBrowserHistory& base, IPlan& plan) : base_(base), plan_(plan) {}
  int BrowserVersion() override { return base_.BrowserVersion(); }
  Status Urls(TStringList& out) override;
  Status QueryUrl(UnicodeView url) override;
  Status RemoveUrl(UnicodeView url) override;
  Status CacheNames(TStringList& out) override;

 private:
  IBrowserHistory& base_;
  IPlan& plan_;
  std::unordered_set<UnicodeString> removed_;
};

}  // namespace scrubwell
