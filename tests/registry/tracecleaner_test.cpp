#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "backends/memory/memory_backend.h"
#include "formats/reg/reg_text.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "registry/Zmtracecleaner.h"

namespace scrubwell {
namespace {

using Lines = std::vector<std::string>;

const std::string kExplorer =
    R"([HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\)";

// Data as a registry text, built piece by piece.
struct Data {
  Bytes bytes;
  Data& U32(std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
  }
  Data& Text(UnicodeView text) { return Add(TextData(text)); }
  Data& Add(const Bytes& data) {
    bytes.insert(bytes.end(), data.begin(), data.end());
    return *this;
  }
  [[nodiscard]] std::string Hex() const {
    return ToUtf8(reg::FormatValue({u"", REGT_BINARY, bytes})).substr(2) + "\n";
  }
};

// A stand-in of a shell item: the platform of the test knows its name.
Bytes Item(char letter) {
  return {5, 0, 0x32, static_cast<std::uint8_t>(letter), 0};
}

// One entry of a menu's order, of both shapes.
Bytes MenuPart(std::uint32_t position, char letter, bool augmented) {
  Data data;
  const Bytes item = Item(letter);
  const auto size = static_cast<std::uint32_t>(8 + (augmented ? 16 : 0) + item.size() + 2);
  data.U32(size).U32(position);
  if (augmented) data.U32(size - 14).U32(0x4D677541).U32(2).U32(1);
  return data.Add(item).Add({0, 0}).bytes;
}

Data Menu(const std::vector<Bytes>& parts) {
  Data all;
  for (const Bytes& part : parts) all.Add(part);
  const auto size = static_cast<std::uint32_t>(all.bytes.size());
  Data out;
  out.U32(8).U32(2).U32(size + 12).U32(1).U32(static_cast<std::uint32_t>(parts.size()));
  return out.Add(all.bytes);
}

class TraceCleaner : public ::testing::Test {
 protected:
  TraceCleaner() {
    SetPlatform(&backend_.Platform());
    for (const char letter : {'a', 'b', 'c'}) {
      Bytes drive = {0x19, 0, 0x2F, 'C', ':', '\\'};
      drive.resize(25);
      const UnicodeString name(1, static_cast<char16_t>(letter));
      auto& lists = backend_.World().shell.lists;
      lists[Data{drive}.Add(Item(letter)).Add({0, 0}).bytes] = u"C:\\" + name + u".lnk";
      lists[{static_cast<std::uint8_t>(letter)}] = u"C:\\dir\\" + name + u".txt";
    }
  }
  ~TraceCleaner() override { SetPlatform(nullptr); }

  void Add(const std::string& text) { ASSERT_EQ(backend_.AddRegistry(text), "") << text; }

  // Every trace of the application: value, target, source type and flags.
  Lines Search(UnicodeView application) {
    Lines lines;
    found_.clear();
    TZMMRU scanner(this);
    scanner.OnScanTraceFound = [&](TTracePlugin& plugin, TTraceSourceType type,
                                   const TTraceSourceData& data, TTraceTargetType,
                                   TTraceFlags flags, const UnicodeString& target) {
      EXPECT_TRUE(plugin.Holds(data, target));
      EXPECT_FALSE(plugin.Holds(data, target + u"x"));
      found_.emplace_back(data, target);
      lines.push_back(ToUtf8(data.valueName + u"|" + target) + "|" + std::to_string(type) + "|" +
                      std::to_string(flags));
    };
    Plugin(application).Search(scanner);
    return lines;
  }
  static TTracePlugin& Plugin(UnicodeView application) {
    const TTracePluginList& plugins = TracePlugins();
    std::int32_t i = 0;
    while (plugins.Get(i)->ApplicationName() != application) ++i;
    return *plugins.Get(i);
  }
  // Notes the first trace found as removed and repairs.
  void RemoveFirst(UnicodeView application, bool deleteValue) {
    const auto& [data, target] = found_.front();
    if (deleteValue) DeleteRegValue(data.root, data.key, data.valueName, {});
    Plugin(application).NoteRemoval(data, target);
    Plugin(application).Repair();
    backend_.ClearJournal();
    Plugin(application).Repair();
    EXPECT_TRUE(backend_.Journal().empty()) << "what was repaired is forgotten";
  }
  Bytes ValueOf(const std::string& key, UnicodeView name) {
    RegValue value;
    const UnicodeString path = FromUtf8(key.substr(key.find('\\') + 1));
    Platform().registry.GetValue({RootKey::CurrentUser, path, View::Native}, name, value);
    return value.data;
  }

