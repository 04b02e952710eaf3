// Files by position: what tables, indexes and new files need of the host. One source a host.
//
// A handle is for one file; it isn't passed on to programs that are started. Offsets and sizes are
// in bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace mox {

using FileHandle = std::intptr_t;
constexpr FileHandle noFile = -1;

constexpr char endMark = 0x1A;  // behind the content of a text, a table, a memory file

enum class FileMode {
  read,
  change,  // an existing file, to read and write
  make,    // the same, or a new, empty one; not through a link in the last place
};

// Opens a plain file, through links too: noFile when it can't be opened or is none.
FileHandle OS_FileOpen(const std::string& path, FileMode mode);
void OS_FileClose(FileHandle f);

std::int64_t OS_FileSize(FileHandle f);  // -1 when it can't be told
// Reads up to n bytes, fewer at the end of the file or where it can't be read: how many.
std::size_t OS_FileRead(FileHandle f, std::int64_t offset, void* bytes, std::size_t n);
// Writes n bytes. False when the host refuses; a part may have been written then.
bool OS_FileWrite(FileHandle f, std::int64_t offset, const void* bytes, std::size_t n);
bool OS_FileResize(FileHandle f, std::int64_t size);

// Keeps the file for this handle until it is closed or the program ends in whatever way: false when
// another handle keeps it, or when the path leads to another file since this one was opened.
// Nothing is kept where the file system has no locks.
bool OS_FileKeep(FileHandle f, const std::string& path);

// Opens a stream with a mode of the standard library, which closes it: null when it can't.
std::FILE* OS_StreamOpen(const std::string& path, const char* mode);

// Moves a file to a name, replacing what stands there: false when it can't. Where g_movesOpen is
// false neither may be open.
bool OS_FileMove(const std::string& from, const std::string& to);
extern const bool g_movesOpen;

extern const std::string_view g_lineEnd;  // of the host's text files

// True when the file belongs to this user and has no other name, so that nothing but its content
// is lost when another file takes its place.
bool OS_FileIsPlainOwn(const std::string& path);

// The program is about to wait for a person or another program, who may change files meanwhile: the
// hosts call OS_CountWait, which first calls g_beforeWait if it is set. OS_Waits tells how often.
void OS_CountWait();
unsigned OS_Waits();
extern void (*g_beforeWait)();

// A seam for tests, null in the program: asked before each opening, reading and change of a file;
// false lets it fail. Of a write that fails, as many of its n bytes are written as the answer
// leaves in n; of a read none.
enum class FileOp { open, make, read, write, resize, move, remove };
extern bool (*g_mayUseFile)(FileOp op, std::size_t& n);
bool OS_MayUseFile(FileOp op);

}  // namespace mox
