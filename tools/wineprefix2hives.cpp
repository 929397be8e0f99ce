// Writes the registry of a Wine prefix as hive files into its drive C, where a switched-off Windows
// has them: wineprefix2hives PREFIX.
//
// The server of the prefix must have ended, for it writes its registry then. Hives from an earlier
// run are replaced. Security descriptors and class names of keys are not in the texts.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

#include "formats/regf/hive_builder.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace {

namespace fs = std::filesystem;
using namespace scrubwell;

struct PrefixError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string ReadText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw PrefixError(path.string() + ": can't be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

void Write(const fs::path& path, const Bytes& bytes) {
  fs::create_directories(path.parent_path());
  // Never into a file that another prefix shares.
  fs::remove(path);
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw PrefixError(path.string() + ": can't be written");
}

// Reads what a line is made of, from its beginning on.
class LineReader {
 public:
  explicit LineReader(std::string_view line) : rest_(line) {}

  bool Skip(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  // Up to the closing mark, which goes too. Letters beyond ASCII and control characters are escaped
  // with their numbers.
  UnicodeString Text(char close) {
    UnicodeString text;
    while (!rest_.empty() && rest_.front() != close) {
      const char c = Take();
      text += c == '\\' ? Escaped() : static_cast<unsigned char>(c);
    }
    if (!Skip({&close, 1})) throw PrefixError("a text has no end");
    return text;
  }

  template <class Number>
  Number Hex(std::size_t most = sizeof(Number) * 2) {
    return Digits<Number>(16, most);
  }

  [[nodiscard]] bool AtEnd() const { return rest_.empty(); }

 private:
  char Take() {
    const char c = rest_.empty() ? '\0' : rest_.front();
    rest_.remove_prefix(rest_.empty() ? 0 : 1);
    return c;
  }

  template <class Number>
  Number Digits(int base, std::size_t most) {
    Number number{};
    const std::string_view digits = rest_.substr(0, most);
    const auto end = std::from_chars(digits.begin(), digits.end(), number, base);
    if (end.ec != std::errc()) throw PrefixError("digits are missing");
    rest_.remove_prefix(static_cast<std::size_t>(end.ptr - digits.begin()));
    return number;
  }

  char16_t Escaped() {
    constexpr std::string_view letters = "abtnvfre";
    constexpr std::u16string_view meanings = u"\a\b\t\n\v\f\r\x1B";
    if (Skip("x")) return Digits<std::uint16_t>(16, 4);
    const char c = rest_.empty() ? '\0' : rest_.front();
    if (c >= '0' && c <= '7') return Digits<std::uint16_t>(8, 3);
    Take();
    const std::size_t at = letters.find(c);
    return at == letters.npos ? static_cast<unsigned char>(c) : meanings[at];
  }

  std::string_view rest_;
};

std::optional<RegValue> ParseValue(std::string_view line) {
  LineReader reader(line);
  RegValue value;
  if (!reader.Skip("@")) {
    if (!reader.Skip("\"")) return std::nullopt;
    value.name = reader.Text('"');
  }
  if (!reader.Skip("=")) throw PrefixError("a value has no data");
  value.type = REGT_SZ;
  if (reader.Skip("dword:")) {
    const auto number = reader.Hex<std::uint32_t>();
    value.type = REGT_DWORD;
    for (unsigned shift = 0; shift < 32; shift += 8) {
      value.data.push_back(static_cast<std::uint8_t>(number >> shift));
    }
    return value;
  }
  if (reader.Skip("hex")) {
    value.type = REGT_BINARY;
    if (reader.Skip("(")) value.type = reader.Hex<std::uint32_t>();
    reader.Skip(")");
    reader.Skip(":");
    while (!reader.AtEnd()) {
      value.data.push_back(reader.Hex<std::uint8_t>());
      reader.Skip(",");
    }
    return value;
  }
  if (reader.Skip("str(")) value.type = reader.Hex<std::uint32_t>();
  reader.Skip("):");
  if (!reader.Skip("\"")) throw PrefixError("data of an unknown form");
  // The last NUL is not written.
  value.data = TextData(reader.Text('"'));
  return value;
}

// The key's own name for each part, as the text has it: "Software\\Classes".
struct PrefixKey {
  UnicodeString path;
  std::uint64_t time = 0;
  bool link = false;
  std::vector<RegValue> values;
};

class PrefixText {
 public:
  explicit PrefixText(const fs::path& path) : name_(path.string()), text_(ReadText(path)) {}

  // All keys to the function, in the order of the text.
  template <class Take>
  void ForEach(const Take& take) {
    std::optional<PrefixKey> key;
    for (std::string line; Next(line);) {
      try {
        Understand(line, key, take);
      } catch (const PrefixError& error) {
        throw PrefixError(name_ + ": " + error.what() + ": " + line);
      }
    }
    if (key) take(*key);
  }

 private:
  template <class Take>
  static void Understand(const std::string& line, std::optional<PrefixKey>& key, const Take& take) {
    LineReader reader(line);
    if (reader.Skip("[")) {
      if (key) take(*key);
      key.emplace().path = reader.Text(']');
    } else if (!key) {
      return;  // what the text is, and of which width
    } else if (reader.Skip("#time=")) {
      key->time = reader.Hex<std::uint64_t>();
    } else if (line == "#link") {
      key->link = true;
    } else if (auto value = ParseValue(line)) {
      key->values.push_back(std::move(*value));
    }
  }

  // A line with those that it is continued by.
  bool Next(std::string& line) {
    line.clear();
    if (at_ >= text_.size()) return false;
    for (bool more = true; more && at_ < text_.size();) {
      const std::size_t end = std::min(text_.find('\n', at_), text_.size());
      std::string_view part = std::string_view(text_).substr(at_, end - at_);
      if (!line.empty()) part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
      at_ = end + 1;
      more = part.ends_with(",\\");
      if (more) part.remove_suffix(1);
      line += part;
    }
    return true;
  }

  std::string name_;
  std::string text_;
  std::size_t at_ = 0;
};

void Add(regf::HiveBuilder& hive, UnicodeView path, const PrefixKey& from) {
  const auto key = hive.CreatePath(hive.Root(), path);
  hive.SetTime(key, from.time);
  if (from.link) hive.SetLink(key);
  for (const RegValue& value : from.values) hive.SetValue(key, value);
}

// What follows the first parts; nothing when the path does not lie there.
std::optional<UnicodeView> Below(UnicodeView path, UnicodeView parent) {
  if (!SameText(path.substr(0, parent.size()), parent)) return std::nullopt;
  path.remove_prefix(parent.size());
  if (!path.empty() && path.front() != u'\\') return std::nullopt;
  return path.substr(path.empty() ? 0 : 1);
}

struct MachineHives {
  regf::HiveBuilder software;
  regf::HiveBuilder system;
  std::string profile;  ///< of the prefix's user: "users/anna"
};

// "C:\users\anna" below the folder of the drive.
std::string ProfileFolder(const PrefixKey& key) {
  constexpr UnicodeView profiles =
      u"Software\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\S-1-5-21-";
  if (!SameText(UnicodeView(key.path).substr(0, profiles.size()), profiles)) return {};
  for (const RegValue& value : key.values) {
    if (!SameText(value.name, u"ProfileImagePath")) continue;
    std::string path = ToUtf8(RegValueText(value));
    std::replace(path.begin(), path.end(), '\\', '/');
    return path.starts_with("C:/") ? path.substr(3) : std::string();
  }
  return {};
}

// The running system has one set of controls under its own name; a switched-off one has numbered
// ones, and a note of which is current.
void AddSystem(regf::HiveBuilder& system, UnicodeView path, const PrefixKey& key) {
  const auto current = Below(path, u"CurrentControlSet");
  if (!current) return Add(system, path, key);
  if (!key.link) Add(system, UnicodeString(u"ControlSet001\\").append(*current), key);
}

MachineHives ReadMachine(const fs::path& prefix) {
  MachineHives hives;
  PrefixText(prefix / "system.reg").ForEach([&hives](const PrefixKey& key) {
    if (const auto path = Below(key.path, u"Software")) Add(hives.software, *path, key);
    if (const auto path = Below(key.path, u"System")) AddSystem(hives.system, *path, key);
    if (hives.profile.empty()) hives.profile = ProfileFolder(key);
  });
  const auto select = hives.system.CreatePath(hives.system.Root(), u"Select");
  for (const UnicodeView name : {u"Current", u"Default", u"LastKnownGood"}) {
    hives.system.SetNumber(select, name, 1);
  }
  if (hives.profile.empty()) throw PrefixError("the prefix names no profile of a user");
  return hives;
}

void Convert(const fs::path& prefix) {
  const fs::path drive = prefix / "drive_c";
  const fs::path config = drive / "windows/system32/config";
  const MachineHives machine = ReadMachine(prefix);
  Write(config / "SOFTWARE", machine.software.Build());
  Write(config / "SYSTEM", machine.system.Build());

  regf::HiveBuilder standard;
  PrefixText(prefix / "userdef.reg").ForEach([&standard](const PrefixKey& key) {
    Add(standard, key.path, key);
  });
  Write(config / "DEFAULT", standard.Build());

  // A user's classes are a hive of their own.
  regf::HiveBuilder user;
  regf::HiveBuilder classes;
  PrefixText(prefix / "user.reg").ForEach([&](const PrefixKey& key) {
    const auto path = Below(key.path, u"Software\\Classes");
    Add(path ? classes : user, path.value_or(key.path), key);
  });
  const fs::path profile = drive / machine.profile;
  Write(profile / "NTUSER.DAT", user.Build());
  Write(profile / "AppData/Local/Microsoft/Windows/UsrClass.dat", classes.Build());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: wineprefix2hives PREFIX\n");
    return 2;
  }
  try {
    Convert(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wineprefix2hives: %s\n", error.what());
    return 1;
  }
  return 0;
}
