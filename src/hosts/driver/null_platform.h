// A platform that knows nothing.
#pragma once

#include <memory>

#include "registry/platform.h"

namespace scrubwell {

/// Lets a host load the package without any Windows, to ask it about its plugins. Every question
/// is answered with Unknown, so that even a scan would report nothing.
class NullPlatform {
 public:
  NullPlatform();
  ~NullPlatform();
  NullPlatform(const NullPlatform&) = delete;
  NullPlatform& operator=(const NullPlatform&) = delete;

  /// Good for as long as this lives.
  TPlatform& Platform();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace scrubwell
