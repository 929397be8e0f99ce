// A small Windows that is cleaned and put back in the tests.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "backends/offline/clean_session.h"
#include "backends/offline/disk.h"
#include "support/disk.h"

namespace scrubwell::test {

inline constexpr UnicodeView kCleanSid = u"S-1-5-21-1-2-3-1001";

/// Every file below a folder with its content; hives as the text of their trees, with the keys'
/// times where asked for, and what is unsound in them.
std::map<std::string, std::string> ContentOf(const std::string& folder, bool times = false);

/// Disk and backup folder.
class CleanWorld : public Disk {
 public:
  CleanWorld();
  [[nodiscard]] CleanOptions Options() const;
  [[nodiscard]] std::string Backups() const { return backups_.Path().string(); }
  [[nodiscard]] std::map<std::string, std::string> Content(bool times = false) const {
    return ContentOf(Folder(), times);
  }

 private:
  TempFolder backups_;
};

/// Keys, values, a mapped and an unmapped INI entry, a task, a file, a copy, under two problems.
void ChangeAll(CleanSession& session);

/// Opens, changes all and commits.
CommitResult CleanAll(const CleanWorld& world, offline::IDisk* disk = nullptr);

}  // namespace scrubwell::test
