// What a session keeps. The input is one letter that says which file it is, then the lines of that
// file without their sums, which are put in here, so that mutations get past them.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "backends/common/journal.h"
#include "backends/common/json_line.h"
#include "backends/offline/commit.h"
#include "backends/offline/intent.h"
#include "formats/regf/hive_builder.h"
#include "require.h"

namespace {

using namespace scrubwell;
using namespace scrubwell::offline;

const std::string& Place() {
  static const std::string folder = [] {
    std::string name = (std::filesystem::temp_directory_path() / "journal-XXXXXX").string();
    Require(::mkdtemp(name.data()) != nullptr);
    std::filesystem::create_directory(name + "/s");
    return name;
  }();
  return folder;
}

std::string Sign(std::string_view text) {
  std::string out;
  Sha256Digest chain{};
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view body = text.substr(0, end);
    chain = Sha256().Add(chain).Add(body).Finish();
    out.append(body).append(",\"sum\":\"").append(ToHex(chain)).append("\"}\n");
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return out;
}

void Store(const std::string& file, std::string_view text) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  Require(static_cast<bool>(out.flush()));
}

const regf::Hive& SmallHive(bool changed) {
  static const auto make = [](bool with) {
    regf::HiveBuilder builder;
    builder.SetText(builder.CreatePath(builder.Root(), with ? u"a\\x" : u"a"), u"n", u"v");
    builder.SetNumber(builder.Create(builder.Root(), u"B"), u"n", with ? 1 : 2);
    return regf::Hive::FromBytes(builder.Build(), "small");
  };
  static const regf::OpenedHive hives[] = {make(false), make(true)};
  return *hives[changed ? 1 : 0].hive;
}

void ReadJournal() {
  const std::string session = Place() + "/s";
  const Journal journal = LoadJournal(session);
  (void)ReadSession(Place(), "s");
  const ExportResult exported = ExportSession(Place(), "s");
  Require((exported.failure == CleanFailure::None) == journal.info.error.empty());
  if (!journal.info.error.empty()) return;
  // Written again it is the same journal.
  const std::string text = FormatJournal(journal);
  Store(session + std::string(kJournalFile), text);
  const Journal again = LoadJournal(session);
  Require(again.info.error.empty() && FormatJournal(again) == text);
  const std::string why =
      WhyNotAsIntended(SmallHive(false), SmallHive(true), journal.entries, u"H");
  bool names = false;
  for (const JournalEntry& entry : journal.entries) names = names || !entry.hive.empty();
  Require(names || !why.empty());
}

// Whatever a record names, opening it stays below the roots.
void ReadRecord(const std::string& text) {
  static DriveTree drives;
  static std::string error;
  static const bool added = drives.Add(u'C', Place(), DriveKind::Fixed, error);
  static DiskRoot backups;
  static const bool opened = OpenRoot(Place(), backups) == 0;
  Require(added && opened);
  CommitPlan plan;
  plan.session = DiskPlace(backups, "s");
  if (!ParseRecord(text, drives, backups, plan, error)) return;
  for (const CommitStep& step : plan.steps) {
    const UniqueFd fd = step.place.Open(O_PATH);
    const std::string link = "/proc/self/fd/" + std::to_string(fd.Get());
    Require(!fd.Good() ||
            (std::filesystem::read_symlink(link).string() + "/").starts_with(Place() + "/"));
    Require((step.attributes.mode & ~0777U) == 0);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  JsonLines lines(text);
  for (JsonValue line; lines.Next(line);) continue;
  const std::string session = Place() + "/s";
  if (bytes[0] == 'j') {
    Store(session + std::string(kJournalFile), Sign(text));
    ReadJournal();
  }
  if (bytes[0] == 'u') {
    Store(session + std::string(kUndoneFile), Sign(text));
    (void)LoadJournal(session);
    std::filesystem::remove(session + std::string(kUndoneFile));
  }
  if (bytes[0] == 'r') ReadRecord(Sign(text));
  return 0;
}
