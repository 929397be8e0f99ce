// Bytes to an open file, however many steps that takes.
#pragma once

#include <functional>
#include <string_view>

namespace scrubwell::hosts {

/// Gives its content piece by piece to the function that it is handed.
using ContentSource = std::function<void(const std::function<void(std::string_view)>& put)>;

/// 0 or errno's number.
int WriteAll(int fd, std::string_view bytes);
int WriteAll(int fd, const ContentSource& content);

}  // namespace scrubwell::hosts
