#include "formats/job/job.h"

namespace scrubwell::job {
namespace {

using Span = std::span<const std::uint8_t>;

constexpr std::size_t kFixedSize = 68;
constexpr std::size_t kVersionAt = 2;
constexpr std::size_t kApplicationOffsetAt = 20;
constexpr std::size_t kTriggerOffsetAt = 22;
constexpr std::size_t kExitCodeAt = 40;
constexpr std::size_t kStatusAt = 44;
constexpr std::size_t kFlagsAt = 48;
constexpr std::uint16_t kFormatVersion = 1;
constexpr std::uint32_t kDisabled = 0x4;
constexpr std::uint32_t kHidden = 0x200;
constexpr std::size_t kTriggerSize = 48;

/// Little-endian, the caller having checked the bounds.
std::uint16_t U16(Span data, std::size_t at) {
  return static_cast<std::uint16_t>(data[at] | data[at + 1] << 8);
}

std::uint32_t U32(Span data, std::size_t at) {
  return U16(data, at) | static_cast<std::uint32_t>(U16(data, at + 2)) << 16;
}

/// Takes a count and that many things of `unit` bytes off the front; false when they are not there.
bool TakeCounted(Span& rest, std::size_t unit, Span& out) {
  if (rest.size() < 2) return false;
  const std::size_t size = U16(rest, 0) * unit;
  if (size > rest.size() - 2) return false;
  out = rest.subspan(2, size);
  rest = rest.subspan(2 + size);
  return true;
}

bool TakeText(Span& rest, UnicodeString& out) {
  Span text;
  if (!TakeCounted(rest, 2, text)) return false;
  for (std::size_t at = 0; at + 1 < text.size() && U16(text, at) != 0; at += 2) {
    out.push_back(U16(text, at));
  }
  return true;
}

}  // namespace

Status ReadJob(Span file, Job& out) {
  out = {};
  if (file.size() < kFixedSize || file.size() > kMaxFileSize) return Status::Corrupt;
  if (U16(file, kVersionAt) != kFormatVersion) return Status::Corrupt;
  const std::size_t application = U16(file, kApplicationOffsetAt);
  const std::size_t triggers = U16(file, kTriggerOffsetAt);
  if (application < kFixedSize || application > file.size()) return Status::Corrupt;
  if (triggers < application || triggers > file.size() || file.size() - triggers < 2) {
    return Status::Corrupt;
  }
  Job job;
  Span rest = file.subspan(application);
  for (UnicodeString* text :
       {&job.application, &job.parameters, &job.workingDirectory, &job.author, &job.comment}) {
    if (!TakeText(rest, *text)) return Status::Corrupt;
  }
  Span triggerData;
  rest = file.subspan(triggers);
  job.triggerCount = U16(rest, 0);
  if (!TakeCounted(rest, kTriggerSize, triggerData)) return Status::Corrupt;
  job.flags = U32(file, kFlagsAt);
  job.disabled = (job.flags & kDisabled) != 0;
  job.hidden = (job.flags & kHidden) != 0;
  job.status = U32(file, kStatusAt);
  job.exitCode = U32(file, kExitCodeAt);
  out = std::move(job);
  return Status::Ok;
}

}  // namespace scrubwell::job
