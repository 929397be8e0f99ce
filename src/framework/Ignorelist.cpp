// The user's list of ignored problems.
#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"

namespace scrubwell {
namespace {

constexpr char16_t kSeparator = u'\x1D';
constexpr UnicodeView kEntryEnd = u"\x1D\x1D\x1D";

// An item as its placeholder expands it; empty when the problem has no such item, which shows in
// the placeholder coming back as it was.
UnicodeString ExpandedItem(UnicodeView placeholder, const TStringList& data) {
  UnicodeString text = InsertData(placeholder, data);
  if (text == placeholder) text.clear();
  return text;
}

void ReleaseEntry(THashList::Value entry) {
  delete static_cast<TIgnoredProblem*>(entry);
}

RootKey ListRoot(bool machine) {
  return machine ? Platform().product.root : HKEY_CURRENT_USER;
}

void LoadFrom(RootKey root, UnicodeView key) {
  TStringList names;
  TStringList data;
  EnumRegValuesEx(root, key, names, data, {});
  for (std::size_t i = 0; i < names.size() && i < data.size(); ++i)
    AddIgnoredProblem(names[i], data[i]);
}

}  // namespace

UnicodeString BuildErrorIdentificationString(const TSweepError& error) {
  RootKey root = RootKey::None;
  UnicodeString key;
  UnicodeString valueName;
  TZmRegOptions opts;
  GetErrorRegValue(error, u"existingkey", u"existingvalue", root, key, valueName, opts);
  const std::initializer_list<UnicodeString> fields = {
      QuotedPrintableEncode(key), QuotedPrintableEncode(valueName),
      ExpandedItem(u"#existingfile#", error.Data), ExpandedItem(u"#url#", error.Data)};

  UnicodeString result = opts.Contains(zmreg64Bit) ? u"64:" : u"32:";
  result += IntToStr(static_cast<std::int64_t>(root));
  for (const UnicodeString& field : fields) result.append(1, kSeparator).append(StrOrEmpty(field));
  return result;
}

void AddIgnoredProblem(UnicodeView name, UnicodeView data) {
  const std::size_t end = data.find(kEntryEnd);
  if (IgnoredProblems == nullptr || end == UnicodeView::npos) return;
  const UnicodeView identification = data.substr(0, end);
  const UnicodeView texts = data.substr(end + kEntryEnd.size());
  const std::size_t first = texts.find(kSeparator);
  if (first == UnicodeView::npos || first == 0) return;
  const std::size_t second = texts.find(kSeparator, first + 1);
  if (second == UnicodeView::npos) return;

  auto entry = std::make_unique<TIgnoredProblem>();
  entry->StoredName = UnicodeString(name);
  entry->Text1 = UnicodeString(texts.substr(0, first));
  entry->Text2 = QuotedPrintableDecode(texts.substr(first + 1, second - first - 1));
  entry->Text3 = QuotedPrintableDecode(texts.substr(second + 1));
  // The machine's list and the user's may both hold the problem.
  ReleaseEntry(IgnoredProblems->Get(identification));
  IgnoredProblems->Add(identification, entry.release());
}

UnicodeString BuildIgnoredProblemData(UnicodeView identification, UnicodeView text1,
                                      UnicodeView text2, UnicodeView text3) {
  UnicodeString data(identification);
  data.append(kEntryEnd).append(text1).append(1, kSeparator);
  data.append(QuotedPrintableEncode(text2)).append(1, kSeparator);
  return data.append(QuotedPrintableEncode(text3));
}

UnicodeString IgnoredProblemsKey() {
  UnicodeString key = Platform().product.path;
  // No key path begins with a backslash.
  if (!key.empty() && !key.ends_with(u'\\')) key += u'\\';
  return key.append(u"Scrubwell\\IgnoredProblems");
}

Status StoreIgnoredProblem(const TSweepError& error, const TIgnoredProblem& entry, bool machine) {
  const UnicodeString data = BuildIgnoredProblemData(BuildErrorIdentificationString(error),
                                                     entry.Text1, entry.Text2, entry.Text3);
  const UnicodeString key = IgnoredProblemsKey();
  return Platform().registry.SetValue({ListRoot(machine), key, View::Native},
                                      {entry.StoredName, REGT_SZ, TextData(data)});
}

Status RemoveIgnoredProblem(UnicodeView storedName, bool machine) {
  const UnicodeString key = IgnoredProblemsKey();
  return Platform().registry.DeleteValue({ListRoot(machine), key, View::Native}, storedName);
}

void LoadIgnoredProblems() {
  const RootKey root = Platform().product.root;
  const UnicodeString key = IgnoredProblemsKey();
  LoadFrom(root, key);
  if (root != HKEY_CURRENT_USER) LoadFrom(HKEY_CURRENT_USER, key);
}

void ClearIgnoredProblems() {
  if (IgnoredProblems == nullptr) return;
  for (auto entry = IgnoredProblems->First(); entry != nullptr; entry = IgnoredProblems->Next())
    ReleaseEntry(entry);
  IgnoredProblems->Clear();
}

}  // namespace scrubwell
