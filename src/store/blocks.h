// A few blocks of a file in memory, for a table that one statement reads or writes as a whole.
//
// Reads and writes go to blocks of blockSize bytes at multiples of blockSize; a changed block goes
// to the file when its place is needed for another one, and at blkFlush. While blocks hold
// changes, the file must not be touched in any other way. A refused write is kept in mind: from
// then on every write and flush reports it.
#pragma once

#include <array>
#include <cstdio>
#include <string>

namespace mox {

constexpr size_t blockSize = 32768;
constexpr size_t blockCount = 8;

struct Block {
  long place = -1;  // offset in the file; -1 for none
  size_t size = 0;  // bytes of it that the file has, those still to be written included
  bool changed = false;
  unsigned used = 0;  // time of the last use
  std::string bytes;
};

struct Blocks {
  std::FILE* file = nullptr;  // not owned
  std::array<Block, blockCount> blocks;
  size_t last = 0;  // the block used last
  unsigned clock = 0;
  bool refused = false;
};

// Reads n bytes at the offset: false when the file ends before them (bytes then holds what there
// was) or can't be read.
bool blkRead(Blocks& b, long offset, char* bytes, size_t n);
bool blkWrite(Blocks& b, long offset, const char* bytes, size_t n);
// Writes what was changed to the file and hands it to the operating system.
bool blkFlush(Blocks& b);

}  // namespace mox
