// A whole installation whose SOFTWARE hive is the input: scanned, searched, cleaned, put back and
// looked at for something to recover. What that takes has to stand in proportion to the input.
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <new>

#include "backends/common/local_file.h"
#include "formats/regf/dump.h"
#include "formats/regf/hive_builder.h"
#include "hosts/cli/program.h"
#include "require.h"

namespace {

std::size_t held = 0;
std::size_t most = 0;

}  // namespace

void* operator new(std::size_t size) {
  void* const place = std::malloc(size);
  if (place == nullptr) throw std::bad_alloc();
  held += ::malloc_usable_size(place);
  most = std::max(most, held);
  return place;
}
void operator delete(void* place) noexcept {
  held -= place == nullptr ? 0 : ::malloc_usable_size(place);
  std::free(place);
}
void operator delete(void* place, std::size_t) noexcept {
  operator delete(place);
}

namespace {

using namespace scrubwell;
namespace fs = std::filesystem;

const std::string& Place() {
  static const std::string folder = [] {
    std::string name = (fs::temp_directory_path() / "installation-XXXXXX").string();
    Require(::mkdtemp(name.data()) != nullptr);
    fs::create_directories(name + "/C/Windows/System32/config");
    // Reports are made, and nobody reads them.
    Require(std::freopen("/dev/null", "w", stdout) != nullptr);
    Require(std::freopen("/dev/null", "w", stderr) != nullptr);
    return name;
  }();
  return folder;
}

void Store(const std::string& name, const Bytes& content) {
  std::FILE* const file = std::fopen((Place() + name).c_str(), "wb");
  Require(file != nullptr &&
          std::fwrite(content.data(), 1, content.size(), file) == content.size());
  std::fclose(file);
}

Bytes System() {
  regf::HiveBuilder builder;
  builder.SetNumber(builder.CreatePath(builder.Root(), u"Select"), u"Current", 1);
  builder.CreatePath(builder.Root(), u"ControlSet001\\Control");
  return builder.Build();
}

int Run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "scrubwell");
  arguments.insert(arguments.end(), {"--windows", Place() + "/C"});
  return hosts::RunProgram(arguments);
}

std::string TreeOf(const Bytes& hive) {
  const regf::OpenedHive opened = regf::Hive::FromBytes(hive, "SOFTWARE");
  return opened.hive ? regf::DumpTree(*opened.hive, {.times = true}) : opened.error;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  constexpr const char* kSoftware = "/C/Windows/System32/config/SOFTWARE";
  Bytes hive(bytes, bytes + size);
  if (size < regf::BaseBlockSize) return 0;
  regf::Put32(hive, regf::base::Secondary, regf::Get32(hive, regf::base::Primary));
  regf::Put32(hive, regf::base::Checksum, regf::BaseBlockChecksum(hive));
  const std::string backups = Place() + "/backups";
  fs::remove_all(backups);
  Store("/C/Windows/System32/config/SYSTEM", System());
  Store(kSoftware, hive);
  const std::size_t before = most = held;
  const std::clock_t begin = std::clock();
  Run({"scan", "--format", "json"});
  Run({"reg", "find", "x"});
  Run({"clean", "--all", "--yes", "--backup", backups});
  const bool isUndone = Run({"undo", "--backup", backups}) == 0;
  Run({"recover", "--backup", backups});
  const auto seconds = static_cast<std::size_t>((std::clock() - begin) / CLOCKS_PER_SEC);
  Require(most - before <= (std::size_t{96} << 20U) + 64 * size);
  Require(seconds <= 10 + size / 100'000);
  Bytes after;
  Require(ReadLocalFile(Place() + kSoftware, after));
  Require(!isUndone || TreeOf(after) == TreeOf(hive));
  return 0;
}
