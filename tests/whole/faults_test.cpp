// One call of the platform after the other fails, in a scan and in a clean of the whole sample.
// A fault may hide a problem, but must never make one, nor let anything go that a sound run keeps.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <regex>

#include "framework/Rc_common.h"
#include "whole/sample.h"

namespace scrubwell::test {
namespace {

constexpr Status kFaults[] = {Status::Denied, Status::Corrupt, Status::Unknown, Status::Absent};

// Calls fail(n, fault) for calls of a run: every `stride`th with one fault each, or, when
// SCRUBWELL_ALL_FAULTS is set, every one with every fault.
void Sweep(std::uint64_t calls, std::uint64_t stride,
           const std::function<void(std::uint64_t, Status)>& fail) {
  const bool all = std::getenv("SCRUBWELL_ALL_FAULTS") != nullptr;
  std::size_t runs = 0;
  for (std::uint64_t n = 1; n <= calls; n += all ? 1 : stride) {
    for (std::size_t i = 0; i < (all ? std::size(kFaults) : 1); ++i, ++runs) {
      fail(n, kFaults[(n / (all ? 1 : stride) + i) % std::size(kFaults)]);
    }
  }
  std::printf("%zu runs over %llu calls\n", runs, static_cast<unsigned long long>(calls));
}

// What a problem says about places, without the texts that are only shown: where a name can't be
// read, an identifier stands for it, and the problem is the same.
std::set<std::string> Places(const Findings& findings) {
  std::set<std::string> places;
  static const std::regex kShown(R"( \| (caption|application|scheme|event):.*?(?= \| |$))");
  for (const auto& [digest, what] : findings) {
    const std::size_t kindEnd = what.find(' ', what.find(' ') + 1);
    const std::string items = what.substr(std::min(what.find(" | "), what.size()));
    places.insert(what.substr(0, kindEnd) + std::regex_replace(items, kShown, ""));
  }
  return places;
}

// What a clean changed, and for which problem.
struct Cleaned {
  Findings found;                              // by the scan
  std::map<std::string, std::string> changes;  // place to id of the problem, or "" for none
  std::uint64_t calls = 0;
};

// Without the text that is written: a fault may leave more in a list that is written anew.
std::string Place(const std::string& line) {
  return line.starts_with("set value ") ? line.substr(0, line.rfind("\"=")) : line;
}

// Whether the change is one of a sound clean, or goes on in a key that goes there as a whole.
bool IsIn(const Cleaned& sound, const std::string& change) {
  if (sound.changes.contains(change)) return true;
  // An entry that a firewall doesn't let go of is switched off first.
  constexpr std::string_view off = "disable ";
  if (change.starts_with(off) && sound.changes.contains("remove " + change.substr(off.size())))
    return true;
  const std::size_t path = change.find("HK");
  if (!change.starts_with("delete ") || path == std::string::npos) return false;
  std::size_t end = change.find('\\', path);
  while (end < change.size()) {
    end = std::min(change.find_first_of("\\ ", end + 1), change.size());
    if (sound.changes.contains("delete key " + change.substr(path, end - path))) return true;
  }
  return false;
}

// With the nth call of the run failing; none for 0.
Cleaned CleanSample(std::uint64_t n, Status fault) {
  MemorySample sample;
  MemoryBackend& backend = sample.Backend();
  Cleaned result;
  std::size_t noted = 0;
  const auto note = [&](const std::string& id) {
    for (; noted < backend.Journal().size(); ++noted) {
      result.changes.try_emplace(Place(backend.Journal()[noted]), id);
    }
  };
  const std::uint64_t before = backend.Faults().Calls();
  if (n > 0) backend.Faults().FailNth(n, fault);
  const Package package(sample.Platform());
  CleanDriver driver({[&] {
                        result.found = Found();
                        backend.Registry().ForgetDeletions();
                      },
                      [&](const CleanedProblem&) { note(""); },
                      [&](const CleanedProblem& problem, bool) { note(problem.id); }});
  driver.Run({.all = true, .ids = {}, .choice = {}}, false);
  note("");
  result.calls = backend.Faults().Calls() - before;
  return result;
}

TEST(Faults, AScanNeverMakesAProblem) {
  MemorySample sample;
  MemoryFaults& faults = sample.Backend().Faults();
  std::uint64_t calls = 0;
  const auto scan = [&] {
    const std::uint64_t before = faults.Calls();
    const Package package(sample.Platform());
    const Findings found = Package::Scan();
    calls = faults.Calls() - before;
    return found;
  };
  const Findings sound = scan();
  const std::set<std::string> places = Places(sound);
  std::size_t hidden = 0;
  Sweep(calls, 3, [&](std::uint64_t n, Status fault) {
    faults.FailNth(n, fault);
    const Findings found = scan();
    faults.Clear();
    hidden += found.size() < sound.size() ? 1 : 0;
    // Where a call answers "not there", more may well be missing.
    if (fault == Status::Absent) return;
    for (const std::string& place : Places(found)) {
      EXPECT_TRUE(places.contains(place))
          << "call " << n << " failed (" << static_cast<int>(fault) << "): " << place;
    }
  });
  EXPECT_TRUE(sample.Backend().Journal().empty());
  EXPECT_GT(hidden, 0U);
}

// A call that answers "not there" is another world, in which more may be missing. But nothing goes
// then either that is not found, and what a sound clean keeps goes for no problem of a sound scan.
TEST(Faults, ACleanNeverTakesMore) {
  const Cleaned sound = CleanSample(0, Status::Ok);
  ASSERT_GE(sound.changes.size(), 100U);
  Sweep(sound.calls, 11, [&](std::uint64_t n, Status fault) {
    const Cleaned cleaned = CleanSample(n, fault);
    const auto isKnown = [&](const std::string& id) {
      return std::any_of(sound.found.begin(), sound.found.end(),
                         [&](const auto& entry) { return entry.first.starts_with(id); });
    };
    for (const auto& [change, id] : cleaned.changes) {
      const bool ownWorld = fault == Status::Absent && !id.empty() && !isKnown(id);
      EXPECT_TRUE(ownWorld || IsIn(sound, change))
          << "call " << n << " failed (" << static_cast<int>(fault) << "), for "
          << (id.empty() ? "nothing" : id) << ": " << change;
    }
  });
}

}  // namespace
}  // namespace scrubwell::test
