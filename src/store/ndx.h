// Index files: a tree of keys and record numbers, seen by who uses it (ndx_page.h tells the file).
//
// A file that several NdxFile records opened is one: each of them sees every change. A change stays
// in memory until ndxFlush hands it to the operating system; ndxSettle ends it there, and ndxUndo
// takes it back, also what was flushed.
//
// A damaged file (a count beyond the page, a link outside the file or in a circle) never leads
// outside its pages: a walk visits no page twice on its way down, no more than maxLevels levels and
// no more items than a table has records. What meets the damage gives -1 and notes it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "session/newfile.h"

namespace mox {

constexpr int maxKeyLen = 100;
constexpr size_t maxNdxExpr = 501;  // characters of a key expression
// A full page splits in halves of at least 2 items, so 65,535 pages make at most 16 levels.
constexpr int maxLevels = 32;

enum NdxResult {
  ndxFail = -1,                  // closed, not found, the end, or a damaged file
  ndxEmpty = -2,                 // the tree has no items; at ndxOpen: shorter than the header
  ndxFull = -4,                  // no page number is left
  ndxCantWrite = fileCantWrite,  // the host refused a write
  ndxInUse = fileInUse,          // another session has the file
  ndxBadKey = -99,  // key length, key type or expression length that an index can't have
};

struct NdxPages;

// One user of an index: the file and a cursor. The cursor is the way from the root to an item:
// Nno has the page of each level, the root first, Ino the item that was followed there (the item
// count when the way goes through nxt) or, at the deepest level, the current item. It is empty
// after ndxOpen, ndxAdd, ndxDel and ndxDrop, and behind either end of the index.
struct NdxFile {
  std::shared_ptr<NdxPages> file;  // null: closed
  std::vector<int> Nno;
  std::vector<int> Ino;
  int walked = 0;        // items between the place where the cursor was put and where it is
  unsigned version = 0;  // of the file when the cursor was put
};

// Opens a file (".ndx" added to a name without a dot): 0; -1 no such file or an expression that
// doesn't compile; -2 shorter than the header; -99 bad key length. With keep the file is for this
// session alone until nobody here has it open: ndxInUse when another has it.
int ndxOpen(NdxFile& x, std::string_view filename, bool keep = false);
// Makes an empty index, the type 'C' with a key length or 'N', and opens it. -99 touches no file.
// -1 for a file that can't be made or that is open.
int ndxCreate(NdxFile& x, std::string_view filename, std::string_view expr, int type, int keylen);
// The same in a file in the making.
int ndxMake(NdxFile& x, NewFile& made, std::string_view expr, int type, int keylen);
int ndxClose(NdxFile& x);  // hands over what was changed; 0 also when closed
std::string ndxGetFn(const NdxFile& x);
std::string ndxGetExpr(const NdxFile& x);
// True when a program that was killed may have left the file out of step with its table.
bool ndxOutOfStep(const NdxFile& x);

// Hands all changes to the operating system: 0 or ndxCantWrite. ndxReserve writes just the new
// pages: once it has succeeded, the flush writes over pages that the file has and so needs no room.
int ndxReserve(NdxFile& x);
int ndxFlush(NdxFile& x);
void ndxSettle(NdxFile& x);
void ndxUndo(NdxFile& x);
// Forgets all changes since the last flush.
void ndxDrop(NdxFile& x);
// The program rests: files that were marked as being changed are marked no more.
void ndxRest();

// Moves and searches (ndx.cpp) give a record number, or a negative result: -1, and -2 from ndxTop
// and ndxFind when the tree is empty. A search that fails leaves the cursor on the first item with
// a higher key or behind the last item.
int ndxTop(NdxFile& x);
int ndxBottom(NdxFile& x);
int ndxFwd(NdxFile& x);
int ndxBak(NdxFile& x);
// True when the file was changed since the cursor was put: a step from it would go astray.
bool ndxAstray(const NdxFile& x);
// Empties the cursor.
void ndxLeave(NdxFile& x);
// True when some item has this record.
bool ndxHasRno(NdxFile& x, int rno);
// The first key that agrees with the text in the first length bytes, at most the key length. The
// text isn't filled: a text shorter than both is below every key that it begins.
int ndxFind(NdxFile& x, int length, std::string_view text);
// 0 found; 1 the key is there with other records only; 2 no such key; -1 closed.
int ndxFindRno(NdxFile& x, int rno, std::string_view text);

// Changes, in memory. ndxAdd enters the key behind its equals: 0; -1 closed or damaged; ndxFull. An
// add that fails forgets all changes since the last flush. ndxDel: 0; -1 when no item has this key
// and this record.
int ndxAdd(NdxFile& x, int rno, std::string_view text);
int ndxDel(NdxFile& x, int rno, std::string_view text);

// The level of the trace on the standard output (0 at start, no statement changes it) and the old
// level; a negative level only asks. From 2 on the outer operations are shown, from 4 on NodeWrite,
// from 5 on NodeRead.
int ndxSetDbg(int level);

}  // namespace mox
