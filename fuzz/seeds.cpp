#include "seeds.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "backends/common/access_check.h"
#include "formats/job/job_samples.h"
#include "formats/lnk/lnk_samples.h"
#include "formats/msiecf/msiecf_samples.h"
#include "formats/pe/pe_samples.h"
#include "formats/regf/hive_samples.h"

namespace scrubwell::fuzz {
namespace {

using Seeds = std::vector<Bytes>;

Bytes Join(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

Bytes Of(std::string_view text) {
  return {text.begin(), text.end()};
}

Seeds Texts(std::initializer_list<std::string_view> texts) {
  Seeds seeds;
  for (const std::string_view text : texts) seeds.push_back(Of(text));
  return seeds;
}

// ---- Hives ----------------------------------------------------------------------------------

Seeds Hives(std::string_view) {
  return {regf::SmallHive({.lists = regf::ListKind::Index}),
          regf::SmallHive({.minorVersion = 3, .lists = regf::ListKind::Fast}),
          regf::SmallHive({.leafEntries = 2}), Join(regf::DirtyPrimary(), regf::NewLog({0, 1, 2})),
          Join(regf::DirtyPrimary(), regf::OldLog())};
}

Seeds Installations(std::string_view) {
  regf::HiveBuilder builder;
  const auto text = [&builder](UnicodeView key, UnicodeView name, UnicodeView value) {
    builder.SetText(builder.CreatePath(builder.Root(), key), name, value);
  };
  text(u"Microsoft\\Windows NT\\CurrentVersion", u"SystemRoot", u"C:\\Windows");
  text(u"Classes\\CLSID\\{5C4B0000-7A11-4E0D-9B1E-000000000013}\\InprocServer32", u"",
       u"C:\\gone.dll");
  text(u"Classes\\.x", u"", u"gone.x");
  text(u"Microsoft\\Windows\\CurrentVersion\\Run", u"x", u"C:\\gone.exe /x");
  text(u"Microsoft\\Windows\\CurrentVersion\\App Paths\\x.exe", u"", u"C:\\gone\\x.exe");
  for (const UnicodeView name : {u"C:\\gone\\a.dll", u"C:\\gone\\b.dll"}) {
    const UnicodeView key = u"Microsoft\\Windows\\CurrentVersion\\SharedDLLs";
    builder.SetNumber(builder.CreatePath(builder.Root(), key), name, 1);
  }
  return {builder.Build()};
}

Seeds Scripts(std::string_view) {
  Bytes script;
  for (unsigned i = 0; i < 24; ++i)
    for (const unsigned part : {i, i * 5 + 1, i * 3 % 9, i * 40})
      script.push_back(static_cast<std::uint8_t>(part));
  Seeds seeds = {Join(regf::SmallHive({.leafEntries = 2}), script)};
  for (const std::uint8_t kind : Bytes{0, 1, 2, 6, 13}) seeds.push_back(Join({kind}, script));
  return seeds;
}

Seeds Logs(std::string_view) {
  return {regf::NewLog({0, 1, 2}), regf::NewLog({1}), regf::OldLog()};
}

// ---- Other files ----------------------------------------------------------------------------

Seeds RegistryTexts(std::string_view samples) {
  Seeds seeds = Texts(
      {"[HKEY_LOCAL_MACHINE\\A]\n@=\"x\"\n\"n\\\\\"=dword:0000000f\n\"b\"=hex:01,\\\n  02\n",
       "[-HKEY_USERS\\A]\n[HKEY_USERS\\B]\n\"x\"=-\n\"m\"=hex(7):61,00,00,00\n;c\n",
       "REGEDIT4\n\n[HKEY_CLASSES_ROOT\\x]\n@=hex(2):25,41,00\n\"q\"=hex(b):0,0,0,0,0,0,0,1\n"});
  for (const auto& entry :
       std::filesystem::directory_iterator(std::string(samples) + "/registry")) {
    std::ifstream in(entry.path(), std::ios::binary);
    seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  return seeds;
}

Seeds Shortcuts(std::string_view) {
  const std::vector<Bytes> items = {lnk::kComputer, lnk::kDriveC,
                                    lnk::FileItem("DIRONE~1", u"Dir \u0416"),
                                    lnk::FileItem("A.EXE", u"")};
  Bytes list;
  for (const Bytes& item : items) list = Join(list, item);
  return {lnk::BuildLink({items, "C:\\b", "", {}, {}, u".\\r", u"%windir%\\e.exe"}),
          lnk::BuildLink({{}, "C:\\?", "?", u"C:\\b\\", u"\u65E5.exe"}), lnk::BuildLink({items}),
          lnk::BuildLink({{}, "", "", {}, {}, u"..\\r.exe"}), Join(list, {0, 0})};
}

Seeds Tasks(std::string_view) {
  return {job::BuildJob()};
}

Seeds ProgramFiles(std::string_view) {
  return {pe::BuildFile(pe::SampleTree(), false), pe::BuildFile(pe::SampleTree(), true)};
}

Seeds AddressFiles(std::string_view) {
  return {msiecf::BuildFile({"Visited: a@x", "Visited: \xE4@y", "Visited: a@z"})};
}

Seeds Descriptors(std::string_view) {
  const AccessEntry entries[] = {{true, 0, kKeyAllAccess, u"S-1-5-32-544"},
                                 {false, 8, kRightDelete, u"S-1-5-21-1-2-3-1001"},
                                 {true, 3, kRightSetValue, u"S-1-1-0"}};
  return {BuildDescriptor(u"S-1-5-18", entries), BuildDescriptor(u"S-1-5-32-544", {})};
}

Seeds Traces(std::string_view) {
  // The first byte is the source, the second how long the key is, then the key and the data.
  Seeds seeds;
  for (std::uint8_t source = 0; source < 120; ++source) {
    Bytes data = {source, 1, 'k'};
    for (const char unit : std::string_view("[F00000000][T01]*C:\\x.txt|\1")) {
      data.insert(data.end(), {static_cast<std::uint8_t>(unit), 0});
    }
    seeds.push_back(Join(data, Join({0, 0}, lnk::FileItem("A.EXE", u"Long A.exe"))));
  }
  return seeds;
}

// ---- Texts ----------------------------------------------------------------------------------

Seeds CommandLines(std::string_view) {
  return Texts(
      {"C:\\Program Files\\App\\app.exe /tray", "\"%ProgramFiles%\\App\\app.exe\" \"%1\" %*",
       "rundll32 \"%ProgramFiles%\\App\\gone.dll\",Entry %1",
       "C:\\Windows\\System32\\rundll32.exe C:\\Program Files\\A,B\\x.dll,Entry",
       "regsvr32 /s /u C:\\Gone\\x.ocx", "MsiExec.exe /I \"C:\\Gone\\f.msi\" /q",
       "cmd.exe /c start \"\" \"C:\\Gone\\x.exe\" -a", "wscript //B \"C:\\Gone\\s.vbs\"",
       "explorer.exe /e,C:\\Gone", "hh.exe C:\\Gone\\x.chm::/page.htm", "\\??\\C:\\Gone\\x.sys",
       "\\SystemRoot\\System32\\shell32.dll", "C:\\Program Files\\App\\unins000.exe /SILENT",
       "C:\\Gone App\\x;C:\\Program Files\\App\\app.exe", "file:///C:/a%20b",
       "@%SystemRoot%\\x.dll,-123;v2"});
}

Seeds Templates(std::string_view) {
  return Texts(
      {"#missingfile# in #existingkey:regjump# #existingkey:short# #existingvalue:namenoext# "
       "#x#\nexistingkey:32:HKEY_LOCAL_MACHINE\\SOFTWARE\\X\nexistingvalue:n",
       "#k:action##k:ext# ##k:path#\nk:HKEY_CLASSES_ROOT\\.x\\shell\\open\n\x1D\x1D"});
}

Seeds Journals(std::string_view) {
  return Texts(
      {"j{\"journal\":2,\"time\":\"t\",\"target\":\"/x\",\"product\":\"W\",\"undoes\":\"\","
       "\"identity\":\"i\"\n"
       "{\"problem\":0,\"id\":\"a\",\"plugin\":\"P\",\"kind\":1,\"caption\":\"c\",\"fixed\":1\n"
       "{\"item\":\"1\",\"action\":0,\"of\":0,\"place\":\"HKLM\\u005cSOFTWARE\\u005ca\","
       "\"name\":\"\",\"subkeys\":1,\"values\":1,\"bytes\":0,\"hive\":\"H\",\"path\":\"a\","
       "\"tree\":[{\"level\":0,\"name\":\"a\",\"security\":\"00\",\"time\":5,\"values\":[{"
       "\"value\":\"v\",\"type\":1,\"data\":\"6100\"}]},{\"level\":1,\"name\":\"x\","
       "\"class\":\"c\",\"security\":\"\",\"time\":1,\"link\":1,\"values\":[]}],\"before\":[],"
       "\"after\":[{\"value\":\"\",\"type\":0,\"data\":\"\"}]\n"
       "{\"item\":\"2\",\"action\":2,\"place\":\"p\",\"name\":\"n\",\"subkeys\":0,\"values\":0,"
       "\"bytes\":0,\"hive\":\"H\",\"path\":\"B\",\"tree\":[],\"before\":[{\"value\":\"n\","
       "\"type\":4,\"data\":\"01000000\"}],\"after\":[{\"value\":\"n\",\"type\":1,\"data\":\"\"}]\n"
       "{\"item\":\"3\",\"action\":5,\"place\":\"C:\\u005cx\",\"name\":\"\",\"subkeys\":0,"
       "\"values\":0,\"bytes\":3,\"existed\":1,\"digestBefore\":\"7\",\"hashAfter\":0,\"mode\":420,"
       "\"owner\":0,\"group\":0,\"seconds\":1,\"nanoseconds\":2,\"extended\":[{\"name\":\"e\","
       "\"data\":\"ff\"}]\n"
       "{\"end\":3\n",
       "r{\"record\":2,\"session\":\"/b/s\"\n"
       "{\"step\":1,\"drive\":67,\"path\":\"Windows/x\",\"existed\":1,\"before\":\"5\","
       "\"after\":\"6\"\n"
       "{\"step\":0,\"drive\":0,\"path\":\"t/undone.jsonl\",\"existed\":0,\"before\":\"\","
       "\"after\":\"1\",\"mode\":1,\"extended\":[{\"name\":\"user.x\",\"data\":\"00\"}]\n"
       "{\"end\":2\n",
       "u{\"undone\":\"1\"\n{\"undone\":\"3\"\n"});
}

Seeds Arguments(std::string_view) {
  return Texts(
      {"scan\n--windows\n/mnt/c\n--user\nanna\n--drive\nE=/mnt/e:removable\n--plugins\n"
       "SharedFiles,Fonts\n--format\njson\n--output\n/tmp/x\n--lang\nde\n--all",
       "clean\n--windows=/mnt/c\n--select\n3e8ec067c890,5c99f0508946\n--yes\n--backup\n/b\n"
       "--until-clean",
       "undo\n20240501T120000Z\n--item\n3,4\n--export\nx.reg", "undo\n--list",
       "recover\n--windows\n/mnt/c", "plugins\n--help", "--version", "scan\n--help",
       "ignore\nadd\n3e8ec067c890\n--windows\n/c\n--machine\n--reason\nwhy", "E=/mnt/e:cdrom"});
}

Seeds Reports(std::string_view) {
  return Texts(
      {R"({"scrubwell":"0.1.0","status":"complete","problems":[{"id":"3e8ec067c890","plugin":)"
       R"("SharedFiles","kind":1,"data":["existingvalue:C:\\gone.dll"],"user":"anna"},{"id":"",)"
       R"("plugin":"Fonts","kind":2,"identification":"32:2147483650\u001d\ud800","data":[]}],)"
       R"("counts":{"left_out":0,"hidden":1}})",
       R"({"problems":[],"scrubwell":"1","status":"stopped"})"});
}

Seeds Identities(std::string_view) {
  Bytes guid = Of("DMIO:ID:");
  guid.resize(24, 0x5A);
  return {guid, {1, 2, 3, 4, 0, 0, 16, 0, 0, 0, 0, 0}};
}

Seeds IniFiles(std::string_view) {
  return Texts({"[a]\r\nk=v\r\n;c\r\n[A]\r\nk=\"w\"\r\n", "[a]\nk\n=x\nk = y",
                std::string_view("\xFF\xFE[\0a\0]\0\n\0k\0=\0v\0", 16)});
}

constexpr std::pair<std::string_view, Seeds (*)(std::string_view)> kTargets[] = {
    {"command", &CommandLines},
    {"editor", &Scripts},
    {"hive", &Hives},
    {"ini", &IniFiles},
    {"installation", &Installations},
    {"job", &Tasks},
    {"journal", &Journals},
    {"lnk", &Shortcuts},
    {"log", &Logs},
    {"msiecf", &AddressFiles},
    {"pe", &ProgramFiles},
    {"program", &Arguments},
    {"reg", &RegistryTexts},
    {"security", &Descriptors},
    {"since", &Reports},
    {"template", &Templates},
    {"trace", &Traces},
    {"volume", &Identities},
};

}  // namespace

std::vector<std::string_view> Targets() {
  std::vector<std::string_view> names;
  for (const auto& [name, make] : kTargets) names.push_back(name);
  return names;
}

std::vector<Bytes> SeedsOf(std::string_view target, std::string_view samples) {
  for (const auto& [name, make] : kTargets) {
    if (name == target) return make(samples);
  }
  return {};
}

}  // namespace scrubwell::fuzz
