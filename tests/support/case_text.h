// Cases as text: keys, values and files of a small Windows, what is found in it, what a clean
// changes.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "framework/Rc_common.h"
#include "registry/Stringhelper.h"
#include "registry/Zmregistry.h"
#include "support/world.h"

namespace scrubwell::test {

inline std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
    text.replace(at, from.size(), to);
  return text;
}

/// Keys and values, several on a line with " ; " in between: "path", "path = default value",
/// "path : name = text", and ": name = text" for a further value of the key before. A path
/// beginning with "W\" lies in the 32-bit view, with "U\" in the user's classes, with "HKEY"
/// anywhere, and else in the machine's classes. "dword:" and "hex:" begin data that is no text.
inline std::string Classes(const std::string& text) {
  const std::string machine = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\";
  std::istringstream in(ReplaceAll(text, " ; ", "\n"));
  std::string out;
  std::string path;
  for (std::string line; std::getline(in, line);) {
    line.erase(0, line.find_first_not_of(' '));
    if (line.empty()) continue;
    if (line.starts_with(": ")) line = path + " " + line;
    const std::size_t equals = std::min(line.find(" = "), line.size());
    path = line.substr(0, equals);
    std::string name = "@";
    if (const std::size_t colon = path.find(" : "); colon != std::string::npos) {
      name = "\"" + ReplaceAll(path.substr(colon + 3), "\\", "\\\\") + "\"";
      path.resize(colon);
    }
    if (path.starts_with("W\\")) path = machine + "Wow6432Node" + path.substr(1);
    if (path.starts_with("U\\")) path = "HKEY_USERS\\S-1-5-21-1-2-3-1001_Classes" + path.substr(1);
    if (!path.starts_with("HKEY")) path = machine + path;
    out += "[" + path + "]\n";
    if (equals == line.size()) continue;
    const std::string data = line.substr(equals + 3);
    const bool isText = !data.starts_with("dword:") && !data.starts_with("hex:");
    const std::string quoted = ReplaceAll(ReplaceAll(data, "\\", "\\\\"), "\"", "\\\"");
    out += name + "=" + (isText ? "\"" + quoted + "\"" : data) + "\n";
  }
  return out;
}

using Abbreviations = std::vector<std::pair<std::string, std::string>>;
/// What text can't say, by the name that it is called by there.
using Conditions = std::map<std::string, std::function<void(Case&)>>;

