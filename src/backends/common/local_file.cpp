#include "backends/common/local_file.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace scrubwell {

namespace fs = std::filesystem;

std::string LocalVariable(const std::string& name) {
#ifdef _WIN32
  // The narrow environment is in a code page that can't hold every user's name.
  const wchar_t* const value = _wgetenv(LocalPath(name).c_str());
  const std::u8string text = value == nullptr ? std::u8string() : fs::path(value).u8string();
  return {text.begin(), text.end()};
#else
  const char* const value = std::getenv(name.c_str());
  return value == nullptr ? std::string() : value;
#endif
}

std::string WithSlashes(const std::string& path) {
  const std::u8string text = LocalPath(path).generic_u8string();
  return {text.begin(), text.end()};
}

fs::path LocalPath(const std::string& path) {
  return {std::u8string(path.begin(), path.end())};
}

std::string NameOf(const fs::path& path) {
  const std::u8string name = path.filename().u8string();
  return {name.begin(), name.end()};
}

bool IsLocalFile(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(LocalPath(path), error).type() == fs::file_type::regular;
}

bool ReadLocalFile(const std::string& path, Bytes& out) {
  // More than any session has; a file can claim any size without having it.
  constexpr std::uintmax_t kLargest = std::uintmax_t{1} << (sizeof(void*) > 4 ? 33U : 30U);
  std::error_code error;
  const std::uintmax_t size = fs::file_size(LocalPath(path), error);
  return !error && size <= kLargest && ReadLocalFile(path, out, static_cast<std::size_t>(size));
}

bool ReadLocalFile(const std::string& path, Bytes& out, std::size_t most) {
  out.clear();
  if (!IsLocalFile(path)) return false;
  std::error_code error;
  const std::uintmax_t size = std::min<std::uintmax_t>(fs::file_size(LocalPath(path), error), most);
  std::ifstream file(LocalPath(path), std::ios::binary);
  if (error || !file) return false;
  out.resize(static_cast<std::size_t>(size));
  file.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size()));
  return static_cast<std::uintmax_t>(file.gcount()) == size;
}

}  // namespace scrubwell
