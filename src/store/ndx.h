// Index files: everything that reads and writes an .ndx file, a tree of keys and record numbers.
//
// The file is an array of pages of 512 bytes, page n at offset 512 * n. Page 0 is the header, every
// other page belongs to the tree; a link of 0 means that there is no page. All numbers of two
// bytes are little-endian and unsigned.
//
//   header  offset  width  content
//           0       2      0
//           2       2      root page
//           4       2      pages: the next free page number
//           6       1      key length + 2
//           7       1      item length: key length + 4
//           8       1      508 divided by the item length
//           9       1      8: numeric keys; anything else (0 when we write it): character keys
//           10      502    key expression as source text, zero-terminated and zero-filled
//
//   page    0       1      number of items c
//           1       c * n  the items, each of the item length n
//           1 + c*n 2      nxt: right link
//                          zero to the end; not read
//
//   item    0       2      pll: the page of the subtree that this item stands for; 0 in a leaf item
//           2       2      rno: record number
//           4       n - 4  key, without a terminator
//
//   A character key is the text, cut or filled with spaces to the key length (1 to 100). A numeric
//   key is the 6-byte decimal form (session/number.h); its order is by sign, exponent and digits,
//   so that 0, whose exponent is that of 1, stands between 0.5 and 1.
//
// Invariants of a sound file:
//   - The items of a page are in ascending order, equal keys in the order in which they were added.
//   - An inner item has the key and rno of the last leaf item of its subtree.
//   - nxt is one more subtree behind all items. Only pages on the right edge of the tree have one:
//     a page with nxt is the root or is itself reached through nxt. It may have lost all its items,
//     unless it is the root.
//   - All leaves are at one depth. No page but the root is without both items and nxt.
//   - Pages are never freed or merged; a page that was emptied stays in the file, unlinked.
//
// The file of an index is read into NdxPages, one for each file however many NdxFile records
// opened it, so that all of them see every change. Pages once read stay in memory. A change stays
// there too until ndxFlush hands it to the operating system, or ndxDrop forgets it.
//
// A damaged file (a count beyond the page, a link outside the file or in a circle) never leads
// outside its pages: a walk visits no page twice on its way down, no more than maxLevels levels and
// no more items than a table has records. What meets the damage gives -1 and notes it.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "session/files.h"
#include "store/key.h"

namespace mox {

constexpr int ndxPageSize = 512;
constexpr int maxKeyLen = 100;
constexpr int numKeyLen = 6;
constexpr size_t maxNdxExpr = 501;  // characters of a key expression
constexpr int maxNdxPages = 65535;  // the header's page count has 16 bits
// A full page splits in halves of at least 2 items, so 65,535 pages make at most 16 levels.
constexpr int maxLevels = 32;

enum NdxResult {
  ndxFail = -1,       // closed, not found, the end, or a damaged file
  ndxEmpty = -2,      // the tree has no items; at ndxOpen: shorter than the header
  ndxFull = -4,       // no page number is left
  ndxCantWrite = -5,  // the host refused a write
  ndxBadKey = -99,    // key length, key type or expression length that an index can't have
};

// One page in memory. count and nxt go into the image when it is written. The image has room for
// one item more than a page: a full page takes the new item before it is split.
struct NdxNode {
  int no = -1;
  int count = 0;
  int nxt = 0;
  int itmlen = 0;
  bool changed = false;  // not yet handed to the operating system
  std::array<unsigned char, ndxPageSize + maxKeyLen + 4> data{};
};

struct NdxItem {
  int pll = 0;
  int rno = 0;
  std::string key;
};

// One open file.
struct NdxPages {
  std::string name;  // as opened, with its extension
  File fp;           // not buffered: what was written is with the operating system
  int root = 0;
  int pages = 0;   // next free page number
  int type = 'C';  // 'C' or 'N'
  int itmlen = 0;
  int keylen = 0;
  int maxitms = 0;   // most items that a page holds
  std::string expr;  // key expression
  Key key;           // the same, compiled at open
  std::array<unsigned char, ndxPageSize> header{};
  bool hdrChanged = false;
  int onDisk = 0;        // pages that the file has
  bool lacking = false;  // it had fewer than its header counts when it was opened
  std::vector<std::unique_ptr<NdxNode>> node;  // by page number; null: not in memory
  std::vector<int> changed;                    // numbers of the changed pages
  bool damaged = false;                        // an operation met damage; who reports it clears it
  bool full = false;                           // a split found no free page number; the same
};

// One user of an index: the file and a cursor. The cursor is the way from the root to an item:
// Nno has the page of each level, the root first, Ino the item that was followed there (the item
// count when the way goes through nxt) or, at the deepest level, the current item. It is empty
// after ndxOpen, ndxAdd, ndxDel and ndxDrop, and behind either end of the index.
struct NdxFile {
  std::shared_ptr<NdxPages> file;  // null: closed
  std::vector<int> Nno;
  std::vector<int> Ino;
  int walked = 0;  // items between the place where the cursor was put and where it is
};

// Pages (ndx_page.cpp). NodeRead gives the page, or null with a note of the damage. A page that
// was changed goes through NodeWrite; the pointer holds until the next outer operation.
NdxNode* NodeRead(NdxPages& f, int no);
void NodeWrite(NdxPages& f, NdxNode& node);
// A new, empty page with the next free number, or null when there is none.
NdxNode* NodeNew(NdxPages& f);
const unsigned char* NodeItem(const NdxNode& node, int i);
int NodePll(const NdxNode& node, int i);
int NodeRno(const NdxNode& node, int i);
const char* NodeKey(const NdxNode& node, int i);  // key length bytes, no terminator
NdxItem NodeGetX(const NdxNode& node, int i);
void NodeSetX(NdxNode& node, int i, const NdxItem& item);
void NodeInsX(NdxNode& node, int i, const NdxItem& item);  // the items from i on move up
void delItm(NdxNode& node, int i);                         // the items behind i move down
void HdrWrite(NdxPages& f);                                // root and pages to the header

// The full key of a text; for a numeric index the text begins with the number.
std::string formatkey(const NdxPages& f, std::string_view text);

// Opens a file (".ndx" added to a name without a dot): 0; -1 no such file or an expression that
// doesn't compile; -2 shorter than the header; -99 bad key length.
int ndxOpen(NdxFile& x, std::string_view filename);
// Makes an empty index, the type 'C' with a key length or 'N', and opens it. -99 touches no file.
// -1 for a file that can't be made or that is open as an index.
int ndxCreate(NdxFile& x, std::string_view filename, std::string_view expr, int type, int keylen);
int ndxClose(NdxFile& x);  // hands over what was changed; 0 also when closed
std::string ndxGetFn(const NdxFile& x);
std::string ndxGetExpr(const NdxFile& x);

// Hands all changes to the operating system: 0 or ndxCantWrite. ndxReserve writes just the new
// pages: once it has succeeded, the flush writes over pages that the file has and so needs no room.
int ndxReserve(NdxFile& x);
int ndxFlush(NdxFile& x);
// Forgets all changes since the last flush.
void ndxDrop(NdxFile& x);

// Moves and searches (ndx.cpp) give a record number, or a negative result: -1, and -2 from ndxTop
// and ndxFind when the tree is empty. A search that fails leaves the cursor on the first item with
// a higher key or behind the last item.
int ndxTop(NdxFile& x);
int ndxBottom(NdxFile& x);
int ndxFwd(NdxFile& x);
int ndxBak(NdxFile& x);
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
