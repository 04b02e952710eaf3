// The tree of an index: moves, searches, changes.

#include "store/ndx.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "store/ndx_trace.h"

namespace mox {

namespace {

// Pages that one move may look at: in a sound tree it goes up and down once.
constexpr int maxVisits = 4 * maxLevels;
// Items that a walk may pass: an index has no more of them than a table has records.
constexpr int maxWalk = 65535;

void _clear(NdxFile& x) {
  x.Nno.clear();
  x.Ino.clear();
  x.walked = 0;
  x.version = x.file->version;
}

// The end of a walk or a search that leads nowhere.
int _lost(NdxFile& x) {
  _clear(x);
  return ndxFail;
}

int _damaged(NdxFile& x) {
  x.file->damaged = true;
  return _lost(x);
}

void _pop(NdxFile& x) {
  x.Nno.pop_back();
  x.Ino.pop_back();
}

// Sign and exponent decide before the digits; of negative numbers the larger form is the lower.
int _cmpNumbers(const char* a, const char* b, int keylen) {
  const auto first = [](const char* p) { return static_cast<unsigned char>(*p); };
  const int sign = first(a) >> 7;
  if (sign != first(b) >> 7) return sign ? -1 : 1;
  int order = first(a) - first(b);
  if (order == 0)
    order = std::memcmp(a + 1, b + 1, static_cast<size_t>(std::min(keylen, numKeyLen) - 1));
  return sign ? -order : order;
}

// The first eight bytes of a key as a number; a page is long enough for them behind any item.
constexpr size_t headSize = 8;
std::uint64_t _head(const char* key) {
  const auto* const p = reinterpret_cast<const unsigned char*>(key);
  const auto four = [](const unsigned char* b) {
    return static_cast<std::uint32_t>(b[0]) << 24 | b[1] << 16 | b[2] << 8 | b[3];
  };
  return static_cast<std::uint64_t>(four(p)) << 32 | four(p + 4);
}

// A key that is sought. A character key that is shorter than what it is compared with is below all
// that it begins.
struct Sought {
  Sought(const NdxPages& f, std::string_view key, int n)
      : number(f.type == 'N'), length(f.keylen), text(key) {
    const auto most = static_cast<size_t>(std::clamp(n, 0, f.keylen));
    if (!number) text = text.substr(0, most);
    isShort = text.size() < most;
    char first[headSize] = {}, known[headSize] = {};
    std::copy_n(text.data(), std::min(text.size(), headSize), first);
    std::fill_n(known, std::min(text.size(), headSize), '\xFF');
    head = _head(first);
    mask = _head(known);
  }
  // Sign of the comparison with an item's key.
  int compare(const char* item) const {
    if (number) return _cmpNumbers(text.data(), item, length);
    const std::uint64_t other = _head(item) & mask;
    if (head != other) return head < other ? -1 : 1;
    if (text.size() > headSize)
      if (const int order =
              std::memcmp(text.data() + headSize, item + headSize, text.size() - headSize))
        return order;
    return isShort && item[text.size()] != 0 ? -1 : 0;
  }
  // The first item of the page that is above the key, or with equals the first not below it.
  int place(const NdxNode& node, bool equals) const {
    const bool halves = node.order > 0;
    const char* const keys = NodeKey(node, 0);
    int from = 0, to = node.count;
    while (from < to) {
      const int i = halves ? (from + to) / 2 : from, order = compare(keys + i * node.itmlen);
      if (order > 0 || (order == 0 && !equals))
        from = i + 1;
      else
        to = i;
    }
    return from;
  }
  bool number, isShort;
  int length;
  std::uint64_t head, mask;
  std::string_view text;
};

// Looks at the order of the items from first to last, and so at that of a page of which the others
// ascend.
void _noteOrder(const NdxPages& f, NdxNode& node, int first, int last) {
  if (node.order == 0) node.order = 1;
  for (int i = std::max(first, 0); i < std::min(last, node.count - 1); ++i) {
    const std::string_view key(NodeKey(node, i), static_cast<size_t>(f.keylen));
    if (Sought(f, key, maxKeyLen).compare(NodeKey(node, i + 1)) > 0) node.order = -1;
  }
}

// Takes the page onto the cursor: the page, or null when it is no page of the tree or is already
// on the way from the root.
NdxNode* _push(NdxFile& x, int no, int item) {
  NdxNode* const node = NodeRead(*x.file, no);
  if (!node) return nullptr;
  bool again = x.Nno.size() == maxLevels;
  for (const int above : x.Nno) again |= above == no;
  if (again) {
    x.file->damaged = true;
    return nullptr;
  }
  if (node->order == 0) _noteOrder(*x.file, *node, 0, node->count);
  x.Nno.push_back(no);
  x.Ino.push_back(item);
  return node;
}

NdxNode* _top(NdxFile& x) { return NodeRead(*x.file, x.Nno.back()); }

int _ndxTop(NdxFile& x) {
  _clear(x);
  for (int no = x.file->root;;) {
    const NdxNode* const node = _push(x, no, 0);
    if (!node) return _lost(x);
    if (node->count == 0) {
      if (node->nxt == 0) return ndxEmpty;
      no = node->nxt;
    } else {
      no = NodePll(*node, 0);
      if (no == 0) return NodeRno(*node, 0);
    }
  }
}

int _ndxBottom(NdxFile& x) {
  _clear(x);
  for (int no = x.file->root;;) {
    const NdxNode* const node = _push(x, no, 0);
    if (!node) return _lost(x);
    x.Ino.back() = node->count;
    no = node->nxt;
    if (no != 0) continue;
    if (node->count == 0) return ndxFail;
    const int last = --x.Ino.back();
    no = NodePll(*node, last);
    if (no == 0) return NodeRno(*node, last);
  }
}

// A found item of a walk.
int _walked(NdxFile& x, int rno, int step) {
  x.walked += step;
  return std::abs(x.walked) > maxWalk ? _damaged(x) : rno;
}

int _ndxFwd(NdxFile& x) {
  for (int visits = 0; !x.Nno.empty(); ++visits) {
    const NdxNode* const node = _top(x);
    if (!node || visits > maxVisits) return _damaged(x);
    const int i = ++x.Ino.back();
    int child = 0;
    if (i < node->count) {
      child = NodePll(*node, i);
      if (child == 0) return _walked(x, NodeRno(*node, i), 1);
    } else if (i == node->count) {
      child = node->nxt;
    }
    if (child == 0)
      _pop(x);
    else if (!_push(x, child, -1))
      return _lost(x);
  }
  return _lost(x);
}

int _ndxBak(NdxFile& x) {
  for (int visits = 0; !x.Nno.empty(); ++visits) {
    const NdxNode* const node = _top(x);
    if (!node || visits > maxVisits) return _damaged(x);
    const int i = x.Ino.back() = std::min(x.Ino.back() - 1, node->count);
    if (i < 0) {
      _pop(x);
      continue;
    }
    const int child = i < node->count ? NodePll(*node, i) : node->nxt;
    if (child == 0 && i < node->count) return _walked(x, NodeRno(*node, i), -1);
    if (child == 0) continue;
    const NdxNode* const below = _push(x, child, 0);
    if (!below) return _lost(x);
    x.Ino.back() = below->count + 1;
  }
  return _lost(x);
}

int _ndxFind(NdxFile& x, const Sought& key) {
  _clear(x);
  for (int no = x.file->root; no != 0;) {
    const NdxNode* const node = _push(x, no, 0);
    if (!node) return _lost(x);
    if (node->count == 0 && node->nxt == 0) return ndxEmpty;
    const int i = x.Ino.back() = key.place(*node, true);
    no = i < node->count ? NodePll(*node, i) : node->nxt;
    if (no == 0 && i < node->count && key.compare(NodeKey(*node, i)) == 0) return NodeRno(*node, i);
  }
  return ndxFail;
}

// Equal keys are walked page by page.
int _ndxFindRno(NdxFile& x, int rno, std::string_view text) {
  const Sought key(*x.file, text, maxKeyLen);
  for (int found = _ndxFind(x, key); found >= 0; found = _ndxFwd(x)) {
    const NdxNode* const node = _top(x);
    int& i = x.Ino.back();
    if (key.compare(NodeKey(*node, i)) != 0) return 1;
    const int end = node->order > 0 ? key.place(*node, false) : i + 1;
    for (; i < end && NodePll(*node, i) == 0; ++i, ++x.walked)
      if (NodeRno(*node, i) == rno) return 0;
    --i, --x.walked;
  }
  return 2;
}

// Puts the cursor where a key goes that is added: on the first item with a higher key, or behind
// the last item of the last leaf. Below a page whose nxt is gone that leaf hangs on the last item.
int _seekPlace(NdxFile& x, std::string_view text) {
  const Sought key(*x.file, text, maxKeyLen);
  _clear(x);
  for (int no = x.file->root;;) {
    const NdxNode* const node = _push(x, no, 0);
    if (!node) return _lost(x);
    int& i = x.Ino.back();
    i = key.place(*node, false);
    no = node->nxt;
    if (i == node->count && no == 0 && i > 0 && NodePll(*node, i - 1) != 0) --i;
    if (i < node->count) no = NodePll(*node, i);
    if (no == 0) return 0;
  }
}

// Moves the upper half of an overfull page to a new page, on which the items of both pages then
// stand for them in the page above. False when there is no page number left.
bool SplitNode(NdxFile& x, NdxNode& node, NdxItem& left, NdxItem& right) {
  NdxPages& f = *x.file;
  NdxNode* const upper = NodeNew(f);
  if (!upper) return false;
  NodeMoveX(node, node.count / 2, *upper);
  upper->nxt = node.nxt;
  node.nxt = 0;
  NodeWrite(f, node);
  left = NodeGetX(node, node.count - 1);
  left.pll = node.no;
  right = NodeGetX(*upper, upper->count - 1);
  right.pll = upper->no;
  return true;
}

bool NewRoot(NdxFile& x, const NdxItem& left, const NdxItem& right) {
  NdxPages& f = *x.file;
  NdxNode* const root = NodeNew(f);
  if (!root) return false;
  NodeInsX(*root, 0, left);
  root->nxt = right.pll;
  f.root = root->no;
  HdrWrite(f);
  return true;
}

void _setItem(const NdxPages& f, NdxNode& node, int i, const NdxItem& item) {
  NodeSetX(node, i, item);
  _noteOrder(f, node, i - 1, i + 1);
}

// Carries the highest key of the cursor's page into the items above that stand for it.
void _raiseKeys(NdxFile& x) {
  for (const NdxNode* child = _top(x); x.Nno.size() > 1 && child->nxt == 0;) {
    _pop(x);
    NdxNode* const node = _top(x);
    const int i = x.Ino.back();
    if (i >= node->count) return;  // reached through nxt, which needs no key
    if (NodeSameX(*node, i, *child, child->count - 1)) return;
    const NdxItem last = NodeGetX(*child, child->count - 1);
    _setItem(*x.file, *node, i, {NodePll(*node, i), last.rno, last.key});
    NodeWrite(*x.file, *node);
    if (i + 1 < node->count) return;
    child = node;
  }
}

// Enters the item at the cursor; what doesn't fit splits pages on the way up.
int insertkey(NdxFile& x, NdxItem item) {
  NdxPages& f = *x.file;
  for (;;) {
    NdxNode& node = *_top(x);
    NodeInsX(node, x.Ino.back(), item);
    if (item.pll != 0) _noteOrder(f, node, x.Ino.back() - 1, x.Ino.back() + 1);
    NodeWrite(f, node);
    if (node.count <= f.maxitms) break;
    NdxItem right;
    if (!SplitNode(x, node, item, right)) return f.full ? ndxFull : ndxFail;
    if (x.Nno.size() == 1) return NewRoot(x, item, right) ? 0 : f.full ? ndxFull : ndxFail;
    HdrWrite(f);
    _pop(x);
    NdxNode& above = *_top(x);
    if (x.Ino.back() < above.count)
      _setItem(f, above, x.Ino.back(), right);
    else
      above.nxt = right.pll;
  }
  _raiseKeys(x);
  return 0;
}

int _ndxAdd(NdxFile& x, int rno, std::string_view key) {
  ++x.file->version;
  int result = _seekPlace(x, key);
  NdxItem item{0, rno, {}};
  std::copy(key.begin(), key.end(), item.key.begin());
  if (result == 0) result = insertkey(x, item);
  if (result != 0) ndxDrop(x);
  _clear(x);
  return result;
}

// A root that lost all its items hands over to the subtree behind them.
void _lowerRoot(NdxPages& f) {
  for (int level = 0; level < maxLevels; ++level) {
    const NdxNode* const root = NodeRead(f, f.root);
    if (!root || root->count > 0 || root->nxt == 0) return;
    f.root = root->nxt;
    HdrWrite(f);
  }
}

// Takes the empty page that the cursor stands on out of the page above, where the cursor then
// stands. True when the highest key below that page is now another.
bool _unlink(NdxFile& x) {
  _pop(x);
  NdxNode& node = *_top(x);
  const int i = x.Ino.back();
  const bool last = i + 1 >= node.count && (i == node.count || node.nxt == 0);
  if (i < node.count)
    delItm(node, i);
  else
    node.nxt = 0;
  NodeWrite(*x.file, node);
  return last;
}

int _ndxDel(NdxFile& x, int rno, std::string_view key) {
  if (_ndxFindRno(x, rno, key) != 0) return ndxFail;
  ++x.file->version;
  const int i = x.Ino.back();
  bool last = i + 1 == _top(x)->count;
  delItm(*_top(x), i);
  NodeWrite(*x.file, *_top(x));
  while (last && x.Nno.size() > 1 && _top(x)->count == 0 && _top(x)->nxt == 0) last = _unlink(x);
  if (last && _top(x)->count > 0) _raiseKeys(x);
  _lowerRoot(*x.file);
  _clear(x);
  return 0;
}

std::string _rnoArgs(int rno, std::string_view text) {
  return StrFmt(" rno=%d val=[%.*s]", rno, static_cast<int>(text.size()), text.data());
}

// An operation without arguments, and one with a record and a key.
template <class Op>
int _run(NdxFile& x, const char* name, Op op) {
  return traced(
      name, [] { return ""; }, [&] { return x.file ? op(x) : ndxFail; });
}
template <class Op>
int _run(NdxFile& x, const char* name, int rno, std::string_view text, Op op) {
  return traced(
      name, [&] { return _rnoArgs(rno, text); },
      [&] { return x.file ? op(x, rno, formatkey(*x.file, text)) : ndxFail; });
}

}  // namespace

int ndxTop(NdxFile& x) { return _run(x, "ndxTop", _ndxTop); }
int ndxBottom(NdxFile& x) { return _run(x, "ndxBottom", _ndxBottom); }
int ndxFwd(NdxFile& x) { return _run(x, "ndxFwd", _ndxFwd); }
int ndxBak(NdxFile& x) { return _run(x, "ndxBak", _ndxBak); }

bool ndxAstray(const NdxFile& x) {
  return x.file && !x.Nno.empty() && x.version != x.file->version;
}

void ndxLeave(NdxFile& x) {
  if (x.file) _clear(x);
}

bool ndxHasRno(NdxFile& x, int rno) {
  int at = ndxTop(x);
  while (at > 0 && at != rno) at = ndxFwd(x);
  return at == rno;
}

int ndxFind(NdxFile& x, int length, std::string_view text) {
  return traced(
      "ndxFind",
      [&] {
        return StrFmt(" len=%d val=[%.*s]", length, static_cast<int>(text.size()), text.data());
      },
      [&]() -> int {
        if (!x.file) return ndxFail;
        const bool number = x.file->type == 'N';
        return _ndxFind(x, Sought(*x.file, number ? formatkey(*x.file, text) : text, length));
      });
}

int ndxFindRno(NdxFile& x, int rno, std::string_view text) {
  return _run(x, "ndxFindRno", rno, text, _ndxFindRno);
}
int ndxAdd(NdxFile& x, int rno, std::string_view text) {
  return _run(x, "ndxAdd", rno, text, _ndxAdd);
}
int ndxDel(NdxFile& x, int rno, std::string_view text) {
  return _run(x, "ndxDel", rno, text, _ndxDel);
}

int ndxDelRno(NdxFile& x, int rno) {
  if (!x.file || !ndxHasRno(x, rno)) return ndxFail;
  const NdxItem item = NodeGetX(*_top(x), x.Ino.back());
  return _ndxDel(x, rno, {item.key.data(), static_cast<size_t>(x.file->keylen)});
}

}  // namespace mox
