// The help file: its form, its names, its examples, and that it explains every message.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "lang/compile.h"
#include "lang/mox_gmr.h"
#include "lang/mox_lex.h"
#include "run/run.h"
#include "session/misc.h"
#include "session/options.h"
#include "session/strreplace.h"
#include "session_run.h"
#include "temp_dir.h"

namespace mox {

namespace {

constexpr size_t screenLines = 21;  // that HELP shows before it waits
constexpr size_t listColumn = 11;   // of MAIN's names and of what follows "Example:", "See also:"

using Topics = std::map<std::string, Lines>;

// The topics with their lines, control columns included. Reports heads that come twice.
Topics ReadHelp() {
  static const std::regex form("|[ W#]|[ W#].{0,77}[^ ]");
  std::ifstream in(MOX_ROOT "/moxhelp.txt");
  EXPECT_TRUE(in);
  Topics topics;
  Lines* body = nullptr;
  for (std::string line; std::getline(in, line);) {
    EXPECT_TRUE(std::regex_match(line, form)) << line;
    if (line[0] == '#') {
      const auto [topic, isNew] = topics.try_emplace(line.substr(1));
      EXPECT_TRUE(isNew) << line;
      body = &topic->second;
    } else if (body) {
      body->push_back(line);
    }
  }
  return topics;
}

// What stands behind the word, from the list column on, in its line and those indented below it.
std::vector<Lines> Blocks(const Lines& body, const std::string& word) {
  std::vector<Lines> blocks;
  bool open = false;
  for (const std::string& line : body) {
    const bool begins = line.compare(0, word.size() + 1, " " + word) == 0;
    if (begins) blocks.emplace_back();
    open = begins || (open && line.compare(0, listColumn, std::string(listColumn, ' ')) == 0);
    if (open && line.size() > listColumn) blocks.back().push_back(line.substr(listColumn));
  }
  return blocks;
}

// The names of a list: separated by commas, over several lines.
Lines Names(const Lines& list) {
  Lines names;
  for (const std::string& line : list)
    for (const std::string& name : split(line, ","))
      if (!isBlank(name)) names.emplace_back(dlb(dtb(name)));
  return names;
}

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

Lines Difference(const std::set<std::string>& a, const std::set<std::string>& b) {
  Lines names;
  std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(names));
  return names;
}

std::string TopicOf(const std::string& name) { return str_replace(name, " ", "-"); }

}  // namespace

// And HELP takes each topic.
TEST(Help, EachNameHasATopic) {
  const Topics topics = ReadHelp();
  const Lines& main = topics.at("MAIN");
  EXPECT_LE(main.size(), screenLines);
  std::set<std::string> wanted, listed;
  const std::regex groupLine(" [A-Z][a-z]+: +.*");
  for (const std::string& line : main) {
    if (!std::regex_match(line, groupLine) || line.size() <= listColumn) continue;
    wanted.insert(strUpper(line.substr(1, line.find(':') - 1)));
    for (const std::string& name : Names({line.substr(listColumn)})) listed.insert(TopicOf(name));
  }
  EXPECT_GT(listed.size(), 80u);
  for (const Alternative& a : g_grammar) {
    if (a.rule != Rule::statement || a.items[0].kind != Item::kWord) continue;
    wanted.insert(a.items[0].word);
    bool inMain = false;  // itself, or as in DO WHILE
    for (const std::string& name : listed) inMain |= split(name, "-")[0] == a.items[0].word;
    EXPECT_TRUE(inMain) << a.items[0].word << " isn't listed under #MAIN";
  }
  int options = 0;
  for (const char* group :
       {"Printing:", "Records:", "Forms:", "Programs:", "Inside:", "No effect:"})
    for (const Lines& list : Blocks(topics.at("SET"), group))
      for (const std::string& name : Names(list)) {
        EXPECT_GE(OptFind(name), 0) << name;
        ++options;
        wanted.insert(topics.count("SET_" + name) ? "SET_" + name : "SET-" + name);
      }
  EXPECT_EQ(options, optNamed);
  wanted.merge(listed);
  for (const auto& [topic, body] : topics)
    for (const Lines& list : Blocks(body, "See also:"))
      for (const std::string& name : Names(list)) wanted.insert(TopicOf(name));
  for (const std::string& topic : wanted)
    EXPECT_TRUE(topics.count(topic)) << topic << " has no topic";
  for (const auto& [topic, body] : topics) {
    EXPECT_TRUE(topic == "MAIN" || wanted.count(topic)) << topic << " is nowhere named";
    Lines line{"HELP " + str_replace(topic, "-", " ")}, steps;
    EXPECT_EQ(doCompile(false, line, 100, steps), cmpDone) << topic;
    EXPECT_EQ(steps, (Lines{"PUSH " + topic, "HELP", "END"}));
  }
}

