// The file of an index: header, pages, keys.

#include <algorithm>
#include <cstring>

#include "session/number.h"
#include "store/bytes.h"
#include "store/ndx.h"
#include "store/ndx_trace.h"

namespace mox {

Key (*g_makeKey)(const std::string& text) = nullptr;

namespace {

// Offsets in the header, in a page and in an item.
constexpr int atRoot = 2, atPages = 4, atKeyLen = 6, atItmLen = 7, atMaxItms = 8, atType = 9;
constexpr int atExpr = 10, atItems = 1, inRno = 2, inKey = 4;

constexpr int numericType = 8;
constexpr int rootPage = 1;

// The files that are open.
std::vector<std::weak_ptr<NdxPages>> _open;

bool _put(NdxPages& f, int no, const void* bytes, size_t n) {
  std::FILE* fp = f.fp.get();
  std::clearerr(fp);
  return std::fseek(fp, static_cast<long>(no) * ndxPageSize, SEEK_SET) == 0 &&
         std::fwrite(bytes, 1, n, fp) == n && std::fflush(fp) == 0;
}

bool _get(NdxPages& f, int no, unsigned char* bytes) {
  std::FILE* fp = f.fp.get();
  std::clearerr(fp);
  return std::fseek(fp, static_cast<long>(no) * ndxPageSize, SEEK_SET) == 0 &&
         std::fread(bytes, 1, ndxPageSize, fp) == ndxPageSize;
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
  node.changed = false;
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

int _readHeader(NdxPages& f) {
  std::fseek(f.fp.get(), 0, SEEK_END);
  f.onDisk = static_cast<int>(std::min(std::ftell(f.fp.get()) / ndxPageSize, 0x10000L));
  if (!_get(f, 0, f.header.data())) return ndxEmpty;
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

// The file, if an index has it open.
std::shared_ptr<NdxPages> _findOpen(const std::string& name) {
  std::erase_if(_open, [](const std::weak_ptr<NdxPages>& f) { return f.expired(); });
  for (const std::weak_ptr<NdxPages>& f : _open) {
    std::shared_ptr<NdxPages> file = f.lock();
    if (SameFile(file->name, name)) return file;
  }
  return nullptr;
}

int _open1(NdxFile& x, const std::string& name) {
  if ((x.file = _findOpen(name))) return 0;
  auto f = std::make_shared<NdxPages>();
  f->name = name;
  f->fp = FileOpen(name, "r+b");
  if (!f->fp) return ndxFail;
  std::setvbuf(f->fp.get(), nullptr, _IONBF, 0);
  const int result = _readHeader(*f);
  if (result != 0) return result;
  _open.push_back(f);
  x.file = std::move(f);
  return 0;
}

int _create(NdxFile& x, const std::string& name, std::string_view expr, int type, int keylen) {
  if (type != 'C') keylen = type == 'N' ? numKeyLen : 0;
  if (expr.size() > maxNdxExpr || keylen < 1 || keylen > maxKeyLen) return ndxBadKey;
  const int itmlen = keylen + inKey;
  unsigned char bytes[2 * ndxPageSize] = {};
  put2(bytes + atRoot, rootPage);
  put2(bytes + atPages, rootPage + 1);
  put1(bytes + atKeyLen, keylen + 2);
  put1(bytes + atItmLen, itmlen);
  put1(bytes + atMaxItms, (ndxPageSize - 4) / itmlen);
  put1(bytes + atType, type == 'N' ? numericType : 0);
  std::memcpy(bytes + atExpr, expr.data(), expr.size());
  if (_findOpen(name)) return ndxFail;
  File fp = FileOpen(name, "wb");
  if (!fp || std::fwrite(bytes, 1, sizeof bytes, fp.get()) != sizeof bytes ||
      std::fflush(fp.get()) != 0)
    return ndxFail;
  fp.reset();
  return _open1(x, name);
}

}  // namespace

const unsigned char* NodeItem(const NdxNode& node, int i) {
  return &node.data[atItems + i * node.itmlen];
}
int NodePll(const NdxNode& node, int i) { return get2(NodeItem(node, i)); }
int NodeRno(const NdxNode& node, int i) { return get2(NodeItem(node, i) + inRno); }
const char* NodeKey(const NdxNode& node, int i) {
  return reinterpret_cast<const char*>(NodeItem(node, i) + inKey);
}

NdxItem NodeGetX(const NdxNode& node, int i) {
  return {NodePll(node, i), NodeRno(node, i),
          std::string(NodeKey(node, i), static_cast<size_t>(node.itmlen - inKey))};
}

void NodeSetX(NdxNode& node, int i, const NdxItem& item) {
  unsigned char* p = _item(node, i);
  put2(p, item.pll);
  put2(p + inRno, item.rno);
  std::memcpy(p + inKey, item.key.data(), item.key.size());
}

void NodeInsX(NdxNode& node, int i, const NdxItem& item) {
  std::memmove(_item(node, i + 1), _item(node, i),
               static_cast<size_t>(node.count - i) * node.itmlen);
  ++node.count;
  NodeSetX(node, i, item);
}

void delItm(NdxNode& node, int i) {
  --node.count;
  std::memmove(_item(node, i), _item(node, i + 1),
               static_cast<size_t>(node.count - i) * node.itmlen);
}

NdxNode* NodeRead(NdxPages& f, int no) {
  if (no >= rootPage && no < f.pages) {
    if (static_cast<size_t>(no) < f.node.size() && f.node[no]) return f.node[no].get();
    unsigned char bytes[ndxPageSize];
    if (_get(f, no, bytes) && get1(bytes) <= f.maxitms) {
      NdxNode& node = _keep(f, no);
      std::memcpy(node.data.data(), bytes, sizeof bytes);
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

std::string formatkey(const NdxPages& f, std::string_view text) {
  if (f.type == 'N') {
    double x = TxtToDbl(text);
    if (x == 0) x = 0;  // a zero has no sign
    const Bcd6 form = d2bcd6(x);
    std::string key(form.begin(), form.end());
    key.resize(static_cast<size_t>(f.keylen));  // a damaged header may tell another length
    return key;
  }
  std::string key(text.substr(0, static_cast<size_t>(f.keylen)));
  key.resize(static_cast<size_t>(f.keylen), ' ');
  return key;
}

int ndxOpen(NdxFile& x, std::string_view filename) {
  x = NdxFile{};
  return traced(
      "ndxOpen", [&] { return StrFmt(" %.*s", _len(filename), filename.data()); },
      [&] { return _open1(x, FnFind(FnExt(filename, ".ndx"))); });
}

int ndxCreate(NdxFile& x, std::string_view filename, std::string_view expr, int type, int keylen) {
  x = NdxFile{};
  return traced(
      "ndxCreate",
      [&] {
        return StrFmt(" %.*s,%.*s,%c,%d", _len(filename), filename.data(), _len(expr), expr.data(),
                      type, keylen);
      },
      [&] { return _create(x, FnExt(filename, ".ndx"), expr, type, keylen); });
}

int ndxClose(NdxFile& x) {
  return traced(
      "ndxClose", [] { return ""; },
      [&] {
        const int result = ndxFlush(x);
        x = NdxFile{};
        return result == ndxCantWrite ? result : 0;
      });
}

std::string ndxGetFn(const NdxFile& x) { return x.file ? x.file->name : std::string(); }
std::string ndxGetExpr(const NdxFile& x) { return x.file ? x.file->expr : std::string(); }

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

int ndxFlush(NdxFile& x) {
  if (!x.file) return ndxFail;
  NdxPages& f = *x.file;
  const int result = ndxReserve(x);
  if (result != 0) return result;
  if (!_putPages(f, 0, f.changed.size())) return ndxCantWrite;
  f.changed.clear();
  if (f.hdrChanged && !_put(f, 0, f.header.data(), f.header.size())) return ndxCantWrite;
  f.hdrChanged = false;
  return 0;
}

void ndxDrop(NdxFile& x) {
  if (!x.file) return;
  NdxPages& f = *x.file;
  f.node.clear();
  f.changed.clear();
  f.hdrChanged = false;
  if (!_get(f, 0, f.header.data())) f.header.fill(0);
  _readRoot(f);
  x.Nno.clear();
  x.Ino.clear();
}

}  // namespace mox
