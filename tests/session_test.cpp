// Whole sessions, typed at the real program: one test for each case of tests/sessions/*.txt. Lines
// that begin with "== " are directives; lines ahead of the first are free comment, and afterwards
// every line counts, to the blank.
//
//   == case TITLE         begins session.FILE / TITLE, in a fresh folder; -:;#*? become commas.
//   == file NAME          the lines that follow become that file; a folder in its name is made.
//   == bytes NAME         pairs of hex digits become that file; 00*513 is so many of a pair, today
//                         the day, month and year in three bytes.
//   == copy PATH          copies a file (named from the repository's root) into the folder.
//   == mox [ARGS]         runs the program; the lines that follow are what a person would see.
//   == show NAME          the lines that follow are the file's text (carriage returns left out).
//   == dump NAME OFFSET   the pairs that follow are the file's bytes from OFFSET on.
//   == size NAME N        the file has N bytes.
//   == same PATH          the file has the bytes of the one that was copied from there.
//   == absent NAME        there is no such file.
//
// What stands behind a prompt, ". " or "> " at a line's begin, is typed with a line feed, as is
// text between « and », where \n is Enter and \e Escape. A lone "." or ">" is a prompt with an
// empty line. A line of output that looks like a prompt or a directive begins with «». DD/MM/YY is
// today.
//
// Without ARGS the banner comes first, and unless the last prompt's line has the word QUIT in it,
// the input ends and leaves a prompt. The program must end with status 0 within 20 seconds, silent
// on standard error. The environment variable MOX_PROGRAM names another program to run.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "session/strreplace.h"
#include "session_run.h"
#include "temp_dir.h"