// Each function stands in the list of FUNCTIONS, and each reserved word in that of NAMES.
TEST(Help, EachFunctionAndReservedWordIsListed) {
  const Topics topics = ReadHelp();
  std::set<std::string> words, functions, told, names(g_keywords.begin(), g_keywords.end());
  for (const StepEntry& e : g_steps) {
    if (e.word[0] != '=' || e.word == "=EVAL") continue;
    const std::string name(e.word.substr(1));
    EXPECT_TRUE(names.count(name)) << name << " is no keyword";
    EXPECT_NE(e.effect.find_first_of("(*"), e.effect.npos) << name << " doesn't count arguments";
    functions.insert(name + "()");
  }
  names.insert(functions.begin(), functions.end());
  const std::regex word("[A-Z0-9]+(\\(\\))?");
  const std::regex list("   ([A-Z0-9 ()]*|[A-Z][a-z]+:.*)");
  for (const char* topic : {"FUNCTIONS", "NAMES"})
    for (const std::string& line : topics.at(topic))
      if (std::regex_match(line, list))
        for (std::sregex_iterator it(line.begin(), line.end(), word), end; it != end; ++it)
          if (it->str().size() > 1) words.insert(it->str());
  EXPECT_EQ(Difference(words, names), Lines()) << "missing in #FUNCTIONS or #NAMES, or only there";
  const std::regex head("[ W](?:[A-Z]+ +)?([A-Z0-9]+\\().*");
  std::smatch call;
  for (const auto& [topic, body] : topics)
    for (const std::string& line : body)
      if (topic.starts_with("FUNCTIONS-") && std::regex_match(line, call, head))
        told.insert(call.str(1) + ")");
  EXPECT_EQ(Difference(told, functions), Lines()) << "missing in #FUNCTIONS-..., or only there";
}

