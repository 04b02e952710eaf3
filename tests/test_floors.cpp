// The folders of src are floors: includes point downwards only, and only host's reach the operating
// system. Prints the arrows that there are.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <sstream>

#include "temp_dir.h"

TEST(Floors, IncludesPointDownwards) {
  std::map<std::string, std::string> below = {
      {"host", "(system)"},
      {"session", "host"},
      {"vars", "session"},
      {"lang", "session vars"},
      {"store", "session host"},
      {"screen", "store vars session host"},
      {"run", "lang store screen vars session host"},
      {"commands", "run store session"},
      {"main", "commands run lang store screen vars session host"}};
  const std::regex include("\\s*#\\s*include\\s*(<.*(\\.h|/).*>|\"([^\"/.]*).*).*");
  const fs::path root = fs::path(MOX_ROOT) / "src";
  std::map<std::string, int> arrows;
  for (const auto& file : fs::recursive_directory_iterator(root)) {
    if (file.is_directory()) continue;
    const std::string name = fs::relative(file, root).generic_string();
    const std::string from = name.substr(0, name.find_first_of("/."));
    std::istringstream text(Bytes(file));
    for (std::string line; std::getline(text, line);) {
      std::smatch m;
      if (!std::regex_match(line, m, include)) continue;
      const std::string to = m[3].matched ? m.str(3) : "(system)";
      if (from == to) continue;
      ++arrows[from + " -> " + to];
      EXPECT_NE((" " + below[from] + " ").find(" " + to + " "), std::string::npos)
          << name << ": " << line << ": " << to << " isn't below " << from;
    }
  }
  for (const auto& [arrow, includes] : arrows) std::cout << arrow << ": " << includes << '\n';
  EXPECT_GE(arrows.size(), below.size());
}
