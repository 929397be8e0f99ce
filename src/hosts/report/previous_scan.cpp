#include "hosts/report/previous_scan.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "hosts/driver/problem_id.h"
#include "hosts/report/problem_parts.h"
#include "registry/Stringhelper.h"

namespace scrubwell::hosts {

namespace {

// Every id has at least so many digits.
constexpr std::size_t kLeastDigits = 12;

// The unit that an escape \uXXXX at this place stands for, or -1.
int EscapedUnit(std::string_view bytes, std::size_t at) {
  if (at + 6 > bytes.size() || bytes[at] != '\\' || bytes[at + 1] != 'u') return -1;
  int unit = 0;
  for (const char c : bytes.substr(at + 2, 4)) {
    const char lower = static_cast<char>(c | 0x20);
    const bool digit = c >= '0' && c <= '9';
    if (!digit && (lower < 'a' || lower > 'f')) return -1;
    unit = unit * 16 + (digit ? c - '0' : lower - 'a' + 10);
  }
  return unit;
}

// Registry text may hold surrogates without their partner, which reports keep as escapes and JSON
// readers refuse. In their place comes U+FFFD, as it does where such text is compared.
void ReplaceLoneSurrogates(std::string& bytes) {
  for (std::size_t at = bytes.find('\\'); at < bytes.size(); at = bytes.find('\\', at)) {
    const int unit = EscapedUnit(bytes, at);
    if (unit < 0) {
      at += 2;
      continue;
    }
    const int next = EscapedUnit(bytes, at + 6);
    const bool pair = unit >= 0xD800 && unit <= 0xDBFF && next >= 0xDC00 && next <= 0xDFFF;
    if (!pair && unit >= 0xD800 && unit <= 0xDFFF) bytes.replace(at, 6, "\\ufffd");
    at += pair ? 12 : 6;
  }
}

struct Record {
  std::string id;
  std::string plugin;
  std::string identification;
  std::string user;
  std::int64_t kind = 0;
};

// What is compared, in one text. No field but the last, the user, can hold the separator.
std::string KeyOf(std::string_view name, std::string_view plugin, std::int64_t kind,
                  std::string_view user) {
  std::string key(name);
  return key.append(1, '\0')
      .append(plugin)
      .append(1, '\0')
      .append(std::to_string(kind))
      .append(1, '\0')
      .append(user);
}
// In place of a user: of any.
constexpr std::string_view kAnyUser = "*";

}  // namespace

// Listens to the parser, so that only what is compared is ever kept.
class PreviousReader {
 public:
  explicit PreviousReader(PreviousScan& scan) : scan_(scan) {}
  [[nodiscard]] bool IsReport() const { return hasVersion_ && hasProblems_; }

  // The parser's names.
  bool null() { return Value(); }
  bool boolean(bool) { return Value(); }
  bool number_integer(std::int64_t number) { return Number(number); }
  bool number_unsigned(std::uint64_t number) {
    return Number(number > INT32_MAX ? -1 : static_cast<std::int64_t>(number));
  }
  bool number_float(double, const std::string&) { return Value(); }
  bool binary(std::vector<std::uint8_t>&) { return Value(); }
  bool string(std::string& text) {
    if (depth_ == 1) {
      hasVersion_ = hasVersion_ || key_ == "scrubwell";
      if (key_ == "status") scan_.complete_ = scan_.complete_ && text == "complete";
    }
    if (!InProblem()) return Value();
    if (key_ == "id") record_.id = std::move(text);
    if (key_ == "plugin") record_.plugin = std::move(text);
    if (key_ == "identification") record_.identification = std::move(text);
    if (key_ == "user") record_.user = std::move(text);
    return Value();
  }
  bool start_object(std::size_t) {
    if (depth_ == 0) topIsObject_ = true;
    inCounts_ = inCounts_ || (depth_ == 1 && key_ == "counts");
    ++depth_;
    if (InProblem()) record_ = {};
    key_.clear();
    return true;
  }
  bool end_object() {
    if (InProblem()) Add();
    if (depth_ == 2) inCounts_ = false;
    --depth_;
    return true;
  }
  bool start_array(std::size_t) {
    if (depth_ == 1 && topIsObject_ && key_ == "problems") inProblems_ = hasProblems_ = true;
    ++depth_;
    return true;
  }
  bool end_array() {
    --depth_;
    if (depth_ == 1) inProblems_ = false;
    return true;
  }
  bool key(std::string& name) {
    key_ = std::move(name);
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) {
    return false;
  }

 private:
  [[nodiscard]] bool InProblem() const { return inProblems_ && depth_ == 3; }
  bool Number(std::int64_t number) {
    if (InProblem() && key_ == "kind") record_.kind = number;
    if (inCounts_ && depth_ == 2 && key_ == "left_out" && number != 0) scan_.complete_ = false;
    return Value();
  }
  static bool Value() { return true; }
  void Add() {
    ++scan_.count_;
    const bool hasId = record_.id.size() >= kLeastDigits;
    if (!hasId && record_.identification.empty()) return;
    scan_.anyWithoutId_ = scan_.anyWithoutId_ || !hasId;
    const std::string_view name =
        hasId ? std::string_view(record_.id).substr(0, kLeastDigits) : record_.identification;
    scan_.known_.insert(KeyOf(name, record_.plugin, record_.kind, record_.user));
    scan_.known_.insert(KeyOf(name, record_.plugin, record_.kind, kAnyUser));
  }

  PreviousScan& scan_;
  Record record_;
  std::string key_;
  std::size_t depth_ = 0;
  bool topIsObject_ = false;
  bool inProblems_ = false;
  bool inCounts_ = false;
  bool hasVersion_ = false;
  bool hasProblems_ = false;
};

PreviousFailure PreviousScan::Read(std::string bytes) {
  *this = {};
  if (bytes.size() > MaxBytes) return PreviousFailure::TooLarge;
  ReplaceLoneSurrogates(bytes);
  PreviousReader reader(*this);
  if (nlohmann::json::sax_parse(bytes, &reader) && reader.IsReport()) return PreviousFailure::None;
  *this = {};
  return PreviousFailure::NoReport;
}

bool PreviousScan::Knows(const TSweepError& problem, UnicodeView owner) const {
  const std::string plugin = ToUtf8(problem.PluginID);
  const std::string user = ToUtf8(WellFormed(owner));
  const auto knows = [&](std::string_view name) {
    const auto has = [&](std::string_view whose) {
      return known_.contains(KeyOf(name, plugin, problem.ErrorType, whose));
    };
    return user.empty() ? has(kAnyUser) : has(user) || has({});
  };
  if (knows(ProblemDigest(problem).substr(0, kLeastDigits))) return true;
  return anyWithoutId_ && knows(ToUtf8(WellFormed(BuildErrorIdentificationString(problem))));
}

}  // namespace scrubwell::hosts
