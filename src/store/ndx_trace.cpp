#include "store/ndx_trace.h"

#include <algorithm>

#include "session/number.h"

namespace mox {

namespace {

int _level = 0;

void _sayItem(const NdxPages& f, const NdxNode& node, int i) {
  const std::string_view key(NodeKey(node, i), static_cast<size_t>(f.keylen));
  std::printf("pll=%04d rno=%05d key=[%s]\n", NodePll(node, i), NodeRno(node, i),
              key2Txt(f, key).c_str());
}

}  // namespace

int ndxSetDbg(int level) {
  const int old = _level;
  if (level >= 0) _level = level;
  return old;
}

std::string key2Txt(const NdxPages& f, std::string_view key) {
  std::string text;
  if (f.type != 'N') return text.append(key);
  constexpr size_t width = 23;
  Bcd6 form{};
  std::copy_n(key.begin(), std::min(key.size(), form.size()), form.begin());
  text = FmtSci(bcd2d6(form), 10);
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

void sayNode(const NdxPages& f, const NdxNode& node) {
  std::printf("sayNode %d\n", node.no);
  for (int i = 0; i < node.count; ++i) {
    std::printf("i=%3d: ", i);
    _sayItem(f, node, i);
  }
  std::printf("       nxt=%04d\n", node.nxt);
}

void sayNdxHdr(const NdxPages& f) {
  std::printf("root   = %d\npages  = %d\nkeylen = %d\nitmlen = %d\nmaxitms= %d\nexpr   = %s\n",
              f.root, f.pages, f.keylen, f.itmlen, f.maxitms, f.expr.c_str());
}

void sayNnoIno(const NdxFile& x) {
  std::printf("Nno.Ino: ");
  for (size_t i = 0; i < x.Nno.size(); ++i) std::printf(" %02d.%02d", x.Nno[i], x.Ino[i]);
  std::printf("\n");
}

void sayNdxPos(const NdxFile& x) {
  for (size_t i = 0; i < x.Nno.size(); ++i) std::printf("%02d.%02d ", x.Nno[i], x.Ino[i]);
  std::printf(": ");
  const NdxNode* node = x.Nno.empty() ? nullptr : NodeRead(*x.file, x.Nno.back());
  if (node && x.Ino.back() >= 0 && x.Ino.back() < node->count)
    _sayItem(*x.file, *node, x.Ino.back());
  else
    std::printf("\n");
}

void traceNode(const NdxPages& f, const char* heading, const NdxNode& node, int level) {
  if (_level < level) return;
  std::printf("%s\n", heading);
  sayNode(f, node);
}

}  // namespace mox
