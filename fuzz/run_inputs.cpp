// Stands in for libFuzzer: runs every file given, and every file in each folder given, once.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

int g_inputs = 0;

void Run(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<char> text((std::istreambuf_iterator<char>(in)), {});
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  ++g_inputs;
}

}  // namespace

int main(int count, char** arguments) {
  for (int i = 1; i < count; ++i) {
    const std::filesystem::path path = arguments[i];
    if (!std::filesystem::is_directory(path)) {
      Run(path);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(path)) Run(entry.path());
  }
  std::printf("%d inputs\n", g_inputs);
  return g_inputs > 0 ? 0 : 1;
}
