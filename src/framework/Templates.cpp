// Problem text templates.
#include <algorithm>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "texts/framework.h"

namespace scrubwell {
namespace {

struct RootName {
  UnicodeView longForm;
  UnicodeView shortForm;
};

constexpr std::array<RootName, 6> kRootNames{{
    {u"HKEY_CLASSES_ROOT", u"HKCR"},
    {u"HKEY_CURRENT_USER", u"HKCU"},
    {u"HKEY_LOCAL_MACHINE", u"HKLM"},
    {u"HKEY_USERS", u"HKU"},
    {u"HKEY_CURRENT_CONFIG", u"HKCC"},
    {u"HKEY_DYN_DATA", u"HKDD"},
}};

// A data item's value on its way into a text.
struct Value {
  UnicodeView text;  // without its view prefix
  UnicodeView view;  // the first two units as stored
};

UnicodeString Unchanged(const Value& v) {
  return UnicodeString(v.text);
}

UnicodeString ShortRoot(const Value& v) {
  const UnicodeView root = v.text.substr(0, v.text.find(u'\\'));
  for (const RootName& name : kRootNames) {
    if (SameText(root, name.longForm))
      return UnicodeString(name.shortForm).append(v.text.substr(root.size()));
  }
  return Unchanged(v);
}

UnicodeView LastPart(UnicodeView path) {
  return path.substr(path.rfind(u'\\') + 1);
}

UnicodeString LastPartOf(const Value& v) {
  return UnicodeString(LastPart(v.text));
}

UnicodeString WithoutRoot(const Value& v) {
  return UnicodeString(v.text.substr(v.text.find(u'\\') + 1));
}

UnicodeString VerbNameOf(const Value& v) {
  const std::size_t slash = v.text.find(u'\\');
  if (slash == UnicodeView::npos || !SameText(v.text.substr(0, slash), u"HKEY_CLASSES_ROOT"))
    return Unchanged(v);
  UnicodeString verbKey(v.text.substr(slash + 1));
  if (SameText(LastPart(verbKey), u"command")) verbKey = StripLastKey(verbKey);

  // Read where the problem lies: below a class identifier the two views differ.
  TZmRegOptions opts;
  if (v.view == u"64") opts = {zmreg64Bit};
  if (v.view == u"32") opts = {zmreg32Bit};
  UnicodeString name;
  const bool named = GetRegStringValue(HKEY_CLASSES_ROOT, verbKey, u"MUIVerb", name, opts) == 0;
  // An indirect resource text is passed over rather than resolved.
  if (!named || name.starts_with(u'@')) name.clear();
  name = UnicodeString(Trim(name));
  if (name.empty() && GetRegStringValue(HKEY_CLASSES_ROOT, verbKey, u"", name, opts) != 0)
    name.clear();
  if (name.empty()) {
    name = UnicodeString(LastPart(verbKey));
    const UnicodeString verb = LowerCase(name);
    for (const auto& known : texts::framework::kVerbNames) {
      if (known.verb == verb) name = LoadText(known.name);
    }
  }
  return RemoveAccelChar(name);
}

// Folder and name part at the last backslash alone: behind a program there may be arguments, and a
// slash or colon in them is no part of a path. In a drive's root folder this is the bare drive.
UnicodeString FolderOf(const Value& v) {
  const std::size_t slash = v.text.rfind(u'\\');
  return UnicodeString(v.text.substr(0, slash == UnicodeView::npos ? 0 : slash));
}

UnicodeString FileNameWithoutExtension(const Value& v) {
  const UnicodeView name = LastPart(v.text);
  return UnicodeString(name.substr(0, name.rfind(u'.')));
}

UnicodeString ExtensionKey(const Value& v) {
  return ParamX(v.text, u'\\', 2);
}

// Deliberately shows the first two units as the view, also where the value has no view prefix
// ("HK" for a bare key path): the link's target is read by hosts in just this form.
UnicodeString RegistryLink(const Value& v) {
  UnicodeString link = u"<a href=\"regjump:";
  link.append(v.view).append(u":").append(v.text).append(u"\">").append(v.text).append(u"</a>");
  return link;
}

struct Modifier {
  UnicodeView name;
  UnicodeString (*apply)(const Value& value);
};

constexpr std::array<Modifier, 9> kModifiers{{
    {u"short", &ShortRoot},
    {u"lastpart", &LastPartOf},
    {u"nomain", &WithoutRoot},
    {u"action", &VerbNameOf},
    {u"path", &FolderOf},
    {u"name", &LastPartOf},
    {u"namenoext", &FileNameWithoutExtension},
    {u"ext", &ExtensionKey},
    {u"regjump", &RegistryLink},
}};

UnicodeString ApplyModifier(UnicodeView modifier, const Value& value) {
  for (const Modifier& known : kModifiers) {
    if (known.name == modifier) return known.apply(value);
  }
  return Unchanged(value);
}

UnicodeString PlainMissingFile(const UnicodeString& value) {
  UnicodeString text = RemoveQuotationMarks(value);
  // The length counts the quotation marks on purpose: only a bare drive root keeps its backslash.
  if (value.size() > 3 && text.ends_with(u'\\')) text.pop_back();
  return text;
}

UnicodeString FillPlaceholder(UnicodeView name, UnicodeView modifier, UnicodeView itemValue) {
  Value value{itemValue, itemValue.substr(0, 2)};
  // The view's mark is looked for anywhere, not just in front. Deliberate: a path that holds "32:"
  // further on loses its drive, and the texts that problems are recognised by depend on that.
  if (value.text.find(u"32:") != UnicodeView::npos || value.text.find(u"64:") != UnicodeView::npos)
    value.text.remove_prefix(value.text.find(u':') + 1);
  UnicodeString text = ApplyModifier(modifier, value);
  if (name == u"missingfile" && modifier.empty()) text = PlainMissingFile(text);
  for (char16_t& unit : text) {
    if (unit == 0) unit = u'?';
  }
  return text;
}

bool FindItem(const TStringList& data, UnicodeView name, UnicodeView& value) {
  return std::ranges::any_of(
      data, [&](const UnicodeString& item) { return DataItemHasName(item, name, value); });
}

}  // namespace

UnicodeString InsertData(UnicodeView pattern, const TStringList& data) {
  UnicodeString result;
  // Most texts grow by one name or path; growing in steps would copy them several times.
  constexpr std::size_t usualGrowth = 80;
  if (pattern.find(u'#') != UnicodeView::npos) result.reserve(pattern.size() + usualGrowth);
  std::size_t from = 0;
  for (;;) {
    const std::size_t open = pattern.find(u'#', from);
    const std::size_t close =
        open == UnicodeView::npos ? UnicodeView::npos : pattern.find(u'#', open + 1);
    if (close == UnicodeView::npos) return result.append(pattern.substr(from));
    result.append(pattern.substr(from, open - from));

    const UnicodeView placeholder = pattern.substr(open + 1, close - open - 1);
    const std::size_t colon = placeholder.find(u':');
    const UnicodeView name = placeholder.substr(0, colon);
    const UnicodeView modifier =
        colon == UnicodeView::npos ? UnicodeView() : placeholder.substr(colon + 1);
    UnicodeView value;
    if (!FindItem(data, name, value)) {
      // Goes on behind the opening mark, so that the closing one may open the next placeholder.
      result += u'#';
      from = open + 1;
    } else {
      result += FillPlaceholder(name, modifier, value);
      from = close + 1;
    }
  }
}

UnicodeString StrOrEmpty(UnicodeView text) {
  return text.empty() ? UnicodeString(u"\"-\"") : UnicodeString(text);
}

UnicodeString StrOrEmptyToStr(UnicodeView text) {
  return text == u"\"-\"" ? UnicodeString() : UnicodeString(text);
}

}  // namespace scrubwell
