#include "backends/memory/memory_backend.h"
#include "contract.h"

namespace scrubwell::test {

namespace {

class MemoryWorldOfText final : public ContractWorld {
 public:
  explicit MemoryWorldOfText(const ContractText& text) {
    EXPECT_EQ(backend_.AddRegistry(text.registry), "");
    EXPECT_EQ(backend_.AddFiles(text.files), "");
    backend_.DenyDelete(text.guarded);
  }
  IRegistry& Registry() override { return backend_.Platform().registry; }
  IFiles& Files() override { return backend_.Files(); }

 private:
  MemoryBackend backend_;
};

std::unique_ptr<ContractWorld> Make(const ContractText& text) {
  return std::make_unique<MemoryWorldOfText>(text);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, BackendContract,
                         testing::Values(ContractBackend{"memory", true, Make}));

}  // namespace scrubwell::test
