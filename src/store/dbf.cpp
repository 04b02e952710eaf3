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

using Header = std::array<unsigned char, dbfHeaderSize>;

// The largest table, 65,535 records of 32 * 255 + 1 bytes, ends well below 2^31.
long _dbfOffset(const DbfTable& t, int recno) {
  return dbfHeaderSize + static_cast<long>(t.rowsize) * (recno - 1);
}

// The files that are open, but for those in the making.
std::vector<std::weak_ptr<DbfFile>> _files;

std::shared_ptr<DbfFile> _findOpen(const std::string& name) {
  std::erase_if(_files, [](const std::weak_ptr<DbfFile>& f) { return f.expired(); });
  for (const std::weak_ptr<DbfFile>& f : _files)
    if (std::shared_ptr<DbfFile> file = f.lock(); SameFile(file->use->path, name)) return file;
  return nullptr;
}

bool _dbfPut(DbfTable& t, long offset, const void* bytes, size_t n) {
  return imgWrite(t.file->image, offset, static_cast<const char*>(bytes), n);
}

void _dbfChanged(DbfTable& t) {
  t.dirty = true;
  t.seen = ++t.file->changes;
}

bool _dbfWrite(DbfTable& t) {
  return _dbfPut(t, _dbfOffset(t, t.recno), t.row.data(), static_cast<size_t>(t.rowsize));
}

bool _dbfPutEndMark(DbfTable& t) {
  return _dbfPut(t, _dbfOffset(t, t.file->rmax + 1), &endMark, 1);
}

bool _dbfHas(DbfTable& t, int recno) {
  return imgHas(t.file->image, _dbfOffset(t, recno), static_cast<size_t>(t.rowsize));
}

// Reads a record, as far as the file has it: false when it hasn't all of it.
bool _dbfGet(DbfTable& t, int recno, std::string& row) {
  return imgRead(t.file->image, _dbfOffset(t, recno), row.data(), static_cast<size_t>(t.rowsize));
}

// The record is read when somebody looks at it. Of one that the file hasn't, row keeps what it
// held.
void _dbfArrive(DbfTable& t, bool has) {
  t.changing = t.adding = false;
  t.eof = !has;
  if (has)
    t.stale = true;
  else
    _dbfGet(t, t.recno, t.row);
}

void _dbfRead(DbfTable& t) { _dbfArrive(t, _dbfHas(t, t.recno)); }

void _dbfFetch(DbfTable& t) {
  t.stale = false;
  t.seen = t.file->changes;
  if (t.recno >= 1 && _dbfHas(t, t.recno)) t.stale = !_dbfGet(t, t.recno, t.row);
}

