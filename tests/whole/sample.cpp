#include "whole/sample.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "formats/lnk/item_list.h"
#include "hosts/driver/problem_id.h"
#include "plugins/package.h"
#include "registry/Stringhelper.h"

namespace scrubwell::test {

namespace {

namespace fs = std::filesystem;

const fs::path kSamples = fs::path(SCRUBWELL_SOURCE_DIR) / "samples";

std::string ReadText(const fs::path& path) {
  const Bytes bytes = ReadBytes(path);
  return {bytes.begin(), bytes.end()};
}

// One line of files.txt that the files in memory don't know.
void AddContent(MemoryWorld& world, const UnicodeString& path, const std::string& kind,
                const std::string& what) {
  if (kind == "job") {
    world.tasks.jobs.emplace_back(ExtractFileName(path), FromUtf8(what));
  } else if (kind == "link") {
    world.shell.links[path] = FromUtf8(what);
  } else if (kind == "version") {
    FileVersion& version = world.resources.versions[path];
    version.major = static_cast<std::uint16_t>(std::stoi(what));
    version.minor = static_cast<std::uint16_t>(std::stoi(what.substr(what.find('.') + 1)));
  } else if (kind == "history") {
    std::istringstream addresses(what);
    for (std::string address; addresses >> address;) {
      world.browser.urls.push_back(FromUtf8(address));
      world.browser.cacheNames.push_back(u"Visited: anna@" + FromUtf8(address));
    }
  }
}

}  // namespace

Package::Package(TPlatform& platform) {
  SetPlatform(&platform);
  SetPackageLanguage(TLanguage::English);
  LoadPackage();
  StopSearch = false;
}

Package::~Package() {
  UnloadPackage();
  SetPlatform(nullptr);
}

Findings Found() {
  Findings found;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& problem = (*SweepErrors)[i];
    if (!problem.Visible) continue;
    std::string line = ToUtf8(problem.PluginID) + " " + std::to_string(problem.ErrorType) + " " +
                       ToUtf8(problem.Caption);
    for (const UnicodeString& item : problem.Data) line += " | " + ToUtf8(item);
    found[ProblemDigest(problem)] = line;
  }
  return found;
}

Findings Package::Scan() {
  EXPECT_EQ(ScanDriver().Scan(), RunOutcome::Complete);
  return Found();
}

/// Reads item lists as a disk's shell does.
class MemorySample::Shell final : public IShell {
 public:
  explicit Shell(MemoryShell& inner) : inner_(inner) {}
  Status SpecialFolder(int csidl, UnicodeString& out) override {
    return inner_.SpecialFolder(csidl, out);
  }
  Status LinkTarget(UnicodeView linkFile, UnicodeString& out) override {
    return inner_.LinkTarget(linkFile, out);
  }
  Status ItemListPath(const Bytes& list, UnicodeString& out) override {
    // Unknown there, unless a fault was asked for.
    const Status status = inner_.ItemListPath(list, out);
    return status == Status::Unknown ? lnk::PathOfItemList(list, out) : status;
  }

 private:
  MemoryShell& inner_;
};

MemorySample::MemorySample()
    : backend_({.userSid = u"S-1-5-21-3623811015-3361044348-30300820-1001", .userName = u"anna"}) {
  static const std::vector<std::string> kTexts = [] {
    std::vector<std::string> texts;
    for (const auto& entry : fs::directory_iterator(kSamples / "registry")) {
      texts.push_back(ReadText(entry.path()));
    }
    return texts;
  }();
  for (const std::string& text : kTexts) EXPECT_EQ(backend_.AddRegistry(text), "");
  static const std::string kFiles = ReadText(kSamples / "files.txt");
  std::istringstream lines(kFiles);
  std::string plain;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t bar = line.find(" | ");
    const std::size_t equals = line.find('=', bar);
    const std::string kind = bar == line.npos ? "" : line.substr(bar + 3, equals - bar - 3);
    if (kind.empty() || kind == "size" || kind == "text" || line.starts_with('#')) {
      plain += line + "\n";
    } else {
      plain += line.substr(0, bar) + "\n";
      AddContent(backend_.World(), FromUtf8(line.substr(0, bar)), kind, line.substr(equals + 1));
    }
  }
  EXPECT_EQ(backend_.AddFiles(plain), "");
  // On a disk the rules of the firewall are read from the registry.
  backend_.World().services.services[u"MpsSvc"].state = 4;
  backend_.World().firewall.applications = {
      {u"Lumen", u"C:\\Program Files\\Lumen\\lumen.exe", true},
      {u"Aquila Server", u"C:\\Program Files\\Aquila\\aqserve.exe", true}};
  shell_ = std::make_shared<Shell>(backend_.World().shell);
  TPlatform& p = backend_.Platform();
  platform_ = std::make_unique<TPlatform>(
      TPlatform{p.registry, p.files, p.system, p.text, *shell_, p.resources, p.profiles, p.services,
                p.tasks, p.firewall, p.browser, p.images, p.notes, p.product});
}

std::string Difference(const Findings& expected, const Findings& found) {
  std::string text;
  for (const auto& [digest, what] : expected) {
    if (!found.contains(digest)) text += "missing: " + what + "\n";
  }
  for (const auto& [digest, what] : found) {
    if (!expected.contains(digest)) text += "more: " + what + "\n";
  }
  return text;
}

}  // namespace scrubwell::test
