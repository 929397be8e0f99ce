// What the system hands to a program that it starts.
#pragma once

#include <string>
#include <vector>

#include "texts/text.h"

namespace scrubwell::hosts {

/// The arguments as UTF-8, the program's own name first. Those that `main` was given are what they
/// are made of where the system keeps no better ones.
std::vector<std::string> ProgramArguments(int argc, const char* const* argv);

/// The language to speak unless the user names one: what the variables of the environment ask for,
/// else that of the system's own surface, else English.
TLanguage PreferredLanguage();

}  // namespace scrubwell::hosts