bool _dbfUpdHdr(DbfTable& t) {
  Header h{};
  put1(&h[atVersion], version);
  put2(&h[atCount], t.file->rmax);
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

bool _dbfUpdHdrRmax(DbfTable& t) {
  unsigned char count[2];
  put2(count, t.file->rmax);
  return _dbfPut(t, atCount, count, sizeof count);
}

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

bool _dbfHasField(const DbfTable& t, int field) { return t.file && field >= 0 && field < t.cols; }

// The text up to a zero byte, at most n bytes of it.
std::string xtract(std::string_view text, size_t n) {
  text = text.substr(0, n);
  return std::string(text.substr(0, text.find('\0')));
}

// Takes the blanks off a number that is printed as it would be printed with these decimals.
bool _takePrinted(std::string_view& text, int decimals) {
  constexpr size_t exact = 15;  // digits that a number holds as they are
  const std::string_view body = text.substr(std::min(text.find_first_not_of(' '), text.size()));
  std::string_view whole = body;
  if (decimals > 0) {
    const size_t behind = static_cast<size_t>(decimals);
    if (behind > exact || body.size() < behind + 2 || body[body.size() - behind - 1] != '.')
      return false;
    whole.remove_suffix(behind + 1);
    for (const char c : body.substr(whole.size() + 1))
      if (c < '0' || c > '9') return false;
  }
  const bool minus = whole.starts_with('-');
  if (minus) whole.remove_prefix(1);
  if (whole.empty() || whole.size() + decimals > exact) return false;
  if (whole[0] == '0' && (whole.size() > 1 || (minus && decimals == 0))) return false;
  for (const char c : whole)
    if (c < '0' || c > '9') return false;
  text = body;
  return true;
}

// Sets a field to the first characters that fit: a numeric one on the right, others on the left.
void _setField(DbfTable& t, int field, std::string_view text) {
  const size_t width = static_cast<size_t>(t.len[field]);
  text = text.substr(0, width);
  const size_t blanks = width - text.size(), ahead = t.typ[field] == 'N' ? blanks : 0;
  char* const place = dbfRow(t).data() + t.pos[field];
  std::fill_n(place, ahead, ' ');
  std::copy(text.begin(), text.end(), place + ahead);
  std::fill_n(place + ahead + text.size(), blanks - ahead, ' ');
}

int _dbfReadHeader(DbfTable& t) {
  Header h;
  if (!imgRead(t.file->image, 0, reinterpret_cast<char*>(h.data()), h.size())) return dbfShort;
  if (get1(&h[atVersion]) != version) return dbfWrongVersion;
  t.file->rmax = get2(&h[atCount]);
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
  if (target < 1 || target > t.file->rmax) return dbfOutside;
  const int recno = static_cast<int>(target);
  const bool has = _dbfHas(t, recno);
  if (!has) dbfRow(t);  // which row then keeps
  t.recno = recno;
  _dbfArrive(t, has);
  return 0;
}

// Writes row with the deletion mark given; a row that can't be written keeps its mark.
int _dbfSetMark(DbfTable& t, char mark) {
  if (!t.file) return dbfClosed;
  char old = std::exchange(dbfRow(t)[0], mark);
  int result = dbfReplace(t);
  if (result < 0) t.row[0] = old;
  return result;
}

Lines _dbfNames(const DbfTable& t) { return Lines(t.names.begin(), t.names.begin() + t.cols); }

// Goes to the last record, if there is one.
void _dbfToLast(DbfTable& t) {
  t.recno = t.file->rmax;
  t.changing = t.adding = false;
  if (t.recno == 0)
    t.eof = true;
  else
    _dbfRead(t);
}

// Gives a new record up, which may have come over the end mark.
void _dbfDrop(DbfTable& t) {
  char mark = 0;
  if (!imgRead(t.file->image, _dbfOffset(t, t.recno), &mark, 1) || mark != endMark)
    _dbfPutEndMark(t);
  _dbfToLast(t);
}

bool _inRange(const DbfTable& t) { return t.file && t.recno >= 1 && t.recno <= t.file->rmax; }

// Opens the file, or joins those who have it open.
int _openFile(DbfTable& t, bool keep) {
  std::shared_ptr<DbfFile> file = _findOpen(t.name);
  if (!file) {
    const FileHandle f = OS_FileOpen(t.name, FileMode::change);
    if (f == noFile) return dbfClosed;
    file = std::make_shared<DbfFile>();
    imgOpen(file->image, f, t.name);
    file->use.emplace(t.name);
    _files.push_back(file);
  }
  t.file = file;
  if (keep && !file->kept && !OS_FileKeep(file->image.f, t.name)) return dbfInUse;
  file->kept |= keep;
  return _dbfReadHeader(t);
}

// Puts a table in the making in its place.
int _finish(DbfFile& f) {
  if (!f.made) return 0;
  return imgPut(f.image) ? NewFileDone(*f.made) : dbfCantWrite;
}

// Writes the file anew, its length and the bytes behind the last record that is kept as they are,
// and tells how many are kept, and the last record looked at: false when the host refuses. What
// lies beyond the file's end is dropped; a record that the end cuts is filled with blanks.
bool _packInto(DbfTable& t, Image& to, int& kept, std::string& row) {
  kept = 0;
  std::string bytes;
  const auto copy = [&](std::int64_t from, std::int64_t end) {
    for (; from < end; from += static_cast<std::int64_t>(bytes.size())) {
      bytes.resize(static_cast<size_t>(std::min<std::int64_t>(end - from, blockSize)));
      if (!imgRead(t.file->image, from, bytes.data(), bytes.size()) ||
          !imgWrite(to, from, bytes.data(), bytes.size()))
        return false;
    }
    return true;
  };
  if (!copy(0, dbfHeaderSize)) return false;
  for (int r = 1; r <= t.file->rmax; r++) {
    row.assign(static_cast<size_t>(t.rowsize), ' ');
    row[0] = '*';
    if (!_dbfGet(t, r, row) && _dbfHas(t, r)) return false;
    if (row[0] == ' ' && !imgWrite(to, _dbfOffset(t, ++kept), row.data(), row.size())) return false;
  }
  unsigned char count[2];
  put2(count, kept);
  return imgWrite(to, atCount, reinterpret_cast<const char*>(count), sizeof count) &&
         copy(_dbfOffset(t, kept + 1), t.file->image.size) && imgPut(to);
}

// Takes the packed file's place over: the users of the file go on with it.
bool _takeOver(DbfFile& file, NewFile& made) {
  FileHandle f = file.image.f;
  const bool done = NewFileDone(made, &f) == 0;
  imgOpen(file.image, f, file.use->path);
  return done;
}

}  // namespace

