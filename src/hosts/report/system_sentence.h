// What the system and the backends say, in the report's language.
#pragma once

#include <string>
#include <string_view>

#include "registry/types.h"

namespace scrubwell::hosts {

/// One sentence without a final full stop for an error number (errno's). Rare ones come as the
/// system says them.
std::string SystemSentence(int error);

/// A backend's sentence, which is English, and the system's words at its end in the report's
/// language. What is not known comes as it is.
std::string InReportLanguage(std::string_view sentence);
TStringList InReportLanguage(const TStringList& sentences);

}  // namespace scrubwell::hosts
