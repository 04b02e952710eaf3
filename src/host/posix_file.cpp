// The files of a POSIX host.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/file.h"

namespace mox {

namespace {

int _fd(FileHandle f) { return static_cast<int>(f); }

// True when the path leads to a file that isn't plain: what mustn't even be opened.
bool _isOther(const std::string& path) {
  struct stat s;
  return stat(path.c_str(), &s) == 0 && !S_ISREG(s.st_mode);
}

}  // namespace

const std::string_view g_lineEnd = "\n";
const bool g_movesOpen = true;

FileHandle OS_FileOpen(const std::string& path, FileMode mode) {
  if (_isOther(path) || !OS_MayUseFile(mode == FileMode::make ? FileOp::make : FileOp::open))
    return noFile;
  int flags = O_CLOEXEC | (mode == FileMode::read ? O_RDONLY : O_RDWR);
  if (mode == FileMode::make) flags |= O_CREAT | O_NOFOLLOW;
  const int fd = open(path.c_str(), flags, 0666);
  return fd < 0 ? noFile : fd;
}

void OS_FileClose(FileHandle f) {
  if (f != noFile) close(_fd(f));
}

std::int64_t OS_FileSize(FileHandle f) {
  struct stat s;
  return fstat(_fd(f), &s) == 0 ? s.st_size : -1;
}

std::size_t OS_FileRead(FileHandle f, std::int64_t offset, void* bytes, std::size_t n) {
  if (!OS_MayUseFile(FileOp::read)) return 0;
  std::size_t done = 0;
  while (done < n) {
    const ssize_t got = pread(_fd(f), static_cast<char*>(bytes) + done, n - done,
                              static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

bool OS_FileWrite(FileHandle f, std::int64_t offset, const void* bytes, std::size_t n) {
  const bool may = !g_mayUseFile || g_mayUseFile(FileOp::write, n);
  std::size_t done = 0;
  while (done < n) {
    const ssize_t put = pwrite(_fd(f), static_cast<const char*>(bytes) + done, n - done,
                               static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return false;
    done += static_cast<std::size_t>(put);
  }
  return may;
}

bool OS_FileResize(FileHandle f, std::int64_t size) {
  return OS_MayUseFile(FileOp::resize) && ftruncate(_fd(f), static_cast<off_t>(size)) == 0;
}

bool OS_FileKeep(FileHandle f, const std::string& path) {
  if (flock(_fd(f), LOCK_EX | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR))
    return false;
  struct stat kept, there;
  return fstat(_fd(f), &kept) == 0 && stat(path.c_str(), &there) == 0 &&
         kept.st_dev == there.st_dev && kept.st_ino == there.st_ino;
}

std::FILE* OS_StreamOpen(const std::string& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

bool OS_FileMove(const std::string& from, const std::string& to) {
  return OS_MayUseFile(FileOp::move) && std::rename(from.c_str(), to.c_str()) == 0;
}

bool OS_FileIsPlainOwn(const std::string& path) {
  struct stat s;
  return stat(path.c_str(), &s) == 0 && S_ISREG(s.st_mode) && s.st_nlink == 1 &&
         s.st_uid == geteuid();
}

}  // namespace mox
