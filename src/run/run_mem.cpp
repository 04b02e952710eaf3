// Memory files: SAVE and RESTORE.
//
// A file is one record after the other for the variables, then a byte 0x1A. There is no header;
// all numbers are single bytes. Each record begins with
//
//   0   11  name: up to 10 bytes, then zero bytes
//   11   1  type, N, L or C, with bit 7 set
//
// and goes on, by type, with
//
//   12   1  N: length       L: 0                       C: n, the length of the text
//   13   1     0x16            2                          0x16
//   14   1     0x64            0x64                       0x64
//   15   1     decimals        0                          0
//   16      6  the number   1  0xFF for true, 0 for false  1  n again
//   17                                                     n  the text
//
// What stands at 13 and 14, and at 15 of L and C and 16 of C, is never looked at on reading. Only
// the first element of an array is saved.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

#include "host/file.h"
#include "run/handlers.h"
#include "session/error.h"
#include "session/files.h"
#include "session/newfile.h"
#include "session/number.h"
#include "session/value.h"
#include "store/bytes.h"
#include "vars/vars.h"

namespace mox {

namespace {

constexpr size_t nameField = 11;
constexpr size_t maxName = 10;
constexpr size_t headSize = nameField + 1;
constexpr size_t restSize = 4;  // of the fixed part, behind the type
constexpr int typeBit = 0x80;
constexpr int typeMask = 0x7F;
constexpr int maxByte = 255;
constexpr int valueDigits = 15;
constexpr double formLoss = 1e-9;  // share of a number that ten digits may lose

constexpr int memNoFile = -1;
constexpr int memDamaged = -2;

// Offsets 11 to 15 of a record.
void _putFixed(std::string& bytes, char type, int length, int mark, int decimals) {
  for (int b : {type | typeBit, length, mark, 0x64, decimals}) bytes += static_cast<char>(b);
}

void memPutN(std::string& bytes, int length, int decimals, std::string_view value) {
  _putFixed(bytes, 'N', length, 0x16, decimals);
  const Bcd6 form = d2bcd6(TxtToDbl(value));
  bytes.append(form.begin(), form.end());
}

void memPutL(std::string& bytes, std::string_view value) {
  _putFixed(bytes, 'L', 0, 2, 0);
  bytes += value.substr(0, 1) == "T" ? '\xFF' : '\0';
}

void memPutC(std::string& bytes, std::string_view value) {
  const int n = static_cast<int>(value.size());
  _putFixed(bytes, 'C', n, 0x16, 0);
  bytes += static_cast<char>(n);
  bytes += value;
}

// True when the number survives the 6-byte form but for its last digits.
bool _fitsForm(double x) {
  const double kept = bcd2d6(d2bcd6(x));
  return std::fabs(kept - x) <= std::fabs(x) * formLoss;
}

// Appends the record of a variable; false when it doesn't fit the form.
bool _putVariable(std::string& bytes, int number) {
  std::string name = VarName(number)->substr(0, maxName);
  name.resize(nameField);
  bytes += name;
  const std::string& value = VarGetI2(number, 0, 0).text();
  const int length = VarGetProp(number, propLength);
  const int decimals = VarGetProp(number, propDecimals);
  switch (VarGetProp(number, propType)) {
    case 'L': memPutL(bytes, value); return true;
    case 'N':
      memPutN(bytes, length, decimals, value);
      return length >= 0 && length <= maxByte && decimals >= 0 && decimals <= maxByte &&
             _fitsForm(TxtToDbl(value));
    default: memPutC(bytes, value); return value.size() <= maxByte;
  }
}

// Writes the variables whose names fit the pattern, or with like 0 those that don't: 0, or -1 after
// a report when one doesn't fit the form or the file can't be written; what was there stays then.
int MoxSaveMem(std::string_view filename, std::string_view pattern, int like) {
  std::string bytes;
  for (int i = 0; i < VarCount(); ++i) {
    if (IsLike(*VarName(i), pattern) != (like != 0) || _putVariable(bytes, i)) continue;
    SetErr("SAVE FAILED", *VarName(i));
    return -1;
  }
  bytes += endMark;
  const std::string name = FnExt(filename, ".mem");
  const int written = FileWriteBytes(name, bytes);
  if (written == fileInUse)
    FileErr(written, name);
  else if (written != 0)
    SetErr("SAVE FAILED", "");
  return written == 0 ? 0 : -1;
}

// Puts a variable at the end of the table in the place of any of that name. One more than the
// table holds is dropped.
void _restore(std::string_view name, std::string_view value, char type, int length, int decimals) {
  VarDelNum(VarNum(name));
  if (VarPut(name, value) != 0) return;
  const int number = VarNum(name);
  VarSetProp(number, propType, type);
  VarSetProp(number, propLength, length);
  VarSetProp(number, propDecimals, decimals);
}

// Reads n bytes; false when the file ends before.
bool _read(std::FILE* f, void* bytes, size_t n) { return std::fread(bytes, 1, n, f) == n; }

int memGetN(std::FILE* f, std::string_view name) {
  unsigned char rest[restSize];
  Bcd6 form;
  if (!_read(f, rest, restSize) || !_read(f, form.data(), form.size())) return memDamaged;
  _restore(name, FmtSci(bcd2d6(form), valueDigits), 'N', get1(rest), get1(rest + 3));
  return 0;
}

int memGetL(std::FILE* f, std::string_view name) {
  unsigned char rest[restSize + 1];
  if (!_read(f, rest, sizeof rest)) return memDamaged;
  _restore(name, rest[restSize] ? "T" : "F", 'L', 1, 0);
  return 0;
}

int memGetC(std::FILE* f, std::string_view name) {
  unsigned char rest[restSize + 1];
  char text[maxByte];
  if (!_read(f, rest, sizeof rest) || !_read(f, text, rest[0])) return memDamaged;
  const char* const end = std::find(text, text + rest[0], '\0');  // no value holds a zero byte
  _restore(name, {text, end}, 'C', static_cast<int>(end - text), 0);
  return 0;
}

// Reads the record behind a head.
int _getVariable(std::FILE* f, const char (&head)[headSize]) {
  const std::string_view name(head, std::find(head, head + nameField, '\0'));
  switch (head[nameField] & typeMask) {
    case 'L': return memGetL(f, name);
    case 'N': return memGetN(f, name);
    default: return memGetC(f, name);
  }
}

// Reads variables into the table, those before a damaged record too: 0, memNoFile or memDamaged.
int MoxRestoreMem(std::string_view filename) {
  const std::string path = FnFind(FnExt(filename, ".mem"));
  const File f = FileOpen(path, "rb");
  if (!f) return memNoFile;
  char head[headSize];
  for (;;) {
    const size_t n = std::fread(head, 1, headSize, f.get());
    if (!ReadEnded(f.get(), path)) return memDamaged;
    if (n == 0 || head[0] == endMark) return 0;
    if (n < headSize) return memDamaged;
    if (const int result = _getVariable(f.get(), head)) return result;
  }
}

}  // namespace

void OpMSave(Operands& o) {
  const std::string_view file = o.content(), pattern = o.content();
  MoxSaveMem(file, pattern, o.integer());
}

void OpRestore(Operands& o) {
  const int result = MoxRestoreMem(o.content());
  if (result == memNoFile) SetErr("CANNOT OPEN FILE", "");
  if (result == memDamaged) SetErr("NOT A VALID MEM FILE", "");
}

}  // namespace mox
