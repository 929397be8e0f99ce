#include "formats/regf/editor.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>

#include "formats/regf/hive_samples.h"

namespace scrubwell::regf {
namespace {

using enum Status;
constexpr std::uint64_t Now = 0x01DA000000000000U;
const UnicodeString Long(16384, u'x');

std::unique_ptr<Editor> Edit(const Bytes& image) {
  const OpenedHive opened = Hive::FromBytes(image, "sample");
  if (!opened.hive) return nullptr;
  OpenedEditor editor = Editor::Open(*opened.hive, "sample", [] { return Now; });
  EXPECT_TRUE(editor.editor) << editor.error;
  return std::move(editor.editor);
}

CellOffset At(const Editor& editor, UnicodeView path) {
  CellOffset key = NoCell;
  EXPECT_EQ(editor.View().Descend(editor.View().Root(), path, key), Ok) << ToUtf8(path);
  return key;
}

std::string DumpOf(const Bytes& image, DumpOptions options = {}) {
  const OpenedHive opened = Hive::FromBytes(image, "sample");
  return opened.hive ? DumpTree(*opened.hive, options) : opened.error;
}

/// All that is wrong with an image, as one text.
std::string ProblemsOf(const Bytes& image) {
  std::string text;
  for (const std::string& problem : CheckImage(image)) text += problem + "\n";
  return text;
}

/// What the registry should be, in the simplest terms.
struct Model {
  struct Less {
    bool operator()(const UnicodeString& a, const UnicodeString& b) const {
      return CompareUpCase(a, b) < 0;
    }
  };
  std::map<UnicodeString, Model, Less> children;
  std::map<UnicodeString, RegValue, Less> values;

  void AddTo(HiveBuilder& builder, HiveBuilder::Key key) const {
    for (const auto& [name, value] : values) builder.SetValue(key, value);
    for (const auto& [name, child] : children) child.AddTo(builder, builder.Create(key, name));
  }
  [[nodiscard]] Bytes Build(const BuildOptions& options) const {
    HiveBuilder builder(options);
    AddTo(builder, builder.Root());
    return builder.Build();
  }
};

/// What all keys note as their largest subkeys and values.
Bytes Maxima(const Bytes& image) {
  const OpenedHive opened = Hive::FromBytes(image, "sample");
  Bytes all;
  opened.hive->Walk(opened.hive->Root(), [&](const Subkey& key, int) {
    const auto at = image.begin() + BaseBlockSize + key.key + 4 + nk::MaxName;
    all.insert(all.end(), at, at + 16);
  });
  return all;
}

/// The finished image is sound and holds what the model says.
void ExpectModel(Editor& editor, const Model& model, const BuildOptions& options) {
  const Bytes image = editor.Finish();
  const Bytes wanted = model.Build(options);
  EXPECT_EQ(ProblemsOf(image), "");
  EXPECT_TRUE(DumpOf(image) == DumpOf(wanted));
  EXPECT_TRUE(Maxima(image) == Maxima(wanted));
}

TEST(Editor, SetsValuesOfEverySizeOverEachOther) {
  const std::size_t sizes[] = {0, 1, 4, 5, 100, 16344, 16345, 40000};
  for (const Shape& shape : {Shapes[1], Shapes[2]}) {
    for (const std::size_t from : sizes) {
      Model model;
      model.values[u"v"] = {u"v", REGT_BINARY, Pattern(from)};
      const std::unique_ptr<Editor> editor = Edit(model.Build(shape.options));
      for (const std::size_t to : sizes) {
        SCOPED_TRACE(std::string(shape.what) + " " + std::to_string(from) + std::to_string(to));
        EXPECT_EQ(editor->Put(editor->View().Root(), {u"V", REGT_SZ, Pattern(to, 1)}), Ok);
        model.values[u"v"] = {u"v", REGT_SZ, Pattern(to, 1)};
        ExpectModel(*editor, model, shape.options);
      }
    }
  }
}

/// Random changes to a model and to a hive alike.
class RandomEdits {
 public:
  RandomEdits(const BuildOptions& options, std::uint32_t seed) : options_(options), random_(seed) {
    editor_ = Edit(model_.Build(options_));
  }
  void Run(int steps) {
    for (int i = 0; i < steps; ++i) Step();
    ExpectModel(*editor_, model_, options_);
  }

