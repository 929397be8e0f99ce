// Builds a Windows installation from text: mksample SAMPLES TARGET.
//
// SAMPLES holds registry/*.reg, hives.txt and files.txt; samples/README.md describes them. Drive C
// becomes the folder TARGET/C, and so on. TARGET must not hold any of the files yet.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "formats/reg/reg_text.h"
#include "formats/regf/hive_builder.h"
#include "registry/Stringhelper.h"

namespace {

namespace fs = std::filesystem;
using scrubwell::UnicodeString;

// A mistake in the sample, to be shown as it is.
struct SampleError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::string ReadText(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw SampleError(path.string() + ": can't be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteNew(const fs::path& path, std::string_view bytes) {
  if (fs::exists(path)) throw SampleError(path.string() + ": is there already");
  fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw SampleError(path.string() + ": can't be written");
}

// Lines without comments and empty ones.
std::vector<std::string> Lines(const fs::path& path) {
  std::ifstream file(path);
  if (!file) throw SampleError(path.string() + ": can't be read");
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && line.front() != '#') lines.push_back(line);
  }
  return lines;
}

// "C:\a\b" below the target's folder of drive C.
fs::path HostPath(const fs::path& target, std::string_view windows) {
  if (windows.size() < 3 || windows.substr(1, 2) != ":\\") {
    throw SampleError(std::string(windows) + ": is no path with a drive");
  }
  fs::path path = target / std::string(1, windows.front());
  for (std::size_t from = 3; from < windows.size();) {
    const std::size_t to = std::min(windows.find('\\', from), windows.size());
    const std::string_view part = windows.substr(from, to - from);
    if (part.empty() || part == "." || part == ".." || part.find('/') != part.npos) {
      throw SampleError(std::string(windows) + ": has a part that is no name");
    }
    path /= part;
    from = to + 1;
  }
  return path;
}

