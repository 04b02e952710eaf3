#include "run/run_out.h"

#include <cstdio>
#include <string>

#include "session/files.h"
#include "session/options.h"

namespace mox {

int outcol = 0;

namespace {

const char printDevice[] = "LPT1:";

void _appendTo(const std::string& name, std::string_view text) {
  const std::string path = FnFind(name);
  if (FileInUse(path)) return;
  if (File f = FileOpen(path, "a")) std::fwrite(text.data(), 1, text.size(), f.get());
}

}  // namespace

void PrTxt(std::string_view text) {
  if (g_opt[optCONSOLE]) std::fwrite(text.data(), 1, text.size(), stdout);
  if (g_opt[optALTERNATE] && !g_optval[optALTERNATE].empty())
    _appendTo(g_optval[optALTERNATE], text);
  if (g_opt[optPRINT]) _appendTo(printDevice, text);
}

void SayTxt(int column, std::string_view text) {
  if (column == 0) outcol = 0;
  for (; outcol < outWidth && outcol < column; ++outcol) PrTxt(" ");
  const int length = static_cast<int>(text.size());
  if (outcol < outWidth) {
    if (outcol + length > outWidth - 1) text = text.substr(0, outWidth - outcol);
    PrTxt(text);
  }
  outcol += length;
}

void SayVal(int column, const Value& value) { SayTxt(column, fmtExpr(value)); }

void SayNL() {
  PrTxt("\n");
  outcol = 0;
}

}  // namespace mox
