#include "hosts/driver/problem_id.h"

#include <gtest/gtest.h>

#include "formats/sha256/sha256.h"

namespace scrubwell {
namespace {

TEST(Sha256, KnownDigests) {
  // Lengths on both sides of where the padding needs a block of its own.
  const std::pair<std::string, const char*> rows[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {std::string(55, 'a'), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318"},
      {std::string(56, 'a'), "b35439a4ac6f0948b6d6f9e3c6af0f5f590ce20f1bde7090ef7970686ec6738a"},
      {std::string(64, 'a'), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb"},
      {std::string(1000, '\xff'),
       "b4f73dff046400b76728ab32619e3d89e00132653725f660c62ab9fca975b372"},
  };
  for (const auto& [bytes, digest] : rows) EXPECT_EQ(Sha256Hex(bytes), digest) << bytes.size();
}

TSweepError Of(UnicodeView plugin, std::int32_t kind, TStringList data) {
  return {UnicodeString(plugin), kind, u"icon", u"caption", u"s", u"d", std::move(data)};
}

TEST(ProblemId, NamesTheProblemAndNothingElse) {
  const TSweepError base = Of(u"Fonts", 1, {u"a:1", u"b:2"});
  const std::tuple<const char*, TSweepError, bool> rows[] = {
      {"other texts and state",
       {u"Fonts", 1, u"", u"Titel", u"", u"", {u"a:1", u"b:2"}, false, true, false, true},
       true},
      {"other plugin", Of(u"Font", 1, {u"a:1", u"b:2"}), false},
      {"other kind", Of(u"Fonts", 2, {u"a:1", u"b:2"}), false},
      {"other order", Of(u"Fonts", 1, {u"b:2", u"a:1"}), false},
      {"items run together", Of(u"Fonts", 1, {u"a:1b:2"}), false},
      {"moved border", Of(u"Fonts", 1, {u"a:", u"1b:2"}), false},
      {"letter case", Of(u"Fonts", 1, {u"A:1", u"b:2"}), false},
      {"a NUL more", Of(u"Fonts", 1, {u"a:1", UnicodeString(u"b:2\0", 4)}), false},
  };
  for (const auto& [name, problem, same] : rows) {
    EXPECT_EQ(ProblemDigest(problem) == ProblemDigest(base), same) << name;
  }
  // Written down once: ids are kept by users between versions.
  EXPECT_EQ(ProblemDigest(base).substr(0, 12), "425651d02d57");
}

TEST(ProblemId, ClashesGrowUntilTheyDiffer) {
  const std::pair<std::vector<std::string>, std::vector<std::string>> rows[] = {
      {{}, {}},
      {{"aaaabbbbcccc", "bbbbbbbbcccc"}, {"aaaa", "bbbb"}},
      {{"aaaacbbbcccc", "ffff00000000", "aaaabbbbcccc"}, {"aaaacbbb", "ffff", "aaaabbbb"}},
      {{"aaaabbbbcccc", "aaaabbbbcccd", "aaaabbbbcccc", "aaaaffff0000"},
       {"aaaabbbbcccc", "aaaabbbbcccd", "aaaabbbbcccc", "aaaaffff"}},
  };
  for (const auto& [digests, ids] : rows) EXPECT_EQ(ShortenDigests(digests, 4), ids);
}

}  // namespace
}  // namespace scrubwell
