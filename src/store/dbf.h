// Table files: everything that reads and writes a .dbf file.
//
// All numbers of more than one byte are little-endian and unsigned. A file is a header of 521
// bytes, the records, and an end mark:
//
//   offset     width    content
//   0          1        version, always 2
//   1          2        record count
//   3          1, 1, 1  day, month, year modulo 100 of the last update; 0 in a new file until it
//                       is closed for the first time
//   6          2        record size; not used on reading, the field widths give it
//   8 + 16*i   16       descriptor of field i, i from 0
//   8 + 16*n   1        0x0D behind the last of n descriptors (at 520 for 32 fields)
//   to 520              zero
//   521        size     record 1; record r at 521 + size * (r - 1)
//   behind the records  0x1A; never read
//
//   descriptor offset  0   11  field name, at most 10 characters, upper case, zero-filled
//                     11    1  type: C, N or L
//                     12    1  width
//                     13    2  zero
//                     15    1  decimals
//
// A record is plain text: the deletion mark (space, or * when deleted), then each field at its
// full width. Character fields are filled with spaces on the right; numeric fields are the number
// printed to width and decimals; a logical field is one character, of which T, t, Y, y are true.
//
// A DbfTable is one user of a file: a position and a record buffer. The file itself, with its
// record count, is one however many users have it open, so that what one of them changes the others
// read. A field's value stands in row and, once written, in the file. The header's count rules; the
// file's length is never compared with it.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/misc.h"
#include "session/newfile.h"
#include "store/image.h"

