// The program run on a fresh sample installation.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "support/disk.h"

namespace scrubwell::test {

namespace fs = std::filesystem;
using nlohmann::json;

inline std::string Content(const fs::path& path) {
  const Bytes bytes = ReadBytes(path);
  return {bytes.begin(), bytes.end()};
}

inline void Put(const fs::path& path, std::string_view bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

struct Result {
  int status = -1;
  std::string out;
  std::string err;
};

/// A fresh sample installation in a folder of its own. In arguments "@" stands for that folder.
class ProgramRun : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Shell(SCRUBWELL_MKSAMPLE " " SCRUBWELL_SOURCE_DIR "/samples @").status, 0);
  }

  Result Shell(std::string command) const {
    for (std::size_t at = 0; (at = command.find('@', at)) != std::string::npos;) {
      command.replace(at, 1, folder_.string());
    }
    const fs::path out = folder_ / "stdout";
    const fs::path err = folder_ / "stderr";
    command += " >" + out.string() + " 2>" + err.string() + " </dev/null";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Content(out), Content(err)};
  }
  Result Run(const std::string& arguments, const std::string& environment = "LC_ALL=C") const {
    return Shell("env -u LC_ALL -u LC_MESSAGES -u LANG -u LANGUAGE " + environment +
                 " " SCRUBWELL_PROGRAM " " + arguments);
  }
  json Scan(const std::string& more = "") const {
    const Result result = Run("scan --windows @/C --format json " + more);
    EXPECT_LE(result.status, 1) << result.err;
    return json::parse(result.out);
  }

  /// What a command with a status of its own says as JSON.
  [[nodiscard]] json Answer(const std::string& arguments, int status) const {
    const Result result = Run(arguments + " --format json");
    EXPECT_EQ(result.status, status) << arguments << ": " << result.err;
    return result.out.empty() ? json() : json::parse(result.out);
  }
  /// The id of a problem, by a part of its data.
  [[nodiscard]] static std::string IdOf(const json& report, const std::string& part,
                                        const std::string& plugin = "") {
    for (const json& problem : report.at("problems")) {
      const bool fits = problem.at("data").dump().find(part) != std::string::npos;
      if (fits && (plugin.empty() || problem.at("plugin") == plugin)) return problem.at("id");
    }
    ADD_FAILURE() << plugin << ' ' << part;
    return {};
  }

  TempFolder temporary_;
  const fs::path folder_ = temporary_.Path();
};

/// Everything that a failing run must keep to: nothing on the standard output, one sentence.
inline void ExpectComplaint(const Result& result, int status, const std::string& part) {
  EXPECT_EQ(result.status, status);
  EXPECT_EQ(result.out, "");
  EXPECT_TRUE(result.err.starts_with("scrubwell: ")) << result.err;
  EXPECT_TRUE(result.err.ends_with(".\n") || result.err.ends_with("?\n")) << result.err;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  EXPECT_NE(result.err.find(part), std::string::npos) << result.err;
}

}  // namespace scrubwell::test
