#include "commands/sdf.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "commands/moxcopy.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/files.h"
#include "session/newfile.h"
#include "session/options.h"
#include "session/session.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr size_t maxTextLine = 1001;   // bytes of one read of a line
constexpr size_t pieceSize = 1 << 16;  // bytes of text that are written at once
constexpr std::string_view commaForm = ",";

std::vector<int> _fields(const Lines& names) {
  std::vector<int> fields;
  for (const std::string& name : names) fields.push_back(dbFno(selectedArea, name));
  if (names.empty())
    for (int i = 0; i < dbCOLS(selectedArea); ++i) fields.push_back(i);
  return fields;
}

// Adds a record as a line; field -1 is an empty value.
void _addRecord(const std::vector<int>& fields, std::string_view delimiter, std::string& text) {
  for (const int& field : fields) {
    if (&field != &fields[0]) text += delimiter;
    std::string_view value = dbVal(selectedArea, field);
    if (delimiter == commaForm) value = dlb(dtb(value));
    if (delimiter == commaForm && field >= 0 && dbTyp(selectedArea, field) == 'C')
      text += s2qs(value);
    else
      text += value;
  }
  text += '\n';
}

// An empty value leaves its field blank.
void _setDelimited(const std::vector<std::string_view>& values) {
  const int n = std::min(static_cast<int>(values.size()), dbCOLS(selectedArea));
  std::string room;
  for (int i = 0; i < n; ++i)
    if (!values[i].empty()) dbSetVal(selectedArea, i, qs2s(values[i], room));
}

// Each field is given the whole rest of the line and takes what it reads there.
void _setFixed(std::string_view line) {
  for (int i = 0; i < dbCOLS(selectedArea) && !line.empty(); ++i) {
    dbSetVal(selectedArea, i, line);
    line.remove_prefix(std::min<size_t>(dbLen(selectedArea, i), line.size()));
  }
}

std::string_view _skipBlanks(std::string_view text) {
  while (!text.empty() && (text[0] == ' ' || text[0] == '\t')) text.remove_prefix(1);
  return text;
}

}  // namespace

size_t is_string(std::string_view text) {
  if (text.empty() || text[0] != '"') return 0;
  for (size_t at = 1; (at = text.find('"', at)) != text.npos; at += 2)
    if (at + 1 == text.size() || text[at + 1] != '"') return at + 1;
  return 0;
}

size_t is_notDelim(std::string_view text, std::string_view delimiter) {
  return std::min(text.find(delimiter), text.size());
}

int getCSV(std::string_view line, std::string_view delimiter, size_t limit,
           std::vector<std::string_view>& values) {
  values.clear();
  while (values.size() < limit && !line.empty()) {
    line = _skipBlanks(line);
    size_t length = is_string(line);
    if (length == 0) length = is_notDelim(line, delimiter);
    values.emplace_back(line.substr(0, length));
    line = _skipBlanks(line.substr(length));
    if (!line.starts_with(delimiter)) break;
    line.remove_prefix(delimiter.size());
  }
  return static_cast<int>(values.size());
}

int moxCpyToSdf(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition, const std::string& delimiter) {
  Expr test(condition, scanSteps);
  if (ScanCompile(test) != 0) return -1;
  const std::string between = qs2s(delimiter);
  const std::vector<int> columns = _fields(fields);
  NewFile f;
  int result = NewFileOpen(f, filename);
  int tally = 0;
  std::string text;
  if (result == 0) {
    ScanRecords(start, count, test, [&] {
      if (g_opt[optDELETED] && dbDELETED(selectedArea)) return true;
      _addRecord(columns, between, text);
      ++tally;
      if (text.size() < pieceSize) return true;
      if (!NewFileAppend(f, HostText(text))) result = fileCantWrite;
      text.clear();
      return result == 0;
    });
  }
  if (Interrupted()) return -1;
  if (result == 0) result = NewFileAppend(f, HostText(text)) ? NewFileDone(f) : fileCantWrite;
  if (result != 0) {
    FileErr(result, f.path);
    return -1;
  }
  SayCopied(tally);
  return 0;
}

int moxApndFmSdf(const std::string& filename, const std::string& delimiter,
                 const std::string& condition) {
  const std::string name = FnExt(filename, ".txt");
  const std::string path = FnFind(name);
  const File f = FileOpen(path, "rb");
  if (!f) {
    SetErr("FILE DOES NOT EXIST", name);
    return -1;
  }
  if (SameFile(path, dbFn(selectedArea))) {  // would be read on and on while it grows
    SetErr("FILE IS IN USE", path);
    return -1;
  }
  const std::string between = qs2s(delimiter);
  Expr test(condition, scanSteps);
  if (ScanCompile(test) != 0) return -1;
  ErrorSlot lacking;
  int tally = 0;
  int result = 0;
  TextReader text(f.get());
  std::string line;
  std::vector<std::string_view> values;
  dbHold(selectedArea);
  while (result == 0 && !Interrupted() && text.read(maxTextLine, line)) {
    if ((result = dbBegin(selectedArea)) != 0) break;
    rm_nl(line);
    if (between.empty()) {
      _setFixed(line);
    } else {
      getCSV(line, between, maxFields, values);
      _setDelimited(values);
    }
    result = KeepAppended(test, tally, lacking);
  }
  ReadEnded(f.get(), path);
  return EndAppend(result, tally, lacking);
}

void OpApndSdf(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  const std::string& delimiter = o.text();
  moxApndFmSdf(filename, delimiter, o.text());
}

}  // namespace mox
