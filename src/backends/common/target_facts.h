// What a backend knows of the Windows behind it.
#pragma once

#include <string>
#include <vector>

#include "registry/types.h"

namespace scrubwell {

/// A hive file and the key that it is mounted at.
struct HiveFile {
  UnicodeString key;  ///< "HKLM\SOFTWARE", "HKU\S-1-5-...", "HKU\S-1-5-..._Classes"
  std::string file;   ///< as it lies on this machine: below the target's folder, or absolute
};

/// A person with a profile on the target.
struct TargetUser {
  UnicodeString name;  ///< of the profile folder
  UnicodeString sid;   ///< what a scan is asked for by; a stand-in where the real one isn't known
};

/// What was found at the target, for the host to show.
struct TargetFacts {
  std::string folder;         ///< as given in the options
  UnicodeString identity;     ///< what tells one Windows from another, whatever drive it is on
  UnicodeString productName;  ///< for example "Windows 7 Professional"; may be empty
  UnicodeString version;      ///< for example "6.1"
  std::uint32_t build = 0;    ///< 0 when it is not known
  bool is64Bit = false;
  UnicodeString userName;    ///< name of the user's profile folder; empty when there is no user
  UnicodeString userSid;     ///< empty when there is no user
  UnicodeString systemRoot;  ///< for example "C:\Windows"
  char16_t driveLetter = u'C';
  std::uint32_t controlSet = 0;   ///< number of the control set that stands for the current one
  std::vector<HiveFile> hives;    ///< whose keys can be scanned
  std::vector<TargetUser> users;  ///< all that a scan can be made for, service accounts left out
};

}  // namespace scrubwell
