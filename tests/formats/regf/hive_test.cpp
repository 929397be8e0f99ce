#include <gtest/gtest.h>

#include "formats/regf/hive_samples.h"

namespace scrubwell::regf {
namespace {

Bytes Pattern(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
  return bytes;
}

const std::vector<UnicodeString> OddNames = {
    u"plain",        u"UPPER",      u"gr\u00F6\u00DFe",          u"\u041A\u043B\u044E\u0447",
    u"\u00FFumlaut", u"lone\xD800", UnicodeString(u"nul\0x", 5), UnicodeString(u"nul\0", 4)};

struct ShapeRow {
  const char* what;
  BuildOptions options;
  std::size_t children;
};

const ShapeRow Shapes[] = {
    {"li", {.lists = ListKind::Index}, 40},
    {"lf", {.lists = ListKind::Fast}, 40},
    {"lh", {.lists = ListKind::Hash}, 40},
    {"ri of lh", {.leafEntries = 7}, 400},
    {"ri of li", {.lists = ListKind::Index, .leafEntries = 1}, 50},
    {"version 1.3, data in one piece", {.minorVersion = 3, .lists = ListKind::Fast}, 3},
    {"many", {}, 75000},
};

/// Names that start alike, in no order: every list must be sorted by the builder.
UnicodeString ChildName(std::size_t i) {
  return u"Child" + IntToStr(static_cast<int>(i));
}

HiveBuilder MakeShape(const ShapeRow& row) {
  HiveBuilder builder(row.options);
  for (std::size_t i = 0; i < row.children; ++i) {
    builder.SetNumber(builder.Create(builder.Root(), ChildName(i)), u"n",
                      static_cast<std::uint32_t>(i));
  }
  const auto odd = builder.CreatePath(builder.Root(), u"Odd\\\\Names\\");
  for (const UnicodeString& name : OddNames) {
    builder.SetText(builder.Create(odd, name), name, name);
  }
  const auto data = builder.Create(builder.Root(), u"Data");
  for (const std::size_t size : {0U, 1U, 4U, 5U, 16344U, 16345U, 40000U}) {
    builder.SetValue(data, {IntToStr(static_cast<int>(size)), REGT_BINARY, Pattern(size)});
  }
  builder.SetClass(data, u"Kla\u00DFe");
  builder.SetSecurity(data, Pattern(44));
  builder.SetLink(builder.Create(data, u"link"));
  return builder;
}

void ExpectChild(const Hive& hive, CellOffset parent, UnicodeView name) {
  for (const UnicodeString& spelling : {UpperCase(name), LowerCase(name)}) {
    CellOffset key = NoCell;
    UnicodeString stored;
    if (UpperCase(spelling) != UpperCase(name)) continue;  // units whose lower case has no way back
    ASSERT_EQ(hive.Child(parent, spelling, key), Status::Ok) << ToUtf8(spelling);
    ASSERT_EQ(hive.Name(key, stored), Status::Ok);
    EXPECT_EQ(stored, name);
  }
  CellOffset none = NoCell;
  EXPECT_EQ(hive.Child(parent, UnicodeString(name) + u"!", none), Status::Absent);
}

TEST(HiveReader, ReadsBackEveryShape) {
  for (const ShapeRow& row : Shapes) {
    SCOPED_TRACE(row.what);
    const HiveBuilder builder = MakeShape(row);
    const OpenedHive opened = Hive::FromBytes(builder.Build(), "sample");
    ASSERT_TRUE(opened.hive) << opened.error;
    const Hive& hive = *opened.hive;
    EXPECT_FALSE(hive.Facts().dirty);
    std::size_t keys = 0;
    EXPECT_EQ(hive.Walk(hive.Root(), [&keys](const Subkey&, int) { ++keys; }), Status::Ok);
    EXPECT_EQ(keys, 1 + row.children + 2 + OddNames.size() + 2);

    for (std::size_t i = 0; i < row.children; i += row.children / 20 + 1) {
      ExpectChild(hive, hive.Root(), ChildName(i));
    }
    CellOffset odd = NoCell;
    ASSERT_EQ(hive.Descend(hive.Root(), u"odd\\NAMES", odd), Status::Ok);
    for (const UnicodeString& name : OddNames) {
      ExpectChild(hive, odd, name);
      CellOffset key = NoCell;
      RegValue value;
      hive.Child(odd, name, key);
      EXPECT_EQ(hive.Value(key, UpperCase(name), value), Status::Ok);
      EXPECT_EQ(value.name, name);
      EXPECT_EQ(value.data.size(), name.size() * 2 + 2);
    }
    CellOffset data = NoCell;
    std::vector<RegValue> values;
    ASSERT_EQ(hive.Child(hive.Root(), u"DATA", data), Status::Ok);
    ASSERT_EQ(hive.Values(data, values), Status::Ok);
    ASSERT_EQ(values.size(), 7U);
    for (const RegValue& value : values) {
      EXPECT_EQ(IntToStr(static_cast<int>(value.data.size())), value.name);
      EXPECT_EQ(value.data, Pattern(value.data.size()));
    }
    UnicodeString className;
    EXPECT_EQ(hive.ClassName(data, className), Status::Ok);
    EXPECT_EQ(className, u"Kla\u00DFe");
    CellOffset link = NoCell;
    KeyFacts facts;
    ASSERT_EQ(hive.Child(data, u"link", link), Status::Ok);
    ASSERT_EQ(hive.Key(link, facts), Status::Ok);
    EXPECT_TRUE(facts.IsLink());
    ByteView own, inherited, roots;
    EXPECT_EQ(hive.Security(data, own), Status::Ok);
    EXPECT_EQ(hive.Security(link, inherited), Status::Ok);
    EXPECT_EQ(hive.Security(hive.Root(), roots), Status::Ok);
    EXPECT_EQ(Bytes(own.begin(), own.end()), Pattern(44));
    EXPECT_EQ(inherited.data(), own.data());
    EXPECT_NE(roots.data(), own.data());
  }
}

TEST(HiveReader, OtherReadersSeeTheSameTree) {
  const TempFolder folder;
  for (const ShapeRow& row : Shapes) {
    // hivexml gives up above some 70,000 subkeys and knows no segments before 1.5.
    if (row.children > 70000 || row.options.minorVersion < 5) continue;
    SCOPED_TRACE(row.what);
    HiveBuilder builder(row.options);
    for (std::size_t i = 0; i < row.children; ++i) {
      const auto key = builder.Create(builder.Root(), ChildName(i));
      builder.SetText(key, u"", u"text");
      builder.SetValue(key, {u"big", REGT_BINARY, Pattern(i % 10 == 0 ? 16345 : 16)});
    }
    const std::string path = folder.Store("sample", builder.Build()).string();
    for (const Witness& witness : Witnesses) {
      SCOPED_TRACE(witness.program);
      const std::string program = witness.program;
      if (OutputOf("command -v " + program).empty()) continue;
      const std::string output = OutputOf(program + " " + path);
      EXPECT_EQ(CountOf(output, witness.key), row.children + 1);
      EXPECT_EQ(CountOf(output, witness.value), row.children * 2);
    }
  }
}

/// A hive with one key "Box" to be damaged, and "Sound" beside it that must stay readable.
struct Patient {
  Bytes image;
  CellOffset root = NoCell, box = NoCell, alpha = NoCell, beta = NoCell, gamma = NoCell;
  CellOffset big = NoCell;  ///< the value with segmented data

