// Whole sessions, typed at the real program: one test for each file tests/sessions/*.txt.
//
// A session file is text with directives, lines that begin with "== ". Lines before the first are
// free comment; afterwards every line counts, to the blank, empty ones too.
//
//   == case TITLE         begins a case, in a fresh folder of its own that goes away with it.
//   == file NAME          the lines that follow become that file, each with a line feed.
//   == bytes NAME         hex digits, blanks ignored, become that file.
//   == copy PATH          copies a file (named from the repository's root) into the folder.
//   == mox [ARGS]         runs the program; the lines that follow are what a person would see.
//   == show NAME          the lines that follow are the file's text (carriage returns left out).
//   == dump NAME OFFSET   the hex digits that follow are the file's bytes from OFFSET on.
//   == size NAME N        the file has N bytes.
//   == same PATH          the file has the bytes of the one that was copied from there.
//   == absent NAME        there is no such file.
//
// In what a person sees, a line that begins with ". " or "> " is a prompt with what was typed
// behind it: the prompt is expected, the rest is typed with a line feed. A lone "." or ">" is a
// prompt at which an empty line is typed. Any other line is expected with its line feed. Text
// between « and » is typed and not seen, where \n is Enter and \e Escape: SINGLE STEP  Y:=STEP«Y».
// A line of output that looks like a prompt or a directive begins with «».
//
// Without ARGS the banner is expected first and isn't repeated in the file; and unless what is
// typed at the last prompt has the word QUIT in it, the input ends after the transcript, and a
// last prompt with a line feed is expected. The program must end with status 0 within 20 seconds
// and leave standard error empty. The environment variable MOX_PROGRAM names another program to run
// than the one just built, as one for another host in its launcher. The first failure ends its
// case; the next case runs all the same.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "session_run.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr const char* kBanner =
    "\nMOX Version 2.40.00299\n\nType 'HELP', 'HELP MOX', or a command.\n";
constexpr size_t kContext = 3, kDiffers = 4;  // lines shown before and from a difference

// A directive with the lines up to the next one.
struct Section {
  std::string word, rest;
  int line;          // of the directive, from 1
  std::string body;  // ends with a line feed unless empty
};

struct Case {
  std::string file, title;
  fs::path base, dir;  // base holds the captured streams and dir, where the program runs

  Case(std::string f, std::string t) : file(std::move(f)), title(std::move(t)) {
    std::random_device random;
    do base = fs::temp_directory_path() / ("mox-session-" + std::to_string(random()));
    while (!fs::create_directory(base));
    fs::create_directory(dir = base / "dir");
  }
  Case(const Case&) = delete;
  ~Case() {
    std::error_code ignored;
    fs::remove_all(base, ignored);
  }
};

