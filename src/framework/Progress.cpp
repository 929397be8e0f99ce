// Progress of a run over several plugins.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"

namespace scrubwell {
namespace {

constexpr std::size_t kTimingNameWidth = 30;

// Milliseconds of a clock without a fixed beginning; wraps round.
std::uint32_t TickCount() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

}  // namespace

std::int32_t RoundHalfEven(double value) {
  if (std::isnan(value)) return 0;
  // Written out, because the rounding mode of the floating-point unit belongs to the host.
  double whole = std::floor(value);
  const double rest = value - whole;
  if (rest > 0.5 || (rest == 0.5 && std::fmod(whole, 2) != 0)) whole += 1;
  using Limits = std::numeric_limits<std::int32_t>;
  if (whole >= Limits::max()) return Limits::max();
  if (whole <= Limits::min()) return Limits::min();
  return static_cast<std::int32_t>(whole);
}

void TProgressManager::AddItem(UnicodeView name, std::int32_t count, std::int32_t weight) {
  // An item of a name that is there already takes it over; the older one still counts.
  FItems.push_back(std::make_unique<Item>(Item{count, weight, 0}));
  FByName.insert_or_assign(UnicodeString(name), FItems.back().get());
  FTotalItems = static_cast<std::int32_t>(std::int64_t{FTotalItems} + count);
  FTotalWeight += weight;
}

void TProgressManager::SetProgress(UnicodeView name, std::int32_t promille) {
  const auto item = FByName.find(name);
  if (item != FByName.end()) item->second->promille = promille;
}

void TProgressManager::BeginItem(UnicodeView /*name*/) {
  FStart = TickCount();
}

void TProgressManager::EndItem(UnicodeView name) {
  const auto item = FByName.find(name);
  if (item == FByName.end()) return;
  const std::int32_t weight = item->second->weight;
  const std::uint32_t elapsed = TickCount() - FStart;
  const double rate = weight >= 1 ? static_cast<double>(elapsed) / weight : 0;
  char figures[64];
  std::snprintf(figures, sizeof figures, "     %6d    %10f", weight, rate);
  UnicodeString line(name);
  line.resize(std::max(line.size(), kTimingNameWidth), u' ');
  FTimingLog.push_back(line + FromUtf8(figures));
}

void TProgressManager::Clear() {
  FByName.clear();
  FItems.clear();
  FTotalItems = 0;
  FTotalWeight = 0;
}

std::int32_t TProgressManager::GetDoneItems() const {
  std::int64_t done = 0;
  for (const auto& item : FItems) done += RoundHalfEven(item->promille * (item->count / 1000.0));
  return static_cast<std::int32_t>(done);
}

std::int32_t TProgressManager::GetTotalProgress() const {
  // Each share is rounded on its own before the sum, so the figure may be off by a few per mille.
  std::int64_t sum = 0;
  for (const auto& item : FItems) sum += RoundHalfEven(item->weight / 1000.0 * item->promille);
  if (FTotalWeight <= 0) return 0;
  return RoundHalfEven(1000.0 / static_cast<double>(FTotalWeight) * static_cast<double>(sum));
}

}  // namespace scrubwell
