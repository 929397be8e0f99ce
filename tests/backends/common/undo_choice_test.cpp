#include "backends/common/undo_choice.h"

#include <gtest/gtest.h>

namespace scrubwell {
namespace {

JournalEntry Entry(const std::string& id, JournalAction action, UnicodeView name = {}) {
  JournalEntry entry;
  entry.item.id = id;
  entry.item.action = action;
  entry.item.place = u"HKCU\\K";
  entry.item.name = name;
  entry.hive = u"HKCU";
  entry.path = u"K";
  return entry;
}

TEST(UndoChoice, NamesWhatIsPutBack) {
  using enum JournalAction;
  EXPECT_EQ(PlaceText(Entry("1", DeleteValue).item), "HKCU\\K, (Default)");
  EXPECT_EQ(PlaceText(Entry("1", SetValue, u"v").item), "HKCU\\K, v");
  EXPECT_EQ(PlaceText(Entry("1", DeleteKey, u"v").item), "HKCU\\K");
  const std::pair<Status, std::string> rows[] = {{Status::Corrupt, "HKCU\\K: the place is damaged"},
                                                 {Status::Denied, "the place can't be changed"},
                                                 {Status::Unknown, "the place can't be reached"}};
  for (const auto& [status, why] : rows)
    EXPECT_TRUE(BrokenText(Entry("1", DeleteKey).item, status).ends_with(why)) << why;
  Journal journal;
  journal.entries = {Entry("1", DeleteKey), Entry("2", DeleteKey)};
  std::string unknown;
  EXPECT_EQ(ChooseEntries(journal, {}, unknown).front()->item.id, "2") << "the newest first";
  EXPECT_EQ(ChooseEntries(journal, {"1", "3"}, unknown).size(), 1U);
  EXPECT_EQ(unknown, "3");
}

// A value of another type is another one, and those that are gone make the key another one.
TEST(UndoChoice, TellsValuesApart) {
  const RegValue a{u"a", REGT_SZ, {1, 0}};
  const RegValue b{u"b", REGT_SZ, {2, 0}};
  Journal journal;
  journal.entries = {Entry("1", JournalAction::DeleteKey)};
  journal.entries[0].tree = {{0, u"K", {}, {}, 0, false, {a, b}}};
  const ChangedPlaces places(journal);
  const std::tuple<std::vector<RegValue>, bool, bool> rows[] = {
      {{b, a}, false, true},
      {{a}, false, false},
      {{a, {u"B", REGT_BINARY, b.data}}, true, true},
      {{a, {u"b", REGT_SZ, {3, 0}}}, true, true},
      {{{u"c", REGT_SZ, {}}}, true, true},
  };
  for (const auto& [now, conflict, same] : rows) {
    bool identical = true;
    const auto place = places.At(u"hkcu", u"k");
    EXPECT_EQ(places.ValuesConflict(place, journal.entries[0].tree[0], now, identical), conflict);
    EXPECT_EQ(identical, same);
  }
}

}  // namespace
}  // namespace scrubwell
