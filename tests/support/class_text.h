// Registered classes as short lines, for tests of what lies below the classes root.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "framework/Rc_common.h"
#include "registry/Zmregistry.h"
#include "support/world.h"

namespace scrubwell::test {

inline std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

/// One key or value a line: "path", "path = default value", "path : name = text". A path beginning
/// with "W\" lies in the 32-bit view, with "U\" in the user's classes, with "HKEY" anywhere, and
/// else in the machine's classes. A text beginning with "dword:" is a number.
inline std::string Classes(const std::string& lines) {
  const std::string machine = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\";
  std::istringstream in(lines);
  std::string out;
  for (std::string line; std::getline(in, line);) {
    line.erase(0, line.find_first_not_of(' '));
    if (line.empty()) continue;
    const std::size_t equals = std::min(line.find(" = "), line.size());
    std::string path = line.substr(0, equals);
    std::string name = "@";
    if (const std::size_t colon = path.find(" : "); colon != std::string::npos) {
      name = "\"" + path.substr(colon + 3) + "\"";
      path.resize(colon);
    }
    if (path.starts_with("W\\")) path = machine + "Wow6432Node" + path.substr(1);
    if (path.starts_with("U\\")) path = "HKEY_USERS\\S-1-5-21-1-2-3-1001_Classes" + path.substr(1);
    if (!path.starts_with("HKEY")) path = machine + path;
    out += "[" + path + "]\n";
    if (equals == line.size()) continue;
    if (line.compare(equals + 3, 6, "dword:") == 0) {
      out += name + "=" + line.substr(equals + 3) + "\n";
      continue;
    }
    const std::string text = ReplaceAll(line.substr(equals + 3), "\\", "\\\\");
    out += name + "=\"" + ReplaceAll(text, "\"", "\\\"") + "\"\n";
  }
  return out;
}

/// Expected lines with "HKCR", " W\" and " C\" written out.
inline Lines Full(Lines lines) {
  for (std::string& line : lines) {
    line = ReplaceAll(line, "HKCR", "HKEY_CLASSES_ROOT");
    line = ReplaceAll(line, " W\\", " HKLM\\SOFTWARE\\Classes\\Wow6432Node\\");
    line = ReplaceAll(line, " C\\", " HKLM\\SOFTWARE\\Classes\\");
  }
  return lines;
}

/// A case below the classes root, as lines for Classes and Full.
struct ClassRow {
  const char* name;
  std::string classes;
  Lines problems{};
  Lines journal{};
  Lines left{};
  const char* files = nullptr;  ///< instead of those of all rows
  MemoryOptions options{};
  std::function<void(World&)> setup{};
};

inline Case AsCase(const ClassRow& row, const char* files) {
  return {.name = row.name,
          .registry = Classes(row.classes),
          .files = row.files != nullptr ? row.files : files,
          .problems = Full(row.problems),
          .journal = Full(row.journal),
          .left = Full(row.left),
          .options = row.options,
          .setup = row.setup};
}

/// Runs the rows; those whose name ends with "(!)" must advise a new scan after the cleaning.
template <class Plugin>
void CheckClasses(std::span<const ClassRow> rows, const char* files) {
  std::vector<Case> cases;
  for (const ClassRow& row : rows) cases.push_back(AsCase(row, files));
  CheckCases<Plugin>(cases);
  for (const Case& row : cases) {
    World world(row.registry, row.files, row.options);
    if (row.setup) row.setup(world);
    world.Run<Plugin>();
    world.CleanAll();
    EXPECT_FALSE(ForceRegDelete);
    EXPECT_EQ(ShouldReSearch, std::string_view(row.name).ends_with("(!)")) << row.name;
  }
}

}  // namespace scrubwell::test
