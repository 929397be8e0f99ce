#include <gtest/gtest.h>

#include "formats/regf/editor.h"
#include "formats/regf/hive_samples.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace scrubwell::regf {
namespace {

/// Names that start alike, in no order: every list must be sorted by the builder.
UnicodeString ChildName(std::size_t i) {
  return u"Child" + IntToStr(static_cast<int>(i));
}

HiveBuilder MakeShape(const Shape& row) {
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
  for (const Shape& row : Shapes) {
    SCOPED_TRACE(row.what);
    const HiveBuilder builder = MakeShape(row);
    const OpenedHive opened = Hive::FromBytes(builder.Build(), "sample");
    ASSERT_TRUE(opened.hive) << opened.error;
    const Hive& hive = *opened.hive;
    EXPECT_FALSE(hive.Facts().dirty);
    std::size_t keys = 0;
    EXPECT_EQ(hive.Walk(hive.Root(), [&keys](const Subkey&, int) { ++keys; }), Status::Ok);
    EXPECT_EQ(keys, 1 + row.children + 2 + std::size(OddNames) + 2);

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
  const test::TempFolder folder;
  for (const Shape& row : Shapes) {
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
      if (!test::HasWitness(witness.program)) continue;
      const std::string output = OutputOf(witness.program + " " + path);
      EXPECT_EQ(CountOf(output, witness.key), row.children + 1);
      EXPECT_EQ(CountOf(output, witness.value), row.children * 2);
    }
  }
}

using enum Status;

/// What is read of Box.
struct Outcome {
  Status list;            ///< of enumerating it
  std::size_t delivered;  ///< its subkeys
  Status beta;            ///< of looking up Box\beta
  Status missing;         ///< of looking up what Box never had
  Status values = Ok;
};

constexpr Outcome Whole{Ok, 3, Ok, Absent};
constexpr Outcome LessOne{Corrupt, 2, Ok, Corrupt};
constexpr Outcome NoSubkeys{Corrupt, 0, Corrupt, Corrupt};
constexpr Outcome NoValues{Ok, 3, Ok, Absent, Corrupt};

struct DamageRow {
  const char* what;
  Outcome outcome;
  void (*damage)(Patient&);
};

const DamageRow Damages[] = {
    {"nothing", Whole, [](Patient&) {}},
    {"itself as a child", LessOne, [](Patient& p) { Put32(p.List(), 4, p.box); }},
    {"the list of its parent", NoSubkeys,
     [](Patient& p) { p.Set(p.box, nk::SubkeyList, p.Field(p.root, nk::SubkeyList)); }},
    {"ancestors below", Whole,
     [](Patient& p) { p.Set(p.beta, nk::SubkeyList, p.Field(p.box, nk::SubkeyList)); }},
    {"one child twice", LessOne, [](Patient& p) { Put32(p.List(), 4 + 16, p.alpha); }},
    {"order broken", Whole,
     [](Patient& p) {
       Put32(p.List(), 4, p.gamma);
       Put32(p.List(), 4 + 16, p.alpha);
     }},
    {"order broken, found by walking", Whole,
     [](Patient& p) {
       Put32(p.List(), 4, p.beta);
       Put32(p.List(), 4 + 8, p.alpha);
     }},
    {"wild child",
     {Corrupt, 2, Corrupt, Corrupt},
     [](Patient& p) { Put32(p.List(), 4 + 8, 0xFFFFFFF0U); }},
    {"unaligned child", LessOne, [](Patient& p) { Put32(p.List(), 4, p.alpha + 4); }},
    {"child in a free cell", LessOne, [](Patient& p) { p.Resize(p.alpha, 88); }},
    {"child of no size", LessOne, [](Patient& p) { p.Resize(p.alpha, 0); }},
    {"endless child", LessOne, [](Patient& p) { p.Resize(p.alpha, 0x80000000U); }},
    {"child of an endless name", LessOne,
     [](Patient& p) { p.Set16(p.alpha, nk::NameSize, 0x7FFF); }},
    {"child with half a unit", LessOne, [](Patient& p) { p.Set16(p.alpha, nk::Flags, 0); }},
    {"list longer than its cell",
     {Corrupt, 3, Ok, Corrupt},
     [](Patient& p) { Put16(p.List(), 2, 0xFFFF); }},
    {"list shorter than the count", LessOne, [](Patient& p) { Put16(p.List(), 2, 2); }},
    {"no list", NoSubkeys, [](Patient& p) { p.Set(p.box, nk::SubkeyList, NoCell); }},
    {"unknown list", NoSubkeys, [](Patient& p) { p.List()[0] = 'x'; }},
    {"index of itself", NoSubkeys,
     [](Patient& p) {
       std::copy_n("ri", 2, p.List().begin());
       Put16(p.List(), 2, 1);
       Put32(p.List(), 4, p.Field(p.box, nk::SubkeyList));
     }},
    {"impossible counts",
     {Corrupt, 0, Corrupt, Corrupt, Corrupt},
     [](Patient& p) { p.Set(p.box, nk::SubkeyCount, 0x40000000U); }},
    {"wild value list", NoValues, [](Patient& p) { p.Set(p.box, nk::ValueList, 0x7FFFFFF8U); }},
    {"more values than listed", NoValues, [](Patient& p) { p.Set(p.box, nk::ValueCount, 5); }},
    {"wild value", NoValues, [](Patient& p) { Put32(p.ValueList(), 4, 8); }},
    {"value of an endless name", NoValues, [](Patient& p) { p.Set16(p.big, vk::NameSize, 4000); }},
    {"five bytes inline", NoValues, [](Patient& p) { p.Set(p.big, vk::DataSize, vk::Inline | 5); }},
    {"data beyond the file", NoValues, [](Patient& p) { p.Set(p.big, vk::DataSize, 0x7FFFFFFFU); }},
    {"data beyond its segments", NoValues, [](Patient& p) { p.Set(p.big, vk::DataSize, 33000); }},
    {"wild segment", NoValues,
     [](Patient& p) { p.Set(p.Field(p.Field(p.big, vk::Data), db::List), 4, 0xFFFFFFF8U); }},
    {"handle in the place of the value count", Whole,
     [](Patient& p) {
       p.Set16(p.box, nk::Flags, KeyFlagLatin1Name | KeyFlagPredefined);
       p.Set(p.box, nk::ValueCount, 0x80000060U);
     }},
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
    EXPECT_EQ(hive.Subkeys(patient.box, subkeys), row.outcome.list);
    EXPECT_EQ(subkeys.size(), row.outcome.delivered);
    CellOffset found = NoCell;
    EXPECT_EQ(hive.Child(patient.box, u"Beta", found), row.outcome.beta);
    EXPECT_EQ(hive.Child(patient.box, u"nope", found), row.outcome.missing);
    std::vector<RegValue> values;
    EXPECT_EQ(hive.Values(patient.box, values), row.outcome.values);
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

// A small file that would have us read for hours, or hold far more than it is.
TEST(HiveReader, WhatManyShareIsCorruptAndCostsNoMoreThanTheFile) {
  // A long list, a short one of long names, and one value's cell again and again.
  for (const auto& [count, sharesList] : {std::pair{2000U, true}, {8U, true}, {2000U, false}}) {
    HiveBuilder builder;
    for (std::uint32_t i = 0; i < count; ++i) {
      const UnicodeString name = UnicodeString(count < 16 ? 16'000 : 4, u'n') + ChildName(i);
      builder.SetValue(builder.Root(), {name, REGT_BINARY, Bytes(50, 1)});
    }
    for (int i = 0; i < 2000; ++i) builder.Create(builder.Root(), u"k" + IntToStr(i));
    Bytes image = builder.Build();
    const OpenedHive opened = Hive::FromBytes(image, "sample");
    const CellOffset root = opened.hive->Root();
    const std::span<std::uint8_t> bins = std::span(image).subspan(BaseBlockSize);
    const CellOffset list = Get32(bins, root + 4U + nk::ValueList);
    for (std::size_t i = 0; i < count && !sharesList; ++i)
      Put32(bins, list + 4 + i * 4, Get32(bins, list + 4));
    opened.hive->Walk(root, [&, shared = sharesList, entries = count](const Subkey& subkey, int) {
      if (!shared) return;
      Put32(bins, subkey.key + 4U + nk::ValueCount, entries);
      Put32(bins, subkey.key + 4U + nk::ValueList, list);
    });
    const OpenedHive hostile = Hive::FromBytes(image, "sample");
    std::uint64_t held = 0;
    std::size_t corrupt = 0;
    hostile.hive->Walk(hostile.hive->Root(), [&](const Subkey& subkey, int) {
      std::vector<RegValue> values;
      corrupt += hostile.hive->Values(subkey.key, values) != Ok;
      for (const RegValue& value : values) held += 2 * value.name.size() + value.data.size();
    });
    EXPECT_LE(held, 200 * image.size()) << count;
    EXPECT_EQ(corrupt > 0, sharesList) << count;
  }
}

#ifndef _WIN32
// The end of the file is not given any more, as by a disk with bad blocks.
TEST(HiveReader, WhatTheDiskDoesNotGiveIsCorruptAndTheRestIsThere) {
  HiveBuilder builder;
  const auto early = builder.CreatePath(builder.Root(), u"Early");
  builder.SetText(early, u"v", u"text");
  for (int i = 0; i < 40; ++i) {
    const auto key = builder.Create(builder.Root(), u"Late" + IntToStr(i));
    builder.SetValue(key, {u"big", REGT_BINARY, Bytes(3000, 7)});
  }
  const Bytes image = builder.Build();
  const test::TempFolder folder;
  const std::string path = folder.Store("hive", image).string();
  std::size_t lost = 0;
  for (std::size_t end = BaseBlockSize + 8192; end < image.size(); end += 8192 + 512) {
    ASSERT_EQ(folder.Store("hive", image), path);
    const int file = ::open(path.c_str(), O_RDWR);
    FileImage content;
    std::string error;
    ASSERT_TRUE(content.Reserve(file, image.size(), error)) << error;
    ASSERT_EQ(::ftruncate(file, static_cast<off_t>(end)), 0);
    EXPECT_FALSE(content.Load(file, 0, image.size()));
    ::close(file);
    const OpenedHive opened = Hive::FromFile(std::move(content), "hive", {});
    ASSERT_TRUE(opened.hive) << opened.error;
    EXPECT_EQ(opened.hive->Facts().unreadable, image.size() - end);
    const OpenedEditor editor = Editor::Open(*opened.hive, "hive", [] { return 1U; });
    EXPECT_NE(editor.error.find("can't be read from the disk"), std::string::npos);
    opened.hive->Walk(opened.hive->Root(), [&](const Subkey& subkey, int) {
      std::vector<RegValue> values;
      const Status status = opened.hive->Values(subkey.key, values);
      lost += status != Status::Ok;
      // Never zeros in place of what stood there.
      for (const RegValue& value : values) {
        EXPECT_TRUE(value.name == u"v" || value.data == Bytes(3000, 7));
      }
    });
  }
  EXPECT_GT(lost, 0U);
}
#endif

// The search over leaves turns by their first names, and an empty one has none.
TEST(HiveReader, FindsChildrenBesideAnEmptyLeaf) {
  HiveBuilder builder({.leafEntries = 7});
  for (std::size_t i = 0; i < 70; ++i) builder.Create(builder.Root(), ChildName(i));
  Bytes image = builder.Build();
  const auto field = [&image](CellOffset cell, std::size_t at) {
    return std::span(image).subspan(BaseBlockSize + cell + 4U + at);
  };
  const CellOffset root = Get32(image, base::Root);
  const CellOffset leaf = Get32(field(Get32(field(root, nk::SubkeyList), 0), 4 + 4 * 5), 0);
  field(root, nk::SubkeyCount)[0] -= field(leaf, 2)[0];
  field(leaf, 2)[0] = 0;
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
