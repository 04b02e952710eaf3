#include "store/dbf.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "session/number.h"
#include "session/session.h"
#include "store/bytes.h"

namespace mox {

namespace {

// Offsets in the header and in a field descriptor.
constexpr int atVersion = 0, atCount = 1, atDate = 3, atRowsize = 6, atFields = 8;
constexpr int fieldSize = 16, inType = 11, inWidth = 12, inDecimals = 15;

constexpr int version = 2;
constexpr unsigned char fieldsEnd = 0x0D;
constexpr char endMark = 0x1A;

using Header = std::array<unsigned char, dbfHeaderSize>;

// The largest table, 65,535 records of 32 * 255 + 1 bytes, ends well below 2^31.
long _dbfOffset(const DbfTable& t, int recno) {
  return dbfHeaderSize + static_cast<long>(t.rowsize) * (recno - 1);
}

// Every write comes here. Unless the table is buffered it is flushed at once, so that a refusal is
// known while the change can still be taken back; the seek of the next access would empty the
// stream's buffer anyway.
bool _dbfPut(DbfTable& t, long offset, const void* bytes, size_t n) {
  if (t.blocks) return blkWrite(*t.blocks, offset, static_cast<const char*>(bytes), n);
  std::FILE* f = t.fp.get();
  return std::fseek(f, offset, SEEK_SET) == 0 && std::fwrite(bytes, 1, n, f) == n &&
         std::fflush(f) == 0;
}

bool _dbfWrite(DbfTable& t) {
  return _dbfPut(t, _dbfOffset(t, t.recno), t.row.data(), static_cast<size_t>(t.rowsize));
}

bool _dbfPutEndMark(DbfTable& t) { return _dbfPut(t, _dbfOffset(t, t.rmax + 1), &endMark, 1); }

void _dbfRead(DbfTable& t) {
  size_t n = static_cast<size_t>(t.rowsize);
  if (t.blocks)
    t.eof = !blkRead(*t.blocks, _dbfOffset(t, t.recno), t.row.data(), n);
  else
    t.eof = std::fseek(t.fp.get(), _dbfOffset(t, t.recno), SEEK_SET) != 0 ||
            std::fread(t.row.data(), 1, n, t.fp.get()) != n;
}

bool _dbfUpdHdr(DbfTable& t) {
  Header h{};
  put1(&h[atVersion], version);
  put2(&h[atCount], t.rmax);
  put2(&h[atRowsize], t.rowsize);
  unsigned char* field = &h[atFields];
  for (int i = 0; i < t.cols; i++, field += fieldSize) {
    std::memcpy(field, t.names[i].data(), t.names[i].size());
    put1(field + inType, t.typ[i]);
    put1(field + inWidth, t.len[i]);
    put1(field + inDecimals, t.dec[i]);
  }
  *field = fieldsEnd;
  return _dbfPut(t, 0, h.data(), h.size());
}

bool _dbfPutCount(DbfTable& t) {
  unsigned char count[2];
  put2(count, t.rmax);
  return _dbfPut(t, atCount, count, sizeof count);
}

// A buffered table's count is written at the end.
bool _dbfUpdHdrRmax(DbfTable& t) { return t.blocks || _dbfPutCount(t); }

bool _dbfUpdHdrDate(DbfTable& t) {
  auto [day, month, year] = DateToday();
  unsigned char date[3];
  put1(date, day);
  put1(date + 1, month);
  put1(date + 2, year);
  return _dbfPut(t, atDate, date, sizeof date);
}

// Lays out the record by the widths and blanks it.
void _dbfLayout(DbfTable& t) {
  t.rowsize = 1;
  for (int i = 0; i < maxFields; i++) {
    t.pos[i] = t.rowsize;
    t.rowsize += t.len[i];
  }
  t.row.assign(static_cast<size_t>(t.rowsize), ' ');
}

bool _dbfHasField(const DbfTable& t, int field) { return t.fp && field >= 0 && field < t.cols; }

// The text up to a zero byte, at most n bytes of it.
std::string xtract(std::string_view text, size_t n) {
  text = text.substr(0, n);
  return std::string(text.substr(0, text.find('\0')));
}

int _dbfReadHeader(DbfTable& t) {
  Header h;
  if (std::fread(h.data(), 1, h.size(), t.fp.get()) != h.size()) return dbfShort;
  if (get1(&h[atVersion]) != version) return dbfWrongVersion;
  t.rmax = get2(&h[atCount]);
  for (int i = 0; i < 3; i++) t.date[i] = get1(&h[atDate + i]);
  const unsigned char* field = &h[atFields];
  for (; t.cols < maxFields && *field != fieldsEnd; t.cols++, field += fieldSize) {
    t.names[t.cols] = xtract({reinterpret_cast<const char*>(field), fieldSize}, maxFieldName);
    t.typ[t.cols] = static_cast<char>(field[inType]);
    t.len[t.cols] = get1(field + inWidth);
    t.dec[t.cols] = get1(field + inDecimals);
  }
  _dbfLayout(t);
  return 0;
}

int _dbfMove(DbfTable& t, long long target) {
  t.eof = true;
  if (target < 1 || target > t.rmax) return dbfOutside;
  t.recno = static_cast<int>(target);
  _dbfRead(t);
  return 0;
}

// Writes row with the deletion mark given; a row that can't be written keeps its mark.
int _dbfSetMark(DbfTable& t, char mark) {
  if (!t.fp) return dbfClosed;
  char old = std::exchange(t.row[0], mark);
  int result = dbfReplace(t);
  if (result < 0) t.row[0] = old;
  return result;
}

Lines _dbfNames(const DbfTable& t) { return Lines(t.names.begin(), t.names.begin() + t.cols); }

}  // namespace

int dbfCreate(DbfTable& t, std::string_view filename) {
  dbfClose(t);
  t.fp = FileOpen(FnExt(filename, ".dbf"), "w+b");
  if (!t.fp) return dbfCantCreate;
  t.name = filename;
  t.recno = 1;
  t.typ.fill('C');
  t.eof = t.dirty = true;
  _dbfLayout(t);
  if (_dbfUpdHdr(t) && _dbfPutEndMark(t)) return 0;
  t = DbfTable{};
  FileDrop(FnExt(filename, ".dbf"));
  return dbfCantWrite;
}

int dbfFld(DbfTable& t, int number, std::string_view name, char type, int width, int decimals) {
  if (!t.fp) return dbfClosed;
  if (number < 0 || number > maxFields) return -2;
  if (number == 0) return _dbfUpdHdr(t) && _dbfPutEndMark(t) ? 0 : dbfCantWrite;
  int i = number - 1;
  t.names[i] = strUpper(name.substr(0, maxFieldName));
  trim(t.names[i]);
  t.typ[i] = type;
  t.len[i] = std::clamp(width, 0, 255);  // each has one byte in the file
  t.dec[i] = std::clamp(decimals, 0, 255);
  t.rmax = 0;
  t.recno = 1;
  t.cols = std::max(t.cols, number);
  t.eof = t.dirty = true;
  _dbfLayout(t);
  return 0;
}

int dbfCreateFrom(DbfTable& t, std::string_view filename, const DbfTable& source,
                  const Lines& fields) {
  if (dbfCreate(t, filename) < 0) return -1;
  int number = 0;
  for (const std::string& name : fields.empty() ? _dbfNames(source) : fields) {
    int i = fldno(source, name);
    if (i >= 0) dbfFld(t, ++number, source.names[i], source.typ[i], source.len[i], source.dec[i]);
  }
  if (dbfFld(t, 0, "", ' ', 0, 0) == 0) return 0;
  t = DbfTable{};
  return -1;
}

int dbfOpen(DbfTable& t, std::string_view filename) {
  dbfClose(t);
  t.name = FnFind(FnExt(filename, ".dbf"));
  t.fp = FileOpen(t.name, "r+b");
  int result = t.fp ? _dbfReadHeader(t) : dbfClosed;
  if (result < 0) {
    t = DbfTable{};
    return result;
  }
  t.recno = 1;
  _dbfRead(t);
  return 0;
}

int dbfClose(DbfTable& t) {
  ++g_names;
  if (!t.fp) return dbfClosed;
  bool written = !t.dirty || _dbfUpdHdrDate(t);
  written = dbfFlush(t) == 0 && written;
  t = DbfTable{};
  return written ? 0 : dbfCantWrite;
}

void dbfBuffer(DbfTable& t) {
  if (!t.fp || dbfFlush(t) != 0) return;
  t.blocks = std::make_unique<Blocks>();
  t.blocks->file = t.fp.get();
}

int dbfDispStruc(const DbfTable& t) {
  if (!t.fp) return dbfClosed;
  std::printf("STRUCTURE FOR FILE:  %s\n", t.name.c_str());
  std::printf("NUMBER OF RECORDS:   %05d\n", t.rmax);
  std::printf("DATE OF LAST UPDATE: %02d/%02d/%02d\n", t.date[0], t.date[1], t.date[2]);
  std::printf("PRIMARY USE DATABASE\n");
  std::printf("FLD       NAME      TYPE WIDTH   DEC\n");
  for (int i = 0; i < t.cols; i++) {
    std::printf("%03d     %-10s   %c    %03d", i + 1, t.names[i].c_str(), t.typ[i], t.len[i]);
    if (t.dec[i] > 0) std::printf("    %03d", t.dec[i]);
    std::printf("\n");
  }
  std::printf("** TOTAL **             %05d\n", t.rowsize);
  return 0;
}

int dbfSkip(DbfTable& t, int distance) {
  if (!t.fp) return dbfClosed;
  return _dbfMove(t, static_cast<long long>(t.recno) + distance);
}

int dbfSkipTo(DbfTable& t, int recno) {
  if (!t.fp) return dbfClosed;
  return _dbfMove(t, recno == 0 ? 1 : recno == -1 ? t.rmax : recno);
}

int dbfReplace(DbfTable& t) {
  if (!t.fp || t.recno < 1 || t.recno > t.rmax) return -1;
  if (!_dbfWrite(t)) return dbfCantWrite;
  t.dirty = true;
  return 0;
}

// The record goes to the file before the count that covers it.
int dbfAppend(DbfTable& t) {
  if (!t.fp) return dbfClosed;
  if (t.rmax >= t.limit) return dbfFull;
  std::string blank(static_cast<size_t>(t.rowsize), ' ');
  blank += endMark;
  bool written = _dbfPut(t, _dbfOffset(t, t.rmax + 1), blank.data(), blank.size());
  t.rmax++;
  if (!written || !_dbfUpdHdrRmax(t)) {
    t.rmax--;
    _dbfUpdHdrRmax(t);
    _dbfPutEndMark(t);
    return dbfCantWrite;
  }
  blank.pop_back();
  t.row = std::move(blank);
  t.recno = t.rmax;
  t.dirty = true;
  return 0;
}

int dbfRemove(DbfTable& t) {
  if (!t.fp || t.rmax == 0) return -1;
  t.rmax--;
  if (!_dbfUpdHdrRmax(t)) {
    t.rmax++;
    _dbfUpdHdrRmax(t);
    return dbfCantWrite;
  }
  t.dirty = true;
  t.recno = t.rmax;
  if (t.rmax == 0)
    t.eof = true;
  else
    _dbfRead(t);
  return _dbfPutEndMark(t) ? 0 : dbfCantWrite;
}

int dbfDelete(DbfTable& t) { return _dbfSetMark(t, '*'); }

int dbfRecall(DbfTable& t) { return _dbfSetMark(t, ' '); }

int dbfPack(DbfTable& t) {
  if (!t.fp) return dbfClosed;
  int kept = 0;
  bool written = true;
  for (int r = 1; r <= t.rmax && written; r++) {
    // What lies beyond the file's end is dropped; a record that the end cuts is filled with blanks.
    t.row.assign(t.row.size(), ' ');
    t.row[0] = '*';
    t.recno = r;
    _dbfRead(t);
    if (t.row[0] != ' ') continue;
    t.recno = ++kept;
    if (kept < r || t.eof) written = _dbfWrite(t);
  }
  t.dirty = true;
  t.recno = 1;
  // A pack that broke off leaves the count, so that no record drops out of the table.
  if (written) {
    t.packed = kept;
    t.rmax = kept;
    written = _dbfUpdHdrRmax(t);
  }
  if (t.rmax > 0) _dbfRead(t);
  t.eof = t.rmax == 0;
  return written ? 0 : dbfCantWrite;
}

// Between a read and a flush the stream needs a positioning.
int dbfFlush(DbfTable& t) {
  if (!t.fp) return dbfClosed;
  if (t.blocks && !((!t.dirty || _dbfPutCount(t)) && blkFlush(*t.blocks))) return dbfCantWrite;
  std::FILE* f = t.fp.get();
  return std::fseek(f, 0, SEEK_CUR) == 0 && std::fflush(f) == 0 ? 0 : dbfCantWrite;
}

bool dbfOPEN(const DbfTable& t) { return t.fp != nullptr; }
bool dbfEOF(const DbfTable& t) { return !t.fp || t.eof; }
bool dbfDELETED(const DbfTable& t) { return !t.fp || t.row[0] == '*'; }
int dbfRECNO(const DbfTable& t) { return t.fp ? t.recno : 0; }
int dbfROWS(const DbfTable& t) { return t.rmax; }
int dbfCOLS(const DbfTable& t) { return t.cols; }

int fldno(const DbfTable& t, std::string_view name) {
  if (!t.fp) return -1;
  for (int i = 0; i < t.cols; i++)
    if (StrICmp(t.names[i], name) == 0) return i;
  return -1;
}

std::string fldget(const DbfTable& t, int field) {
  if (!_dbfHasField(t, field)) return {};
  return xtract(std::string_view(t.row).substr(static_cast<size_t>(t.pos[field])),
                static_cast<size_t>(t.len[field]));
}

std::string fldgetqs(const DbfTable& t, int field) {
  if (_dbfHasField(t, field) && t.typ[field] != 'C') return fldget(t, field);
  return s2qs(fldget(t, field));
}

int fldput(DbfTable& t, int field, std::string_view text) {
  if (!_dbfHasField(t, field)) return -1;
  std::string value =
      t.typ[field] == 'N' ? FmtFix(TxtToDbl(text), t.len[field], t.dec[field]) : std::string(text);
  size_t width = static_cast<size_t>(t.len[field]);
  value.resize(width, ' ');
  t.row.replace(static_cast<size_t>(t.pos[field]), width, value);
  return 0;
}

int dbfCpyRowToFm(DbfTable& target, const DbfTable& source, const Lines& fields) {
  if (!target.fp) return -1;
  if (!source.fp) return -2;
  for (const std::string& name : fields.empty() ? _dbfNames(source) : fields)
    fldput(target, fldno(target, name), fldget(source, fldno(source, name)));
  return 0;
}

}  // namespace mox
