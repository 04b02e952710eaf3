// The four work areas: each holds a table with up to seven indexes and keeps them in step.
//
// Everything above names a table by area number, 0 to 3, or -1 for the selected area. An area is
// closed or open; each keeps its own position and its own record buffer across a change of the
// selection. The areas live as long as the program. The first index of an area is its master: it
// alone gives the order of the moves, and its cursor follows the position. The others are only
// maintained. A key expression reads area 0 where a name has no prefix, whatever the index's area.
//
//   area  letter  other prefix  SELECT name
//   0     A       P             PRIMARY
//   1     B       S             SECONDARY
//   2     C
//   3     D
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "session/misc.h"
#include "session/value.h"
#include "store/dbf.h"

namespace mox {

constexpr int maxAreas = 4;
constexpr int selectedArea = -1;
constexpr int maxIndexes = 7;

// The area that a prefixed name addresses: A to D, P or S before a dot in second place, in either
// case; the selected area without a prefix; -2 for another letter. And the name behind the prefix.
int af2a(std::string_view name);
std::string_view af2f(std::string_view name);
// The name with the area's prefix.
std::string af(int area, std::string_view name);

// True when the selected area holds a table; otherwise reports that none is in use.
bool DbChk();

void dbInit();   // closes the areas without a report, selects area 0
void dbReset();  // closes every open area, selects area 0
// Results of dbfOpen. dbOpen doesn't close what the area holds: the caller does.
int dbOpen(int area, std::string_view filename);
int dbClose(int area);
// Close the table alone and open a file in its place: the area's indexes stay.
int dbCloseDbf(int area);
int dbReopenDbf(int area, const std::string& filename);
int dbSelect(int area);  // selects 0 to 3 and returns the selected area in any case
int dbSelected();
// The program is about to wait for a person or another program, or to end: what was noted of
// changes under way is settled.
void dbRest();

std::string dbFn(int area);               // file name; empty when the area is closed
const std::string& dbFILENAME(int area);  // the same, with no test
bool dbOPEN(int area);
int dbCOLS(int area);
int dbRECNO(int area);
bool dbEOF(int area);
bool dbDELETED(int area);
// True when the area stands on a record that the file has; dbHasRecord reports it when there is
// none.
bool dbOnRecord(int area);
bool dbHasRecord(int area);
int dbRMAX(int area);
int dbFno(int area, std::string_view name);  // field index, or -1
// By field index, with no test of it.
const std::string& dbName(int area, int field);
char dbTyp(int area, int field);
int dbLen(int area, int field);
int dbDec(int area, int field);
int dbDispStruc(int area);
Lines dbFields(int area);  // names of all fields, in order
// Record count and date ("dd/mm/yy") of a table file: 0, or -1 when it can't be opened.
int dbFileInfo(const std::string& filename, int& records, std::string& date);

// The raw characters of a field, until the record buffer changes.
std::string_view dbVal(int area, int field);
// A field as a value, or nothing when there is no such field. Without a prefix the name is looked
// up in area 0, whichever area is selected; a letter outside the table is an error.
std::optional<Value> GetDb(std::string_view name);
// The two halves of it, for a name that is looked up once (session.h: g_names). The place of a
// field is an area from 0 on and a field index.
bool dbFindField(std::string_view name, int& area, int& field);
void dbFieldValue(int area, int field, Value& value);
// The number of a field that is one: false for a field of another type, and for one that holds
// something else.
bool dbFieldNumber(int area, int field, double& x);
// While a statement reads an area that it doesn't change again and again, the numbers of its first
// records are kept.
void dbKeepNumbers(int area, bool keeps);
// Sets a field in the record buffer from a text, also in quoted string form, or from a value.
int dbSetVal(int area, int field, std::string_view value);
void dbSetFieldValue(int area, int field, const Value& value);
const std::string& dbRow(int area);
void dbSetRow(int area, const std::string& row);

// Indexes, by slot 0 to 6. dbSetIndex closes what the slot has and gives the result of ndxOpen, or
// -99 for another slot; the master's cursor is then on nothing. dbOutOfStep: a program that was
// killed may have left the index of the slot out of step with the table.
void dbClrIndex(int area);
int dbSetIndex(int area, int slot, std::string_view filename);
bool dbOutOfStep(int area, int slot);
int dbNdxs(int area);  // slots in use
bool dbINDEXED(int area);
std::string dbNdxFn(int area, int slot);  // file name and key expression; empty when out of range
std::string dbNdxExpr(int area, int slot);

// Moves, in the order of the master index when there is one. A move beyond the table or the index
// sets eof and stays. dbSkipTo takes 0 for the first record, -1 for the last and -2 to stay; on an
// empty table it sets recno 0 and eof; -1 when the record isn't in the master index, whose cursor
// then isn't on it. A damaged index is reported and ends a move as the end of the table does.
int dbTop(int area);
int dbSkip(int area, int distance);
int dbSkipTo(int area, int recno);
// The record of the first key that agrees with the text in length bytes. Below 1: there is none,
// recno becomes 0 and all else stays; -1 also without an index.
int dbFind(int area, int length, std::string_view text);

// Changes. A record is changed by dbRepl0, which begins, dbSetVal or dbSetRow, which change the
// buffer, and dbReplace, which writes it and moves its keys, in every index that any area has open
// for this table: out of each and in again, also when they are the same. dbRevert, at the end of a
// statement that didn't come so far, brings back what is stored. Nothing else touches an index: a
// new record enters them with its first dbReplace, and a deleted one stays in them.
//
// All keys are made before anything is written, the old one of what the file holds. A change whose
// keys can't be made, or that a file or an index refuses, leaves record, buffer and indexes as they
// were: -1 after a report. Of a record that has no item in an index the old key isn't needed.
//
// dbReplaceNew ends the change of a record of dbBegin: where its key can't be made it has no item,
// and the report is left for the end of the statement (dbNoKey); any other failure is one. A new
// record that is refused, or given up with dbRevert, was never there.
//
// Each hands what it wrote to the operating system before it returns, and reports a refused write
// and a full table or index as errors.
enum DbResult { dbNoKey = 1 };
//
// Between dbHold and dbLetGo, in one statement, changes of a table without indexes are held and go
// out together. dbLetGo reports a refusal and tells how many of the added records are lost by it.
void dbHold(int area);
int dbLetGo(int area);
//
// dbReplaceLater is dbReplace in a run of steps that leave nothing behind that can be seen: the
// records of one table without indexes are held over such steps. The run calls dbPut before it does
// anything else and at its end, and dbTick in each turn of a loop, so that nothing is held for more
// than a tenth of a second; nor are more than holdBytes. A refusal is reported when it is met.
extern bool g_late;  // something is held
int dbReplaceLater(int area);
void dbPut();
void dbTick();

int dbAppend(int area);
int dbBegin(int area);  // a new record that nobody sees before dbReplace or dbReplaceNew
void dbRepl0(int area);
void dbRevert();  // in all areas
int dbReplace(int area);
int dbReplaceNew(int area);
int dbRemove(int area);
int dbDelete(int area);
int dbRecall(int area);
void dbDelToggle(int area);  // turns the deletion mark over, in the buffer only
int dbPack(int area);        // the caller then calls dbReindex

// Around a change that no index follows: dbMark, before it, notes in the files of all indexes of
// the table that they may be out of step with it (0; -1 after a report), and dbStale, behind it,
// that they are, until they are built anew.
int dbMark(int area);
void dbStale(int area);

// Builds an index file over the selected area's records in their order and closes it. It takes the
// place of an existing file when it is complete; areas that have this file open for the same table
// then have the new one. 0, or -1 after a report: the existing file is as it was. With talk it
// prints its progress. The table ends at eof.
int dbIndexOnTo(std::string_view expr, std::string_view filename, bool talk);
// Rebuilds the indexes of the selected area from their key expressions, with everyUser those too
// that other areas have open for its table: 0, or -1 after a report. The cursors of the area are
// then on nothing.
int dbReindex(bool talk, bool everyUser = false);
void dbClrShared(int area);  // closes the indexes of every area that has this one's table open

// Whole tables. An empty list means all fields of the area.
//
// dbCopyStruc begins a table with the named fields and leaves it open: 0; -1 a name isn't a field
// (the table has the fields before it); else a result of dbfCreate, and no table.
int dbCopyStruc(int area, const Lines& fields, const std::string& filename, DbfTable& t);
// Makes the same with the live records, in order (no statement does); the area goes back to its
// record. 0; -1 the structure can't be made; dbfCantWrite (what stood there is as it was).
int dbCopyData(int area, const Lines& fields, const std::string& filename);

}  // namespace mox
