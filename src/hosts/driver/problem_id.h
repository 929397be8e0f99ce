// Short names for problems that stay the same from run to run.
#pragma once

#include <string>
#include <vector>

#include "framework/Rc_common.h"

namespace scrubwell {

/// The digest that a problem's id is cut from: over plugin, kind and data items, so that texts,
/// language and order in the list have no say. 64 hexadecimal digits.
std::string ProblemDigest(const TSweepError& problem);

/// The first `digits` digits of every digest, and of those that would clash with another one as
/// many further groups of four as tell them apart. Equal digests stay equal. The result does not
/// depend on the order.
std::vector<std::string> ShortenDigests(const std::vector<std::string>& digests,
                                        std::size_t digits);

/// The digests of all problems, in the order of the list.
std::vector<std::string> ProblemDigests(const TSweepErrorList& problems);
/// The ids that belong to the digests of a whole list.
std::vector<std::string> ProblemIds(const std::vector<std::string>& digests);
/// The ids of all problems, in the order of the list: 12 digits each unless two clash.
std::vector<std::string> ProblemIds(const TSweepErrorList& problems);

}  // namespace scrubwell
