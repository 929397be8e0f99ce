#include <algorithm>
#include <array>
#include <map>
#include <unordered_map>
#include <unordered_set>

#include "formats/sha256/sha256.h"
#include "hosts/driver/problem_id.h"
#include "hosts/report/host_texts.h"
#include "hosts/report/image_catalogue.h"
#include "hosts/report/language.h"
#include "hosts/report/problem_kinds.h"
#include "hosts/report/problem_parts.h"
#include "hosts/report/report.h"
#include "hosts/report/report_html_page.h"
#include "hosts/report/report_texts.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// Up to here all groups are open from the start; a browser would be slow to lay out more.
constexpr std::size_t kMostOpen = 400;

struct ItemLabel {
  UnicodeView name;
  TText label;
};
constexpr std::array<ItemLabel, 17> kItemLabels{{
    {u"existingkey", texts::HtmlKey},
    {u"existingvalue", texts::HtmlValue},
    {u"missingfile", texts::HtmlMissingFile},
    {u"missingkey", texts::HtmlMissingKey},
    {u"existingfile", texts::HtmlExistingFile},
    {u"url", texts::HtmlAddress},
    {u"invalidfile", texts::HtmlInvalidFile},
    {u"servertype", texts::HtmlServerType},
    {u"stubtype", texts::HtmlEntry},
    {u"subkey", texts::HtmlEntry},
    {u"key", texts::HtmlEntry},
    {u"section", texts::HtmlSection},
    {u"value", texts::HtmlEntry},
    {u"application", texts::HtmlProgram},
    {u"traceapp", texts::HtmlProgram},
    {u"scheme", texts::HtmlScheme},
    {u"event", texts::HtmlEvent},
}};
// What stands in the problem's caption already, or serves the repair alone.
constexpr std::array<UnicodeView, 7> kSilentItems{
    u"caption", u"displayname", u"imagefile", u"jobfile", u"cleanmode", u"fixhistory", u"item"};

std::string Escaped(std::string_view utf8) {
  std::string out;
  out.reserve(utf8.size());
  for (const char c : utf8) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string Html(UnicodeView text) {
  return Escaped(ToUtf8(Harmless(text, false)));
}
std::string Html(const TText& text, std::initializer_list<std::string_view> values = {}) {
  return Escaped(Say(text, values));
}

// What a content security policy calls a style or script by.
std::string PolicyHash(std::string_view content) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::string hex = Sha256Hex(content);
  std::string base64;
  for (std::size_t i = 0; i < hex.size(); i += 6) {
    const std::string part = hex.substr(i, 6);
    const unsigned long bits = std::stoul(part, nullptr, 16) << (part.size() == 6 ? 0 : 8);
    for (int shift = 18; shift >= 0; shift -= 6) base64 += digits[bits >> shift & 0x3F];
    if (part.size() != 6) base64.back() = '=';
  }
  return "'sha256-" + base64 + "'";
}

struct KindGroup {
  std::int32_t kind = 0;
  std::vector<std::int32_t> problems;
};

struct Category {
  const TRCPlugin* plugin = nullptr;  ///< null for problems of no known plugin
  std::map<std::int32_t, KindGroup> kinds;
  std::size_t count = 0;
};

class Page {
 public:
  Page(const ScanReport& report, std::string& out, const Drain& drain)
      : report_(report), out_(out), drain_(drain) {
    Sort();
  }
  void Write();

 private:
  void Sort();
  void WriteHead();
  void WriteIcons();
  void WriteIcon(UnicodeView fileName);
  void WriteSummary();
  void WriteFact(const TText& label, const std::string& html);
  void WriteFacts();
  void WriteNavigation();
  void WriteFilter();
  void WriteCategory(const Category& category);
  void WriteKind(const Category& category, const KindGroup& group);
  void WriteProblem(std::int32_t index);
  void WriteItems(std::int32_t index);
  void WriteNotes();
  std::string NameOf(const Category& category) const;
  std::string AnchorOf(const Category& category) const;

  const ScanReport& report_;
  std::string& out_;
  const Drain& drain_;
  std::vector<std::string> ids_ = ProblemIds(*SweepErrors);
  std::unordered_set<std::string> anchors_;  // ids of two users' problems may be equal
  std::vector<Category> categories_;         // one for each plugin, in their order, and the rest
};

void Page::Sort() {
  std::unordered_map<UnicodeView, std::size_t> numbers;
  for (const TRCPlugin* plugin : *Plugins) {
    numbers.emplace(plugin->FPluginID, categories_.size());
    categories_.push_back({plugin, {}, 0});
  }
  categories_.emplace_back();
  for (const std::int32_t index : report_.shown) {
    const TSweepError& problem = (*SweepErrors)[index];
    const auto number = numbers.find(problem.PluginID);
    Category& category = number == numbers.end() ? categories_.back() : categories_[number->second];
    KindGroup& group = category.kinds[problem.ErrorType];
    group.kind = problem.ErrorType;
    group.problems.push_back(index);
    ++category.count;
  }
}

