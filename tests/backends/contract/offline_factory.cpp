#include <filesystem>
#include <fstream>

#include "backends/common/access_check.h"
#include "backends/offline/clean_session.h"
#include "contract.h"
#include "support/disk.h"

namespace scrubwell::test {

namespace {

// The offline backend keeps what it opened, so the disk must outlive it.
class OfflineWorldOfText final : public ContractWorld {
 public:
  OfflineWorldOfText(const ContractText& text, bool changes) {
    const std::string sid(text.userSid.begin(), text.userSid.end());
    disk_.Registry(text.registry, text.userSid);
    disk_.Registry(
        R"([HKEY_LOCAL_MACHINE\SYSTEM\Select]
"Current"=dword:1
[HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control\Session Manager\Environment]
"PROCESSOR_ARCHITECTURE"="AMD64"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion]
"CurrentBuildNumber"="19045"
"SystemRoot"="C:\\Windows"
[HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion\ProfileList\)" +
            sid + "]\n\"ProfileImagePath\"=\"C:\\\\Users\\\\tester\"\n",
        text.userSid);
    AddFiles(text.files);
    Guard(text.guarded);
    disk_.WriteHives("Windows", "Users/tester", text.userSid);
    if (changes) {
      Change();
      return;
    }
    OfflineOpenResult opened = OfflineBackend::Open({disk_.Folder(), {}, {}});
    if (opened.backend == nullptr) throw std::runtime_error(opened.error);
    backend_ = std::move(opened.backend);
  }
  IRegistry& Registry() override { return Platform().registry; }
  IFiles& Files() override { return Platform().files; }

 private:
  TPlatform& Platform() {
    return session_ != nullptr ? session_->Backend().Platform() : backend_->Platform();
  }
  void Guard(const std::u16string& place) {
    const std::u16string mount = u"HKLM\\SOFTWARE";
    const AccessEntry entries[] = {{false, 0, kRightDelete, u"S-1-1-0"},
                                   {true, 0, kKeyAllAccess, u"S-1-5-32-544"}};
    regf::HiveBuilder& hive = disk_.Hive(mount);
    const auto key = hive.CreatePath(hive.Root(), place.substr(mount.size() + 1));
    hive.SetSecurity(key, BuildDescriptor(u"S-1-5-18", entries));
  }
  // What changes is never written: it is the answers from then on that count.
  void Change() {
    CleanOpenResult opened = CleanSession::Open({{disk_.Folder(), {}, {}}, {}, true});
    if (opened.session == nullptr) throw std::runtime_error(opened.error);
    session_ = std::move(opened.session);
    session_->BeginRound();
  }
  void AddFiles(const std::string& text) {
    for (std::size_t from = 0; from < text.size();) {
      const std::size_t end = std::min(text.find('\n', from), text.size());
      const std::string line = text.substr(from, end - from);
      from = end + 1;
      if (line.size() < 4) continue;
      const std::size_t bar = line.find(" | ");
      std::string path = line.substr(3, bar == line.npos ? bar : bar - 3);
      std::replace(path.begin(), path.end(), '\\', '/');
      const std::string option = bar == line.npos ? "" : line.substr(bar + 3);
      std::string content(1, '\0');
      if (option.starts_with("size=")) content.assign(std::stoul(option.substr(5)), '\0');
      if (option.starts_with("text=")) content = option.substr(5);
      disk_.Add(path, content);
    }
  }

  Disk disk_;
  std::unique_ptr<OfflineBackend> backend_;
  std::unique_ptr<CleanSession> session_;
};

std::unique_ptr<ContractWorld> Make(const ContractText& text) {
  return std::make_unique<OfflineWorldOfText>(text, false);
}

std::unique_ptr<ContractWorld> MakeChanged(const ContractText& text) {
  return std::make_unique<OfflineWorldOfText>(text, true);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Offline, BackendContract,
                         testing::Values(ContractBackend{"offline", false, Make},
                                         ContractBackend{"offline, changed", true, MakeChanged}));

}  // namespace scrubwell::test