DbfFile::~DbfFile() {
  if (!made) OS_FileClose(image.f);
}

int dbfCreate(DbfTable& t, std::string_view filename) {
  dbfClose(t);
  auto file = std::make_shared<DbfFile>();
  file->made = std::make_unique<NewFile>();
  if (const int result = NewFileOpen(*file->made, FnExt(filename, ".dbf")); result != 0)
    return result;
  imgOpen(file->image, file->made->f, file->made->path);
  file->image.holds = true;
  t.file = std::move(file);
  t.name = filename;
  t.recno = 1;
  t.typ.fill('C');
  t.eof = t.dirty = true;
  _dbfLayout(t);
  return dbfFld(t, 0, "", ' ', 0, 0);
}

int dbfFld(DbfTable& t, int number, std::string_view name, char type, int width, int decimals) {
  if (!t.file) return dbfClosed;
  if (number < 0 || number > maxFields) return -2;
  if (number == 0) {  // which is held: dbfClose tells a refusal
    _dbfUpdHdr(t);
    _dbfPutEndMark(t);
    return 0;
  }
  int i = number - 1;
  t.names[i] = strUpper(name.substr(0, maxFieldName));
  trim(t.names[i]);
  t.typ[i] = type;
  t.len[i] = std::clamp(width, 0, 255);  // each has one byte in the file
  t.dec[i] = std::clamp(decimals, 0, 255);
  t.file->rmax = 0;
  t.recno = 1;
  t.cols = std::max(t.cols, number);
  t.eof = t.dirty = true;
  t.stale = false;
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
  return dbfFld(t, 0, "", ' ', 0, 0);
}

int dbfOpen(DbfTable& t, std::string_view filename, bool keep) {
  dbfClose(t);
  t.name = FnFind(FnExt(filename, ".dbf"));
  const int result = _openFile(t, keep);
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
  if (!t.file) return dbfClosed;
  int result = !t.dirty || _dbfUpdHdrDate(t) ? 0 : dbfCantWrite;
  if (result == 0) result = _finish(*t.file);
  t = DbfTable{};
  return result;
}

int dbfDispStruc(const DbfTable& t) {
  if (!t.file) return dbfClosed;
  std::printf("STRUCTURE FOR FILE:  %s\n", t.name.c_str());
  std::printf("NUMBER OF RECORDS:   %05d\n", t.file->rmax);
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
  if (!t.file) return dbfClosed;
  return _dbfMove(t, static_cast<long long>(t.recno) + distance);
}

int dbfSkipTo(DbfTable& t, int recno) {
  if (!t.file) return dbfClosed;
  return _dbfMove(t, recno == 0 ? 1 : recno == -1 ? t.file->rmax : recno);
}

void dbfOnNone(DbfTable& t) {
  dbfRow(t);
  t.recno = 0;
}

bool dbfOnRecord(DbfTable& t) { return _inRange(t) && _dbfHas(t, t.recno); }

std::string& dbfRow(DbfTable& t) {
  if (t.stale || (!t.changing && t.file && t.seen != t.file->changes)) _dbfFetch(t);
  return t.row;
}

