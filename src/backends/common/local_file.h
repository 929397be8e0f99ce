// Files of the machine that the program runs on. Paths are UTF-8, with slashes.
#pragma once

#include <filesystem>
#include <string>

#include "registry/types.h"

namespace scrubwell {

/// A variable of the program's environment; empty when it is not set.
std::string LocalVariable(const std::string& name);
/// A path of this machine's own with slashes for its separators.
std::string WithSlashes(const std::string& path);
std::filesystem::path LocalPath(const std::string& path);
/// The last part of a path.
std::string NameOf(const std::filesystem::path& path);
/// True for a file itself, not for a link to one.
bool IsLocalFile(const std::string& path);
/// False when it is no file or can't be read whole. Links are not followed.
bool ReadLocalFile(const std::string& path, Bytes& out);
/// The same, but of a longer file its first `most` bytes.
bool ReadLocalFile(const std::string& path, Bytes& out, std::size_t most);

}  // namespace scrubwell
