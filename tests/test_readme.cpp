// What the README shows as sessions is what happens. The indented lines of a section are one run of
// the program if they begin with a prompt: what stands behind ". ", "> " and " 001     " is typed,
// and what stands behind "| " into a form or an editor; all else is expected. Blanks at the ends of
// lines don't count, and what a form or an editor draws is left out.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "session_run.h"
#include "temp_dir.h"

// What the program printed behind the banner, without screens.
static std::string Printed(std::string out) {
  const std::string end = "\x1b[24;1H\n";
  out.erase(0, out.find("\n. ") + 1);
  for (size_t at; (at = out.find("\x1b[")) != out.npos;) {
    const size_t from = out.find_last_not_of('\n', at - 1) + 1, to = out.find(end, at);
    out.erase(from, to == out.npos ? to : to + end.size() - from);
  }
  return out;
}

TEST(Readme, SessionsAreTrue) {
  const TempDir folder;
  fs::create_directory("dir");
  const std::regex prompt(" {4}(\\. |> | \\d{3}(?= {5}|$)) *(.*)"), blanks(" +(?=\n)"),
      keys(" {4}\\| (.*?)( ?\\[Ctrl-W\\])?");
  std::istringstream readme(Bytes(fs::path(MOX_ROOT) / "README.md") + "## end\n");
  std::string in, expected, line;
  int runs = 0;
  for (std::smatch m; std::getline(readme, line);) {
    if (std::regex_match(line, m, prompt)) {
      expected += m.str(1) + (m.str(1).size() == 4 ? "     " : "");
      in += m.str(2) + '\n';
    } else if (std::regex_match(line, m, keys)) {
      in += m.str(1) + (m[2].matched ? '\x17' : '\r');
    } else if (!in.empty() && (line.starts_with("    ") || expected.ends_with("END\n"))) {
      expected += line.substr(std::min<size_t>(line.size(), 4)) + '\n';
    } else if (!in.empty() && line.starts_with("## ")) {
      PutBytes("in", in);
      EXPECT_EQ(RunProgram(MOX_PROGRAM, {}, "dir", ".") + Bytes("err"), "") << in;
      if (!in.ends_with("QUIT\n")) expected += ". \n";
      EXPECT_EQ(std::regex_replace(Printed(Bytes("out")), blanks, ""),
                std::regex_replace(expected, blanks, ""));
      in.clear(), expected.clear(), ++runs;
    }
  }
  EXPECT_EQ(runs, 3);
}