// Each example is a command file, in a folder that has what the examples name; what it asks for is
// typed. None says that something is wrong, and behind a ? stands what it prints.
TEST(Help, ExamplesRun) {
  const std::string setup =
      "CREATE people\nNAME,C,20\nAGE,N,3\nTOWN,C,10\nBORN,C,10\nWAGE,N,8,2\nPART,C,5\nAMOUNT,N,6\n"
      "PRICE,N,6,2\nCLIENT,C,5\nPAY,N,8,2\nPAYTEXT,C,8\nCOUNT,N,3\n\nSET TALK OFF\nUSE people\n"
      "APPEND BLANK : REPLACE NAME WITH \"Smith\", AGE WITH 42, PAYTEXT WITH \"1,5\"\n"
      "APPEND BLANK : APPEND BLANK : APPEND BLANK : APPEND BLANK\n"
      "COPY TO stock : COPY TO orders : COPY TO prices : COPY TO newones : COPY TO newlist\n"
      "COPY TO people.csv SDF DELIMITED : COPY TO list.txt SDF : COPY TO clients : COPY TO keep\n"
      "COPY TO people.txt SDF : COPY TO sheet.csv SDF DELIMITED WITH \";\"\n"
      "INDEX ON NAME TO names : INDEX ON AGE TO ages : INDEX ON TOWN TO bytown\n"
      "INDEX ON CLIENT TO byclient : STORE \"2026-11-23\" TO DAY\n"
      "STORE 1 TO N : STORE 2 TO M : SAVE TO mydata\n";
  const std::pair<std::regex, std::string> typed[] = {
      {std::regex("(READ|EDIT|APPEND|BROWSE|MODIFY COMMAND)\\b(?! BLANK| FROM).*"), "\x17"},
      {std::regex("MODIFY STRUCTURE"), "Y\x17"},
      {std::regex("CREATE.*"), "NAME,C,20\nAGE,N,3\n\n"},
      {std::regex("ACCEPT.*|INPUT.*"), "5\n"},
      {std::regex("WAIT.*|DISPLAY STATUS"), "q"}};
  const std::regex printed("\\? (.*[^ ]) +' (.*)"),
      wrong("ERROR|CANNOT|NOT EXIST|NOT A|NO RECORD|IN USE|FAILED|\\*\\*\\* ");
  const TempDir made;
  PutBytes("in", setup);
  EXPECT_EQ(RunProgram(MOX_PROGRAM, {}, ".", "."), "");
  for (const auto& [topic, body] : ReadHelp()) {
    for (const Lines& example : Blocks(body, "Example:")) {
      const TempDir folder;
      fs::copy(made.path, ".");
      std::string in = example[0].starts_with("CREATE") ? "" : "USE people INDEX names\n";
      in += "RESTORE FROM mydata\nDO example\n";
      for (const std::string& line : example)
        for (const auto& [statement, keys] : typed)
          if (std::regex_match(std::string(dlb(line)), statement)) in += keys;
      PutBytes("example.cmd", "?\n" + Joined(example));
      for (const char* file : {"report.cmd", "tour.cmd"}) PutBytes(file, "? 1\n");
      PutBytes("entry.fmt", "@ 5,0 GET AGE\n");
      if (topic == "DELETE-FILE") PutBytes("people.bak", "");
      PutBytes("in", in);
      EXPECT_EQ(RunProgram(MOX_PROGRAM, {}, ".", ".") + Bytes("err"), "") << topic;
      const std::string out = Bytes("out");
      EXPECT_FALSE(std::regex_search(out, wrong)) << topic << out;
      std::smatch parts;
      for (const std::string& line : example)
        if (std::regex_match(line, parts, printed)) {
          EXPECT_NE(out.find(' ' + parts.str(2) + " \n"), out.npos) << line << out;
        }
    }
  }
}

// A message is a text of at least two words in capitals that stands alone in the sources. Those
// with numbers or names in them report what was done.
TEST(Help, EachMessageIsExplained) {
  const std::regex heading(
      "(PRIMARY|SECONDARY) USE.*|AREA [CD]|(FLD +|)NAME +TYPE? .*|SORT COMPLETE|"
      "DATABASE FILES +# .*|INDEXES: .*|SINGLE STEP .*");
  std::string explained;
  for (const auto& [topic, body] : ReadHelp())
    if (topic.starts_with("ERRORS")) explained += Joined(body);
  const std::regex literal(R"re("(?:\\n)?([^"\\%]*)(?:\\n)?")re"),
      message(R"([ *]*[A-Z'][A-Z'0-9]*[ ,*]+[A-Z'()2]+[^a-z]*|.*ERROR.*|.*dBASE.*)");
  int messages = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(MOX_ROOT "/src")) {
    if (file.path().extension() != ".cpp" || file.path().stem() == "mox_gmr_rules") continue;
    std::ifstream in(file.path());
    for (std::string line; std::getline(in, line);) {
      line.erase(std::min(line.find("//"), line.size()));
      for (std::sregex_iterator i(line.begin(), line.end(), literal), end; i != end; ++i) {
        std::string text = (*i)[1];
        text = dlb(trim(text));
        if (!std::regex_match(text, message) || std::regex_match(text, heading)) continue;
        ++messages;
        EXPECT_NE(explained.find(text), explained.npos) << text << " in " << file.path();
      }
    }
  }
  EXPECT_GT(messages, 50);
}

}  // namespace mox
