// An open table or index file in memory: blocks of it, read as they are needed.
//
// Where a file is read from front to back, a few blocks serve for all of it: fresh memory would
// cost more than the reading.
//
// A file that several areas have open has one image, so that each sees what the others change. The
// image is old behind each wait for a person or another program, who may have changed the file.
//
// A write goes to the file at once unless the image holds writes: then changed blocks go out at
// imgPut, or when their place is needed for others, in ascending order but for the first block,
// which goes last: it has the header, whose count covers what is behind it. A write that the host
// refuses leaves the bytes that the file had, or the image is torn: the host refused them too. A
// refused write of held bytes is kept in mind, and from then on every write and put reports it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "session/files.h"
#include "session/newfile.h"

namespace mox {

constexpr std::size_t blockSize = 32768;
constexpr std::size_t blockCount = 128;  // at most, of one file

struct Block {
  std::int64_t place = 0;        // offset in the file, a multiple of blockSize; -1: not read
  std::size_t size = 0;          // bytes of it that the file has, the held ones included
  std::size_t from = 0, to = 0;  // what of it is held
  unsigned used = 0;             // time of the last use
  std::string bytes;
};

struct Image {
  FileHandle f = noFile;
  std::string name;       // for the report that it can't be read (session.h: ReadFailed)
  std::int64_t size = 0;  // of the file, held bytes included
  std::vector<Block> blocks;
  std::vector<std::uint8_t> slots;  // by number in the file: 1 + the index in blocks, or 0
  unsigned clock = 0;
  std::int64_t loaded = 0;  // the place of the block read last
  int ahead = 0;            // blocks read one behind the other
  unsigned waits = 0;       // at the last look at the file
  bool holds = false;
  bool refused = false;
  bool torn = false;  // some write stays done by half; who makes the file whole clears it
};

// Takes over an open file.
void imgOpen(Image& m, FileHandle f, const std::string& name);
// Reads n bytes at the offset: false when the file ends before them (bytes then holds what there
// was) or can't be read.
bool imgRead(Image& m, std::int64_t offset, char* bytes, std::size_t n);
// True when the file reaches to the end of these bytes.
bool imgHas(Image& m, std::int64_t offset, std::size_t n);
bool imgWrite(Image& m, std::int64_t offset, const char* bytes, std::size_t n);
// Hands what is held to the operating system.
bool imgPut(Image& m);
// The same, and ends the holding. What the host refused is forgotten then.
bool imgLetGo(Image& m);

}  // namespace mox
