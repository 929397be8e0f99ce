#include "support/disk.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "backends/common/reg_places.h"
#include "formats/reg/reg_text.h"

namespace scrubwell::test {

namespace fs = std::filesystem;

TempFolder::TempFolder() {
  std::string name = (fs::temp_directory_path() / "scrubwell-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = name;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

fs::path TempFolder::Store(const std::string& name, const Bytes& content) const {
  std::ofstream(path_ / name, std::ios::binary)
      .write(reinterpret_cast<const char*>(content.data()),
             static_cast<std::streamsize>(content.size()));
  return path_ / name;
}

Disk::Disk() = default;

void Disk::Add(const std::string& path, std::string_view content) {
  const fs::path place = folder_.Path() / path;
  fs::create_directories(path.ends_with('/') ? place : place.parent_path());
  if (!path.ends_with('/')) std::ofstream(place, std::ios::binary) << content;
}

void Disk::Link(const std::string& path, const std::string& target) {
  fs::create_directories((folder_.Path() / path).parent_path());
  fs::create_symlink(target, folder_.Path() / path);
}

regf::HiveBuilder& Disk::Hive(const std::u16string& mount) {
  return hives_[mount];
}

void Disk::Registry(std::string_view text, std::u16string_view userSid) {
  reg::ParseOptions options;
  options.needsHeader = false;
  const reg::Document document = reg::Parse(text, options);
  ASSERT_EQ(document.error, "") << "line " << document.errorLine;
  for (const reg::KeyEntry& entry : document.keys) {
    HivePlace place;
    ASSERT_TRUE(HivePlaceOf(entry.path, userSid, place));
    regf::HiveBuilder& hive = Hive(place.mount);
    const auto key = hive.CreatePath(hive.Root(), place.path);
    for (const reg::ValueEntry& value : entry.values) hive.SetValue(key, value.value);
  }
}

void Disk::WriteHive(const std::u16string& mount, const std::string& path) {
  const Bytes bytes = Hive(mount).Build();
  Add(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

void Disk::WriteHives(const std::string& windows, const std::string& profile,
                      const std::u16string& userSid) {
  WriteHive(u"HKLM\\SOFTWARE", windows + "/System32/config/SOFTWARE");
  WriteHive(u"HKLM\\SYSTEM", windows + "/System32/config/SYSTEM");
  WriteHive(u"HKU\\" + userSid, profile + "/NTUSER.DAT");
  if (hives_.contains(u"HKU\\" + userSid + u"_Classes")) {
    WriteHive(u"HKU\\" + userSid + u"_Classes",
              profile + "/AppData/Local/Microsoft/Windows/UsrClass.dat");
  }
}

Bytes ReadBytes(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string SharedData() {
  const char* const data = std::getenv("SCRUBWELL_DATA");
  if (data == nullptr) std::puts("SCRUBWELL_DATA is not set: nothing tested here");
  return data == nullptr ? "" : data;
}

bool SharedFile(const std::string& name, const fs::path& target) {
  const std::string data = SharedData();
  if (data.empty()) return false;
  fs::create_directories(target.parent_path());
  const std::string command =
      "xz -dc '" + (fs::path(data) / name).string() + "' > '" + target.string() + "'";
  return std::system(command.c_str()) == 0;
}

}  // namespace scrubwell::test