std::string Page::NameOf(const Category& category) const {
  return category.plugin == nullptr ? Html(texts::HtmlOther) : Html(category.plugin->Caption);
}

std::string Page::AnchorOf(const Category& category) const {
  return "category-" + (category.plugin == nullptr ? "other" : Html(category.plugin->FPluginID));
}

void Page::WriteHead() {
  const char* language = PackageLanguage() == TLanguage::German ? "de" : "en";
  out_ += "<!DOCTYPE html>\n<html lang=\"" + std::string(language) + "\">\n<head>\n";
  out_ += "<meta charset=\"utf-8\">\n<meta http-equiv=\"Content-Security-Policy\" content=\"";
  out_ += "default-src 'none'; style-src " + PolicyHash(kPageStyle) + "; script-src " +
          PolicyHash(kPageScript) + "; base-uri 'none'; form-action 'none'\">\n";
  out_ += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
  out_ += "<meta name=\"referrer\" content=\"no-referrer\">\n";
  out_ += "<meta name=\"generator\" content=\"Scrubwell " SCRUBWELL_VERSION "\">\n<title>";
  out_ += Html(texts::HtmlTitle);
  if (!report_.target.productName.empty()) out_ += " – " + Html(report_.target.productName);
  out_ += "</title>\n<style>" + std::string(kPageStyle) + "</style>\n</head>\n<body>\n";
  out_ += "<a class=\"skip\" href=\"#results\">" + Html(texts::HtmlSkip) + "</a>\n";
}

// Each icon that the page shows once; it is drawn from there wherever it is named.
void Page::WriteIcons() {
  std::map<int, const Icon*> used;
  const auto use = [&used](UnicodeView fileName) {
    const Icon* const icon = FindIcon(fileName);
    if (icon != nullptr) used.emplace(icon->number, icon);
  };
  for (const Category& category : categories_) {
    if (category.plugin != nullptr) use(category.plugin->IconFileName);
    for (const auto& [kind, group] : category.kinds) {
      use((*SweepErrors)[group.problems.front()].IconID);
    }
  }
  out_ += "<svg class=\"sprite\" aria-hidden=\"true\" focusable=\"false\">\n";
  for (const auto& [number, icon] : used) {
    const std::size_t start = icon->svg.find('>') + 1;
    const std::size_t end = icon->svg.rfind("</svg>");
    out_ += "<symbol id=\"icon" + std::to_string(number) + "\" viewBox=\"0 0 24 24\">";
    out_ += icon->svg.substr(start, end - start);
    out_ += "</symbol>\n";
  }
  out_ += "</svg>\n";
}

void Page::WriteIcon(UnicodeView fileName) {
  const Icon* const icon = FindIcon(fileName);
  if (icon == nullptr) return;
  out_ += "<svg class=\"i\" aria-hidden=\"true\" focusable=\"false\"><use href=\"#icon" +
          std::to_string(icon->number) + "\"/></svg>";
}

void Page::WriteSummary() {
  std::size_t hiddenShown = 0;
  for (const std::int32_t index : report_.shown) hiddenShown += !(*SweepErrors)[index].Visible;
  std::size_t checked = 0;
  for (const TRCPlugin* plugin : *Plugins) checked += plugin->FState != rcpUnknown;
  out_ += "<header>\n<p class=\"brand\">Scrubwell</p>\n<h1>" + Html(texts::HtmlTitle) + "</h1>\n";
  if (!report_.target.productName.empty()) {
    out_ += "<p class=\"lead\">" + Html(report_.target.productName) + "</p>\n";
  }
  out_ += "<p class=\"intro\">" + Html(texts::HtmlIntro) + "</p>\n<ul class=\"sums\">\n";
  const auto sum = [this](std::size_t number, const TText& label) {
    out_ += "<li><b>" + std::to_string(number) + "</b> <span>" + Html(label) + "</span></li>\n";
  };
  sum(report_.shown.size() - hiddenShown, texts::HtmlFound);
  if (report_.hidden > 0) sum(report_.hidden, texts::HtmlHidden);
  if (report_.leftOut > 0) sum(report_.leftOut, texts::HtmlLeftOut);
  sum(checked, checked == 1 ? texts::HtmlCheckedOne : texts::HtmlChecked);
  out_ += "</ul>\n";
  const auto mark = [this](const TText& text) {
    out_ += "<p class=\"card mark\">" + Html(text) + "</p>\n";
  };
  if (report_.outcome == RunOutcome::Stopped) mark(texts::ReportStopped);
  if (ShouldReSearch) mark(texts::HtmlScanAgain);
  WriteFacts();
  out_ += "</header>\n";
}