/// Cases written as text. A line "# name" begins one; those below it are "+" files, "?" problems,
/// "!" changes, "=" problems that are left, several of them with " ; " in between, "&" conditions
/// ("32-bit", "deny-write KEY", "deny-delete KEY", those that are given) or else what Classes
/// takes. A line that begins with "\n" goes on with the text of the file before. Besides the given
/// abbreviations there are "{}" for nothing and those of software, the machine's and the user's:
/// its key in a world, in a problem (by view), in a change.
inline std::vector<Case> ReadCases(std::string text, const Abbreviations& abbreviations,
                                   const Conditions& conditions = {}) {
  static const Abbreviations kSoftware = {
      {"{}", ""},
      {"{LM}", "HKEY_LOCAL_MACHINE\\SOFTWARE\\"},
      {"{W}", "HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\"},
      {"{32}", "|existingkey:32:HKEY_LOCAL_MACHINE\\Software\\"},
      {"{64}", "|existingkey:64:HKEY_LOCAL_MACHINE\\Software\\"},
      {"{v}", "|existingvalue:"},
      {"{f}", "|missingfile:"},
      {"{-v}", "delete value HKLM\\SOFTWARE\\"},
      {"{-Wv}", "delete value HKLM\\SOFTWARE\\Wow6432Node\\"},
      {"{-k}", "delete key HKLM\\SOFTWARE\\"},
      {"{-Wk}", "delete key HKLM\\SOFTWARE\\Wow6432Node\\"},
      {"{E}", "{S}{Explorer}"},
      {"{-E}", "{-S}{Explorer}"},
      {"{=E}", "{=S}{Explorer}"},
      {"{-kE}", "delete key HKCU\\Software\\{Explorer}"},
      {"{Explorer}", "Microsoft\\Windows\\CurrentVersion\\Explorer\\"},
      {"{S}", "HKEY_CURRENT_USER\\Software\\"},
      {"{-S}", "delete value HKCU\\Software\\"},
      {"{=S}", "set value HKCU\\Software\\"}};
  for (const Abbreviations* list : {&abbreviations, &kSoftware})
    for (const auto& [from, to] : *list) text = ReplaceAll(text, from, to);
  std::istringstream in(text);
  std::vector<Case> cases;
  for (std::string line; std::getline(in, line);) {
    line.erase(0, line.find_first_not_of(' '));
    if (line.empty()) continue;
    if (line[0] == '#') cases.push_back({.name = line.substr(2)});
    Case& row = cases.back();
    if (line.starts_with("\\n")) {
      row.files.insert(row.files.size() - 1, line);
      continue;
    }
    const std::string lists = "+?!=";
    if (line == "& 32-bit") {
      row.options.is64Bit = false;
    } else if (line[0] == '&' && conditions.contains(line.substr(2))) {
      conditions.at(line.substr(2))(row);
    } else if (line[0] == '&') {
      row.setup = [before = row.setup, key = FromUtf8(line.substr(line.find("HK"))),
                   write = line.find("write") != line.npos](World& world) {
        if (before) before(world);
        write ? world.Backend().DenyWrite(key) : world.Backend().DenyDelete(key);
      };
    } else if (lists.find(line[0]) == lists.npos) {
      if (line[0] != '#') row.registry += Classes(line);
    } else {
      for (std::size_t at = 2; at < line.size();) {
        const std::size_t end = std::min(line.find(" ; ", at), line.size());
        const std::string item = line.substr(at, end - at);
        at = end + 3;
        if (line[0] == '+') row.files += item + "\n";
        if (line[0] == '?') row.problems.push_back(item);
        if (line[0] == '=') row.left.push_back(item);
        if (line[0] != '!') continue;
        if (!row.journal) row.journal.emplace();
        row.journal->push_back(item);
      }
    }
  }
  return cases;
}

/// Runs cases written as text. In none of them may a call of the platform that fails make a
/// problem, but for those whose name ends with "(~)": there it may change what a problem
/// shows.
template <class Plugin>
void CheckText(const std::string& text, const Abbreviations& abbreviations,
               const Conditions& conditions = {}) {
  const std::vector<Case> cases = ReadCases(text, abbreviations, conditions);
  CheckCases<Plugin>(cases);
  for (const Case& row : cases)
    if (!row.name.ends_with("(~)")) CheckFaults<Plugin>(row);
}

/// Keys below the classes root, in a problem (by view) and in a change (by the machine's view).
inline const Abbreviations kClassNames = {
    {"{k32}", "|existingkey:32:HKEY_CLASSES_ROOT\\"},
    {"{k64}", "|existingkey:64:HKEY_CLASSES_ROOT\\"},
    {"{m}", "|missingkey:HKEY_CLASSES_ROOT\\"},
    {"{m32}", "|missingkey:32:HKEY_CLASSES_ROOT\\"},
    {"{c}", "|caption:"},
    {"{-W}", "delete key HKLM\\SOFTWARE\\Classes\\Wow6432Node\\"},
    {"{-C}", "delete key HKLM\\SOFTWARE\\Classes\\"}};

/// Runs cases below the classes root, cleaning all of them. Those whose name ends with "(!)" must
/// advise a new scan after that, the others not.
template <class Plugin>
void CheckClasses(const std::string& text, Abbreviations abbreviations = {}) {
  abbreviations.insert(abbreviations.end(), kClassNames.begin(), kClassNames.end());
  std::vector<Case> cases = ReadCases(text, abbreviations);
  for (Case& row : cases) row.journal = row.journal.value_or(Lines());
  CheckCases<Plugin>(cases);
  for (const Case& row : cases) {
    World world(row.registry, row.files, row.options);
    if (row.setup) row.setup(world);
    world.Run<Plugin>();
    world.CleanAll();
    EXPECT_FALSE(ForceRegDelete);
    EXPECT_EQ(ShouldReSearch, row.name.ends_with("(!)")) << row.name;
  }
}

}  // namespace scrubwell::test
