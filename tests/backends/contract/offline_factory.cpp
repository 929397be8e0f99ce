#include <filesystem>
#include <fstream>

#include "backends/offline/offline_backend.h"
#include "contract.h"
#include "support/disk.h"

namespace scrubwell::test {

namespace {

// The offline backend keeps what it opened, so the disk must outlive it.
class OfflineWorldOfText final : public ContractWorld {
 public:
  explicit OfflineWorldOfText(const ContractText& text) {
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
    disk_.WriteHives("Windows", "Users/tester", text.userSid);
    OfflineOpenResult opened = OfflineBackend::Open({disk_.Folder(), {}, {}});
    if (opened.backend == nullptr) throw std::runtime_error(opened.error);
    backend_ = std::move(opened.backend);
  }
  IRegistry& Registry() override { return backend_->Platform().registry; }
  IFiles& Files() override { return backend_->Platform().files; }

 private:
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
};

std::unique_ptr<ContractWorld> Make(const ContractText& text) {
  return std::make_unique<OfflineWorldOfText>(text);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Offline, BackendContract,
                         testing::Values(ContractBackend{"offline", false, Make}));

}  // namespace scrubwell::test
