// A switched-off Windows in a temporary folder, made of text.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "formats/regf/hive_builder.h"

namespace scrubwell::test {

/// A folder that goes with its owner.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }
  /// Where the file now lies.
  [[nodiscard]] std::filesystem::path Store(const std::string& name, const Bytes& content) const;

 private:
  std::filesystem::path path_;
};

/// One volume. Paths are given below it, with slashes.
class Disk {
 public:
  Disk();
  [[nodiscard]] std::string Folder() const { return folder_.Path().string(); }
  /// Folders above it come by themselves; a path that ends in a slash is a folder.
  void Add(const std::string& path, std::string_view content = "x");
  void Link(const std::string& path, const std::string& target);
  /// Adds keys and values (.reg form, physical paths) to the hives of their places.
  void Registry(std::string_view text, std::u16string_view userSid);
  /// The hive of a mount name ("HKLM\SOFTWARE"), to be filled and written by WriteHive.
  regf::HiveBuilder& Hive(const std::u16string& mount);
  void WriteHive(const std::u16string& mount, const std::string& path);
  /// The machine's hives where Windows has them, and those of a user in that profile folder.
  void WriteHives(const std::string& windows, const std::string& profile,
                  const std::u16string& userSid);

 private:
  TempFolder folder_;
  std::map<std::u16string, regf::HiveBuilder> hives_;
};

/// A file's bytes; none when there is no such file.
Bytes ReadBytes(const std::filesystem::path& file);

/// The folder of real files to test with; empty, with a line printed, when it is not there.
std::string SharedData();

/// The content of a compressed file of the shared data; false when the data is not there.
bool SharedFile(const std::string& name, const std::filesystem::path& target);

}  // namespace scrubwell::test
