// The file of an index: header, pages, keys.

#include <algorithm>
#include <cstring>

#include "session/number.h"
#include "store/bytes.h"
#include "store/ndx_page.h"
#include "store/ndx_trace.h"

namespace mox {

Key (*g_makeKey)(const std::string& text) = nullptr;

namespace {

// Offsets in the header, in a page and in an item.
constexpr int atMark = 0, atRoot = 2, atPages = 4, atKeyLen = 6, atItmLen = 7, atMaxItms = 8,
              atType = 9;
constexpr int atExpr = 10, atItems = 1, inRno = 2, inKey = 4;

constexpr int numericType = 8;
constexpr int rootPage = 1;

// The files that are open.
std::vector<std::weak_ptr<NdxPages>> _open;

std::int64_t _place(int no) { return static_cast<std::int64_t>(no) * ndxPageSize; }

bool _put(NdxPages& f, int no, const void* bytes, size_t n) {
  return imgWrite(f.image, _place(no), static_cast<const char*>(bytes), n);
}

bool _get(NdxPages& f, int no, unsigned char* bytes) {
  return imgRead(f.image, _place(no), reinterpret_cast<char*>(bytes), ndxPageSize);
}

int _len(std::string_view text) { return static_cast<int>(text.size()); }

unsigned char* _item(NdxNode& node, int i) { return &node.data[atItems + i * node.itmlen]; }

// The bytes of a page as they stand in the file.
void _image(NdxNode& node, unsigned char* bytes) {
  const int items = atItems + node.count * node.itmlen;
  std::memcpy(bytes, node.data.data(), items);
  put1(bytes, node.count);
  put2(bytes + items, node.nxt);
  std::memset(bytes + items + 2, 0, ndxPageSize - items - 2);
}

// Writes the changed pages from the one at begin on, runs of neighbours in one go.
bool _putPages(NdxPages& f, size_t begin, size_t end) {
  std::vector<unsigned char> run;
  for (size_t i = begin; i < end;) {
    const int first = f.changed[i];
    run.clear();
    do {
      run.resize(run.size() + ndxPageSize);
      _image(*f.node[f.changed[i]], &run[run.size() - ndxPageSize]);
      f.written.push_back(f.changed[i]);
      f.node[f.changed[i]]->changed = false;
      ++i;
    } while (i < end && f.changed[i] == f.changed[i - 1] + 1);
    if (!_put(f, first, run.data(), run.size())) return false;
  }
  return true;
}

NdxNode& _keep(NdxPages& f, int no) {
  if (static_cast<size_t>(no) >= f.node.size()) f.node.resize(no + 1);
  f.node[no] = std::make_unique<NdxNode>();
  f.node[no]->no = no;
  f.node[no]->itmlen = f.itmlen;
  return *f.node[no];
}

void _readRoot(NdxPages& f) {
  f.root = get2(&f.header[atRoot]);
  f.pages = get2(&f.header[atPages]);
}

// Marks the file as being changed, or no more.
bool _mark(NdxPages& f, bool changing) {
  unsigned char mark[2];
  put2(mark, changing);
  if (!_put(f, 0, mark, sizeof mark)) return false;
  put2(&f.header[atMark], changing);
  f.marked = changing;
  return true;
}

int _readHeader(NdxPages& f) {
  f.onDisk = static_cast<int>(std::min<std::int64_t>(f.image.size / ndxPageSize, 0x10000));
  if (!_get(f, 0, f.header.data())) return ndxEmpty;
  f.settledHeader = f.header;
  f.outOfStep = f.marked = get2(&f.header[atMark]) != 0;
  _readRoot(f);
  f.lacking = f.pages <= rootPage || f.pages > f.onDisk;
  f.itmlen = get1(&f.header[atItmLen]);
  f.keylen = f.itmlen - inKey;
  f.type = get1(&f.header[atType]) == numericType ? 'N' : 'C';
  if (f.keylen < 1 || f.keylen > maxKeyLen) return ndxBadKey;
  f.maxitms = (ndxPageSize - atItems - 2) / f.itmlen;
  const char* const expr = reinterpret_cast<const char*>(&f.header[atExpr]);
  f.expr.assign(expr, std::find(expr, expr + maxNdxExpr, '\0'));
  f.key = g_makeKey(f.expr);
  return f.key.compile() == 0 ? 0 : ndxFail;
}

int _open1(NdxFile& x, const std::string& name, bool keep) {
  std::shared_ptr<NdxPages> f = ndxFindOpen(name);
  if (!f) {
    f = std::make_shared<NdxPages>();
    f->name = name;
    const FileHandle h = OS_FileOpen(name, FileMode::change);
    if (h == noFile) return ndxFail;
    imgOpen(f->image, h, name);
    f->use.emplace(name);
    if (const int result = _readHeader(*f); result != 0) return result;
    _open.push_back(f);
  }
  if (keep && !f->kept && !OS_FileKeep(f->image.f, name)) return ndxInUse;
  f->kept |= keep;
  x.file = std::move(f);
  return 0;
}

// The bytes of an index without items; none when there can't be such an index.
std::string _emptyIndex(std::string_view expr, int type, int keylen) {
  if (type != 'C') keylen = type == 'N' ? numKeyLen : 0;
  if (expr.size() > maxNdxExpr || keylen < 1 || keylen > maxKeyLen) return {};
  const int itmlen = keylen + inKey;
  unsigned char bytes[2 * ndxPageSize] = {};
  put2(bytes + atRoot, rootPage);
  put2(bytes + atPages, rootPage + 1);
  put1(bytes + atKeyLen, keylen + 2);
  put1(bytes + atItmLen, itmlen);
  put1(bytes + atMaxItms, (ndxPageSize - 4) / itmlen);
  put1(bytes + atType, type == 'N' ? numericType : 0);
  std::memcpy(bytes + atExpr, expr.data(), expr.size());
  return std::string(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

int _create(NdxFile& x, const std::string& name, const std::string& bytes) {
  if (bytes.empty()) return ndxBadKey;
  return FileWriteBytes(name, bytes) == 0 ? _open1(x, name, false) : ndxFail;
}

int _make(NdxFile& x, NewFile& made, const std::string& bytes) {
  if (bytes.empty()) return ndxBadKey;
  if (!NewFileAppend(made, bytes)) return ndxCantWrite;
  auto f = std::make_shared<NdxPages>();
  f->name = made.path;
  f->owned = false;
  imgOpen(f->image, made.f, made.path);
  const int result = _readHeader(*f);
  if (result == 0) x.file = std::move(f);
  return result;
}

std::string _createArgs(std::string_view name, std::string_view expr, int type, int keylen) {
  return StrFmt(" %.*s,%.*s,%c,%d", _len(name), name.data(), _len(expr), expr.data(), type, keylen);
}

}  // namespace

NdxPages::~NdxPages() {
  if (owned) OS_FileClose(image.f);
}

std::shared_ptr<NdxPages> ndxFindOpen(const std::string& name) {
  std::erase_if(_open, [](const std::weak_ptr<NdxPages>& f) { return f.expired(); });
  for (const std::weak_ptr<NdxPages>& f : _open) {
    std::shared_ptr<NdxPages> file = f.lock();
    if (SameFile(file->name, name)) return file;
  }
  return nullptr;
}

const unsigned char* NodeItem(const NdxNode& node, int i) {
  return &node.data[atItems + i * node.itmlen];
}
int NodePll(const NdxNode& node, int i) { return get2(NodeItem(node, i)); }
int NodeRno(const NdxNode& node, int i) { return get2(NodeItem(node, i) + inRno); }
const char* NodeKey(const NdxNode& node, int i) {
  return reinterpret_cast<const char*>(NodeItem(node, i) + inKey);
}

NdxItem NodeGetX(const NdxNode& node, int i) {
  NdxItem item{NodePll(node, i), NodeRno(node, i), {}};
  std::memcpy(item.key.data(), NodeKey(node, i), static_cast<size_t>(node.itmlen - inKey));
  return item;
}

void NodeSetX(NdxNode& node, int i, const NdxItem& item) {
  unsigned char* p = _item(node, i);
  put2(p, item.pll);
  put2(p + inRno, item.rno);
  std::memcpy(p + inKey, item.key.data(), static_cast<size_t>(node.itmlen - inKey));
}

void NodeInsX(NdxNode& node, int i, const NdxItem& item) {
  std::memmove(_item(node, i + 1), _item(node, i),
               static_cast<size_t>(node.count - i) * node.itmlen);
  ++node.count;
  NodeSetX(node, i, item);
}

bool NodeSameX(const NdxNode& a, int i, const NdxNode& b, int j) {
  return std::memcmp(NodeItem(a, i) + inRno, NodeItem(b, j) + inRno,
                     static_cast<size_t>(a.itmlen - inRno)) == 0;
}

void NodeMoveX(NdxNode& node, int i, NdxNode& to) {
  to.count = node.count - i;
  to.order = node.order;
  std::memcpy(_item(to, 0), _item(node, i), static_cast<size_t>(to.count) * node.itmlen);
  node.count = i;
}

void delItm(NdxNode& node, int i) {
  --node.count;
  std::memmove(_item(node, i), _item(node, i + 1),
               static_cast<size_t>(node.count - i) * node.itmlen);
}

NdxNode* NodeLoad(NdxPages& f, int no) {
  if (no >= rootPage && no < f.pages) {
    unsigned char bytes[ndxPageSize];
    if (_get(f, no, bytes) && get1(bytes) <= f.maxitms) {
      NdxNode& node = _keep(f, no);
      std::memcpy(node.data.data(), bytes, sizeof bytes);
      std::memcpy(node.settled.data(), bytes, sizeof bytes);
      node.count = get1(bytes);
      node.nxt = get2(bytes + atItems + node.count * node.itmlen);
      traceNode(f, "NodeRead", node, 5);
      return &node;
    }
  }
  f.damaged = true;
  return nullptr;
}

void NodeWrite(NdxPages& f, NdxNode& node) {
  if (!node.changed) f.changed.push_back(node.no);
  node.changed = true;
  traceNode(f, "NodeWrite", node, 4);
}

// A file that lacks pages which its header counts is damaged: a new page would leave a hole.
NdxNode* NodeNew(NdxPages& f) {
  f.damaged |= f.lacking;
  f.full |= f.pages >= maxNdxPages;
  if (f.damaged || f.full) return nullptr;
  NdxNode& node = _keep(f, f.pages++);
  NodeWrite(f, node);
  return &node;
}

void HdrWrite(NdxPages& f) {
  f.hdrChanged = true;
  put2(&f.header[atRoot], f.root);
  put2(&f.header[atPages], f.pages);
}

std::string_view formatkey(NdxPages& f, std::string_view text) {
  const auto length = static_cast<size_t>(f.keylen);
  f.made.assign(text, 0, length);
  f.made.resize(length, ' ');
  if (f.type != 'N') return f.made;
  double x = TxtToDbl(text);
  if (x == 0) x = 0;  // a zero has no sign
  const Bcd6 form = d2bcd6(x);
  f.made.assign(form.begin(), form.end());
  f.made.resize(length);  // a damaged header may tell another length
  return f.made;
}

int ndxOpen(NdxFile& x, std::string_view filename, bool keep) {
  x = NdxFile{};
  return traced(
      "ndxOpen", [&] { return StrFmt(" %.*s", _len(filename), filename.data()); },
      [&] { return _open1(x, FnFind(FnExt(filename, ".ndx")), keep); });
}

int ndxCreate(NdxFile& x, std::string_view filename, std::string_view expr, int type, int keylen) {
  x = NdxFile{};
  return traced(
      "ndxCreate", [&] { return _createArgs(filename, expr, type, keylen); },
      [&] { return _create(x, FnExt(filename, ".ndx"), _emptyIndex(expr, type, keylen)); });
}

int ndxMake(NdxFile& x, NewFile& made, std::string_view expr, int type, int keylen) {
  x = NdxFile{};
  return traced(
      "ndxCreate", [&] { return _createArgs(made.path, expr, type, keylen); },
      [&] { return _make(x, made, _emptyIndex(expr, type, keylen)); });
}

int ndxClose(NdxFile& x) {
  return traced(
      "ndxClose", [] { return ""; },
      [&] {
        const int result = ndxFlush(x);
        ndxSettle(x);
        const bool last = x.file && x.file.use_count() == 1;
        if (last && x.file->marked && !x.file->outOfStep && result == 0) _mark(*x.file, false);
        x = NdxFile{};
        return result == ndxCantWrite ? result : 0;
      });
}

std::string ndxGetFn(const NdxFile& x) { return x.file ? x.file->name : std::string(); }
std::string ndxGetExpr(const NdxFile& x) { return x.file ? x.file->expr : std::string(); }

bool ndxOutOfStep(const NdxFile& x) { return x.file && x.file->outOfStep; }

int ndxReserve(NdxFile& x) {
  if (!x.file) return ndxFail;
  NdxPages& f = *x.file;
  std::sort(f.changed.begin(), f.changed.end());
  const size_t first =
      std::lower_bound(f.changed.begin(), f.changed.end(), f.onDisk) - f.changed.begin();
  if (!_putPages(f, first, f.changed.size())) return ndxCantWrite;
  f.changed.resize(first);
  f.onDisk = std::max(f.onDisk, f.pages);
  return 0;
}

int ndxMark(NdxFile& x) {
  if (!x.file) return ndxFail;
  NdxPages& f = *x.file;
  return !f.owned || f.marked || _mark(f, true) ? 0 : ndxCantWrite;
}

int ndxFlush(NdxFile& x) {
  if (!x.file) return ndxFail;
  NdxPages& f = *x.file;
  const int result = ndxReserve(x);
  if (result != 0) return result;
  if (!f.changed.empty() && ndxMark(x) != 0) return ndxCantWrite;
  if (!_putPages(f, 0, f.changed.size())) return ndxCantWrite;
  f.changed.clear();
  if (f.hdrChanged && !_put(f, 0, f.header.data(), f.header.size())) return ndxCantWrite;
  f.hdrChanged = false;
  return 0;
}

void ndxSettle(NdxFile& x) {
  if (!x.file) return;
  NdxPages& f = *x.file;
  for (const int no : f.written) _image(*f.node[no], f.node[no]->settled.data());
  f.written.clear();
  f.settledHeader = f.header;
}

void ndxUndo(NdxFile& x) {
  if (!x.file) return;
  NdxPages& f = *x.file;
  put2(&f.settledHeader[atMark], f.marked);
  const int pages = get2(&f.settledHeader[atPages]);
  bool undone = f.written.empty() || _put(f, 0, f.settledHeader.data(), f.settledHeader.size());
  for (const int no : f.written)
    if (no < pages) undone = _put(f, no, f.node[no]->settled.data(), ndxPageSize) && undone;
  f.written.clear();
  f.outOfStep |= !undone;
  ndxDrop(x);
}

void ndxStale(NdxFile& x) {
  if (!x.file) return;
  ndxMark(x);
  x.file->outOfStep = true;
}

void ndxDrop(NdxFile& x) {
  if (!x.file) return;
  NdxPages& f = *x.file;
  f.node.clear();
  f.changed.clear();
  f.written.clear();
  f.hdrChanged = false;
  ++f.version;
  if (!_get(f, 0, f.header.data())) f.header.fill(0);
  f.settledHeader = f.header;
  _readRoot(f);
  x.Nno.clear();
  x.Ino.clear();
}

void ndxRest() {
  for (const std::weak_ptr<NdxPages>& open : _open)
    if (const std::shared_ptr<NdxPages> f = open.lock(); f && f->marked && !f->outOfStep)
      _mark(*f, false);
}

int ndxTakeOver(NdxPages& f, NewFile& made) {
  FileHandle h = f.image.f;
  const int result = NewFileDone(made, &h);
  imgOpen(f.image, h, f.name);
  f.node.clear();
  f.changed.clear();
  f.written.clear();
  f.hdrChanged = f.damaged = f.full = false;
  ++f.version;
  return _readHeader(f) == 0 ? result : ndxCantWrite;
}

}  // namespace mox