void Page::WriteFact(const TText& label, const std::string& html) {
  if (html.empty()) return;
  out_ += "<div><dt>" + Html(label) + "</dt><dd>" + html + "</dd></div>\n";
}

void Page::WriteFacts() {
  const TargetFacts& target = report_.target;
  out_ += "<section class=\"card facts\" aria-labelledby=\"target\">\n<h2 id=\"target\">" +
          Html(texts::HtmlTarget) + "</h2>\n<dl>\n";
  WriteFact(texts::HtmlWindows, Html(target.productName));
  std::string version = ToUtf8(Harmless(target.version, false));
  if (target.build != 0 && !version.empty()) {
    version = Say(texts::HtmlBuild, {version, std::to_string(target.build)});
  }
  WriteFact(texts::HtmlVersion, Escaped(version));
  WriteFact(texts::HtmlKind, Html(target.is64Bit ? texts::Bits64 : texts::Bits32));
  std::string users;
  for (const ScannedUser& user : report_.users) {
    users += (users.empty() ? "" : ", ") + Html(user.name);
  }
  if (report_.users.empty()) {
    WriteFact(texts::HtmlUser, Html(target.userName));
  } else {
    WriteFact(texts::HtmlUsers, users);
  }
  WriteFact(texts::HtmlSystemRoot, Html(target.systemRoot));
  WriteFact(texts::HtmlFolder, Html(UnicodeView(FromUtf8(target.folder))));
  if (report_.outcome == RunOutcome::Complete) {
    WriteFact(texts::HtmlState, Html(texts::HtmlComplete));
  }
  out_ += "</dl>\n</section>\n";
}

void Page::WriteNavigation() {
  out_ += "<nav class=\"card\" aria-labelledby=\"tree\">\n<h2 id=\"tree\">" +
          Html(texts::HtmlCategories) + "</h2>\n<ul>\n";
  std::size_t clean = 0;
  for (const Category& category : categories_) {
    clean += category.plugin != nullptr && category.count == 0;
    if (category.count == 0) continue;
    out_ += "<li><a href=\"#" + AnchorOf(category) + "\">";
    if (category.plugin != nullptr) WriteIcon(category.plugin->IconFileName);
    out_ += "<span>" + NameOf(category) + "</span><span class=\"n\">" +
            std::to_string(category.count) + "</span></a></li>\n";
  }
  out_ += "</ul>\n";
  if (clean > 0) {
    out_ += "<details><summary>" + Html(texts::HtmlClean) + " (" + std::to_string(clean) +
            ")</summary>\n<ul>\n";
    for (const Category& category : categories_) {
      if (category.plugin == nullptr || category.count > 0) continue;
      out_ += "<li><span>";
      WriteIcon(category.plugin->IconFileName);
      out_ += "<span>" + NameOf(category);
      if (category.plugin->FState == rcpUnknown) {
        out_ += " (" + Html(texts::HtmlNotScanned) + ')';
      }
      out_ += "</span></span></li>\n";
    }
    out_ += "</ul>\n</details>\n";
  }
  out_ += "</nav>\n";
}

// Shown by the script, without which it could do nothing.
void Page::WriteFilter() {
  out_ += "<div class=\"bar\" id=\"bar\" role=\"search\" hidden>\n<label><span>" +
          Html(texts::HtmlFilter) +
          "</span><input type=\"search\" id=\"filter\" autocomplete=\"off\" spellcheck=\"false\""
          " placeholder=\"" +
          Html(texts::HtmlFilter) + ": " + Html(texts::HtmlFilterHint) + "\"></label>\n";
  out_ += "<button type=\"button\" id=\"expand\">" + Html(texts::HtmlExpand) + "</button>\n";
  out_ += "<button type=\"button\" id=\"collapse\">" + Html(texts::HtmlCollapse) + "</button>\n";
  out_ += "<output id=\"hits\" for=\"filter\" aria-live=\"polite\" data-text=\"" +
          Html(texts::HtmlHits) + "\"></output>\n</div>\n";
}

void Page::WriteCategory(const Category& category) {
  if (category.count == 0) return;
  const std::string anchor = AnchorOf(category);
  out_ += "<section class=\"card cat\" id=\"" + anchor + "\" data-name=\"" + NameOf(category) +
          "\" aria-labelledby=\"" + anchor + "-name\">\n<div class=\"top\">";
  if (category.plugin != nullptr) WriteIcon(category.plugin->IconFileName);
  out_ += "<h2 id=\"" + anchor + "-name\">" + NameOf(category) + "</h2><span class=\"count\">" +
          std::to_string(category.count) + "</span></div>\n";
  if (category.plugin != nullptr) {
    out_ += "<div class=\"about\"><p>" + Html(category.plugin->ShortDescription) + "</p></div>\n";
  }
  for (const auto& [kind, group] : category.kinds) WriteKind(category, group);
  out_ += "</section>\n";
}

