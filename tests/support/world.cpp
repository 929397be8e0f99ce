#include "support/world.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "framework/Rc_common.h"

namespace scrubwell::test {

World::World(std::string_view registry, std::string_view files, const MemoryOptions& options)
    : backend_(std::make_unique<MemoryBackend>(options)) {
  EXPECT_EQ(backend_->AddRegistry(registry), "");
  EXPECT_EQ(backend_->AddFiles(files), "");
  SetPlatform(&backend_->Platform());
  InitialiseRcCommon();
  InitialiseRcBaseplugin();
  StopSearch = false;
  ShouldReSearch = false;
}

World::~World() {
  plugin_.reset();
  FinaliseRcBaseplugin();
  FinaliseRcCommon();
  SetPlatform(nullptr);
}

Lines World::Scan() {
  SweepErrors->Clear();
  RealSweepErrorCount = 0;
  CategoryErrors = 0;
  plugin_->Init();
  plugin_->Scan();
  return Problems();
}

Lines World::CleanAll() {
  backend_->ClearJournal();
  backend_->Registry().ForgetDeletions();
  plugin_->InitClean();
  plugin_->Clean();
  return Journal();
}

Lines World::Problems() const {
  Lines lines;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& error = (*SweepErrors)[i];
    if (!error.Visible) continue;
    std::string line = std::to_string(error.ErrorType);
    for (const UnicodeString& item : error.Data) line += "|" + ToUtf8(item);
    lines.push_back(std::move(line));
  }
  return lines;
}

Lines World::Texts() const {
  Lines lines;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i) {
    const TSweepError& error = (*SweepErrors)[i];
    if (error.Visible)
      lines.push_back(
          ToUtf8(error.Caption + u"|" + error.ShortDescription + u"|" + error.Description));
  }
  return lines;
}

Lines World::Captions() const {
  Lines lines;
  for (std::int32_t i = 0; i < SweepErrors->Count(); ++i)
    if ((*SweepErrors)[i].Visible) lines.push_back(ToUtf8((*SweepErrors)[i].Caption));
  return lines;
}

void CheckCases(std::span<const Case> cases, const CaseRunner& create) {
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    World world(row.registry, row.files, row.options);
    if (row.setup) row.setup(world);
    create(world);
    EXPECT_EQ(world.Scan(), row.problems);
    const std::string before = world.Registry();
    EXPECT_EQ(world.Scan(), row.problems) << "a second scan differs from the first";
    EXPECT_EQ(world.Journal(), Lines()) << "a scan changed something";
    EXPECT_EQ(world.Registry(), before);
    if (!row.journal) continue;
    EXPECT_EQ(world.CleanAll(), *row.journal);
    EXPECT_EQ(world.Scan(), row.left) << "found again after it was cleaned";
  }
}

void CheckFaults(const Case& row, const CaseRunner& create) {
  constexpr Status kFaults[] = {Status::Denied, Status::Corrupt, Status::Unknown};
  std::uint64_t calls = 1;
  for (std::uint64_t n = 1; n <= calls; ++n) {
    World world(row.registry, row.files, row.options);
    if (row.setup) row.setup(world);
    create(world);
    MemoryFaults& faults = world.Backend().Faults();
    const std::uint64_t before = faults.Calls();
    faults.FailNth(n, kFaults[n % std::size(kFaults)]);
    for (const std::string& line : world.Scan())
      EXPECT_NE(std::find(row.problems.begin(), row.problems.end(), line), row.problems.end())
          << row.name << ": call " << n << " failed, and this was found: " << line;
    calls = std::max(calls, faults.Calls() - before);
  }
}

}  // namespace scrubwell::test