namespace {

constexpr const char* kBanner =
    "\nMOX Version 2.40.00299\n\nType 'HELP', 'HELP MOX', or a command.\n";

// A directive with the lines up to the next one. The first word of the rest is a name of a file,
// in the folder "dir" of the current one or, for copies, under the repository's root.
struct Section {
  std::string word, rest;
  int line;          // of the directive, from 1
  std::string body;  // ends with a line feed unless empty
  std::string name() const { return rest.substr(0, rest.find(' ')); }
  int number() const { return std::stoi(rest.substr(rest.find(' '))); }
  fs::path file() const { return "dir" / fs::path(name()); }
  fs::path source() const { return fs::path(MOX_ROOT) / name(); }
  fs::path copy() const { return "dir" / source().filename(); }
};

using Outcome = std::pair<std::string, std::string>;  // what should be, and what is

// Today by the host's clock, in a form of strftime.
std::string Today(const char* form) {
  const std::time_t now = std::time(nullptr);
  char text[32];
  return {text, std::strftime(text, sizeof text, form, std::localtime(&now))};
}

std::string Unhex(const std::string& pairs) {
  std::istringstream in(pairs);
  std::string bytes;
  for (std::string pair; in >> pair;) {
    const size_t star = pair.find('*');
    if (pair == "today")
      for (const char* form : {"%d", "%m", "%y"})
        bytes += static_cast<char>(std::stoi(Today(form)));
    else
      bytes.append(star == pair.npos ? 1 : std::stoul(pair.substr(star + 1)),
                   static_cast<char>(std::stoi(pair, nullptr, 16)));
  }
  return bytes;
}

Outcome DoMox(const Section& s) {
  static const std::regex quit(".*\\bquit\\b.*", std::regex::icase), unseen("«(.*?)»");
  std::string input, expected = s.rest.empty() ? kBanner : "";
  bool quits = false;
  std::istringstream lines(s.body), words(s.rest);
  for (std::string line; std::getline(lines, line);) {
    if (line == "." || line == ">") line += ' ';
    const bool prompt = line.starts_with(". ") || line.starts_with("> ");
    if (prompt) {
      expected += line.substr(0, 2);
      quits = std::regex_match(line.erase(0, 2), quit);
    }
    std::string& plain = prompt ? input : expected;
    for (std::smatch found; std::regex_search(line, found, unseen); line = found.suffix().str()) {
      plain += found.prefix();
      input += mox::str_replace(mox::str_replace(found.str(1), "\\n", "\n"), "\\e", "\x1b");
    }
    plain += line + '\n';
  }
  if (s.rest.empty() && !quits) expected += ". \n";
  expected = mox::str_replace(expected, "DD/MM/YY", Today("%d/%m/%y"));
  PutBytes("in", input);
  const char* other = std::getenv("MOX_PROGRAM");
  const std::string ending = RunProgram(
      other ? other : MOX_PROGRAM, {std::istream_iterator<std::string>(words), {}}, "dir", ".");
  return {expected, Bytes("out") + ending + Bytes("err")};
}

Outcome DoPut(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  PutBytes(path, bytes);
  return {bytes, Bytes(path)};
}

Outcome DoShow(const Section& s) {
  std::string text = fs::exists(s.file()) ? Bytes(s.file()) : "(no such file)";
  std::erase(text, '\r');
  return {s.body, text};
}

Outcome DoDump(const Section& s) {
  const std::string want = Unhex(s.body), all = Bytes(s.file());
  return {want, all.substr(std::min<size_t>(s.number(), all.size()), want.size())};
}

const std::map<std::string, Outcome (*)(const Section&)> kDirectives = {
    {"mox", DoMox},
    {"show", DoShow},
    {"dump", DoDump},
    {"file", [](const Section& s) { return DoPut(s.file(), s.body); }},
    {"bytes", [](const Section& s) { return DoPut(s.file(), Unhex(s.body)); }},
    {"copy", [](const Section& s) { return DoPut(s.copy(), Bytes(s.source())); }},
    {"same", [](const Section& s) { return Outcome(Bytes(s.source()), Bytes(s.copy())); }},
    {"size",
     [](const Section& s) {
       return Outcome(std::to_string(s.number()), std::to_string(fs::file_size(s.file())));
     }},
    {"absent",
     [](const Section& s) { return Outcome("", fs::exists(s.file()) ? "there is one" : ""); }},
};

using Case = std::vector<Section>;  // begins with its title

std::vector<Case> ReadCases(const fs::path& path) {
  std::vector<Case> cases;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.starts_with("== ")) {
      const size_t blank = std::min(line.find(' ', 3), line.size());
      const size_t rest = std::min(line.find_first_not_of(' ', blank), line.size());
      const std::string word = line.substr(3, blank - 3);
      if (cases.empty() || word == "case") cases.emplace_back();
      cases.back().push_back({word, line.substr(rest), number, ""});
    } else if (!cases.empty()) {
      cases.back().back().body += line + '\n';
    }
  }
  return cases;
}

struct Session : testing::Test {
  Session(fs::path path, Case sections) : path_(std::move(path)), sections_(std::move(sections)) {}
  void TestBody() override {
    ASSERT_EQ(sections_[0].word, "case");
    const TempDir folder;
    fs::create_directory("dir");
    for (auto s = sections_.begin() + 1; s != sections_.end() && !HasFailure(); ++s) {
      const testing::ScopedTrace trace(path_.c_str(), s->line, "case: " + sections_[0].rest);
      const auto [want, got] = kDirectives.at(s->word)(*s);
      EXPECT_EQ(want, got);
    }
  }
  const fs::path path_;
  const Case sections_;
};

// A test's name is its title without the signs that mean something in a filter or a list of tests.
const bool kRegistered = [] {
  const std::regex signs("[-:;#*?]");
  const fs::directory_iterator files(fs::path(MOX_ROOT) / "tests/sessions");
  for (const fs::path& path : std::set<fs::path>(begin(files), end(files))) {
    if (path.extension() != ".txt") continue;
    for (const Case& sections : ReadCases(path)) {
      const std::string name =
          path.stem().string() + " / " + std::regex_replace(sections[0].rest, signs, ",");
      testing::RegisterTest("session", name.c_str(), nullptr, nullptr, path.c_str(),
                            sections[0].line,
                            [=]() -> testing::Test* { return new Session(path, sections); });
    }
  }
  return true;
}();

}  // namespace