void Page::WriteKind(const Category& category, const KindGroup& group) {
  const TSweepError& first = (*SweepErrors)[group.problems.front()];
  const ProblemKind* const known =
      category.plugin == nullptr ? nullptr : FindKind(category.plugin->FPluginID, group.kind);
  out_ += "<details class=\"k\"";
  if (report_.shown.size() <= kMostOpen) out_ += " open";
  out_ += "><summary>";
  WriteIcon(first.IconID);
  out_ += "<h3>" + (known == nullptr ? Html(first.PluginID) + ' ' + std::to_string(group.kind)
                                     : Html(known->title));
  out_ +=
      "</h3><span class=\"count\">" + std::to_string(group.problems.size()) + "</span></summary>\n";
  for (const std::int32_t index : group.problems) {
    WriteProblem(index);
    if (drain_) drain_(out_);
  }
  out_ += "</details>\n";
}

void Page::WriteProblem(std::int32_t index) {
  const TSweepError& problem = (*SweepErrors)[index];
  const std::string& id = ids_[static_cast<std::size_t>(index)];
  std::string anchor = id;
  if (!anchors_.insert(anchor).second) anchor += '-' + std::to_string(index);
  out_ += "<details class=\"p\" id=\"" + anchor + "\"><summary><span><b>" + Html(problem.Caption) +
          "</b>";
  const auto tag = [this](const std::string& html) {
    out_ += "<span class=\"tag\">" + html + "</span>";
  };
  if (!OwnerOf(report_, index).empty()) tag(Html(OwnerOf(report_, index)));
  if (!problem.Visible) tag(Html(texts::HtmlHidden));
  out_ += "<small>" + Html(problem.ShortDescription) + "</small></span></summary><p>";
  for (const TextPart& part : SplitLinks(problem.Description)) {
    out_ += part.isKey ? "<code>" + Html(part.text) + "</code>" : Html(part.text);
  }
  out_ += "</p><dl>";
  WriteItems(index);
  out_ += "<dt>" + Html(texts::HtmlId) + "</dt><dd>" + id + "</dd></dl></details>\n";
}

void Page::WriteItems(std::int32_t index) {
  const TSweepError& problem = (*SweepErrors)[index];
  const ProblemPlace place = PlaceOf(problem);
  for (const UnicodeString& text : problem.Data) {
    const DataItem item = SplitItem(text);
    if (std::ranges::find(kSilentItems, item.name) != kSilentItems.end()) continue;
    const auto label = std::ranges::find(kItemLabels, item.name, &ItemLabel::name);
    const bool isValue = item.name == u"existingvalue";
    out_ += "<dt>" + (label == kItemLabels.end() ? Html(item.name) : Html(label->label));
    out_ += "</dt><dd>" +
            (isValue && item.value.empty() ? Html(texts::HtmlDefaultValue) : Html(item.value));
    if (item.name == u"existingkey" && !place.view.empty()) {
      out_ += "<span class=\"tag\">" +
              Html(place.view == u"64" ? texts::HtmlView64 : texts::HtmlView32) + "</span>";
    }
    out_ += "</dd>";
  }
}

void Page::WriteNotes() {
  if (report_.notes.empty()) return;
  out_ += "<section class=\"card notes\" aria-labelledby=\"notes\">\n<h2 id=\"notes\">" +
          Html(texts::HtmlNotes) + "</h2>\n<p>" + Html(texts::HtmlNotesIntro) + "</p>\n<ul>\n";
  for (const UnicodeString& note : report_.notes) out_ += "<li>" + Html(note) + "</li>\n";
  out_ += "</ul>\n</section>\n";
}

void Page::Write() {
  WriteHead();
  WriteIcons();
  WriteSummary();
  out_ += "<div class=\"page\">\n";
  WriteNavigation();
  out_ += "<main id=\"results\">\n";
  WriteFilter();
  if (report_.shown.empty()) {
    out_ += "<p class=\"card mark\">" + Html(texts::HtmlNothing) + "</p>\n";
  }
  for (const Category& category : categories_) WriteCategory(category);
  WriteNotes();
  out_ += "</main>\n</div>\n<footer><p>" + Html(texts::HtmlMadeBy, {SCRUBWELL_VERSION}) +
          "</p></footer>\n<script>" + std::string(kPageScript) + "</script>\n</body>\n</html>\n";
}

}  // namespace

std::string HtmlReport(const ScanReport& report, const Drain& drain) {
  std::string out;
  Page(report, out, drain).Write();
  return out;
}

}  // namespace scrubwell::hosts
