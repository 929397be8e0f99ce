// What belongs to a file beside its content, on a real NTFS volume: mounted from an image by the
// driver in user space. Says so and does nothing where that is not to be had.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "clean_world.h"

namespace scrubwell::test {
namespace {

namespace fs = std::filesystem;

int Shell(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str());
}

class Volume {
 public:
  Volume() {
    const std::string image = (folder_.Path() / "image").string();
    fs::create_directory(Path());
    std::ofstream(image).flush();
    fs::resize_file(image, std::uintmax_t{48} << 20U);
    const auto mount = [&](const std::string& options) {
      return Shell("ntfs-3g -o " + options + " '" + image + "' '" + Path() + "'") == 0;
    };
    // Long streams can't be written as extended attributes, but here they can.
    mounted_ = Shell("mkntfs -F -q '" + image + "'") == 0 && mount("streams_interface=windows");
    if (!mounted_) return;
    std::ofstream(Path() + "/long:stream") << std::string(70'000, 's');
    Unmount();
    mounted_ = mount("permissions");
  }
  ~Volume() {
    if (mounted_) Unmount();
  }
  Volume(const Volume&) = delete;
  Volume& operator=(const Volume&) = delete;
  [[nodiscard]] bool Good() const { return mounted_; }
  [[nodiscard]] std::string Path() const { return (folder_.Path() / "C").string(); }

 private:
  void Unmount() const { Shell("umount '" + Path() + "' || fusermount -u '" + Path() + "'"); }
  TempFolder folder_;
  bool mounted_ = false;
};

std::string Extended(const std::string& path, const char* name) {
  std::string value(65'536, '\0');
  const ssize_t size = ::getxattr(path.c_str(), name, value.data(), value.size());
  value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  return value;
}

// As another program would ask for it.
std::map<std::string, std::string> Facts(const std::string& path) {
  struct stat info {};
  EXPECT_EQ(::stat(path.c_str(), &info), 0) << path;
  std::map<std::string, std::string> facts;
  facts["owner"] = std::to_string(info.st_uid) + ":" + std::to_string(info.st_gid);
  facts["mode"] = std::to_string(info.st_mode);
  facts["written"] =
      std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec);
  for (const char* const name :
       {"system.ntfs_acl", "system.ntfs_attrib_be", "system.ntfs_crtime_be", "user.Zone"}) {
    facts[name] = Extended(path, name);
  }
  return facts;
}

TEST(Ntfs, WhatComesBackIsWhatWent) {
  const Volume volume;
  if (!volume.Good()) {
    std::puts("no NTFS volume can be mounted here: nothing is tested");
    return;
  }
  const CleanWorld world;
  ASSERT_EQ(Shell("cp -r '" + world.Folder() + "/.' '" + volume.Path() + "'"), 0);
  const std::string link = volume.Path() + "/Users/anna/gone.lnk";
  const std::string folder = volume.Path() + "/Users/anna/Old";
  ASSERT_EQ(::setxattr(link.c_str(), "user.Zone", "abc", 3, 0), 0);
  ASSERT_EQ(::chmod(link.c_str(), 0444), 0);
  ASSERT_EQ(::chmod(folder.c_str(), 0711), 0);
  for (const std::string& path : {link, folder}) {
    // Hidden; and made and written long ago.
    ASSERT_EQ(::setxattr(path.c_str(), "system.ntfs_attrib_be", "\0\0\0\x22", 4, 0), 0);
    const timespec times[2] = {{1'000'000'000, 0}, {1'100'000'000, 500}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    ASSERT_EQ(::setxattr(path.c_str(), "system.ntfs_crtime_be", "\x01\xB0\0\0\0\0\0\0", 8, 0), 0);
  }
  const auto before = std::make_pair(Facts(link), Facts(folder));
  const std::string hive = volume.Path() + "/Windows/System32/config/SOFTWARE";
  const auto hiveBefore = Facts(hive);
  CleanOptions options = world.Options();
  options.target.folder = volume.Path();
  CleanOpenResult opened = CleanSession::Open(options);
  ASSERT_NE(opened.session, nullptr) << opened.error;
  ChangeAll(*opened.session);
  // What could not be put back is left as it is, and said.
  IFiles& files = opened.session->Backend().Platform().files;
  EXPECT_EQ(files.EraseFile(u"C:\\long"), Status::Denied);
  bool isTold = false;
  for (const UnicodeString& note : opened.session->Backend().Notes()) {
    isTold = isTold || note.find(u"/long: ") != UnicodeString::npos;
  }
  EXPECT_TRUE(isTold);
  const CommitResult done = opened.session->Commit();
  ASSERT_EQ(done.failure, CleanFailure::None) << done.error;
  EXPECT_FALSE(fs::exists(folder));
  auto hiveAfter = Facts(hive);
  hiveAfter["written"] = hiveBefore.at("written");
  EXPECT_EQ(hiveAfter, hiveBefore);
  opened.session.reset();
  const UndoResult undone = Undo({options.target, world.Backups(), done.session, {}});
  ASSERT_EQ(undone.failure, CleanFailure::None) << undone.error;
  EXPECT_EQ(Facts(link), before.first);
  EXPECT_EQ(Facts(folder), before.second);
}

}  // namespace
}  // namespace scrubwell::test
