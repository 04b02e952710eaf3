#include "session/strreplace.h"

namespace mox {

std::string str_replace(std::string_view text, std::string_view from, std::string_view to) {
  std::string result;
  size_t at = 0;
  if (!from.empty()) {
    for (size_t hit; (hit = text.find(from, at)) != text.npos; at = hit + from.size()) {
      result += text.substr(at, hit - at);
      result += to;
    }
  }
  return result += text.substr(at);
}

}  // namespace mox