namespace mox {

constexpr int maxFields = 32;
constexpr int maxFieldName = 10;
constexpr int maxRecords = 65535;
constexpr int dbfHeaderSize = 521;

// Results beside 0. The moves use -2 for a target outside the table.
enum DbfResult {
  dbfClosed = -1,  // the table isn't open; at dbfOpen: no such file
  dbfShort = -2,   // dbfOpen: shorter than the header
  dbfWrongVersion = -3,
  dbfOutside = -2,  // a move: outside 1 to rmax
  dbfCantCreate = -2,
  dbfFull = -4,                  // dbfAppend: the table holds maxRecords
  dbfCantWrite = fileCantWrite,  // the host refused a write (a full disk, a size limit)
  dbfInUse = fileInUse,          // another session has the table, or this one the file to be made
};

// An open file.
struct DbfFile {
  Image image;
  int rmax = 0;          // record count
  bool kept = false;     // for this session alone
  unsigned changes = 0;  // of records, counted
  int put = 0;           // while writes are held: records that the file has
  std::optional<FileUse> use;
  std::unique_ptr<NewFile> made;  // of a table in the making
  DbfFile() = default;
  ~DbfFile();
};

struct DbfTable {
  std::string name;               // as opened, with its extension
  std::shared_ptr<DbfFile> file;  // null: the table is closed
  std::array<int, 3> date{};      // day, month, year as this user's open found them
  int rowsize = 1;
  int recno = 0;  // current record, from 1
  int cols = 0;
  std::array<std::string, maxFields> names;
  std::array<int, maxFields> pos{};  // place in the record, the first field at 1
  std::array<char, maxFields> typ{};
  std::array<int, maxFields> len{};
  std::array<int, maxFields> dec{};
  std::string row;  // the record buffer, rowsize bytes; dbfRow brings it up to date
  bool eof = false;
  bool stale = false;     // row is to be read before anyone looks at it
  bool changing = false;  // row is being changed and is nobody else's business
  bool adding = false;    // row is a new record, behind the last and not yet counted
  unsigned seen = 0;      // the file's changes when row was read
  bool dirty = false;     // this user changed the file: dbfClose then writes the date
  int packed = 0;         // records kept by the last dbfPack
};

// Making a table: dbfCreate, dbfFld for the fields 1, 2, 3 ..., dbfFld with 0, records, and
// dbfClose, which puts the file in its place. A table that is dropped (DbfTable{}) before that
// leaves what stood there. dbfCreate and dbfOpen add ".dbf" to a name without a dot. dbfCreate:
// dbfCantCreate, dbfInUse, dbfCantWrite. dbfFld: -1 closed, -2 for a number above 32. With 0 it
// writes the header and the end mark and ignores its other arguments.
int dbfCreate(DbfTable& t, std::string_view filename);
int dbfFld(DbfTable& t, int number, std::string_view name, char type, int width, int decimals);
// Creates and defines a table with the named fields of the source, or with all of them when the
// list is empty. -1 if it can't be made. No statement does.
int dbfCreateFrom(DbfTable& t, std::string_view filename, const DbfTable& source,
                  const Lines& fields);

// Opens on record 1. -1 no such file, -2 shorter than the header, -3 not version 2; with keep the
// file is for this session alone from then on, until nobody here has it open: dbfInUse when another
// has it.
int dbfOpen(DbfTable& t, std::string_view filename, bool keep = false);
// 0; -1 closed; dbfCantWrite when something couldn't be written; dbfInUse when somebody opened the
// file that was to be replaced. The table is closed in any case.
int dbfClose(DbfTable& t);
int dbfDispStruc(const DbfTable& t);  // prints the structure

// Moves read the target record. Both first set eof; a target outside 1 to rmax is -2 and leaves
// recno and row as they were. dbfSkipTo takes 0 for the first record and -1 for the last.
int dbfSkip(DbfTable& t, int distance);
int dbfSkipTo(DbfTable& t, int recno);

// Leaves the record: recno 0, row as it is.
void dbfOnNone(DbfTable& t);
// True when the table stands on a record that the file has.
bool dbfOnRecord(DbfTable& t);
// The record buffer, read again when the record was changed by another user of the file. From
// dbfChange on it is left alone until dbfReplace or dbfRevert, which reads it anew.
std::string& dbfRow(DbfTable& t);
void dbfSetRow(DbfTable& t, std::string_view row);
void dbfChange(DbfTable& t);
void dbfRevert(DbfTable& t);
// The current record as the file has it.
std::string dbfStored(DbfTable& t);

// Changes. dbfReplace, dbfDelete and dbfRecall write row at recno; for a recno outside 1 to rmax
// they do nothing and return -1. dbfAppend adds a blank record and makes it current (eof stays as
// it was); dbfRemove takes the last one back. dbfPack keeps the records whose mark is a space and
// goes to record 1; the file is written anew and changes as a whole. A change that the host refuses
// (dbfCantWrite) leaves the file as it was.
//
// A record that shall never be there half filled begins with dbfBegin: blank, behind the last one,
// in row alone. dbfReplace then writes it, dbfCount makes it a record of the table, dbfAdd does
// both, and dbfRevert or a move, in place of either, drops it; dbfRevert goes to the last record.
int dbfBegin(DbfTable& t);
int dbfCount(DbfTable& t);
int dbfAdd(DbfTable& t);
int dbfReplace(DbfTable& t);
int dbfAppend(DbfTable& t);
int dbfRemove(DbfTable& t);
int dbfDelete(DbfTable& t);
int dbfRecall(DbfTable& t);
int dbfPack(DbfTable& t);

// Holds the writes of a statement that changes many records, up to dbfLetGo; records that are added
// go out in pieces of holdBytes, with the count that covers them. When the host refuses, as many of
// them as it takes are written one by one, so that the statement ends as without holding:
// dbfCantWrite then, with the number of the others.
constexpr int holdBytes = 65536;
void dbfHold(DbfTable& t);
int dbfLetGo(DbfTable& t, int& lost);

// The bytes of all records, and what writes them anew, each from where it points to. Of records
// that were merged the working space stands behind the table: once more all of them, the first in
// part gone under the end mark.
std::string dbfRows(DbfTable& t);
int dbfSetRows(DbfTable& t, const std::vector<const char*>& rows, bool merged);

bool dbfOPEN(const DbfTable& t);
bool dbfEOF(const DbfTable& t);   // true when closed
bool dbfDELETED(DbfTable& t);     // true when closed
int dbfRECNO(const DbfTable& t);  // 0 when closed
int dbfROWS(const DbfTable& t);
int dbfCOLS(const DbfTable& t);

// Field by name, ignoring case: its index from 0, or -1.
int fldno(const DbfTable& t, std::string_view name);
// The field's characters at full width, or up to a zero byte; empty when out of range. They hold
// until row changes.
std::string_view fldget(DbfTable& t, int field);
// The same, a field of type C in quoted string form; out of range a quoted empty text. No statement
// asks.
std::string fldgetqs(DbfTable& t, int field);
// Sets the field in row: a numeric field takes the number that the text begins with, printed to
// width and decimals; every field keeps the first characters that fit and is filled with spaces.
int fldput(DbfTable& t, int field, std::string_view text);
void fldputNumber(DbfTable& t, int field, double x);  // of a numeric field
// Fills the target's row by field name; an empty list means all fields of the source. A name that
// the source lacks gives an empty value, one that the target lacks is passed over.
// -1 target closed, -2 source closed. No statement does.
int dbfCpyRowToFm(DbfTable& target, DbfTable& source, const Lines& fields);

}  // namespace mox
