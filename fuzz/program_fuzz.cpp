// The program's own command line: each line of the input is an argument.
#include <string>
#include <vector>

#include "hosts/cli/command_line.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace scrubwell::hosts;
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  std::vector<std::string> arguments = {"scrubwell"};
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t to = std::min(text.find('\n', from), text.size());
    // An argument ends at its first NUL, as the system delivers it.
    arguments.emplace_back(std::string(text.substr(from, to - from)).c_str());
    from = to + 1;
  }
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  const ParsedCommand parsed = ParseCommandLine(static_cast<int>(pointers.size()), pointers.data());
  Require(parsed.command.has_value() == parsed.error.empty());
  const auto drive = ParseDrive(text);
  Require(!drive || (!drive->folder.empty() && drive->letter >= u'A' && drive->letter <= u'Z'));
  return 0;
}