  std::span<std::uint8_t> At(CellOffset cell) {
    return std::span(image).subspan(BaseBlockSize + cell + 4U);
  }
  std::uint32_t Field(CellOffset cell, std::size_t field) { return Get32(At(cell), field); }
  std::span<std::uint8_t> List() { return At(Field(box, nk::SubkeyList)); }
  std::span<std::uint8_t> ValueList() { return At(Field(box, nk::ValueList)); }
};

Patient MakePatient() {
  HiveBuilder builder;
  const auto box = builder.Create(builder.Root(), u"Box");
  for (const UnicodeView name : {u"alpha", u"beta", u"gamma"}) builder.Create(box, name);
  builder.SetText(builder.CreatePath(box, u"beta\\deep"), u"", u"x");
  builder.SetText(box, u"", u"default");
  builder.SetValue(box, {u"big", REGT_BINARY, Pattern(20000)});
  builder.SetText(builder.Create(builder.Root(), u"Sound"), u"v", u"well");
  Patient patient{builder.Build()};
  const OpenedHive opened = Hive::FromBytes(patient.image, "patient");
  const Hive& hive = *opened.hive;
  ValueFacts big;
  patient.root = hive.Root();
  hive.Child(hive.Root(), u"Box", patient.box);
  hive.Child(patient.box, u"alpha", patient.alpha);
  hive.Child(patient.box, u"beta", patient.beta);
  hive.Child(patient.box, u"gamma", patient.gamma);
  hive.FindValue(patient.box, u"big", big);
  patient.big = big.cell;
  return patient;
}

struct DamageRow {
  const char* what;
  void (*damage)(Patient&);
  Status list;            ///< of enumerating Box
  std::size_t delivered;  ///< subkeys of Box
  Status beta;            ///< of looking up Box\beta
  Status missing;         ///< of looking up what Box never had
  Status values = Status::Ok;
};

constexpr Status Ok = Status::Ok;
constexpr Status Absent = Status::Absent;
constexpr Status Corrupt = Status::Corrupt;

const DamageRow Damages[] = {
    {"nothing", [](Patient&) {}, Ok, 3, Ok, Absent},
    {"root as a child", [](Patient& p) { Put32(p.List(), 4, p.root); }, Corrupt, 2, Ok, Corrupt},
    {"itself as a child", [](Patient& p) { Put32(p.List(), 4, p.box); }, Corrupt, 2, Ok, Corrupt},
    {"the list of its parent",
     [](Patient& p) { Put32(p.At(p.box), nk::SubkeyList, p.Field(p.root, nk::SubkeyList)); },
     Corrupt, 0, Corrupt, Corrupt},
    {"a grandchild listing its ancestors",
     [](Patient& p) { Put32(p.At(p.beta), nk::SubkeyList, p.Field(p.box, nk::SubkeyList)); }, Ok, 3,
     Ok, Absent},
    {"one child twice", [](Patient& p) { Put32(p.List(), 4 + 16, p.alpha); }, Corrupt, 2, Ok,
     Corrupt},
    {"order broken",
     [](Patient& p) {
       Put32(p.List(), 4, p.gamma);
       Put32(p.List(), 4 + 16, p.alpha);
     },
     Ok, 3, Ok, Absent},
    {"order broken, found by walking",
     [](Patient& p) {
       Put32(p.List(), 4, p.beta);
       Put32(p.List(), 4 + 8, p.alpha);
     },
     Ok, 3, Ok, Absent},
    {"wild child", [](Patient& p) { Put32(p.List(), 4 + 8, 0xFFFFFFF0U); }, Corrupt, 2, Corrupt,
     Corrupt},
    {"unaligned child", [](Patient& p) { Put32(p.List(), 4, p.alpha + 4); }, Corrupt, 2, Ok,
     Corrupt},
    {"child in a free cell", [](Patient& p) { Put32(p.image, BaseBlockSize + p.alpha, 88); },
     Corrupt, 2, Ok, Corrupt},
    {"child in a cell of no size", [](Patient& p) { Put32(p.image, BaseBlockSize + p.alpha, 0); },
     Corrupt, 2, Ok, Corrupt},
    {"child in an endless cell",
     [](Patient& p) { Put32(p.image, BaseBlockSize + p.alpha, 0x80000000U); }, Corrupt, 2, Ok,
     Corrupt},
    {"child with a name beyond its cell",
     [](Patient& p) { Put16(p.At(p.alpha), nk::NameSize, 0x7FFF); }, Corrupt, 2, Ok, Corrupt},
    {"child with half a unit", [](Patient& p) { Put16(p.At(p.alpha), nk::Flags, 0); }, Corrupt, 2,
     Ok, Corrupt},
    {"list longer than its cell", [](Patient& p) { Put16(p.List(), 2, 0xFFFF); }, Corrupt, 3, Ok,
     Corrupt},
    {"list shorter than the count", [](Patient& p) { Put16(p.List(), 2, 2); }, Corrupt, 2, Ok,
     Corrupt},
    {"no list", [](Patient& p) { Put32(p.At(p.box), nk::SubkeyList, NoCell); }, Corrupt, 0, Corrupt,
     Corrupt},
    {"unknown list", [](Patient& p) { p.List()[0] = 'x'; }, Corrupt, 0, Corrupt, Corrupt},
    {"index of itself",
     [](Patient& p) {
       std::copy_n("ri", 2, p.List().begin());
       Put16(p.List(), 2, 1);
       Put32(p.List(), 4, p.Field(p.box, nk::SubkeyList));
     },
     Corrupt, 0, Corrupt, Corrupt},
    {"impossible counts", [](Patient& p) { Put32(p.At(p.box), nk::SubkeyCount, 0x40000000U); },
     Corrupt, 0, Corrupt, Corrupt, Corrupt},
    {"wild value list", [](Patient& p) { Put32(p.At(p.box), nk::ValueList, 0x7FFFFFF8U); }, Ok, 3,
     Ok, Absent, Corrupt},
    {"more values than listed", [](Patient& p) { Put32(p.At(p.box), nk::ValueCount, 5); }, Ok, 3,
     Ok, Absent, Corrupt},
    {"wild value", [](Patient& p) { Put32(p.ValueList(), 4, 8); }, Ok, 3, Ok, Absent, Corrupt},
    {"value with a name beyond its cell",
     [](Patient& p) { Put16(p.At(p.big), vk::NameSize, 4000); }, Ok, 3, Ok, Absent, Corrupt},
    {"five bytes inside the value",
     [](Patient& p) { Put32(p.At(p.big), vk::DataSize, vk::Inline | 5); }, Ok, 3, Ok, Absent,
     Corrupt},
    {"data beyond the file", [](Patient& p) { Put32(p.At(p.big), vk::DataSize, 0x7FFFFFFFU); }, Ok,
     3, Ok, Absent, Corrupt},
    {"data beyond its segments", [](Patient& p) { Put32(p.At(p.big), vk::DataSize, 33000); }, Ok, 3,
     Ok, Absent, Corrupt},
    {"wild segment",
     [](Patient& p) {
       const CellOffset head = p.Field(p.big, vk::Data);
       Put32(p.At(p.Field(head, db::List)), 4, 0xFFFFFFF8U);
     },
     Ok, 3, Ok, Absent, Corrupt},
    {"handle in the place of the value count",
     [](Patient& p) {
       Put16(p.At(p.box), nk::Flags, KeyFlagLatin1Name | KeyFlagPredefined);
       Put32(p.At(p.box), nk::ValueCount, 0x80000060U);
     },
     Ok, 3, Ok, Absent, Ok},
};

TEST(HiveReader, DamageStaysInItsPlace) {
  for (const DamageRow& row : Damages) {
    SCOPED_TRACE(row.what);
    Patient patient = MakePatient();
    row.damage(patient);
    const OpenedHive opened = Hive::FromBytes(patient.image, "patient");
    ASSERT_TRUE(opened.hive) << opened.error;
    const Hive& hive = *opened.hive;
    std::vector<Subkey> subkeys;
    EXPECT_EQ(hive.Subkeys(patient.box, subkeys), row.list);
    EXPECT_EQ(subkeys.size(), row.delivered);
    CellOffset found = NoCell;
    EXPECT_EQ(hive.Child(patient.box, u"Beta", found), row.beta);
    EXPECT_EQ(hive.Child(patient.box, u"nope", found), row.missing);
    std::vector<RegValue> values;
    EXPECT_EQ(hive.Values(patient.box, values), row.values);
    std::size_t visited = 0;
    hive.Walk(hive.Root(), [&visited](const Subkey&, int) { ++visited; });
    EXPECT_LE(visited, 7U);
    RegValue well;
    ASSERT_EQ(hive.Child(hive.Root(), u"sound", found), Ok);
    EXPECT_EQ(hive.Value(found, u"V", well), Ok);
    EXPECT_EQ(well.data.size(), 10U);
  }
}

struct RefusalRow {
  const char* what;
  void (*damage)(Patient&);
  const char* reason;
};

const RefusalRow Refusals[] = {
    {"empty", [](Patient& p) { p.image.clear(); }, "is not a registry hive"},
    {"other file", [](Patient& p) { p.image[0] = 'R'; }, "is not a registry hive"},
    {"cut in the base block", [](Patient& p) { p.image.resize(600); }, "is cut"},
    {"cut in the bins", [](Patient& p) { p.image.resize(p.image.size() - 1); }, "is cut"},
    {"older version", [](Patient& p) { Put32(p.image, base::Minor, 2); }, "version 1.2"},
    {"newer version", [](Patient& p) { Put32(p.image, base::Major, 2); }, "version 2.5"},
    {"log", [](Patient& p) { Put32(p.image, base::Type, 6); }, "log"},
    {"odd size", [](Patient& p) { Put32(p.image, base::BinsSize, 5000); }, "impossible size"},
    {"wild root", [](Patient& p) { Put32(p.image, base::Root, 0xFFFFFFF8U); }, "root key"},
    {"no key at the root", [](Patient& p) { p.At(p.root)[0] = 'x'; }, "root key"},
};

// The search over leaves turns by their first names, and an empty one has none.
TEST(HiveReader, FindsChildrenBesideAnEmptyLeaf) {
  HiveBuilder builder({.leafEntries = 7});
  for (std::size_t i = 0; i < 70; ++i) builder.Create(builder.Root(), ChildName(i));
  Bytes image = builder.Build();
  const auto at = [](std::uint32_t cell) { return std::size_t{4096} + cell + 4; };
  const auto number = [&image](std::size_t offset) {
    return image[offset] | image[offset + 1] << 8 | image[offset + 2] << 16;
  };
  const auto root = at(static_cast<std::uint32_t>(number(36)));
  const auto list = at(static_cast<std::uint32_t>(number(root + 28)));
  const auto leaf = at(static_cast<std::uint32_t>(number(list + 4 + 4 * 5)));
  image[root + 20] = static_cast<std::uint8_t>(image[root + 20] - image[leaf + 2]);
  image[leaf + 2] = 0;

  const OpenedHive opened = Hive::FromBytes(std::move(image), "sample");
  ASSERT_TRUE(opened.hive) << opened.error;
  const Hive& hive = *opened.hive;
  std::vector<Subkey> subkeys;
  ASSERT_EQ(hive.Subkeys(hive.Root(), subkeys), Status::Ok);
  EXPECT_EQ(subkeys.size(), 63U);
  for (const Subkey& subkey : subkeys) ExpectChild(hive, hive.Root(), subkey.facts.name.Text());
}

TEST(HiveReader, RefusesInOneSentence) {
  for (const RefusalRow& row : Refusals) {
    Patient patient = MakePatient();
    row.damage(patient);
    const OpenedHive opened = Hive::FromBytes(patient.image, "/x/NTUSER.DAT");
    EXPECT_FALSE(opened.hive) << row.what;
    EXPECT_EQ(opened.error.find("/x/NTUSER.DAT "), 0U) << opened.error;
    EXPECT_NE(opened.error.find(row.reason), std::string::npos) << row.what << opened.error;
  }
  for (const char* path : {"/nowhere/at all", "/"}) {
    const OpenedHive opened = Hive::Open(path);
    EXPECT_FALSE(opened.hive);
    EXPECT_EQ(opened.error.find(std::string(path) + " can't be read: "), 0U) << opened.error;
  }
}

TEST(HiveReader, WalkEndsAtTheDepthLimit) {
  HiveBuilder builder;
  auto key = builder.Root();
  for (int level = 0; level < Hive::MaxDepth + 5; ++level) key = builder.Create(key, u"k");
  const OpenedHive opened = Hive::FromBytes(builder.Build(), "deep");
  int deepest = 0;
  const auto visit = [&deepest](const Subkey&, int level) { deepest = std::max(deepest, level); };
  EXPECT_EQ(opened.hive->Walk(opened.hive->Root(), visit), Corrupt);
  EXPECT_EQ(deepest, Hive::MaxDepth);
}

}  // namespace
}  // namespace scrubwell::regf
