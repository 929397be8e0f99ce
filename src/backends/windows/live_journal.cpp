#include "backends/windows/live_journal.h"

#include <ctime>
#include <filesystem>

#include "backends/common/local_file.h"

namespace scrubwell::windows {
namespace {

namespace fs = std::filesystem;
using FileHandle = Owned<HANDLE, &CloseHandle>;

// The system's own words would come in a code page that can't hold them all.
std::string Sentence(const std::string& path, int error) {
  return path + ": can't be written (error " + std::to_string(error) + ")";
}

std::string LastSentence(const std::string& path) {
  return Sentence(path, static_cast<int>(GetLastError()));
}

std::span<const std::uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

FileHandle CreateFresh(const std::string& file) {
  const HANDLE opened =
      CreateFileW(LocalPath(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                  nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  return opened == INVALID_HANDLE_VALUE ? FileHandle() : FileHandle(opened);
}

bool WriteAndFlush(HANDLE file, std::span<const std::uint8_t> data) {
  while (!data.empty()) {
    const auto part = data.subspan(0, std::min<std::size_t>(data.size(), std::size_t{1} << 24U));
    DWORD written = 0;
    if (WriteFile(file, part.data(), static_cast<DWORD>(part.size()), &written, nullptr) == FALSE)
      return false;
    data = data.subspan(written);
  }
  return FlushFileBuffers(file) != FALSE;
}

bool KeepsContent(const JournalEntry& entry) {
  return entry.existed && (entry.item.action == JournalAction::WriteFile ||
                           entry.item.action == JournalAction::EraseFile ||
                           entry.item.action == JournalAction::KeepFile ||
                           entry.item.action == JournalAction::RemoveTask);
}

}  // namespace

std::string TimeText(const char* format) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  gmtime_s(&parts, &now);
  char text[32];
  return {text, std::strftime(text, sizeof text, format, &parts)};
}

std::string WriteThrough(const std::string& file, std::span<const std::uint8_t> data) {
  const FileHandle opened = CreateFresh(file);
  const bool done = opened.Good() && WriteAndFlush(opened.Get(), data);
  return done ? std::string() : LastSentence(file);
}

std::string LiveJournal::Open(const std::string& backupFolder, Journal& journal) {
  journal.live = true;
  journal.info.time = TimeText("%Y-%m-%dT%H:%M:%SZ");
  const std::string stem = TimeText("%Y%m%dT%H%M%SZ");
  std::error_code error;
  fs::create_directories(LocalPath(backupFolder), error);
  if (error) return Sentence(backupFolder, error.value());
  name_ = stem;
  for (int i = 2; fs::exists(LocalPath(backupFolder + "/" + name_), error); ++i)
    name_ = stem + (i < 10 ? "-0" : "-") + std::to_string(i);
  folder_ = backupFolder + "/" + name_;
  fs::create_directory(LocalPath(folder_), error);
  if (!error) fs::create_directory(LocalPath(folder_ + std::string(kFilesFolder)), error);
  if (error) return Sentence(folder_, error.value());
  file_ = CreateFresh(folder_ + std::string(kJournalFile));
  if (!file_.Good()) return LastSentence(folder_);
  return Append(lines_.Head(journal));
}

std::string LiveJournal::Append(const std::string& text) {
  return WriteAndFlush(file_.Get(), BytesOf(text)) ? std::string() : LastSentence(folder_);
}

std::string LiveJournal::Add(const JournalEntry& entry) {
  if (KeepsContent(entry)) {
    std::string why = WriteThrough(ContentFile(folder_, entry), entry.content);
    if (!why.empty()) return why;
  }
  ++entries_;
  return Append(lines_.Entry(entry));
}

std::string LiveJournal::Drop(const JournalEntry& entry) {
  --entries_;
  std::error_code ignored;
  std::string why = Append(lines_.Dropped(entry));
  if (why.empty() && KeepsContent(entry))
    fs::remove(LocalPath(ContentFile(folder_, entry)), ignored);
  return why;
}

std::string LiveJournal::Close() {
  std::error_code ignored;
  std::string why = entries_ == 0 ? std::string() : Append(lines_.End());
  file_.Reset();
  if (entries_ != 0 && why.empty()) return WriteThrough(folder_ + std::string(kCarriedOutFile), {});
  if (entries_ == 0) {
    for (const std::string_view part : {kJournalFile, kFilesFolder, std::string_view()})
      fs::remove(LocalPath(folder_ + std::string(part)), ignored);
  }
  return why;
}

namespace {

// The old content stays whole until the new one takes its place.
std::string Replace(const std::string& file, const std::string& text) {
  const std::string fresh = file + ".new";
  std::string why = WriteThrough(fresh, BytesOf(text));
  if (why.empty() && MoveFileExW(LocalPath(fresh).c_str(), LocalPath(file).c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE)
    why = LastSentence(file);
  return why;
}

}  // namespace

std::string WriteUndone(const Journal& journal, const std::vector<std::string>& ids) {
  return Replace(journal.info.folder + std::string(kUndoneFile), FormatUndone(journal, ids));
}

std::string CloseLeftOpen(const Journal& journal) {
  std::string why;
  if (!journal.closed)
    why = Replace(journal.info.folder + std::string(kJournalFile), FormatJournal(journal));
  return why.empty() ? WriteThrough(journal.info.folder + std::string(kCarriedOutFile), {}) : why;
}

bool LiveLock::Take() {
  // The name is the lock, whoever holds the object: it goes with the last handle, in a crash too.
  for (const wchar_t* const name : {L"Global\\Scrubwell.Session", L"Local\\Scrubwell.Session"}) {
    SetLastError(ERROR_SUCCESS);
    OwnedHandle made(CreateMutexW(nullptr, FALSE, name));
    const DWORD error = GetLastError();
    // One of another user's may not even be opened.
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED) return false;
    if (!made.Good()) continue;
    mutex_ = std::move(made);
    return true;
  }
  return false;
}

}  // namespace scrubwell::windows
