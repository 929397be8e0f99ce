// What somebody may have meant who wrote something else.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace scrubwell::hosts {

/// The known word that is nearest, letter case ignored; empty when none is near.
std::string Nearest(std::string_view word, const std::vector<std::string>& known);

}  // namespace scrubwell::hosts
