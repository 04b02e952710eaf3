// What the index layer shows of its work when ndxSetDbg asks for it.
#pragma once

#include <cstdio>
#include <string>

#include "store/ndx_page.h"

namespace mox {

// A key as text: a character key unchanged, a numeric one as its number.
std::string key2Txt(const NdxPages& f, std::string_view key);

void sayNode(const NdxPages& f, const NdxNode& node);
void sayNdxHdr(const NdxPages& f);  // this and the next two for a debugger
void sayNnoIno(const NdxFile& x);
void sayNdxPos(const NdxFile& x);  // the cursor with its current item

// Shows a page under a heading from a level on.
void traceNode(const NdxPages& f, const char* heading, const NdxNode& node, int level);

// Runs an outer operation; from level 2 on shows its name with the arguments, then its result.
template <class Args, class Op>
int traced(const char* name, Args args, Op op) {
  if (ndxSetDbg(-1) < 2) return op();
  std::printf("%s%s\n", name, std::string(args()).c_str());
  const int result = op();
  std::printf("%s result=%d\n", name, result);
  return result;
}

}  // namespace mox