 private:
  std::size_t Pick(std::size_t below) { return random_() % below; }
  UnicodeString Name() {
    const std::size_t number = Pick(60);
    return number < std::size(OddNames) ? OddNames[number]
                                        : u"k" + IntToStr(static_cast<int>(number));
  }
  void Step() {
    Model* at = &model_;
    CellOffset key = editor_->View().Root();
    while (!at->children.empty() && Pick(3) != 0) {
      const auto child =
          std::next(at->children.begin(), static_cast<std::ptrdiff_t>(Pick(at->children.size())));
      ASSERT_EQ(editor_->View().Child(key, child->first, key), Ok);
      at = &child->second;
    }
    const UnicodeString name = Name();
    CellOffset child = NoCell;
    const Status there = editor_->View().Child(key, name, child);
    EXPECT_EQ(there, at->children.contains(name) ? Ok : Absent);
    const std::size_t what = Pick(5);
    if (what < 2) {
      EXPECT_EQ(editor_->Create(key, name, child), Ok);
      at->children.try_emplace(name);
    } else if (what == 2) {
      const std::size_t size = Pick(20) == 0 ? 30000 : Pick(60);
      const RegValue value{name, REGT_BINARY, Pattern(size, size)};
      EXPECT_EQ(editor_->Put(key, value), Ok);
      at->values.try_emplace(name, value).first->second.data = value.data;
    } else if (what == 3) {
      EXPECT_EQ(editor_->EraseValue(key, name), at->values.erase(name) == 1 ? Ok : Absent);
    } else {
      EXPECT_EQ(there == Ok ? editor_->Erase(child) : Ok, Ok);
      at->children.erase(name);
    }
  }

