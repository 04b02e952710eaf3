// The programs of Windows: starting one, and where this one stands and with which arguments.
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

std::vector<std::string> OS_Arguments(int, char**) {
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(TextOf(words[i]));
  LocalFree(words);
  return arguments;
}

int OS_RunProgWait(const std::string& program, const std::string& args, int mode) {
  std::fflush(nullptr);
  OS_CountWait();
  const std::filesystem::path file = PathOf(program), words = PathOf(args);  // as wide texts
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof start;
  start.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
  start.lpFile = file.c_str();
  start.lpParameters = words.c_str();
  start.nShow = mode;
  if (!ShellExecuteExW(&start) || !start.hProcess) return -1;
  WaitForSingleObject(start.hProcess, INFINITE);
  DWORD code = 0;
  const bool known = GetExitCodeProcess(start.hProcess, &code);
  CloseHandle(start.hProcess);
  return known ? static_cast<int>(code) : -1;
}

std::optional<std::string> OS_Variable(const std::string& name) {
  const wchar_t* const value = _wgetenv(PathOf(name).c_str());
  if (!value) return std::nullopt;
  return TextOf(value);
}

std::string OS_StateDir() { return OS_Variable("LOCALAPPDATA").value_or(""); }

std::string OS_GetProgDir() {
  constexpr DWORD longest = 32768;
  std::wstring name(longest, L'\0');
  const DWORD size = GetModuleFileNameW(nullptr, name.data(), longest);
  name.resize(size < longest ? size : 0);
  const std::filesystem::path path(name);
  return path.has_parent_path() ? TextOf(path.parent_path()) : ".";
}

}  // namespace mox
