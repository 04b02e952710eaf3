// The file of an index and its pages: for the tree (ndx.cpp), the trace and who reports what an
// index met.
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
// A file is read into NdxPages, one for each file however many NdxFile records opened it, so that
// all of them see every change. Pages once read stay in memory. A change stays there too until it
// is flushed or dropped.
//
// While changes are on their way to the file, the two zero bytes at its start are 1 and 0: a killed
// program leaves them so, and who opens the file is told that it may be out of step. They are zero
// again when the program rests.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/files.h"
#include "store/image.h"
#include "store/key.h"
#include "store/ndx.h"

namespace mox {

constexpr int ndxPageSize = 512;
constexpr int numKeyLen = 6;
constexpr int maxNdxPages = 65535;  // the header's page count has 16 bits

// One page in memory. count and nxt go into the image when it is written. The image has room for
// one item more than a page: a full page takes the new item before it is split.
struct NdxNode {
  int no = -1;
  int count = 0;
  int nxt = 0;
  int itmlen = 0;
  int order = 0;         // of the keys: 1 ascending, -1 not (a damaged page), 0 not looked at
  bool changed = false;  // not yet handed to the operating system
  std::array<unsigned char, ndxPageSize + maxKeyLen + 4> data{};
  std::array<unsigned char, ndxPageSize> settled{};  // as the file had it before the changes
};

struct NdxItem {
  int pll = 0;
  int rno = 0;
  std::array<char, maxKeyLen> key;  // of the key length
};

// One open file.
struct NdxPages {
  std::string name;  // as opened, with its extension
  Image image;
  bool owned = true;  // the handle; that of a file in the making is its maker's
  bool kept = false;  // for this session alone
  std::optional<FileUse> use;
  int root = 0;
  int pages = 0;   // next free page number
  int type = 'C';  // 'C' or 'N'
  int itmlen = 0;
  int keylen = 0;
  int maxitms = 0;   // most items that a page holds
  std::string expr;  // key expression
  Key key;           // the same, compiled at open
  std::string made;  // by formatkey
  std::array<unsigned char, ndxPageSize> header{};
  std::array<unsigned char, ndxPageSize> settledHeader{};
  bool hdrChanged = false;
  int onDisk = 0;        // pages that the file has
  bool lacking = false;  // it had fewer than its header counts when it was opened
  std::vector<std::unique_ptr<NdxNode>> node;  // by page number; null: not in memory
  std::vector<int> changed;                    // numbers of the changed pages
  std::vector<int> written;                    // of those flushed and not settled
  unsigned version = 0;                        // counts changes: older cursors are off their items
  bool marked = false;                         // the file is marked as being changed
  bool outOfStep = false;                      // it was when it was opened
  bool damaged = false;                        // an operation met damage; who reports it clears it
  bool full = false;                           // a split found no free page number; the same
  NdxPages() = default;
  ~NdxPages();
};

// Pages (ndx_page.cpp). NodeRead gives the page, or null with a note of the damage. A page that
// was changed goes through NodeWrite; the pointer holds until the next outer operation.
NdxNode* NodeLoad(NdxPages& f, int no);  // from the file
inline NdxNode* NodeRead(NdxPages& f, int no) {
  NdxNode* const node = static_cast<size_t>(no) < f.node.size() ? f.node[no].get() : nullptr;
  return node && no < f.pages ? node : NodeLoad(f, no);
}
void NodeWrite(NdxPages& f, NdxNode& node);
// A new, empty page with the next free number, or null when there is none.
NdxNode* NodeNew(NdxPages& f);
const unsigned char* NodeItem(const NdxNode& node, int i);
int NodePll(const NdxNode& node, int i);
int NodeRno(const NdxNode& node, int i);
const char* NodeKey(const NdxNode& node, int i);  // key length bytes, no terminator
NdxItem NodeGetX(const NdxNode& node, int i);
void NodeSetX(NdxNode& node, int i, const NdxItem& item);
void NodeInsX(NdxNode& node, int i, const NdxItem& item);          // the items from i on move up
bool NodeSameX(const NdxNode& a, int i, const NdxNode& b, int j);  // record and key are the same
void NodeMoveX(NdxNode& node, int i, NdxNode& to);  // those items become another page's
void delItm(NdxNode& node, int i);                  // the items behind i move down
void HdrWrite(NdxPages& f);                         // root and pages to the header

// The full key of a text, until the next is made; for a numeric index the text begins with the
// number.
std::string_view formatkey(NdxPages& f, std::string_view text);

// The file of this name, if it is open as an index.
std::shared_ptr<NdxPages> ndxFindOpen(const std::string& name);
// Puts a file in the making in the place of this one, which stays open and has its content then: 0
// or ndxCantWrite with the file as it was.
int ndxTakeOver(NdxPages& f, NewFile& made);

}  // namespace mox