std::string Unescape(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = text[i] == '\\' && i + 1 < text.size() ? text[i + 1] : '\0';
    if (next == 'n') result += "\r\n";
    if (next == 't') result += '\t';
    if (next == '\\') result += '\\';
    if (next == 'n' || next == 't' || next == '\\') {
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

// A scheduled task that runs the application, in the file format of the 1.0 scheduler.
std::string TaskContent(std::string_view application) {
  constexpr std::size_t texts = 70;  // behind the fixed part and the number of running instances
  std::string result(texts, '\0');
  result[2] = 1;  // the format's version
  result[20] = static_cast<char>(texts);
  const auto put = [&result](std::size_t number) {
    result += static_cast<char>(number & 0xFF);
    result += static_cast<char>(number >> 8);
  };
  const scrubwell::UnicodeString units = scrubwell::FromUtf8(application);
  put(units.size() + 1);
  for (const char16_t unit : units) put(unit);
  put(0);
  // Parameters, folder, author, comment, user data and reserved data, all empty.
  for (int i = 0; i < 6; ++i) put(0);
  const std::size_t triggers = result.size();
  result[22] = static_cast<char>(triggers & 0xFF);
  result[23] = static_cast<char>(triggers >> 8);
  put(0);
  return result;
}

// A shortcut to a file on a fixed drive. The path is plain ASCII.
std::string LinkContent(std::string_view path) {
  std::string result;
  const auto put = [&result](std::size_t number) {
    for (int shift = 0; shift < 32; shift += 8) result += static_cast<char>(number >> shift & 0xFF);
  };
  constexpr std::size_t header = 0x4C;
  constexpr std::size_t infoHeader = 0x1C;
  constexpr std::size_t volume = 0x11;
  put(header);
  for (const std::size_t part : {0x00021401U, 0U, 0xC0U, 0x46000000U}) put(part);
  put(2);  // all that follows is where the file lies
  result.resize(header);
  put(infoHeader + volume + path.size() + 2);
  put(infoHeader);
  put(1);  // on a local drive
  put(infoHeader);
  put(infoHeader + volume);
  put(0);
  put(infoHeader + volume + path.size() + 1);
  for (const std::size_t part : {std::size_t{0x11}, std::size_t{3}, std::size_t{0}}) put(part);
  put(0x10);
  result += '\0';
  result.append(path).append(2, '\0');
  put(0);  // nothing more
  return result;
}

// The browser's address history with these addresses, separated by blanks: a header with the map of
// used blocks, one hash table, then a record of two blocks for each address.
std::string HistoryContent(std::string_view addresses) {
  constexpr std::size_t block = 128;
  constexpr std::size_t table = 0x4000;
  constexpr std::size_t tableBlocks = 32;
  constexpr std::size_t records = table + tableBlocks * block;
  constexpr std::size_t location = 104;
  constexpr std::size_t most = 16;
  std::string result(records + most * 2 * block, '\0');
  const auto put = [&result](std::size_t at, std::size_t number) {
    for (std::size_t i = 0; i < 4; ++i) result[at + i] = static_cast<char>(number >> 8 * i & 0xFF);
  };
  const auto text = [&result](std::size_t at, std::string_view what) {
    result.replace(at, what.size(), what);
  };
  text(0, "Client UrlCache MMF Ver 5.2");
  put(28, result.size());
  put(32, table);
  put(36, tableBlocks + most * 2);
  text(table, "HASH");
  put(table + 4, tableBlocks);
  for (std::size_t at = table + 16; at < records; at += 4) put(at, 3);
  std::size_t count = 0;
  for (std::size_t from = 0; from < addresses.size() && count < most; ++count) {
    const std::size_t to = std::min(addresses.find(' ', from), addresses.size());
    const std::size_t at = records + count * 2 * block;
    text(at, "URL ");
    put(at + 4, 2);
    put(at + 52, location);
    put(at + 56, 0xFE);
    text(at + location, "Visited: anna@" + std::string(addresses.substr(from, to - from)));
    put(table + 16 + count * 8, 0x1240 + count * 0x40);
    put(table + 20 + count * 8, at);
    from = to + 1;
  }
  put(40, tableBlocks + count * 2);
  for (std::size_t i = 0; i < tableBlocks + count * 2; ++i) {
    result[0x250 + i / 8] = static_cast<char>(result[0x250 + i / 8] | 1 << i % 8);
  }
  return result;
}

// A program that has nothing but its version ("14.0") in it.
std::string ProgramContent(std::string_view version) {
  constexpr std::size_t optional = 0x58;
  constexpr std::size_t section = optional + 0xE0;
  constexpr std::size_t resources = 0x200;
  constexpr std::size_t address = 0x1000;
  constexpr std::size_t block = resources + 0x58;
  constexpr std::u16string_view name = u"VS_VERSION_INFO";
  constexpr std::size_t fixed = block + 40;
  constexpr std::size_t end = fixed + 52;
  std::string result(end, '\0');
  const auto put = [&result](std::size_t at, std::size_t number, std::size_t size = 4) {
    for (std::size_t i = 0; i < size; ++i) result[at + i] = static_cast<char>(number >> 8 * i);
  };
  result.replace(0, 2, "MZ");
  put(0x3C, 0x40);
  result.replace(0x40, 2, "PE");
  put(0x44, 0x14C, 2);  // 32-bit
  put(0x46, 1, 2);      // section
  put(0x54, section - optional, 2);
  put(0x56, 0x102, 2);
  put(optional, 0x10B, 2);
  put(optional + 32, address);
  put(optional + 92, 16);  // directories, of which the third are the resources
  put(optional + 112, address);
  put(optional + 116, end - resources);
  put(section + 8, end - resources);
  put(section + 12, address);
  put(section + 16, end - resources);
  put(section + 20, resources);
  // Three levels of one entry each: the type, the number, the language; then where the block lies.
  constexpr std::size_t ids[] = {16, 1, 0x409};
  for (std::size_t level = 0; level < 3; ++level) {
    const std::size_t at = resources + level * 0x18;
    put(at + 14, 1, 2);
    put(at + 16, ids[level]);
    put(at + 20, (level + 1) * 0x18 | (level < 2 ? 0x80000000U : 0U));
  }
  put(resources + 0x48, address + block - resources);
  put(resources + 0x4C, end - block);
  put(block, end - block, 2);
  put(block + 2, end - fixed, 2);
  for (std::size_t i = 0; i < name.size(); ++i) put(block + 6 + i * 2, name[i], 2);
  put(fixed, 0xFEEF04BD);
  const std::size_t dot = std::min(version.find('.'), version.size() - 1);
  put(fixed + 10, std::stoul(std::string(version.substr(0, dot))), 2);
  put(fixed + 8, std::stoul(std::string(version.substr(dot + 1))), 2);
  return result;
}

std::string FileContent(std::string_view option) {
  constexpr std::string_view size = "size=";
  constexpr std::string_view text = "text=";
  if (option.empty()) return std::string(1, '\0');
  if (option.starts_with(size)) return std::string(std::stoul(std::string(option.substr(5))), '\0');
  if (option.starts_with(text)) return Unescape(option.substr(5));
  constexpr std::string_view task = "job=";
  if (option.starts_with(task)) return TaskContent(option.substr(task.size()));
  constexpr std::string_view link = "link=";
  if (option.starts_with(link)) return LinkContent(option.substr(link.size()));
  constexpr std::string_view history = "history=";
  if (option.starts_with(history)) return HistoryContent(option.substr(history.size()));
  constexpr std::string_view version = "version=";
  if (option.starts_with(version)) return ProgramContent(option.substr(version.size()));
  throw SampleError(std::string(option) +
                    ": is neither size=, text=, job=, link=, history= nor version=");
}

void MakeFiles(const fs::path& list, const fs::path& target) {
  for (const std::string& line : Lines(list)) {
    const std::size_t bar = line.find(" | ");
    const std::string path = line.substr(0, bar);
    const std::string option = bar == line.npos ? "" : line.substr(bar + 3);
    const fs::path place = HostPath(target, path);
    if (path.back() == '\\') {
      fs::create_directories(place);
    } else {
      WriteNew(place, FileContent(option));
    }
  }
}

// A hive under construction, mounted at a key of the registry.
struct Mount {
  UnicodeString key;
  fs::path file;
  scrubwell::regf::HiveBuilder builder;
};

std::vector<Mount> ReadMounts(const fs::path& list, const fs::path& target) {
  std::vector<Mount> mounts;
  for (const std::string& line : Lines(list)) {
    const std::size_t mark = line.find(" = ");
    if (mark == line.npos) throw SampleError(list.string() + ": \"" + line + "\" has no \" = \"");
    const fs::path file = HostPath(target, line.substr(mark + 3));
    scrubwell::regf::BuildOptions options;
    options.fileName = scrubwell::FromUtf8(file.filename().string());
    mounts.push_back(
        {scrubwell::FromUtf8(line.substr(0, mark)), file, scrubwell::regf::HiveBuilder(options)});
  }
  return mounts;
}

// The mount whose key is the path or lies above it.
Mount& MountOf(std::vector<Mount>& mounts, const UnicodeString& path) {
  for (Mount& mount : mounts) {
    const std::size_t size = mount.key.size();
    if (path.size() >= size && (path.size() == size || path[size] == u'\\') &&
        scrubwell::SameText(path.substr(0, size), mount.key)) {
      return mount;
    }
  }
  throw SampleError(scrubwell::ToUtf8(path) + ": lies in none of the hives");
}

void AddRegistry(const fs::path& file, std::vector<Mount>& mounts) {
  const scrubwell::reg::Document document = scrubwell::reg::Parse(ReadText(file));
  if (!document.Ok()) {
    throw SampleError(file.string() + ":" + std::to_string(document.errorLine) + ": " +
                      document.error);
  }
  for (const scrubwell::reg::KeyEntry& entry : document.keys) {
    Mount& mount = MountOf(mounts, entry.path);
    const auto key =
        mount.builder.CreatePath(mount.builder.Root(), entry.path.substr(mount.key.size()));
    for (const scrubwell::reg::ValueEntry& value : entry.values) {
      mount.builder.SetValue(key, value.value);
    }
  }
}

void MakeSample(const fs::path& samples, const fs::path& target) {
  std::vector<Mount> mounts = ReadMounts(samples / "hives.txt", target);
  std::set<fs::path> texts;  // in the order of their names, so that equal samples are equal
  for (const auto& entry : fs::directory_iterator(samples / "registry")) {
    if (entry.path().extension() == ".reg") texts.insert(entry.path());
  }
  for (const fs::path& text : texts) AddRegistry(text, mounts);
  for (const Mount& mount : mounts) {
    const scrubwell::Bytes bytes = mount.builder.Build();
    WriteNew(mount.file, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  MakeFiles(samples / "files.txt", target);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: mksample SAMPLES TARGET\n", stderr);
    return 2;
  }
  try {
    MakeSample(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "mksample: %s.\n", error.what());
    return 1;
  }
  return 0;
}
