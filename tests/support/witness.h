// Independent programs that tests ask for a second opinion.
#pragma once

#include <cstdio>
#include <string>

namespace scrubwell::test {

/// What a shell command prints; empty when there is no such program.
inline std::string OutputOf(const std::string& command) {
  std::string text;
  FILE* pipe = ::popen((command + " 2>/dev/null").c_str(), "r");
  char part[4096];
  while (const std::size_t size = std::fread(part, 1, sizeof part, pipe)) text.append(part, size);
  ::pclose(pipe);
  return text;
}

/// False, with a line printed, when the program is not installed: nothing can be compared then.
inline bool HasWitness(const std::string& program) {
  const bool found = !OutputOf("command -v " + program).empty();
  if (!found) std::printf("%s is not installed: nothing compared with it\n", program.c_str());
  return found;
}

}  // namespace scrubwell::test
