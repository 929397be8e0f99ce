#include "backends/offline/mounted_devices.h"

#include <gtest/gtest.h>

#include "support/disk.h"

namespace scrubwell::offline {
namespace {

// A machine with a GPT and an MBR partition, both mounted, and one of which only a part is.
struct Machine : test::Disk {
  Machine() {
    Partition("01234567-89ab-cdef-0123-456789abcdef", "sda2", "8:2", "2048");
    Partition("cafe0001-01", "sdb1", "8:17", "63");
    Partition("cafe0001-02", "sdb2", "8:18", "4096");
    Partition("cafe0001-03", "sdb3", "8:19", "8192");
    Add("proc/self/mountinfo",
        "20 1 8:2 / /mnt/data\\040disk rw - ntfs3 /dev/sda2 rw\n"
        "21 1 8:17 / /mnt/old ro - fuseblk /dev/sdb1 ro\n"
        "22 1 8:18 /sub /mnt/part rw - ntfs3 /dev/sdb2 rw\n"
        "23 1 8:19 / /home rw,nosuid shared:1 - ext4 /dev/sdb3 rw\n");
  }
  void Partition(const std::string& id, const std::string& device, const std::string& number,
                 const std::string& start) {
    Add("sys/class/block/" + device + "/dev", number + "\n");
    Add("sys/class/block/" + device + "/start", start + "\n");
    Link("dev/disk/by-partuuid/" + id, "../../" + device);
  }
};

TEST(MountedDevices, FindsTheFolderOfAPartition) {
  const auto guid = [](std::uint8_t last) {
    Bytes data = {'D', 'M', 'I', 'O', ':', 'I', 'D', ':'};
    const Bytes id = {0x67, 0x45, 0x23, 0x01, 0xAB, 0x89, 0xEF, 0xCD,
                      0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, last};
    data.insert(data.end(), id.begin(), id.end());
    return data;
  };
  const auto signature = [](std::uint32_t sectors) {
    Bytes data = {0x01, 0x00, 0xFE, 0xCA};
    const std::uint64_t offset = std::uint64_t{sectors} * 512;
    for (int shift = 0; shift < 64; shift += 8) {
      data.push_back(static_cast<std::uint8_t>(offset >> shift));
    }
    return data;
  };
  const std::tuple<const char*, Bytes, const char*> rows[] = {
      {"by GUID, blank in the folder", guid(0xEF), "/mnt/data disk"},
      {"GUID of another disk", guid(0xEE), ""},
      {"by signature and offset", signature(63), "/mnt/old"},
      {"same disk, no such offset", signature(64), ""},
      {"only a part of it is mounted", signature(4096), ""},
      {"a file system of this machine's own", signature(8192), ""},
      {"a device with media", Bytes(40, 'x'), ""},
      {"24 bytes without the mark", Bytes(24, 0), ""},
      {"nothing", {}, ""},
  };
  const Machine machine;
  for (const auto& [what, identity, folder] : rows) {
    EXPECT_EQ(MountFolderOf(identity, machine.Folder()), folder) << what;
  }
  EXPECT_EQ(MountFolderOf(signature(63), "/nonexistent"), "");
}

}  // namespace
}  // namespace scrubwell::offline
