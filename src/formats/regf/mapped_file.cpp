#include "formats/regf/mapped_file.h"

#include <utility>

#if __has_include(<sys/mman.h>)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#else
#include <fstream>
#include <iterator>
#endif

namespace scrubwell::regf {

MappedFile::MappedFile(MappedFile&& other) noexcept {
  *this = std::move(other);
}

MappedFile& MappedFile::operator=(MappedFile&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(copy_, other.copy_);
  return *this;
}

#if __has_include(<sys/mman.h>)

MappedFile::~MappedFile() {
  if (data_ != nullptr) ::munmap(const_cast<std::uint8_t*>(data_), size_);
}

namespace {

bool MapDescriptor(int descriptor, const std::uint8_t*& data, std::size_t& size,
                   std::string& error) {
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) {
    error = std::generic_category().message(errno);
    return false;
  }
  if (!S_ISREG(state.st_mode)) {
    error = "not a regular file";
    return false;
  }
  if (state.st_size == 0) return true;  // nothing to map
  void* place = ::mmap(nullptr, static_cast<std::size_t>(state.st_size), PROT_READ, MAP_PRIVATE,
                       descriptor, 0);
  if (place == MAP_FAILED) {
    error = std::generic_category().message(errno);
    return false;
  }
  data = static_cast<const std::uint8_t*>(place);
  size = static_cast<std::size_t>(state.st_size);
  return true;
}

}  // namespace

bool MappedFile::Open(const std::filesystem::path& file, std::string& error) {
  *this = MappedFile();
  // A pipe in the place of a file must not block the caller.
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    error = std::generic_category().message(errno);
    return false;
  }
  const bool mapped = MapDescriptor(descriptor, data_, size_, error);
  ::close(descriptor);
  return mapped;
}

#else

MappedFile::~MappedFile() = default;

bool MappedFile::Open(const std::filesystem::path& file, std::string& error) {
  *this = MappedFile();
  std::ifstream in(file, std::ios::binary);
  if (in) copy_.assign(std::istreambuf_iterator<char>(in), {});
  if (!in || in.bad()) {
    error = "can't be read";
    return false;
  }
  data_ = copy_.data();
  size_ = copy_.size();
  return true;
}

#endif

}  // namespace scrubwell::regf
