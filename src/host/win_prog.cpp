// The programs of Windows: starting one, and where this one stands.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>
// It needs what stands in the header above.
#include <shellapi.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "host/file.h"
#include "host/host.h"
#include "host/path.h"

namespace mox {

int OS_RunProgWait(const std::string& program, const std::string& args, int mode) {
  std::fflush(nullptr);
  OS_CountWait();
  SHELLEXECUTEINFOA start = {};
  start.cbSize = sizeof start;
  start.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
  start.lpFile = program.c_str();
  start.lpParameters = args.c_str();
  start.nShow = mode;
  if (!ShellExecuteExA(&start) || !start.hProcess) return -1;
  WaitForSingleObject(start.hProcess, INFINITE);
  DWORD code = 0;
  const bool known = GetExitCodeProcess(start.hProcess, &code);
  CloseHandle(start.hProcess);
  return known ? static_cast<int>(code) : -1;
}

std::string OS_GetProgDir() {
  char name[512];
  const DWORD size = GetModuleFileNameA(nullptr, name, sizeof name);
  if (size == 0 || size >= sizeof name) return ".";
  const std::filesystem::path path = PathOf(std::string(name, size));
  return path.has_parent_path() ? path.parent_path().string() : ".";
}

}  // namespace mox
