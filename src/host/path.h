// Between the texts of the language and the names of the host's file system. Texts are UTF-8 to a
// host whose names aren't bytes, which has no name for bytes that aren't UTF-8; other hosts take
// any bytes as they are.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

namespace mox {

// The path that a text names; empty when the text names none.
inline std::filesystem::path PathOf(const std::string& text) {
  try {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
  } catch (const std::system_error&) {
    return {};
  }
}

// A path as a text; empty when it can't be told as one.
inline std::string TextOf(const std::filesystem::path& path) {
  try {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
  } catch (const std::system_error&) {
    return {};
  }
}

// The last part of a path as a text.
inline std::string NameOf(const std::filesystem::path& path) { return TextOf(path.filename()); }

}  // namespace mox