void dbfSetRow(DbfTable& t, std::string_view row) {
  t.stale = false;
  t.row = row;
  t.row.resize(static_cast<size_t>(t.rowsize), ' ');
}

void dbfChange(DbfTable& t) {
  dbfRow(t);
  t.changing = true;
}

void dbfRevert(DbfTable& t) {
  if (t.adding) return _dbfDrop(t);
  if (!t.changing) return;
  t.changing = false;
  t.stale = dbfOnRecord(t);
}

std::string dbfStored(DbfTable& t) {
  std::string row(static_cast<size_t>(t.rowsize), ' ');
  if (_inRange(t)) _dbfGet(t, t.recno, row);
  return row;
}

int dbfReplace(DbfTable& t) {
  if (ReadHasFailed()) return dbfCantWrite;
  if (t.adding) {
    t.row += endMark;
    const bool put = _dbfPut(t, _dbfOffset(t, t.recno), t.row.data(), t.row.size());
    t.row.pop_back();
    return put ? 0 : dbfCantWrite;
  }
  if (!_inRange(t)) return -1;
  dbfRow(t);
  if (!_dbfWrite(t)) return dbfCantWrite;
  t.changing = false;
  _dbfChanged(t);
  return 0;
}

int dbfBegin(DbfTable& t) {
  if (!t.file) return dbfClosed;
  if (t.file->rmax >= maxRecords) return dbfFull;
  t.row.assign(static_cast<size_t>(t.rowsize), ' ');
  t.recno = t.file->rmax + 1;
  t.stale = false;
  t.changing = t.adding = true;
  return 0;
}

int dbfCount(DbfTable& t) {
  if (!t.adding) return 0;
  t.file->rmax++;
  if (!_dbfUpdHdrRmax(t)) {
    t.file->rmax--;
    return dbfCantWrite;
  }
  t.changing = t.adding = false;
  _dbfChanged(t);
  DbfFile& f = *t.file;
  const bool many = f.image.holds && !f.made && (f.rmax - f.put) * t.rowsize > holdBytes;
  if (many && imgPut(f.image)) f.put = f.rmax;  // a refusal meets the next record
  return 0;
}

// The record goes to the file before the count that covers it.
int dbfAdd(DbfTable& t) {
  const int result = dbfReplace(t);
  return result == 0 ? dbfCount(t) : result;
}

int dbfAppend(DbfTable& t) {
  const int recno = t.recno;
  std::string row = dbfRow(t);
  int result = dbfBegin(t);
  if (result != 0) return result;
  result = dbfAdd(t);
  if (result == 0) return 0;
  _dbfPutEndMark(t);
  t.adding = t.changing = false;
  t.recno = recno;
  t.row = std::move(row);
  return result;
}

int dbfRemove(DbfTable& t) {
  if (!t.file || t.file->rmax == 0) return -1;
  t.file->rmax--;
  if (!_dbfUpdHdrRmax(t)) {
    t.file->rmax++;
    return dbfCantWrite;
  }
  _dbfChanged(t);
  _dbfToLast(t);
  return _dbfPutEndMark(t) ? 0 : dbfCantWrite;
}

int dbfDelete(DbfTable& t) { return _dbfSetMark(t, '*'); }

int dbfRecall(DbfTable& t) { return _dbfSetMark(t, ' '); }

int dbfPack(DbfTable& t) {
  if (!t.file) return dbfClosed;
  NewFile made;
  Image image;
  int kept = 0;
  if (NewFileOpen(made, t.file->use->path, true) != 0) return dbfCantWrite;
  imgOpen(image, made.f, made.path);
  image.holds = true;
  std::string row = dbfRow(t);
  if (!_packInto(t, image, kept, row) || !_takeOver(*t.file, made)) return dbfCantWrite;
  t.packed = t.file->rmax = kept;
  _dbfChanged(t);
  t.recno = 1;
  dbfSetRow(t, row);
  if (kept > 0) _dbfRead(t);
  t.eof = kept == 0;
  return 0;
}

void dbfHold(DbfTable& t) {
  if (!t.file || t.file->made) return;
  t.file->image.holds = true;
  t.file->put = t.file->rmax;
}

