// Stands in for libFuzzer:
//
//   fuzz_X --for MILLISECONDS     runs the seeds, then changed ones, always in the same order
//   fuzz_X FILE...                runs these inputs, or all in these folders
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "seeds.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;
using scrubwell::Bytes;

// Which input was running, for who wants to see it again.
volatile std::sig_atomic_t g_input = 0;

void SayWhich(int signal) {
  // Nothing is left to be done but to tell, so the rules for signal handlers are stretched.
  std::fprintf(stderr, "input %d of target " FUZZ_TARGET " broke it\n", static_cast<int>(g_input));
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void Run(const Bytes& input) {
  LLVMFuzzerTestOneInput(input.data(), input.size());
  g_input = g_input + 1;
}

void RunFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  Run(Bytes(std::istreambuf_iterator<char>(in), {}));
}

/// A few of the bytes changed, cut, doubled or moved.
Bytes Change(Bytes bytes, std::mt19937& random) {
  constexpr std::uint8_t kEdges[] = {0, 1, 0x7F, 0x80, 0xFE, 0xFF, '"', '\\', '%', ','};
  for (unsigned times = random() % 4 + 1; times > 0 && !bytes.empty(); --times) {
    const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(random() % bytes.size());
    const auto length = static_cast<std::ptrdiff_t>(
        std::min<std::size_t>(random() % 16, static_cast<std::size_t>(bytes.end() - at)));
    const Bytes part(at, at + length);
    const auto what = random() % 6;
    if (what == 0) *at = static_cast<std::uint8_t>(random());
    if (what == 1) *at = kEdges[random() % std::size(kEdges)];
    if (what == 2) *at = static_cast<std::uint8_t>(*at ^ (1U << random() % 8));
    if (what == 3) bytes.erase(at, at + length);
    if (what == 4) bytes.insert(at, part.begin(), part.end());
    if (what == 5 && random() % 8 == 0) bytes.erase(at, bytes.end());
  }
  return bytes;
}

void RunFor(const std::vector<Bytes>& seeds, std::chrono::milliseconds time) {
  if (seeds.empty()) return;
  const auto end = std::chrono::steady_clock::now() + time;
  for (const Bytes& seed : seeds) Run(seed);
  std::mt19937 random(1);
  while (std::chrono::steady_clock::now() < end)
    Run(Change(seeds[random() % seeds.size()], random));
}

}  // namespace

int main(int count, char** arguments) {
  for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS}) std::signal(signal, &SayWhich);
  if (count == 3 && std::strcmp(arguments[1], "--for") == 0) {
    RunFor(scrubwell::fuzz::SeedsOf(FUZZ_TARGET, FUZZ_SAMPLES),
           std::chrono::milliseconds(std::stoi(arguments[2])));
  } else {
    for (int i = 1; i < count; ++i) {
      if (!fs::is_directory(arguments[i])) RunFile(arguments[i]);
      std::error_code none;
      for (const auto& entry : fs::directory_iterator(arguments[i], none)) RunFile(entry.path());
    }
  }
  std::printf("%d inputs\n", static_cast<int>(g_input));
  return g_input > 0 ? 0 : 1;
}
