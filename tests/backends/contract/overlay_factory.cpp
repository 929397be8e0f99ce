// Changes that are held back must look like changes that were made.
#include "backends/common/overlay_files.h"
#include "contract.h"
#include "support/overlay.h"

namespace scrubwell::test {

namespace {

class OverlayWorldOfText final : public ContractWorld {
 public:
  explicit OverlayWorldOfText(const ContractText& text) {
    EXPECT_EQ(base_.AddRegistry(text.registry), "");
    EXPECT_EQ(base_.AddFiles(text.files), "");
    base_.DenyDelete(text.guarded);
    before_ = base_.DumpRegistry();
  }
  // Nothing of it reaches what is beneath.
  ~OverlayWorldOfText() override { EXPECT_EQ(base_.DumpRegistry(), before_); }
  IRegistry& Registry() override { return overlay_.registry; }
  IFiles& Files() override { return overlay_.files; }

 private:
  MemoryBackend base_;
  OverlayOfMemory overlay_{base_};
  std::string before_;
};

std::unique_ptr<ContractWorld> Make(const ContractText& text) {
  return std::make_unique<OverlayWorldOfText>(text);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Overlay, BackendContract,
                         testing::Values(ContractBackend{"overlay", true, Make}));

}  // namespace scrubwell::test
