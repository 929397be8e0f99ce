#include "formats/regf/file_image.h"

#include <algorithm>

#if __has_include(<sys/mman.h>)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <system_error>
#else
#include <fstream>
#include <iterator>
#endif

namespace scrubwell::regf {

FileImage::FileImage(FileImage&& other) noexcept {
  *this = std::move(other);
}

FileImage& FileImage::operator=(FileImage&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  std::swap(unreadable_, other.unreadable_);
  std::swap(copy_, other.copy_);
  return *this;
}

#if __has_include(<sys/mman.h>)

namespace {

// What a disk gives or refuses as a whole.
constexpr std::size_t kBlock = 4096;

// Reads until the end or an error; the number of bytes read.
std::size_t ReadOn(int descriptor, std::uint8_t* place, std::size_t from, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got =
        ::pread(descriptor, place + done, size - done, static_cast<off_t>(from + done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

}  // namespace

FileImage::~FileImage() {
  if (data_ != nullptr) ::munmap(data_, size_);
}

bool FileImage::Reserve(int descriptor, std::size_t most, std::string& error) {
  *this = FileImage();
  struct stat state {};
  if (::fstat(descriptor, &state) != 0) {
    error = std::generic_category().message(errno);
    return false;
  }
  if (!S_ISREG(state.st_mode)) {
    error = "not a regular file";
    return false;
  }
  const auto size = static_cast<std::uint64_t>(state.st_size);
  if (size > most) {
    error = "too large";
    return false;
  }
  if (size == 0) return true;
  void* const place = ::mmap(nullptr, static_cast<std::size_t>(size), PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (place == MAP_FAILED) {
    error = std::generic_category().message(errno);
    return false;
  }
  data_ = static_cast<std::uint8_t*>(place);
  size_ = static_cast<std::size_t>(size);
  return true;
}

bool FileImage::Load(int descriptor, std::size_t from, std::size_t size) {
  if (from > size_ || size > size_ - from) return false;
  const std::size_t before = unreadable_.size();
  const std::size_t end = from + size;
  for (std::size_t at = from + ReadOn(descriptor, data_ + from, from, size); at < end;) {
    // The block that stopped it is left out; a file that was cut meanwhile is left out to its end.
    const std::size_t next = std::min(end, at / kBlock * kBlock + kBlock);
    if (!unreadable_.empty() && unreadable_.back().second == at) {
      unreadable_.back().second = next;
    } else {
      unreadable_.emplace_back(at, next);
    }
    std::fill(data_ + at, data_ + next, std::uint8_t{0});
    at = next + ReadOn(descriptor, data_ + next, next, end - next);
  }
  return unreadable_.size() == before;
}

bool FileImage::Open(int descriptor, std::string& error) {
  if (!Reserve(descriptor, std::numeric_limits<std::uint32_t>::max(), error)) return false;
  // Fewer, larger pages are got faster. It is no more than a wish.
  ::madvise(data_, size_, MADV_HUGEPAGE);
  Load(descriptor, 0, size_);
  if (unreadable_.size() == 1 && unreadable_[0].second - unreadable_[0].first == size_ &&
      size_ != 0) {
    error = "can't be read";
    return false;
  }
  return true;
}

bool FileImage::Open(const std::filesystem::path& file, std::string& error) {
  *this = FileImage();
  // A pipe in the place of a file must not block the caller.
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) {
    error = std::generic_category().message(errno);
    return false;
  }
  const bool opened = Open(descriptor, error);
  ::close(descriptor);
  return opened;
}

#else

FileImage::~FileImage() = default;

bool FileImage::Open(const std::filesystem::path& file, std::string& error) {
  *this = FileImage();
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
