// A folder of its own for a test, and whole files.
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

// A file's bytes; none when it can't be read.
inline std::string Bytes(const fs::path& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

inline void PutBytes(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

// A fresh folder, the current one until this goes and takes the folder along.
struct TempDir {
  fs::path path, home = fs::current_path();

  explicit TempDir(const fs::path& where = fs::temp_directory_path()) {
    do path = where / ("mox-test-" + std::to_string(std::random_device{}()));
    while (!fs::create_directory(path));
    fs::current_path(path);
  }
  ~TempDir() {
    std::error_code ignored;
    fs::current_path(home, ignored);
    fs::remove_all(path, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
};
