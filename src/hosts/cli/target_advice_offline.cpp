#include <array>
#include <filesystem>
#include <fstream>
#include <utility>

#include "backends/common/local_file.h"
#include "backends/offline/offline_backend.h"
#include "hosts/cli/target_advice.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/language.h"
#include "hosts/report/report.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

namespace fs = std::filesystem;

// A folder with more in it is not searched for one that would do.
constexpr std::size_t kMostEntries = 500;

struct Signature {
  std::string_view form;
  std::size_t at;
  std::string_view bytes;
};
using namespace std::string_view_literals;
// What disks and their images begin with. A partition table's mark is the weakest and stands last.
constexpr std::array<Signature, 10> kSignatures = {{
    {"NTFS", 3, "NTFS    "sv},
    {"BitLocker", 3, "-FVE-FS-"sv},
    {"GPT", 512, "EFI PART"sv},
    {"VHD", 0, "conectix"sv},
    {"VHDX", 0, "vhdxfile"sv},
    {"VMDK", 0, "KDMV"sv},
    {"QCOW2", 0, "QFI\xFB"sv},
    {"EWF", 0, "EVF\x09\x0D\x0A\xFF\x00"sv},
    {"WIM", 0, "MSWIM\0\0\0"sv},
    {"MBR", 510, "\x55\xAA"sv},
}};

// Empty for what is no image of a known form.
std::string ImageForm(const fs::path& file) {
  std::array<char, 1024> head{};
  std::ifstream(file, std::ios::binary).read(head.data(), head.size());
  const std::string_view bytes(head.data(), head.size());
  for (const Signature& known : kSignatures) {
    if (bytes.substr(known.at, known.bytes.size()) == known.bytes) return std::string(known.form);
  }
  return {};
}

bool HasAny(const fs::path& folder, std::initializer_list<const char*> names, fs::path& out) {
  std::error_code ignored;
  for (const char* const name : names) {
    out = folder / name;
    if (fs::exists(out, ignored)) return true;
  }
  return false;
}

template <class Visit>
bool AnyFolderIn(const fs::path& folder, const Visit& visit) {
  std::error_code error;
  std::size_t left = kMostEntries;
  auto entry = fs::directory_iterator(folder, error);
  for (; !error && entry != fs::directory_iterator() && left-- > 0; entry.increment(error)) {
    std::error_code ignored;
    if (fs::is_directory(entry->symlink_status(ignored)) && visit(entry->path())) return true;
  }
  return false;
}

bool HoldsWindows(const fs::path& folder) {
  return AnyFolderIn(folder, [](const fs::path& windows) {
    fs::path at;
    return HasAny(windows, {"System32", "system32", "SYSTEM32"}, at) &&
           HasAny(at, {"config", "Config", "CONFIG"}, at) &&
           HasAny(at, {"SOFTWARE", "software", "Software"}, at);
  });
}

// The folder above or below that holds a Windows; empty when there is none near.
fs::path NearestWindows(const fs::path& folder) {
  std::error_code error;
  const fs::path whole = fs::weakly_canonical(fs::absolute(folder, error), error);
  for (fs::path above = whole; above.has_relative_path();) {
    above = above.parent_path();
    if (HoldsWindows(above)) return above;
  }
  fs::path found;
  const auto take = [&found](const fs::path& below) {
    if (!HoldsWindows(below)) return false;
    found = below;
    return true;
  };
  if (AnyFolderIn(folder, take)) return found;
  AnyFolderIn(folder, [&](const fs::path& below) { return AnyFolderIn(below, take); });
  return found;
}

std::string WhyNoFolder(const std::string& given, fs::file_type type) {
  const fs::path path = LocalPath(given);
  if (type == fs::file_type::block) return Say(texts::IsADisk, {given, given});
  const std::string form = ImageForm(path);
  return form.empty() ? Say(texts::IsAFile, {given}) : Say(texts::IsAnImage, {given, form});
}

// Only where it was the user that could not be found.
std::string WhoThereIs(TargetOptions options, const std::string& why) {
  if (OfflineBackend::Open(options).backend != nullptr) return why;
  const std::string wanted = std::exchange(options.user, {});
  const OfflineOpenResult opened = OfflineBackend::Open(options);
  if (opened.backend == nullptr || opened.backend->Target().users.empty()) return why;
  std::string names;
  for (const TargetUser& user : opened.backend->Target().users)
    names += (names.empty() ? "" : ", ") + Printable(user.name);
  return Say(texts::NoSuchUser, {wanted, names});
}

}  // namespace

std::string ExplainTarget(const TargetOptions& options, const std::string& why) {
  const fs::path folder = LocalPath(options.folder);
  std::error_code error;
  const fs::file_type type = fs::status(folder, error).type();
  if (type == fs::file_type::regular || type == fs::file_type::block)
    return WhyNoFolder(options.folder, type);
  if (type != fs::file_type::directory) return why;
  if (HoldsWindows(folder)) return options.user.empty() ? why : WhoThereIs(options, why);
  // What can't be listed may hold one.
  if (fs::directory_iterator(folder, error); error) return why;
  std::string sentence = Say(texts::NoWindowsHere, {options.folder});
  const fs::path near = NearestWindows(folder);
  if (!near.empty()) sentence += "; " + Say(texts::DidYouMean, {near.string()});
  return sentence;
}

}  // namespace scrubwell::hosts
