// Text as the switched-off system's language settings have it.
#pragma once

#include <array>
#include <unordered_map>

#include "registry/platform.h"

namespace scrubwell::offline {

/// The order is the same on every machine: letters with a mark beside the letter without it, letter
/// case ignored, units otherwise.
class TextServices final : public ITextServices {
 public:
  /// The number of an ANSI code page, for example 1252. An unknown one is taken for 1252.
  explicit TextServices(unsigned codePage);
  ~TextServices() override;
  TextServices(const TextServices&) = delete;
  TextServices& operator=(const TextServices&) = delete;

  /// False when this machine does not know the code page.
  [[nodiscard]] bool IsExact() const { return exact_; }
  [[nodiscard]] unsigned CodePage() const { return codePage_; }

  int CompareText(UnicodeView a, UnicodeView b) override;
  UnicodeString FromAnsi(std::string_view bytes) override;
  /// In a page of one byte a character all bytes come back from FromAnsi's text: those that stand
  /// for nothing have a unit of their own.
  std::string ToAnsi(UnicodeView text) override;

 private:
  void FillTable();

  unsigned codePage_;
  bool exact_ = true;
  void* fromAnsi_;
  void* toAnsi_;
  std::array<char16_t, 256> table_{};
  std::unordered_map<char16_t, char> bytes_;  ///< by unit; empty for pages of several bytes
};

}  // namespace scrubwell::offline
