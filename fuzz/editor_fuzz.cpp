// Scripts of changes. The input is a hive file, and what lies behind its bins is the script; or a
// script alone, for a small hive of ours.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "formats/regf/editor.h"
#include "formats/regf/hive_samples.h"
#include "require.h"

namespace {

using namespace scrubwell;
using namespace scrubwell::regf;

constexpr std::size_t StepSize = 4;
constexpr std::size_t MostSteps = 80;

Bytes Sample(std::uint8_t choice) {
  return SmallHive({.minorVersion = (choice & 4) != 0 ? 3U : 5U,
                    .lists = static_cast<ListKind>(choice % 3),
                    .leafEntries = (choice & 8) != 0 ? 500U : 2U});
}

class Script {
 public:
  explicit Script(Editor& editor) : editor_(editor) {
    editor.View().Walk(editor.View().Root(),
                       [this](const Subkey& key, int) { keys_.push_back(key.key); });
  }

  /// One step: what is done, to which key, with which name, how much.
  void Step(ByteView step) {
    const CellOffset key = keys_[step[1] % keys_.size()];
    const UnicodeString name = Name(step[2]);
    const Bytes before(editor_.View().Image().begin(), editor_.View().Image().end());
    const Status status = Change(step[0] % 8, key, name, std::size_t{step[3]} * step[3]);
    // What fails changes nothing.
    Require(status == Status::Ok || std::ranges::equal(before, editor_.View().Image()));
  }

 private:
  static UnicodeString Name(std::uint8_t choice) {
    constexpr UnicodeView names[] = {u"", u"a", u"B", u"x", u"big", u"gr\u00FCn", u"lone\xD800"};
    if (choice < std::size(names)) return UnicodeString(names[choice]);
    return UnicodeString(choice % 7U + 1, static_cast<char16_t>(choice * 3));
  }
  Status Change(int what, CellOffset key, const UnicodeString& name, std::size_t size) {
    if (what == 0) return editor_.Erase(key);
    if (what == 1) return editor_.EraseValue(key, name);
    if (what == 2 && size % 2 != 0) return Insert(key, size);
    if (what == 2) return editor_.Put(key, {name, REGT_BINARY, Bytes(size, 1)});
    if (what == 3) return editor_.SetClass(key, name);
    if (what == 4) return editor_.SetSecurity(key, Bytes(size / 512, 2));
    if (what == 5) return editor_.SetLink(key, size != 0);
    CellOffset child = NoCell;
    const Status status = editor_.Create(key, name, child);
    if (status == Status::Ok) keys_.push_back(child);
    return status;
  }

  // Two values at places that may be behind the end, with names that nothing else here has.
  Status Insert(CellOffset key, std::size_t size) {
    const RegValue one{u"new" + UnicodeString(names_++, u'n'), REGT_BINARY, Bytes(size, 3)};
    const RegValue two{u"new" + UnicodeString(names_++, u'n'), REGT_NONE, {}};
    return editor_.InsertValues(key, {{static_cast<std::uint32_t>(size % 5), &one}, {1, &two}});
  }

  Editor& editor_;
  std::size_t names_ = 0;
  std::vector<CellOffset> keys_;  // some of them deleted in the meantime
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  ByteView script(bytes, size);
  if (size < 5) return 0;
  Bytes image;
  if (bytes[0] == 'r' && bytes[1] == 'e') {
    if (size < BaseBlockSize) return 0;
    const std::size_t bins = Get32(script, base::BinsSize);
    const std::size_t end = std::min(size, BaseBlockSize + bins);
    image.assign(bytes, bytes + end);
    image = With(image, base::Secondary, Get32(image, base::Primary));
    script = script.subspan(end);
  } else {
    image = Sample(bytes[0]);
  }
  const OpenedHive hive = Hive::FromBytes(image, "input");
  if (!hive.hive) return 0;
  const OpenedEditor opened = Editor::Open(*hive.hive, "input", [] { return std::uint64_t{1}; });
  Require((opened.editor != nullptr) == opened.error.empty());
  // What is damaged is not changed at all.
  Require(opened.editor == nullptr || CheckImage(image).empty());
  if (!opened.editor) return 0;
  Script run(*opened.editor);
  for (std::size_t at = 0; at + StepSize <= script.size() && at < MostSteps * StepSize;
       at += StepSize)
    run.Step(script.subspan(at, StepSize));
  Require(CheckImage(opened.editor->Finish()).empty());
  return 0;
}
