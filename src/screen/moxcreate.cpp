#include "screen/moxcreate.h"

#include <cstdio>
#include <string_view>
#include <vector>

#include "screen/scr.h"
#include "screen/scr_line.h"
#include "session/error.h"
#include "session/files.h"
#include "session/number.h"
#include "session/session.h"
#include "store/db.h"
#include "store/dbf.h"

namespace mox {

namespace {

constexpr int maxFieldWidth = 254;

// One field as a person describes it.
struct FieldDef {
  std::string name;  // upper case, at most maxFieldName bytes
  char type = ' ';
  int width = 0;
  int decimals = 0;
};

constexpr size_t maxFirstWord = 254;

// The grid of MODIFY STRUCTURE.
constexpr int lineWidth = 24;
constexpr int lineWords = 4;
constexpr int headRow = 1, gridRow = 2, gridCol = 10;
constexpr int shownLines = scrRows - gridRow;
constexpr int gridStep = 8, lastBase = 16;
constexpr std::string_view hint =
    "Ctrl-W makes the table, without records, Ctrl-Q keeps it, Enter next line";

int _refuse(const char* message, int result) {
  std::printf("%s\n", message);
  return result;
}

// Makes a field of the words name, type, width, decimals, of which the last two may be missing:
// 0, or after a message -1 for a bad name, -2 for a bad type, -3 for a bad width.
int _CrFld(const Lines& words, FieldDef& field) {
  const auto number = [&](size_t i) { return i < words.size() ? TxtToInt(words[i]) : 0; };
  if (words.size() < 2 || words[0].empty() || words[0].size() > maxFirstWord)
    return _refuse("BAD NAME FIELD", -1);
  field.name = strUpper(words[0].substr(0, maxFieldName));
  field.type = words[1].empty() ? ' ' : UpperChr(words[1][0]);
  if (std::string_view("CNL").find(field.type) == std::string_view::npos)
    return _refuse("BAD TYPE FIELD", -2);
  field.width = field.type == 'L' ? 1 : number(2);
  field.decimals = field.type == 'C' ? 0 : number(3);
  if (field.width < 1 || field.width > maxFieldWidth) return _refuse("BAD WIDTH FIELD", -3);
  return 0;
}

// Reads the fields: false at the end of the input.
bool _askFields(std::vector<FieldDef>& fields) {
  std::printf("ENTER RECORD STRUCTURE AS FOLLOWS:\n FIELD   NAME,TYPE,WIDTH,DECIMAL PLACES\n");
  while (fields.size() < static_cast<size_t>(maxFields)) {
    const std::string question = StrFmt(" %03d     ", static_cast<int>(fields.size()) + 1);
    std::printf("%s", question.c_str());
    std::string line;
    if (!ScrReadAnswer(question, line)) {
      std::printf("\n");
      return false;
    }
    if (isBlank(rm_nl(line))) return true;
    FieldDef field;
    if (_CrFld(split(line, ","), field) == 0) fields.push_back(field);
  }
  return true;
}

// Fills the table in the making and puts it in its place: 0 or dbfCantWrite. A field without a name
// leaves its number unfilled.
int _writeTable(DbfTable& t, const std::vector<FieldDef>& fields) {
  int number = 0;
  for (const FieldDef& f : fields)
    if (++number; !f.name.empty()) dbfFld(t, number, f.name, f.type, f.width, f.decimals);
  dbfFld(t, 0, "", ' ', 0, 0);
  return dbfClose(t);
}

// The end of both: 0, or -1 after the report of what failed.
int _reported(int result, const std::string& path) {
  if (result == 0) return 0;
  FileErr(result, path);
  return -1;
}

// Makes a table of the grid's lines, up to the first blank one. A line that is refused, with its
// message, leaves an empty field. 0, or -1 after a report with the file as it was.
int _CrDbf(const std::string& filename, const Lines& lines) {
  std::vector<FieldDef> fields;
  for (const std::string& line : lines) {
    if (isBlank(line)) break;
    if (_CrFld(GetWords(line, lineWords + 1), fields.emplace_back()) != 0) fields.back() = {};
  }
  while (!fields.empty() && fields.back().name.empty()) fields.pop_back();
  DbfTable t;
  const int made = dbfCreate(t, filename);
  return _reported(made == 0 ? _writeTable(t, fields) : made, filename);
}

// Edits lines, from this row on down to the last of the screen, until a key that saves, abandons
// or leaves them at either end; the last key.
int edScrn(int row, int col, int n, std::string* lines) {
  int key = 0;
  for (int i = 0; i >= 0 && i < n && row + i < scrRows && key != keyAbandon && key != keySave;) {
    key = ScrGet(row + i, col, lines[i], 'C', "");
    if (key == keyUp) --i;
    if (key == keyTab || key == keyEnter || key == keyDown) ++i;
  }
  ScrLeave();
  return key;
}

Lines _gridLines() {
  Lines lines(maxFields);
  for (int f = 0; f < dbCOLS(selectedArea); ++f)
    lines[f] = StrFmt("%-10s %c  %03d  %03d  ", ScrPlain(dbName(selectedArea, f)).c_str(),
                      dbTyp(selectedArea, f), dbLen(selectedArea, f), dbDec(selectedArea, f));
  for (std::string& line : lines) line.resize(lineWidth, ' ');
  return lines;
}

void _paintGrid(int base, const Lines& lines) {
  ScrClear();
  ScrSay(headRow, 0, "           NAME      TYP LEN  DEC");
  for (int i = 0; i < shownLines && base + i < maxFields; ++i) {
    ScrSay(gridRow + i, 0, StrFmt("FIELD %02d", base + i + 1));
    ScrSayRev(gridRow + i, gridCol, lines[base + i]);
  }
}

// True when the person saves the grid.
bool _editGrid(Lines& lines) {
  const ScrKeys keys(hint);
  ScrNewPage();
  int base = 0;
  for (int key = 0; key != keySave;) {
    _paintGrid(base, lines);
    key = edScrn(gridRow, gridCol, maxFields - base, &lines[base]);
    if (key == keyAbandon) return false;
    if (key == keyUp && base >= gridStep) base -= gridStep;
    if (key == keyDown && base < lastBase) base += gridStep;
  }
  return true;
}

bool _inOtherArea() {
  for (int area = 0; area < maxAreas; ++area)
    if (area != dbSelected() && dbOPEN(area) && SameFile(dbFn(area), dbFILENAME(selectedArea)))
      return true;
  return false;
}

}  // namespace

// Whether the file can be made is seen before anything is asked.
int MoxCreate(const std::string& filename) {
  const std::string path = FnExt(filename, ".dbf");
  DbfTable t;
  if (const int made = dbfCreate(t, path); made != 0) return _reported(made, path);
  std::vector<FieldDef> fields;
  if (_askFields(fields)) return _reported(_writeTable(t, fields), path);
  InputEnded();
  return -1;
}

int MoxModiStru() {
  const std::string path = dbFILENAME(selectedArea);
  if (_inOtherArea()) {
    SetErr("FILE IS IN USE", path);
    return -1;
  }
  Lines lines = _gridLines();
  if (!_editGrid(lines)) return 0;
  if (dbMark(selectedArea) != 0) return -1;
  dbCloseDbf(selectedArea);
  const int result = _CrDbf(path, lines);
  if (result == 0) dbStale(selectedArea);
  if (dbReopenDbf(selectedArea, path) != 0) {
    SetErr("FILE DOES NOT EXIST", path);
    dbClrIndex(selectedArea);
    return -1;
  }
  // No record is left to be found; an index that doesn't know of it would lead to none.
  if (result == 0 && dbReindex(false) != 0) {
    dbStale(selectedArea);
    dbClrIndex(selectedArea);
  }
  dbTop(selectedArea);
  return result;
}

}  // namespace mox
