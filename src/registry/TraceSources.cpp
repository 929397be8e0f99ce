// The table of usage history sources.
#include "registry/Zmtracecleaner.h"

namespace scrubwell {
namespace {

using Form = TraceForm;
using Order = TraceOrder;

constexpr TTraceFlags kDeleteAndRepair = tfDeleteValue | tfRepair;

/// A program's own list of files, numbered in the value names.
constexpr TTraceSource Files(UnicodeView application, UnicodeView key, UnicodeView value = u"File#",
                             Form form = Form::Text) {
  return {.application = application,
          .key = key,
          .value = value,
          .form = form,
          .order = Order::Consecutive,
          .targetType = tttFile,
          .flags = kDeleteAndRepair};
}

/// As Files, for a list that may hold folders.
constexpr TTraceSource Folders(UnicodeView application, UnicodeView key, UnicodeView value,
                               Form form = Form::Text) {
  TTraceSource source = Files(application, key, value, form);
  source.targetType = tttFileOrFolder;
  return source;
}

/// The same list, counted from 0.
constexpr TTraceSource FromZero(TTraceSource source) {
  source.firstNumber = 0;
  return source;
}

/// Many texts in one value.
constexpr TTraceSource Packed(UnicodeView application, UnicodeView key, UnicodeView value) {
  TTraceSource source = Folders(application, key, value, Form::Texts);
  source.order = Order::None;
  return source;
}

/// One of Windows' own histories.
constexpr TTraceSource Windows(UnicodeView key, UnicodeView value, Form form, Order order) {
  return {.application = u"Windows",
          .key = key,
          .value = value,
          .form = form,
          .order = order,
          .targetType = tttWindows,
          .flags = order == Order::None ? TTraceFlags{tfDeleteValue} : kDeleteAndRepair};
}

constexpr TTraceSource MenuOrder(UnicodeView key) {
  TTraceSource source = Windows(key, u"Order", Form::MenuOrder, Order::None);
  source.flags = kDeleteAndRepair | tfStartMenu;
  return source;
}

/// The cleaning of these lists takes care of their order itself.
constexpr TTraceSource OpenSave(UnicodeView key) {
  return {.application = u"ComDlg32",
          .key = key,
          .value = u"?",
          .order = Order::Letters,
          .targetType = tttFile,
          .flags = tfDeleteValue};
}

constexpr TTraceSource kSources[] = {
    OpenSave(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSaveMRU"),
    OpenSave(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSaveMRU\\*"),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSavePidlMRU",
            u"#", Form::ItemList, Order::Numbers),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\OpenSavePidlMRU\\*",
            u"#", Form::ItemList, Order::Numbers),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\LastVisitedMRU",
            u"?", Form::ProgramFolder, Order::Letters),
    // Also the list of the older dialogs, which has "Legacy" at its end.
    Windows(
        u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\ComDlg32\\LastVisitedPidlMRU*",
        u"#", Form::ProgramItems, Order::Numbers),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RunMRU", u"?", Form::Command,
            Order::Letters),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs", u"#",
            Form::RecentDocument, Order::Numbers),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs\\*", u"#",
            Form::RecentDocument, Order::Numbers),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\TypedPaths", u"url#",
            Form::Text, Order::Consecutive),
    Windows(u"Software\\Microsoft\\Internet Explorer\\TypedURLs", u"url#", Form::Address,
            Order::Consecutive),
    Windows(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist\\*\\Count", u"*",
            Form::UsageCount, Order::None),
    MenuOrder(u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MenuOrder\\Start Menu\\**"),
    MenuOrder(
        u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MenuOrder\\Start Menu2\\**"),
    Files(u"Microsoft Access", u"Software\\Microsoft\\Office\\*\\Access\\Settings", u"MRU#"),
    Files(u"Microsoft Access", u"Software\\Microsoft\\Office\\*\\Access\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Access", u"Software\\Microsoft\\Office\\*\\Access\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Access", u"Software\\Microsoft\\Office\\*\\Access\\User MRU\\*\\File MRU",
          u"Item #", Form::OfficeItem),
    Folders(u"Microsoft Access", u"Software\\Microsoft\\Office\\*\\Access\\User MRU\\*\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft Excel", u"Software\\Microsoft\\Office\\*\\Excel\\Recent Files", u"File#"),
    Files(u"Microsoft Excel", u"Software\\Microsoft\\Office\\*\\Excel\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Excel", u"Software\\Microsoft\\Office\\*\\Excel\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Excel", u"Software\\Microsoft\\Office\\*\\Excel\\User MRU\\*\\File MRU",
          u"Item #", Form::OfficeItem),
    Folders(u"Microsoft Excel", u"Software\\Microsoft\\Office\\*\\Excel\\User MRU\\*\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft Project", u"Software\\Microsoft\\Office\\*\\MS Project\\Recent File List",
          u"File#"),
    Files(u"Microsoft Project", u"Software\\Microsoft\\Office\\*\\MS Project\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Project", u"Software\\Microsoft\\Office\\*\\MS Project\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft Project",
          u"Software\\Microsoft\\Office\\*\\MS Project\\User MRU\\*\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Project",
            u"Software\\Microsoft\\Office\\*\\MS Project\\User MRU\\*\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft PowerPoint", u"Software\\Microsoft\\Office\\*\\PowerPoint\\Recent File List",
          u"File#"),
    Files(u"Microsoft PowerPoint", u"Software\\Microsoft\\Office\\*\\PowerPoint\\File MRU",
          u"Item #", Form::OfficeItem),
    Folders(u"Microsoft PowerPoint", u"Software\\Microsoft\\Office\\*\\PowerPoint\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft PowerPoint",
          u"Software\\Microsoft\\Office\\*\\PowerPoint\\User MRU\\*\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft PowerPoint",
            u"Software\\Microsoft\\Office\\*\\PowerPoint\\User MRU\\*\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Publisher", u"Software\\Microsoft\\Office\\*\\Publisher\\Recent File List",
          u"File#"),
    Files(u"Microsoft Publisher", u"Software\\Microsoft\\Office\\*\\Publisher\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Publisher", u"Software\\Microsoft\\Office\\*\\Publisher\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft Publisher",
          u"Software\\Microsoft\\Office\\*\\Publisher\\User MRU\\*\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Publisher",
            u"Software\\Microsoft\\Office\\*\\Publisher\\User MRU\\*\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Visio", u"Software\\Microsoft\\Office\\*\\Visio\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Visio", u"Software\\Microsoft\\Office\\*\\Visio\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Visio", u"Software\\Microsoft\\Office\\*\\Visio\\User MRU\\*\\File MRU",
          u"Item #", Form::OfficeItem),
    Folders(u"Microsoft Visio", u"Software\\Microsoft\\Office\\*\\Visio\\User MRU\\*\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Microsoft Word", u"Software\\Microsoft\\Office\\*\\Word\\File MRU", u"Item #",
          Form::OfficeItem),
    Folders(u"Microsoft Word", u"Software\\Microsoft\\Office\\*\\Word\\Place MRU", u"Item #",
            Form::OfficeItem),
    Files(u"Microsoft Word", u"Software\\Microsoft\\Office\\*\\Word\\User MRU\\*\\File MRU",
          u"Item #", Form::OfficeItem),
    Folders(u"Microsoft Word", u"Software\\Microsoft\\Office\\*\\Word\\User MRU\\*\\Place MRU",
            u"Item #", Form::OfficeItem),
    Files(u"Paint",
          u"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Paint\\Recent File List"),
    Files(u"WordPad",
          u"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Wordpad\\Recent File List"),
    {.application = u"Regedit",
     .key = u"Software\\Microsoft\\Windows\\CurrentVersion\\Applets\\Regedit",
     .value = u"LastKey",
     .targetType = tttText,
     .flags = tfEmptyValue},
    Files(u"Windows Media Player", u"Software\\Microsoft\\MediaPlayer\\Player\\RecentFileList"),
    Files(u"Microsoft Management Console",
          u"Software\\Microsoft\\Microsoft Management Console\\Recent File List"),
    Files(u"Visual Studio", u"Software\\Microsoft\\VisualStudio\\*\\FileMRUList", u"File#",
          Form::TextToBar),
    Files(u"Visual Studio", u"Software\\Microsoft\\VisualStudio\\*\\ProjectMRUList", u"File#",
          Form::TextToBar),
    Files(u"Media Player Classic", u"Software\\Gabest\\Media Player Classic\\Recent File List"),
    Files(u"IconPackager", u"Software\\Stardock\\IconPackager\\Recent", u"Icon#"),
    Files(u"WinZip", u"Software\\Nico Mak Computing\\WinZip\\filemenu", u"filemenu#"),
    Folders(u"WinZip", u"Software\\Nico Mak Computing\\WinZip\\extract", u"extract#"),
    FromZero(Files(u"WinRAR", u"Software\\WinRAR\\ArcHistory", u"#")),
    FromZero(Folders(u"WinRAR", u"Software\\WinRAR\\DialogEditHistory\\ExtrPath", u"#")),
    Packed(u"7-Zip", u"Software\\7-Zip\\FM", u"FolderHistory"),
    Packed(u"7-Zip", u"Software\\7-Zip\\Compression", u"ArcHistory"),
    Packed(u"7-Zip", u"Software\\7-Zip\\Extraction", u"PathHistory"),
};

}  // namespace

std::span<const TTraceSource> TraceSources() {
  return kSources;
}

}  // namespace scrubwell