  BuildOptions options_;
  std::mt19937 random_;
  Model model_;
  std::unique_ptr<Editor> editor_;
};

TEST(Editor, RandomEditsKeepTheHiveSound) {
  std::uint32_t seed = 1;
  for (const Shape& shape : Shapes) {
    SCOPED_TRACE(shape.what);
    RandomEdits edits(shape.options, seed++);
    for (int batch = 0; batch < 10 && !::testing::Test::HasFailure(); ++batch) edits.Run(200);
  }
}

TEST(Editor, ManyChildrenGoOneByOne) {
  for (const bool upwards : {true, false}) {
    const std::unique_ptr<Editor> editor = Edit(HiveBuilder().Build());
    const CellOffset root = editor->View().Root();
    Model model;
    for (int i = 0; i < 20000; ++i) {
      CellOffset key = NoCell;
      const UnicodeString name = u"k" + IntToStr(upwards ? i : 20000 - i);
      ASSERT_EQ(editor->Create(root, name, key), Ok);
      if (i < 1200) model.children[name];
    }
    std::vector<Subkey> all;
    ASSERT_EQ(editor->View().Subkeys(root, all), Ok);
    std::erase_if(all, [&model](const Subkey& child) {
      return model.children.contains(child.facts.name.Text());
    });
    if (upwards) std::ranges::reverse(all);
    for (const Subkey& child : all) ASSERT_EQ(editor->Erase(child.key), Ok);
    // What was freed is used again, but for the large pieces of the first time.
    const std::size_t size = editor->View().Image().size();
    for (int round = 0; round < 500; ++round) {
      CellOffset key = NoCell;
      ASSERT_EQ(editor->Create(root, u"again", key), Ok);
      ASSERT_EQ(editor->Put(key, {u"v", REGT_BINARY, Pattern(20000)}), Ok);
      ASSERT_EQ(editor->Erase(key), Ok);
    }
    EXPECT_LE(editor->View().Image().size(), size + 8 * PageSize);
    ExpectModel(*editor, model, {});
  }
}

TEST(Editor, PutsAKeyBackAsItWas) {
  HiveBuilder builder;
  const auto box = builder.CreatePath(builder.Root(), u"a\\Box");
  builder.SetClass(box, u"Kla\u00DFe");
  builder.SetSecurity(box, Pattern(44));
  builder.SetTime(box, 77);
  builder.SetLink(box);
  builder.SetValue(box, {u"SymbolicLinkValue", REGT_LINK, Pattern(30)});
  const Bytes before = builder.Build();
  const std::unique_ptr<Editor> editor = Edit(before);
  const CellOffset parent = At(*editor, u"a");
  KeyFacts old, changed;
  editor->View().Key(parent, old);
  ASSERT_EQ(editor->Erase(At(*editor, u"a\\Box")), Ok);
  editor->View().Key(parent, changed);
  EXPECT_EQ(changed.lastWritten, Now);
  EXPECT_EQ(ProblemsOf(editor->Finish()), "");
  CellOffset key = NoCell;
  ASSERT_EQ(editor->Create(parent, u"Box", key), Ok);
  for (const UnicodeView name : {u"some other class, longer than the last", u"Kla\u00DFe"}) {
    EXPECT_EQ(editor->SetClass(key, name), Ok);
  }
  for (const std::size_t size : {99U, 44U, 44U}) {
    EXPECT_EQ(editor->SetSecurity(key, Pattern(size)), Ok);
  }
  EXPECT_EQ(editor->SetLink(key, true), Ok);
  EXPECT_EQ(editor->Put(key, {u"SymbolicLinkValue", REGT_LINK, Pattern(30)}), Ok);
  EXPECT_EQ(editor->SetTime(key, 77), Ok);
  EXPECT_EQ(editor->SetTime(parent, old.lastWritten), Ok);
  const Bytes after = editor->Finish();
  EXPECT_EQ(ProblemsOf(after), "");
  EXPECT_EQ(DumpOf(after, {.times = true}), DumpOf(before, {.times = true}));
}

TEST(Editor, RefusesAndChangesNothing) {
  Patient patient = MakePatient();
  patient.At(patient.alpha)[nk::Flags] |= KeyFlagNoDelete;
  const std::unique_ptr<Editor> editor = Edit(patient.image);
  const auto add = [&editor](CellOffset parent, const UnicodeString& name) {
    CellOffset key = NoCell;
    return editor->Create(parent, name, key);
  };
  EXPECT_EQ(editor->EraseValue(patient.box, u"none"), Absent);
  for (const CellOffset noKey : {NoCell, patient.big, patient.alpha + 4}) {
    EXPECT_EQ(editor->Erase(noKey), Corrupt);
    EXPECT_EQ(add(noKey, u"x"), Corrupt);
    EXPECT_EQ(editor->SetTime(noKey, 1), Corrupt);
  }
  for (const CellOffset kept : {patient.root, patient.box, patient.alpha})
    EXPECT_EQ(editor->Erase(kept), Denied);
  for (const UnicodeString& name : {UnicodeString(), UnicodeString(u"x\\y"), Long.substr(0, 256)})
    EXPECT_EQ(add(patient.alpha, name), Denied);
  EXPECT_EQ(editor->Put(patient.alpha, {Long, REGT_SZ, {}}), Denied);
  EXPECT_EQ(editor->SetClass(patient.beta, Long + Long + Long), Denied);
  EXPECT_EQ(editor->SetSecurity(patient.alpha, {}), Denied);
  EXPECT_FALSE(editor->Changed());
  EXPECT_TRUE(std::ranges::equal(editor->View().Image(), patient.image));
}

TEST(DumpTree, ShowsEachDifference) {
  std::vector<std::string> dumps;
  const auto add = [&dumps](UnicodeView name, const RegValue& value, int more = 0) {
    HiveBuilder builder;
    const auto key = builder.Create(builder.Root(), name);
    builder.SetValue(key, value);
    if (more == 1) builder.SetClass(key, u"x");
    if (more == 2) builder.SetLink(key);
    if (more == 3) builder.SetTime(key, 1);
    if (more == 4) builder.SetSecurity(key, Pattern(20));
    dumps.push_back(DumpOf(builder.Build(), {.times = true}));
  };
  const Bytes data = Pattern(300);
  for (const UnicodeView name : {u"K", u"\xFFFD", u"\xD800"}) add(name, {u"v", REGT_SZ, data});
  for (const int more : {0, 1, 2, 3, 4}) add(u"k", {u"v", REGT_SZ, data}, more);
  add(u"k", {u"V", REGT_SZ, data});
  add(u"k", {u"v", REGT_BINARY, data});
  for (const Bytes& other : {Pattern(300, 1), Pattern(30), Bytes()}) add(u"k", {u"v", 1, other});
  std::ranges::sort(dumps);
  EXPECT_EQ(std::ranges::adjacent_find(dumps), dumps.end());
}

// As an undo does it: what went last comes first.
TEST(Editor, PutsValuesWhereTheyStood) {
  HiveBuilder builder;
  for (int i = 0; i < 40; ++i) builder.SetText(builder.Root(), u"v" + IntToStr(i), u"text");
  const Bytes image = builder.Build();
  std::mt19937 random(7);
  for (const std::size_t some : {1U, 2U, 25U, 40U}) {
    const std::unique_ptr<Editor> editor = Edit(image);
    const CellOffset root = editor->View().Root();
    std::vector<RegValue> before;
    editor->View().Values(root, before);
    std::vector<RegValue> values = before;
    std::ranges::shuffle(values, random);
    std::vector<Editor::PlacedValue> gone;
    for (std::size_t i = 0; i < some; ++i) {
      ValueFacts facts;
      ASSERT_EQ(editor->View().FindValue(root, values[i].name, facts), Ok);
      gone.insert(gone.begin(), {facts.place, &values[i]});
      ASSERT_EQ(editor->EraseValue(root, values[i].name), Ok);
    }
    EXPECT_EQ(editor->InsertValues(root, gone), Ok);
    EXPECT_EQ(ProblemsOf(editor->Finish()), "");
    std::vector<RegValue> after;
    editor->View().Values(root, after);
    EXPECT_EQ(after, before) << some;
  }
}

TEST(Editor, GoesNoDeeperThanTheReader) {
  const std::unique_ptr<Editor> editor = Edit(HiveBuilder().Build());
  CellOffset key = editor->View().Root();
  for (int level = 0; level < Hive::MaxDepth; ++level) editor->Create(key, u"k", key);
  EXPECT_EQ(editor->Create(key, u"k", key), Denied);
  EXPECT_EQ(ProblemsOf(editor->Finish()), "");
}

struct FaultRow {
  const char* what;
  void (*damage)(Patient&);
  const char* problem;
  const char* refusal = "it is damaged (";  ///< to open an editor
};

const FaultRow Faults[] = {
    {"checksum", [](Patient& p) { p.image[100] ^= 1; }, "first block", "not finished"},
    {"unfinished", [](Patient& p) { Put32(p.image, base::Primary, 9); }, "not finished",
     "not finished"},
    {"newer", [](Patient& p) { p.image = With(p.image, base::Minor, 6); }, "", "newer"},
    {"bin", [](Patient& p) { p.image[BaseBlockSize + 8] ^= 1; }, "bin at 0x0"},
    {"cell", [](Patient& p) { p.Resize(p.alpha, 4); }, "is damaged"},
    {"ring", [](Patient& p) { p.Set(p.Field(p.alpha, nk::Security), sk::Next, p.alpha); },
     "ring of security"},
    {"references", [](Patient& p) { p.Set(p.Field(p.alpha, nk::Security), sk::References, 9); },
     "wrong number of keys"},
    {"hash", [](Patient& p) { Put32(p.List(), 8, 1); }, "wrong hash"},
    {"order", [](Patient& p) { p.At(p.alpha)[nk::Name] = 'x'; }, "out of order"},
    {"count", [](Patient& p) { p.Set(p.box, nk::SubkeyCount, 2); }, "that are counted"},
    {"parent", [](Patient& p) { p.Set(p.alpha, nk::Parent, p.root); }, "belong to nothing"},
    {"longest name", [](Patient& p) { p.Set(p.root, nk::MaxName, 1); }, "Key \\: a subkey"},
    {"most data", [](Patient& p) { p.Set(p.box, nk::MaxValueData, 1); }, "a value has"},
    {"lost value", [](Patient& p) { p.Set(p.box, nk::ValueCount, 1); }, "5 cells are in use"},
    {"list without subkeys", [](Patient& p) { p.Set(p.alpha, nk::SubkeyList, 32); },
     "none are counted"},
    {"wild child", [](Patient& p) { Put32(p.List(), 4, 0x7FFFFFF8U); }, "subkeys are not those"},
    {"wild grandchild", [](Patient& p) { p.Set(p.beta, nk::SubkeyList, 64); },
     "Key \\Box\\beta: its class, lists"},
    {"wild segment", [](Patient& p) { p.Set(p.Field(p.Field(p.big, vk::Data), db::List), 4, 12); },
     "values can't be read"},
    {"data of another value",
     [](Patient& p) {
       p.Set(p.big, vk::Data, p.Field(Get32(p.ValueList(), 0), vk::Data));
       p.Set(p.big, vk::DataSize, 16);
     },
     "used twice"},
    {"class in the list",
     [](Patient& p) {
       p.Set(p.beta, nk::Class, p.Field(p.box, nk::SubkeyList));
       p.Set16(p.beta, nk::ClassSize, 4);
     },
     "used twice"},
    {"half a unit in a value's name", [](Patient& p) { p.At(p.big)[vk::Flags] = 0; },
     "Key \\Box: a value's name can't be read"},
    {"no security", [](Patient& p) { p.Set(p.alpha, nk::Security, p.beta); },
     "security can't be read"},
};

TEST(CheckImage, NamesEachFault) {
  for (const FaultRow& row : Faults) {
    SCOPED_TRACE(row.what);
    Patient patient = MakePatient();
    row.damage(patient);
    const std::string problems = ProblemsOf(patient.image);
    EXPECT_EQ(problems.empty(), *row.problem == 0);
    EXPECT_NE(problems.find(row.problem), std::string::npos) << problems;
    const OpenedHive hive = Hive::FromBytes(patient.image, "/x/SYSTEM");
    ASSERT_TRUE(hive.hive) << hive.error;
    const OpenedEditor editor = Editor::Open(*hive.hive, "/x/SYSTEM", [] { return Now; });
    EXPECT_EQ(editor.editor, nullptr);
    EXPECT_NE(editor.error.find(row.refusal), std::string::npos) << editor.error;
    EXPECT_TRUE(editor.error.starts_with("/x/SYSTEM can't be changed: "));
  }
}

TEST(Editor, FinishMarksTheFileAsWritten) {
  const OpenedHive dirty = Hive::FromBytes(DirtyPrimary(), "d", {NewLog({0, 1})});
  OpenedEditor opened = Editor::Open(*dirty.hive, "d", [] { return Now; });
  ASSERT_TRUE(opened.editor) << opened.error;
  EXPECT_FALSE(opened.editor->Changed());
  for (const std::uint32_t log : {0U, 1000U}) {
    const Bytes image = opened.editor->Finish(log);
    const std::uint32_t sequence = std::max(log, dirty.hive->Facts().newestSequence) + 1;
    EXPECT_EQ(Get32(image, base::Primary), sequence);
    EXPECT_EQ(Get32(image, base::Secondary), sequence);
    EXPECT_EQ(Get64(image, base::Time), Now);
    EXPECT_EQ(Get64(image, BaseBlockSize + 20), Now);
    EXPECT_EQ(ProblemsOf(image), "");
  }
  // Without the signature, what an older writer left in the place of the flags is let be.
  for (const std::uint32_t signature : {base::RightGuids, 0U}) {
    const Bytes image = With(With(State(0), base::Flags, 3), base::GuidSignature, signature);
    const OpenedHive hive = Hive::FromBytes(image, "h");
    EXPECT_EQ(hive.hive->Facts().transactionPending, signature != 0);
    EXPECT_EQ(Get32(Edit(image)->Finish(), base::Flags), signature != 0 ? 2U : 3U);
  }
}

/// Changes all over a hive, without a model: a tenth of the keys and values go, some come. Only
/// names that other readers take: they stop at a NUL or half a character.
void ChangeAtRandom(Editor& editor) {
  std::mt19937 random(7);
  std::vector<CellOffset> keys;
  std::vector<RegValue> values;
  const Hive& hive = editor.View();
  hive.Walk(hive.Root(), [&keys](const Subkey& key, int) { keys.push_back(key.key); });
  KeyFacts facts;
  for (const CellOffset key : keys) {
    if (hive.Key(key, facts) != Ok) continue;  // went with a key above it
    if (facts.subkeyCount < 50 && key != hive.Root() && random() % 10 == 0) {
      EXPECT_EQ(editor.Erase(key), (facts.flags & KeyFlagNoDelete) != 0 ? Denied : Ok);
      continue;
    }
    ASSERT_EQ(hive.Values(key, values), Ok);
    Status status = Ok;
    const auto rarely = [&](std::uint32_t odds) { return status == Ok && random() % odds == 0; };
    for (const RegValue& value : values) {
      if (rarely(10)) status = editor.EraseValue(key, value.name);
    }
    CellOffset child = NoCell;
    if (rarely(20)) status = editor.Create(key, OddNames[random() % 2 * 3], child);
    const std::size_t size = rarely(100) ? 20000 : 30;
    if (rarely(20)) status = editor.Put(key, {u"new", REGT_BINARY, Pattern(size)});
    ASSERT_EQ(status, Ok);
  }
}

void ExpectWitnesses(const Bytes& image) {
  const test::TempFolder folder;
  const std::string path = folder.Store("changed", image).string();
  const OpenedHive hive = Hive::FromBytes(image, path);
  ASSERT_TRUE(hive.hive) << hive.error;
  std::size_t keys = 0;
  EXPECT_EQ(hive.hive->Walk(hive.hive->Root(), [&keys](const Subkey&, int) { ++keys; }), Ok);
  for (const Witness& witness : Witnesses) {
    if (!test::HasWitness(witness.program)) continue;
    EXPECT_EQ(CountOf(OutputOf(witness.program + " " + path), witness.key), keys);
  }
  if (const char* check = std::getenv("SCRUBWELL_HIVECHECK")) {
    const std::string said = OutputOf(std::string("python3 ") + check + " " + path);
    EXPECT_NE(said.find("'unreachable': 0,"), std::string::npos) << said;
    EXPECT_NE(said.find("'errors': {}"), std::string::npos) << said;
  }
}

TEST(Editor, RealHivesStayWhole) {
  const std::string data = test::SharedData();
  if (data.empty()) return;
  const auto unpack = [&data](const std::string& name) {
    const std::string text = OutputOf("xz -dc " + data + "/hives/" + name + ".xz");
    return Bytes(text.begin(), text.end());
  };
  for (const char* name :
       {"100_sub_keys.hiv", "win10-dirty-NTUSER.DAT", "win7-NTUSER.DAT", "win7-SYSTEM",
        "win81-UsrClass.dat", "winme-SOFTWARE", "winxp-NTUSER.DAT"}) {
    SCOPED_TRACE(name);
    const std::string base = name;
    const OpenedHive hive =
        Hive::FromBytes(unpack(base), base, {unpack(base + ".LOG1"), unpack(base + ".LOG2")});
    ASSERT_TRUE(hive.hive) << hive.error;
    const OpenedEditor editor = Editor::Open(*hive.hive, base, [] { return Now; });
    ASSERT_TRUE(editor.editor) << editor.error;
    ChangeAtRandom(*editor.editor);
    const Bytes image = editor.editor->Finish();
    EXPECT_EQ(ProblemsOf(image), "");
    EXPECT_TRUE(DumpOf(image, {.times = true}) == DumpTree(editor.editor->View(), {.times = true}));
    ExpectWitnesses(image);
  }
}

}  // namespace
}  // namespace scrubwell::regf
