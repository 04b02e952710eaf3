// The files of Windows. Names are UTF-8.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "host/file.h"
#include "host/path.h"

namespace mox {

namespace {

HANDLE _handle(FileHandle f) { return reinterpret_cast<HANDLE>(f); }

OVERLAPPED _at(std::int64_t offset) {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

constexpr std::size_t _mostAtOnce = 1u << 30;

// What is kept is a byte that no file has: other handles may read the file meanwhile.
constexpr std::int64_t _keptByte = std::int64_t{1} << 62;

}  // namespace

const std::string_view g_lineEnd = "\r\n";
const bool g_movesOpen = false;

FileHandle OS_FileOpen(const std::string& path, FileMode mode) {
  if (!OS_MayUseFile(mode == FileMode::make ? FileOp::make : FileOp::open)) return noFile;
  const DWORD access = GENERIC_READ | (mode == FileMode::read ? 0 : GENERIC_WRITE);
  const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE h = CreateFileW(PathOf(path).c_str(), access, share, nullptr,
                               mode == FileMode::make ? OPEN_ALWAYS : OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return noFile;
  if (GetFileType(h) == FILE_TYPE_DISK) return reinterpret_cast<FileHandle>(h);
  CloseHandle(h);
  return noFile;
}

void OS_FileClose(FileHandle f) {
  if (f != noFile) CloseHandle(_handle(f));
}

std::int64_t OS_FileSize(FileHandle f) {
  LARGE_INTEGER size;
  return GetFileSizeEx(_handle(f), &size) ? size.QuadPart : -1;
}

std::size_t OS_FileRead(FileHandle f, std::int64_t offset, void* bytes, std::size_t n) {
  if (!OS_MayUseFile(FileOp::read)) return 0;
  std::size_t done = 0;
  while (done < n) {
    OVERLAPPED place = _at(offset + static_cast<std::int64_t>(done));
    const DWORD want = static_cast<DWORD>(std::min(n - done, _mostAtOnce));
    DWORD got = 0;
    if (!ReadFile(_handle(f), static_cast<char*>(bytes) + done, want, &got, &place) || got == 0)
      break;
    done += got;
  }
  return done;
}

bool OS_FileWrite(FileHandle f, std::int64_t offset, const void* bytes, std::size_t n) {
  const bool may = !g_mayUseFile || g_mayUseFile(FileOp::write, n);
  std::size_t done = 0;
  while (done < n) {
    OVERLAPPED place = _at(offset + static_cast<std::int64_t>(done));
    const DWORD want = static_cast<DWORD>(std::min(n - done, _mostAtOnce));
    DWORD put = 0;
    if (!WriteFile(_handle(f), static_cast<const char*>(bytes) + done, want, &put, &place) ||
        put == 0)
      return false;
    done += put;
  }
  return may;
}

bool OS_FileResize(FileHandle f, std::int64_t size) {
  LARGE_INTEGER end;
  end.QuadPart = size;
  return OS_MayUseFile(FileOp::resize) && SetFilePointerEx(_handle(f), end, nullptr, FILE_BEGIN) &&
         SetEndOfFile(_handle(f));
}

// The path still leads to the file: none that a handle has open is replaced.
bool OS_FileKeep(FileHandle f, const std::string&) {
  OVERLAPPED place = _at(_keptByte);
  return LockFileEx(_handle(f), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0,
                    &place) ||
         (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING);
}

std::FILE* OS_StreamOpen(const std::string& path, const char* mode) {
  return _wfopen(PathOf(path).c_str(), std::wstring(mode, mode + std::strlen(mode)).c_str());
}

bool OS_FileMove(const std::string& from, const std::string& to) {
  return OS_MayUseFile(FileOp::move) &&
         MoveFileExW(PathOf(from).c_str(), PathOf(to).c_str(), MOVEFILE_REPLACE_EXISTING);
}

bool OS_FileIsPlainOwn(const std::string& path) {
  const HANDLE h = CreateFileW(PathOf(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                               OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) return false;
  BY_HANDLE_FILE_INFORMATION info;
  const bool own = GetFileInformationByHandle(h, &info) && info.nNumberOfLinks == 1;
  CloseHandle(h);
  return own;
}

}  // namespace mox
