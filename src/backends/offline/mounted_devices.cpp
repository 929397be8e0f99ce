#include "backends/offline/mounted_devices.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

namespace scrubwell::offline {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kSector = 512;  // the unit of a partition's start, whatever the disk's is
constexpr std::size_t kSignatureForm = 12;
constexpr std::size_t kGuidForm = 24;
constexpr std::string_view kGuidMark = "DMIO:ID:";

std::uint64_t Number(const Bytes& data, std::size_t at, std::size_t size) {
  std::uint64_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | data[at + i];
  return value;
}

std::string FirstLine(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  return line;
}

// A GUID as it lies on the disk: its first three groups are little-endian.
std::string GuidText(const Bytes& data, std::size_t at) {
  std::string text;
  for (const int byte : {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15}) {
    char digits[3] = "-";
    if (byte >= 0)
      std::snprintf(digits, sizeof digits, "%02x", data[at + static_cast<std::size_t>(byte)]);
    text += digits;
  }
  return text;
}

// The block device with this identity, "sda2".
std::string DeviceOf(const Bytes& identity, const std::string& machine) {
  const fs::path links = machine + "/dev/disk/by-partuuid";
  std::error_code error;
  const auto device = [&](const fs::path& link) {
    return fs::read_symlink(link, error).filename().string();
  };
  if (identity.size() == kGuidForm &&
      std::equal(kGuidMark.begin(), kGuidMark.end(), identity.begin())) {
    return device(links / GuidText(identity, kGuidMark.size()));
  }
  if (identity.size() != kSignatureForm) return {};
  char signature[10];
  std::snprintf(signature, sizeof signature, "%08x-",
                static_cast<unsigned>(Number(identity, 0, 4)));
  const std::string start = std::to_string(Number(identity, 4, 8) / kSector);
  for (fs::directory_iterator it(links, error), end; !error && it != end; it.increment(error)) {
    if (!it->path().filename().string().starts_with(signature)) continue;
    const std::string name = device(it->path());
    if (FirstLine(machine + "/sys/class/block/" + name + "/start") == start) return name;
  }
  return {};
}

// Blanks and the like stand as octal numbers in the table of mounts.
std::string WithoutEscapes(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape =
        text[i] == '\\' && i + 3 < text.size() && text[i + 1] >= '0' && text[i + 1] <= '3';
    if (!escape) {
      out += text[i];
      continue;
    }
    out +=
        static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + text[i + 3] - '0');
    i += 3;
  }
  return out;
}

// Reads on to the kind of file system, which stands behind a lone dash. What Windows calls a drive
// of its own has its own file system; any other is this machine's.
bool IsNtfs(std::istringstream& fields) {
  std::string field;
  while (fields >> field && field != "-") continue;
  fields >> field;
  return field == "ntfs" || field == "ntfs3" || field == "fuseblk" || field == "ufsd";
}

}  // namespace

std::string MountFolderOf(const Bytes& identity, const std::string& machine) {
  const std::string device = DeviceOf(identity, machine);
  if (device.empty()) return {};
  const std::string number = FirstLine(machine + "/sys/class/block/" + device + "/dev");
  if (number.empty()) return {};
  std::ifstream mounts(machine + "/proc/self/mountinfo");
  for (std::string line; std::getline(mounts, line);) {
    std::istringstream fields(line);
    std::string id;
    std::string parent;
    std::string mounted;
    std::string root;
    std::string folder;
    fields >> id >> parent >> mounted >> root >> folder;
    // A mount of a part of the volume is not the drive.
    if (mounted == number && root == "/" && IsNtfs(fields)) return WithoutEscapes(folder);
  }
  return {};
}

}  // namespace scrubwell::offline