bool Fail(const Case& c, int line, const std::string& text) {
  ADD_FAILURE_AT(c.file.c_str(), line) << "case: " << c.title << "\n" << text;
  return false;
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

bool WriteFile(const fs::path& path, const std::string& bytes) {
  return !(std::ofstream(path, std::ios::binary) << bytes << std::flush).fail();
}

// The lines of a text, each with its line feed if it has one.
Lines SplitLines(const std::string& text) {
  Lines lines;
  for (size_t at = 0, end; at < text.size(); at = end) {
    end = std::min(text.find('\n', at), text.size() - 1) + 1;
    lines.push_back(text.substr(at, end - at));
  }
  return lines;
}

std::string Hex(const std::string& bytes) {
  std::ostringstream text;
  for (unsigned char c : bytes) text << std::hex << std::setw(2) << std::setfill('0') << +c << ' ';
  return text.str();
}

// Sets bytes to what pairs of hex digits say; false if they aren't such.
bool Unhex(std::string digits, std::string& bytes) {
  std::erase_if(digits, [](unsigned char c) { return std::isspace(c); });
  if (digits.size() % 2 || digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
    return false;
  for (size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  return true;
}

// A line as a failure shows it: control bytes in hex, blanks at the end as dots.
std::string Visible(std::string line) {
  const bool ended = line.ends_with('\n');
  if (ended) line.pop_back();
  std::string shown, blanks;
  for (; line.ends_with(' '); line.pop_back()) blanks += "·";
  for (char c : line)
    shown += std::iscntrl(static_cast<unsigned char>(c)) ? "\\x" + Hex({c}).substr(0, 2)
                                                         : std::string(1, c);
  return shown + blanks + (ended ? "\n" : "  (no line end)\n");
}

std::string Difference(const std::string& expected, const std::string& actual) {
  const Lines want = SplitLines(expected), got = SplitLines(actual);
  size_t at = 0;
  while (at < want.size() && at < got.size() && want[at] == got[at]) ++at;
  std::string text = "line " + std::to_string(at + 1) + " differs (- expected, + actual):\n";
  const auto show = [&](const char* mark, const Lines& lines, size_t from, size_t to) {
    for (size_t i = from; i < std::min(to, lines.size()); ++i) text += mark + Visible(lines[i]);
    if (from >= lines.size()) text += std::string(mark) + "(nothing more)\n";
  };
  if (at > 0) show("  ", want, at - std::min(at, kContext), at);
  show("- ", want, at, at + kDiffers);
  show("+ ", got, at, at + kDiffers);
  return text;
}

struct Transcript {
  std::string input, expected;
  std::vector<std::pair<size_t, int>> marks;  // where in expected a line of the session file begins
};

// Key names in typed text become the keys.
std::string Keys(const std::string& text) {
  static const std::regex enter(R"(\\n)"), escape(R"(\\e)");
  return std::regex_replace(std::regex_replace(text, enter, "\n"), escape, "\x1b");
}

Transcript ReadTranscript(const Section& s) {
  static const std::regex quit(".*\\bquit\\b.*", std::regex::icase), unseen("«(.*?)»");
  Transcript t{"", s.rest.empty() ? kBanner : "", {}};
  bool quits = false;
  int number = s.line;
  for (std::string line : SplitLines(s.body)) {
    line.pop_back();
    t.marks.emplace_back(t.expected.size(), ++number);
    if (line == "." || line == ">") line += ' ';
    const bool prompt = line.starts_with(". ") || line.starts_with("> ");
    if (prompt) {
      t.expected += line.substr(0, 2);
      quits = std::regex_match(line.erase(0, 2), quit);
    }
    std::string& plain = prompt ? t.input : t.expected;
    for (std::smatch found; std::regex_search(line, found, unseen); line = found.suffix().str()) {
      plain += found.prefix();
      t.input += Keys(found[1]);
    }
    plain += line + '\n';
  }
  t.marks.emplace_back(t.expected.size(), number);
  if (s.rest.empty() && !quits) t.expected += ". \n";
  return t;
}

std::string Program() {
  const char* other = std::getenv("MOX_PROGRAM");
  return other ? other : MOX_PROGRAM;
}

bool DoMox(const Case& c, const Section& s) {
  const Transcript t = ReadTranscript(s);
  WriteFile(c.base / "in", t.input);
  std::istringstream words(s.rest);
  const std::string ending =
      RunProgram(Program(), {std::istream_iterator<std::string>(words), {}}, c.dir, c.base);
  const std::string out = ReadFile(c.base / "out"), err = ReadFile(c.base / "err");
  std::string text = ending.empty() ? "" : ending + "\n";
  if (!err.empty()) text += "standard error:\n" + err;
  int line = s.line;
  if (out != t.expected) {
    const auto begin = t.expected.begin(), end = t.expected.end();
    const auto same = std::mismatch(begin, end, out.begin(), out.end()).first - begin;
    for (const auto& [offset, number] : t.marks)
      if (offset <= static_cast<size_t>(same)) line = number;
    text += "output " + Difference(t.expected, out);
  }
  return text.empty() || Fail(c, line, text);
}

bool DoFile(const Case& c, const Section& s) {
  std::string bytes;
  if (s.word == "file")
    bytes = s.body;
  else if (!Unhex(s.body, bytes))
    return Fail(c, s.line, "these aren't pairs of hex digits");
  return WriteFile(c.dir / s.rest, bytes) || Fail(c, s.line, "can't be written");
}

bool DoCopy(const Case& c, const Section& s) {
  const fs::path from = fs::path(MOX_ROOT) / s.rest;
  std::error_code error;
  return fs::copy_file(from, c.dir / from.filename(), error) || Fail(c, s.line, error.message());
}

bool DoShow(const Case& c, const Section& s) {
  std::string text = ReadFile(c.dir / s.rest);
  std::erase(text, '\r');
  if (!fs::exists(c.dir / s.rest)) return Fail(c, s.line, "there is no " + s.rest);
  return text == s.body || Fail(c, s.line, s.rest + ": " + Difference(s.body, text));
}

bool DoDump(const Case& c, const Section& s) {
  std::istringstream words(s.rest);
  std::string name, want;
  size_t offset = 0;
  if (!(words >> name >> offset) || !Unhex(s.body, want) || want.empty())
    return Fail(c, s.line, "a dump takes NAME OFFSET and pairs of hex digits");
  std::string got = ReadFile(c.dir / name);
  got = offset < got.size() ? got.substr(offset, want.size()) : "";
  return got == want || Fail(c, s.line, name + ":\n- " + Hex(want) + "\n+ " + Hex(got));
}

bool DoSize(const Case& c, const Section& s) {
  std::istringstream words(s.rest);
  std::string name;
  size_t size = 0;
  if (!(words >> name >> size)) return Fail(c, s.line, "a size takes NAME and a number");
  if (!fs::exists(c.dir / name)) return Fail(c, s.line, "there is no " + name);
  const auto actual = fs::file_size(c.dir / name);
  return actual == size || Fail(c, s.line, name + " has " + std::to_string(actual) + " bytes");
}

bool DoSame(const Case& c, const Section& s) {
  const fs::path from = fs::path(MOX_ROOT) / s.rest;
  return ReadFile(from) == ReadFile(c.dir / from.filename()) || Fail(c, s.line, "has changed");
}

bool DoAbsent(const Case& c, const Section& s) {
  return !fs::exists(c.dir / s.rest) || Fail(c, s.line, "there is a " + s.rest);
}

const std::map<std::string, bool (*)(const Case&, const Section&)> kDirectives = {
    {"file", DoFile}, {"bytes", DoFile}, {"copy", DoCopy}, {"mox", DoMox},       {"show", DoShow},
    {"dump", DoDump}, {"size", DoSize},  {"same", DoSame}, {"absent", DoAbsent},
};

std::vector<Section> ReadSections(const std::string& path) {
  std::vector<Section> sections;
  std::ifstream in(path, std::ios::binary);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (line.starts_with("== ")) {
      Section s{"", "", number, ""};
      std::istringstream words(line.substr(3));
      words >> s.word >> std::ws;
      std::getline(words, s.rest);
      sections.push_back(std::move(s));
    } else if (!sections.empty()) {
      sections.back().body += line + '\n';
    }
  }
  return sections;
}

void RunSession(const std::string& path) {
  const auto sections = ReadSections(path);
  ASSERT_TRUE(!sections.empty() && sections[0].word == "case") << path << ": begins no case";
  for (auto s = sections.begin(); s != sections.end();) {
    const Case c(path, s->rest);
    const auto end = std::find_if(++s, sections.end(), [](auto& t) { return t.word == "case"; });
    while (s != end && kDirectives.contains(s->word) && kDirectives.at(s->word)(c, *s)) ++s;
    if (s != end && !kDirectives.contains(s->word)) Fail(c, s->line, "unknown directive");
    s = end;
  }
}

struct Session : testing::Test {
  explicit Session(std::string path) : path_(std::move(path)) {}
  void TestBody() override { RunSession(path_); }
  const std::string path_;
};

const bool kRegistered = [] {
  for (const auto& entry : fs::directory_iterator(fs::path(MOX_ROOT) / "tests/sessions")) {
    if (entry.path().extension() != ".txt") continue;
    const std::string path = entry.path();
    testing::RegisterTest("session", entry.path().stem().c_str(), nullptr, nullptr, path.c_str(), 1,
                          [path]() -> testing::Test* { return new Session(path); });
  }
  return true;
}();

}  // namespace