int dbfLetGo(DbfTable& t, int& lost) {
  lost = 0;
  if (!t.file || !t.file->image.holds || t.file->made) return 0;
  Lines rows;
  for (int r = t.file->put + 1; r <= t.file->rmax; ++r)
    _dbfGet(t, r, rows.emplace_back(static_cast<size_t>(t.rowsize), ' '));
  if (imgLetGo(t.file->image)) return 0;
  ++t.file->changes;
  t.file->rmax = std::min(t.file->rmax, t.file->put);
  for (size_t i = 0; i < rows.size(); ++i) {
    lost = static_cast<int>(rows.size() - i);
    if (dbfBegin(t) != 0) break;
    dbfSetRow(t, rows[i]);
    if (dbfAdd(t) != 0) {
      dbfRevert(t);
      break;
    }
    --lost;
  }
  return dbfCantWrite;
}

std::string dbfRows(DbfTable& t) {
  std::string rows(static_cast<size_t>(dbfROWS(t)) * static_cast<size_t>(t.rowsize), ' ');
  if (!rows.empty()) imgRead(t.file->image, _dbfOffset(t, 1), rows.data(), rows.size());
  return rows;
}

int dbfSetRows(DbfTable& t, const std::vector<const char*>& rows, bool merged) {
  long at = _dbfOffset(t, 1);
  bool done = true;
  std::string piece;
  const auto put = [&] {
    done = done && _dbfPut(t, at, piece.data(), piece.size());
    at += static_cast<long>(piece.size());
    piece.clear();
  };
  for (int times = merged ? 2 : 1; times > 0; --times)
    for (const char* const row : rows) {
      piece.append(row, static_cast<size_t>(t.rowsize));
      if (piece.size() >= holdBytes) put();
    }
  piece += endMark;
  put();
  if (merged) {  // the record behind the last was blank when it was given up
    piece.assign(static_cast<size_t>(t.rowsize), ' ');
    piece.front() = endMark;
    piece += endMark;
    at = _dbfOffset(t, t.file->rmax + 1);
    put();
  }
  _dbfChanged(t);
  return done ? 0 : dbfCantWrite;
}

bool dbfOPEN(const DbfTable& t) { return t.file != nullptr; }
bool dbfEOF(const DbfTable& t) { return !t.file || t.eof; }
bool dbfDELETED(DbfTable& t) { return !t.file || dbfRow(t)[0] == '*'; }
int dbfRECNO(const DbfTable& t) { return t.file ? t.recno : 0; }
int dbfROWS(const DbfTable& t) { return t.file ? t.file->rmax : 0; }
int dbfCOLS(const DbfTable& t) { return t.cols; }

int fldno(const DbfTable& t, std::string_view name) {
  if (!t.file) return -1;
  for (int i = 0; i < t.cols; i++)
    if (StrICmp(t.names[i], name) == 0) return i;
  return -1;
}

std::string_view fldget(DbfTable& t, int field) {
  if (!_dbfHasField(t, field)) return {};
  const std::string_view text(dbfRow(t).data() + t.pos[field], static_cast<size_t>(t.len[field]));
  return text.substr(0, text.find('\0'));
}

std::string fldgetqs(DbfTable& t, int field) {
  if (_dbfHasField(t, field) && t.typ[field] != 'C') return std::string(fldget(t, field));
  return s2qs(fldget(t, field));
}

int fldput(DbfTable& t, int field, std::string_view text) {
  if (!_dbfHasField(t, field)) return -1;
  if (t.typ[field] == 'N' && !_takePrinted(text, t.dec[field]))
    fldputNumber(t, field, TxtToDbl(text));
  else
    _setField(t, field, text);
  return 0;
}

void fldputNumber(DbfTable& t, int field, double x) {
  _setField(t, field, FmtFix(x, 0, t.dec[field]));
}

int dbfCpyRowToFm(DbfTable& target, DbfTable& source, const Lines& fields) {
  if (!target.file) return -1;
  if (!source.file) return -2;
  for (const std::string& name : fields.empty() ? _dbfNames(source) : fields)
    fldput(target, fldno(target, name), fldget(source, fldno(source, name)));
  return 0;
}

}  // namespace mox
