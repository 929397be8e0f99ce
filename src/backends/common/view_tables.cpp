#include "backends/common/view_tables.h"

#include "registry/Stringhelper.h"

namespace scrubwell::detail {

namespace {

constexpr UnicodeView kWow = u"Wow6432Node";

struct SharedKey {
  UnicodeView path;  // below SOFTWARE
  bool beforeWindows7;
};

// Below SOFTWARE everything is redirected but these keys. The ones that only Windows 7 made shared
// were redirected before.
constexpr SharedKey kShared[] = {
    {u"Clients", false},
    {u"Policies", true},
    {u"RegisteredApplications", true},
    {u"Microsoft\\COM3", false},
    {u"Microsoft\\Cryptography\\Calais\\Current", true},
    {u"Microsoft\\Cryptography\\Calais\\Readers", true},
    {u"Microsoft\\Cryptography\\Services", true},
    {u"Microsoft\\CTF\\SystemShared", true},
    {u"Microsoft\\CTF\\TIP", true},
    {u"Microsoft\\DFS", true},
    {u"Microsoft\\Driver Signing", true},
    {u"Microsoft\\Non-Driver Signing", true},
    {u"Microsoft\\EnterpriseCertificates", true},
    {u"Microsoft\\EventSystem", false},
    {u"Microsoft\\MSMQ", true},
    {u"Microsoft\\Notepad\\DefaultFonts", false},
    {u"Microsoft\\OLE", false},
    {u"Microsoft\\RAS", true},
    {u"Microsoft\\RPC", false},
    {u"Microsoft\\Shared Tools\\MSInfo", true},
    {u"Microsoft\\SystemCertificates", true},
    {u"Microsoft\\TermServLicensing", true},
    {u"Microsoft\\TransactionServer", true},
    {u"Microsoft\\Windows\\CurrentVersion\\App Paths", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Control Panel\\Cursors\\Schemes", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\AutoplayHandlers", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\DriveIcons", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Explorer\\KindMap", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Group Policy", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Policies", true},
    {u"Microsoft\\Windows\\CurrentVersion\\PreviewHandlers", false},
    {u"Microsoft\\Windows\\CurrentVersion\\Setup", true},
    {u"Microsoft\\Windows\\CurrentVersion\\Telephony\\Locations", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Console", false},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontDpi", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontLink", false},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontMapper", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Fonts", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\FontSubstitutes", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Gre_Initialize", false},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Image File Execution Options", false},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Language Pack", false},
    {u"Microsoft\\Windows NT\\CurrentVersion\\NetworkCards", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Perflib", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Ports", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Print", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\ProfileList", true},
    {u"Microsoft\\Windows NT\\CurrentVersion\\Time Zones", true},
};

// Since Windows 7 all classes are shared but these.
constexpr UnicodeView kRedirectedClasses[] = {u"CLSID", u"DirectShow", u"Interface", u"Media Type",
                                              u"MediaFoundation"};
// Windows 7 links these of the 32-bit classes to the shared ones. A hive need not hold the links.
constexpr UnicodeView kLinkedClasses[] = {u"AppId", u"PROTOCOLS", u"TypeLib"};

UnicodeString Join(std::initializer_list<UnicodeView> parts) {
  UnicodeString result;
  for (const UnicodeView part : parts) {
    if (part.empty()) continue;
    if (!result.empty()) result += u'\\';
    result += part;
  }
  return result;
}

ViewRule& Reach(ViewRule& region, UnicodeView path) {
  ViewRule* rule = &region;
  const int count = ParamXCount(path, u'\\');
  for (int i = 1; i <= count; ++i) {
    UnicodeString name = ParamX(path, u'\\', i);
    auto* next = const_cast<ViewRule*>(rule->Find(name));
    if (next == nullptr) {
      auto made = std::make_unique<ViewRule>();
      made->upper = UpperCase(name);
      made->name = std::move(name);
      next = rule->children.emplace_back(std::move(made)).get();
    }
    rule = next;
  }
  return *rule;
}

ViewRule& Fix(ViewRule& region, UnicodeView path, UnicodeView place, UnicodeView other = {}) {
  ViewRule& rule = Reach(region, path);
  rule.kind = RuleKind::Fixed;
  rule.place = place;
  rule.otherPlace = other;
  return rule;
}

void Finish(ViewRule& rule) {
  for (const auto& child : rule.children) {
    rule.changesNames = rule.changesNames || child->shown || child->hidden;
    Finish(*child);
  }
}

}  // namespace

const ViewRule* ViewRule::Find(UnicodeView component) const {
  for (const auto& child : children)
    if (child->upper.size() == component.size() && CompareUpCase(child->upper, component) == 0)
      return child.get();
  return nullptr;
}

ViewTables::ViewTables(bool is64Bit, ViewRules rules) {
  Reach(user_, u"Software\\Classes").kind = RuleKind::UserClasses;
  Reach(user_, u"Software\\Classes").shown = true;
  Reach(system_, u"CurrentControlSet").kind = RuleKind::ControlSet;
  Reach(system_, u"CurrentControlSet").shown = true;
  if (is64Bit) {
    Fix(software_[1], {}, kWow);
    AddShared(rules);
    AddClasses(rules);
    AddLinks(rules);
  }
  for (ViewRule* region :
       {&software_[0], &software_[1], &classes_[0], &classes_[1], &user_, &system_})
    Finish(*region);
}

void ViewTables::AddShared(ViewRules rules) {
  for (const SharedKey& key : kShared) {
    if (rules == ViewRules::BeforeWindows7 && !key.beforeWindows7) continue;
    Fix(software_[1], key.path, key.path).shown = true;
    // What a 32-bit process sees there are links in the 32-bit part, which may be missing.
    for (ViewRule& region : software_) {
      const UnicodeString link = Join({kWow, key.path});
      Fix(region, link, link, key.path);
    }
  }
}

// The 32-bit classes lie below Classes. Some hives hold them the other way round, below the 32-bit
// part of SOFTWARE; whichever place exists is taken.
void ViewTables::AddClasses(ViewRules rules) {
  ViewRule& software = software_[1];
  ViewRule& classes = classes_[1];
  const UnicodeString nested = Join({u"Classes", kWow});
  const UnicodeString outer = Join({kWow, u"Classes"});
  if (rules == ViewRules::BeforeWindows7) {
    Fix(software, u"Classes", nested, outer).shown = true;
    Fix(software, u"Classes\\HCP", u"Classes\\HCP").shown = true;
    Fix(classes, {}, kWow);
    Fix(classes, u"HCP", u"HCP").shown = true;
    return;
  }
  Fix(software, u"Classes", u"Classes").shown = true;
  for (const UnicodeView name : kRedirectedClasses) {
    Fix(software, Join({u"Classes", name}), Join({nested, name}), Join({outer, name})).shown = true;
    Fix(classes, name, Join({kWow, name})).shown = true;
  }
}

void ViewTables::AddLinks(ViewRules rules) {
  const UnicodeString nested = Join({u"Classes", kWow});
  const UnicodeString outer = Join({kWow, u"Classes"});
  for (ViewRule& region : software_) {
    Fix(region, kWow, kWow).hidden = true;
    Fix(region, nested, nested, outer).hidden = true;
    Fix(region, outer, outer, nested);
  }
  for (ViewRule& region : classes_) Fix(region, kWow, kWow).hidden = true;
  if (rules == ViewRules::BeforeWindows7) return;
  for (const UnicodeView name : kLinkedClasses) {
    const UnicodeString shared = Join({u"Classes", name});
    for (ViewRule& region : software_) {
      Fix(region, Join({nested, name}), Join({nested, name}), shared);
      Fix(region, Join({outer, name}), Join({outer, name}), shared);
    }
    for (ViewRule& region : classes_) Fix(region, Join({kWow, name}), Join({kWow, name}), name);
  }
}

}  // namespace scrubwell::detail
