#pragma once

#include <string>
#include <string_view>

namespace mox {

// The text with every non-overlapping occurrence of from (not empty), searched from the left,
// replaced by to. What was put in isn't searched again.
std::string str_replace(std::string_view text, std::string_view from, std::string_view to);

}  // namespace mox