  MemoryBackend backend_;
  std::vector<std::pair<TTraceSourceData, UnicodeString>> found_;
};

TEST_F(TraceCleaner, ListsOfShellItems) {
  const std::string key = kExplorer + "ComDlg32\\OpenSavePidlMRU\\txt";
  const auto order = Data().U32(1).U32(7).U32(0).U32(0xFFFFFFFF).U32(5);
  Add(key + "]\n\"0\"=hex:61\n\"1\"=hex:62\n\"2\"=hex:ff\n\"01\"=hex:61\n\"x\"=hex:61\n" +
      "\"MRUListEx\"=" + order.Hex());
  EXPECT_EQ(Search(u"Windows"), (Lines{"0|C:\\dir\\a.txt|1|6", "1|C:\\dir\\b.txt|1|6"}));
  RemoveFirst(u"Windows", true);
  // Numbers of no value go as well, and what lies behind the end.
  EXPECT_EQ(ValueOf(key, u"MRUListEx"), Data().U32(1).U32(0xFFFFFFFF).bytes);
}

TEST_F(TraceCleaner, FoldersLookedIntoLast) {
  const auto program = Data().Text(u"x.exe");
  const std::string key = kExplorer + "ComDlg32\\LastVisitedPidlMRU";
  Add(key + "]\n\"0\"=" + Data(program).Add({'a'}).Hex() + "\"1\"=" + program.Hex() +
      "\"2\"=" + Data(program).Add({0xFF}).Hex() + "\"3\"=hex:61,00,62\n\"4\"=hex:\n" +
      "\"MRUListEx\"=" + Data().U32(1).U32(0).U32(0xFFFFFFFF).Hex());
  Add(kExplorer + "ComDlg32\\LastVisitedMRU]\n\"a\"=" + Data(program).Text(u"C:\\gone").Hex() +
      "\"b\"=" + program.Hex() + "\"c\"=" + Data(program).Add({0x43, 0}).Hex() +
      "\"MRUList\"=\"abc\"\n");
  EXPECT_EQ(Search(u"Windows"), (Lines{"a|C:\\gone|1|6", "0|C:\\dir\\a.txt|1|6"}));
  found_.erase(found_.begin());
  RemoveFirst(u"Windows", true);
  EXPECT_EQ(ValueOf(key, u"MRUListEx"), Data().U32(1).U32(0xFFFFFFFF).bytes);
}

TEST_F(TraceCleaner, RecentDocuments) {
  const auto document = [](char letter) {
    return Data().Text(u"some document").Add(Item(letter)).Add({0, 0}).Hex();
  };
  Add(kExplorer + "RecentDocs\\.txt]\n\"0\"=" + document('a') + "\"1\"=" + document('b') +
      "\"2\"=" + document('c') + "\"3\"=" + document('x') + "\"4\"=hex:61,00,62\n" +
      "\"5\"=" + Data().Text(u"cut").Add({9, 0, 0x32}).Hex());
  const UnicodeString recent = u"C:\\Users\\tester\\AppData\\Roaming\\Microsoft\\Windows\\Recent\\";
  backend_.Files().AddFile(recent + u"b.lnk");
  backend_.Files().AddFile(recent + u"c.lnk");
  backend_.World().shell.links[recent + u"b.lnk"] = u"\"D:\\b.txt\"";
  // The link of the third names no file, the item of the fourth is not known.
  EXPECT_EQ(Search(u"Windows"), (Lines{"0|" + ToUtf8(recent) + "a.lnk|1|6", "1|D:\\b.txt|1|6"}));
}

TEST_F(TraceCleaner, OrdersOfTheStartMenu) {
  const std::string key = kExplorer + "MenuOrder\\Start Menu2\\Programs\\Dir\\Deep";
  const std::vector<Bytes> parts = {MenuPart(2, 'a', true), MenuPart(0, 'b', false),
                                    MenuPart(1, 'x', true), MenuPart(0x7FFFFFFF, 'c', false)};
  Add(key + "]\n\"Order\"=" + Menu(parts).Hex());
  Add(kExplorer + "MenuOrder\\Start Menu]\n\"Order\"=" + Menu({MenuPart(0, 'c', true)}).Hex());
  Add(kExplorer + "MenuOrder\\Start Menu\\&Programs]\n\"Order\"=hex:01,02\n\"Other\"=hex:61\n");
  Add(kExplorer + "MenuOrder\\Start Menu\\&Favorites\\Programs]\n\"Order\"=" +
      Menu({MenuPart(0, 'a', true)}).Hex());
  const Lines found = {"Order|c.lnk|2|20", "Order|Dir\\Deep\\a.lnk|2|20",
                       "Order|Dir\\Deep\\b.lnk|2|20", "Order|Dir\\Deep\\c.lnk|2|20"};
  EXPECT_EQ(Search(u"Windows"), found);
  found_.erase(found_.begin());
  RemoveFirst(u"Windows", false);
  // What can't be named stays, and positions close up.
  EXPECT_EQ(ValueOf(key, u"Order"), Menu({MenuPart(0, 'b', false), MenuPart(1, 'x', true),
                                          MenuPart(0x7FFFFFFF, 'c', false)})
                                        .bytes);
  EXPECT_EQ(Search(u"Windows").size(), 3U);
}

TEST_F(TraceCleaner, DamagedMenuOrders) {
  const Bytes whole = Menu({MenuPart(0, 'a', false), MenuPart(1, 'b', true)}).bytes;
  const std::string key = kExplorer + "MenuOrder\\Start Menu\\&Programs";
  // No truncation and no wrong size may do harm; a count that does not fit forbids the repair.
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Data cut{whole};
    cut.bytes.resize(size);
    Add(key + "]\n\"Order\"=" + cut.Hex());
    if (Search(u"Windows").empty()) continue;
    RemoveFirst(u"Windows", false);
    EXPECT_EQ(ValueOf(key, u"Order"), cut.bytes) << size;
  }
  for (std::size_t at = 0; at < whole.size(); ++at) {
    Data wrong{whole};
    wrong.bytes[at] = 0xFF;
    Add(key + "]\n\"Order\"=" + wrong.Hex());
    EXPECT_LE(Search(u"Windows").size(), 2U);
  }
}

TEST_F(TraceCleaner, ListsInOneValue) {
  const std::string key = R"([HKEY_CURRENT_USER\Software\7-Zip\FM)";
  Add(key + "]\n\"FolderHistory\"=" +
      Data().Text(u"C:\\gone").Text(u"").Text(u"C:\\here").Add({0x43, 0}).Hex());
  EXPECT_EQ(Search(u"7-Zip"), (Lines{"FolderHistory|C:\\gone|2|4", "FolderHistory|C:\\here|2|4"}));
  RemoveFirst(u"7-Zip", false);
  EXPECT_EQ(ValueOf(key, u"FolderHistory"),
            Data().Text(u"").Text(u"C:\\here").Add({0x43, 0}).bytes);
}

TEST_F(TraceCleaner, NumberedLists) {
  // What is left after the first entry was removed.
  const std::pair<const char*, const char*> rows[] = {
      {"File1 File2 File3", "File1=File2 File2=File3"},
      {"File1 File3 File10", "File1=File3 File2=File10"},
      {"File9", ""},
      // Not of the list: they stay.
      {"File1 File0 File01 FileX File1234567890 Other",
       "File01=File01 File0=File0 File1234567890=File1234567890 FileX=FileX Other=Other"},
  };
  const std::string key =
      R"([HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Applets\Paint\Recent File List)";
  const UnicodeString path = FromUtf8(key.substr(key.find('\\') + 1));
  for (const auto& [all, wanted] : rows) {
    std::string text = key + "]\n";
    for (const UnicodeString& name : ParamXAll(FromUtf8(all), u' ')) {
      text += "\"" + ToUtf8(name) + "\"=\"" + ToUtf8(name) + "\"\n";
    }
    DeleteRegKey(RootKey::CurrentUser, path, {});
    backend_.Registry().ForgetDeletions();
    Add(text);
    ASSERT_FALSE(Search(u"Paint").empty());
    RemoveFirst(u"Paint", true);
    TStringList names, data;
    EnumRegValuesEx(RootKey::CurrentUser, path, names, data, {});
    std::set<std::string> left;
    for (std::size_t i = 0; i < names.size(); ++i) left.insert(ToUtf8(names[i] + u"=" + data[i]));
    std::string joined;
    for (const std::string& line : left) joined += (joined.empty() ? "" : " ") + line;
    EXPECT_EQ(joined, wanted) << all;
  }
}

}  // namespace
}  // namespace scrubwell
