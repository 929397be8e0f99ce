// What a backend knows of the Windows behind it.
#pragma once

#include <string>

#include "registry/types.h"

namespace scrubwell {

/// What was found at the target, for the host to show.
struct TargetFacts {
  std::string folder;         ///< as given in the options
  UnicodeString productName;  ///< for example "Windows 7 Professional"; may be empty
  UnicodeString version;      ///< for example "6.1"
  std::uint32_t build = 0;    ///< 0 when it is not known
  bool is64Bit = false;
  UnicodeString userName;    ///< name of the user's profile folder; empty when there is no user
  UnicodeString userSid;     ///< empty when there is no user
  UnicodeString systemRoot;  ///< for example "C:\Windows"
  char16_t driveLetter = u'C';
  std::uint32_t controlSet = 0;  ///< number of the control set that stands for the current one
};

}  // namespace scrubwell
