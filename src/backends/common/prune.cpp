// Old sessions of a backup folder, on request.
#include <algorithm>
#include <ctime>
#include <filesystem>

#include "backends/common/journal.h"
#include "backends/common/local_file.h"

namespace scrubwell {
namespace {

namespace fs = std::filesystem;

// The time that many days ago, as sessions tell theirs; such texts sort by time.
std::string DaysAgo(std::size_t days) {
  constexpr std::time_t kDay = 86400;
  const std::time_t now = std::time(nullptr);
  const auto most = static_cast<std::size_t>(now / kDay);
  const std::time_t then = now - static_cast<std::time_t>(std::min(days, most)) * kDay;
  char text[sizeof "2024-05-01T12:00:00Z"] = "";
  const std::tm* const parts = std::gmtime(&then);
  if (parts != nullptr) std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", parts);
  return text;
}

// What is not carried out may be all that an interrupted change can be finished from.
bool IsSettled(const SessionInfo& session) {
  return session.carriedOut && session.error.empty();
}

}  // namespace

std::uint64_t SessionSize(const SessionInfo& session) {
  std::uint64_t size = 0;
  std::error_code error;
  auto entry = fs::recursive_directory_iterator(LocalPath(session.folder), error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (entry->symlink_status(ignored).type() != fs::file_type::regular) continue;
    const std::uintmax_t bytes = entry->file_size(ignored);
    if (!ignored) size += bytes;
  }
  return size;
}

std::vector<SessionInfo> SessionsToPrune(const std::vector<SessionInfo>& sessions,
                                         const PruneLimits& limits) {
  std::vector<SessionInfo> chosen;
  if (!limits.keep && !limits.minDays) return chosen;
  const std::string limit = limits.minDays ? DaysAgo(*limits.minDays) : std::string();
  const std::size_t kept = std::min(limits.keep.value_or(0), sessions.size());
  for (std::size_t i = 0; i < sessions.size() - kept; ++i) {
    const bool isOld = limit.empty() || sessions[i].time <= limit;
    if (isOld && IsSettled(sessions[i])) chosen.push_back(sessions[i]);
  }
  return chosen;
}

std::string RemoveSession(const SessionInfo& session) {
  std::error_code error;
  const fs::path folder = LocalPath(session.folder);
  if (fs::symlink_status(folder, error).type() != fs::file_type::directory)
    return session.folder + ": is no session's folder";
  fs::remove_all(folder, error);
  return error ? session.folder + ": can't be removed: " + error.message() : std::string();
}

}  // namespace scrubwell
