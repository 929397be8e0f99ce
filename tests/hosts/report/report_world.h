// The whole package over an empty Windows, with problems made by hand.
#pragma once

#include <gtest/gtest.h>

#include "backends/memory/memory_backend.h"
#include "hosts/report/image_catalogue.h"
#include "hosts/report/report.h"
#include "plugins/package.h"

namespace scrubwell::hosts {

class ReportWorld {
 public:
  explicit ReportWorld(std::string_view registry = {}) {
    EXPECT_EQ(memory_.AddRegistry(registry), "");
    SetPackageLanguage(TLanguage::English);
    SetPlatform(&platform_);
    LoadPackage();
  }
  ~ReportWorld() {
    UnloadPackage();
    SetPlatform(nullptr);
    SetPackageLanguage(TLanguage::German);
  }
  ReportWorld(const ReportWorld&) = delete;
  ReportWorld& operator=(const ReportWorld&) = delete;

  void Add(UnicodeView plugin, std::int32_t kind, TStringList data, UnicodeView text = u"text") {
    auto problem = std::make_unique<TSweepError>();
    problem->PluginID = UnicodeString(plugin);
    problem->ErrorType = kind;
    problem->Caption = problem->ShortDescription = problem->Description = UnicodeString(text);
    problem->Data = std::move(data);
    report.shown.push_back(SweepErrors->Add(std::move(problem)));
  }

  ScanReport report;

 private:
  MemoryBackend memory_;
  ImageCatalogue images_;
  TPlatform platform_ = WithImages(memory_.Platform(), images_);
};

}  // namespace scrubwell::hosts
