// What the system says of its own failures, in the report's language.
#pragma once

#include <string>
#include <string_view>

namespace scrubwell::hosts {

/// One sentence without a final full stop for an error number (errno's). Rare ones come as the
/// system says them.
std::string SystemSentence(int error);

/// A sentence that ends in the system's own words, which are English, with these in the report's
/// language.
std::string InReportLanguage(std::string_view sentence);

}  // namespace scrubwell::hosts
