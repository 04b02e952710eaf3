#include "store/blocks.h"

#include <algorithm>
#include <cstring>

namespace mox {

namespace {

void _write(Blocks& b, Block& block) {
  if (!block.changed || b.refused) return;
  b.refused = std::fseek(b.file, block.place, SEEK_SET) != 0 ||
              std::fwrite(block.bytes.data(), 1, block.size, b.file) != block.size ||
              std::fflush(b.file) != 0;
  block.changed = b.refused;
}

void _load(Blocks& b, Block& block, long place) {
  _write(b, block);
  block.place = place;
  block.changed = false;
  block.bytes.assign(blockSize, '\0');
  block.size = 0;
  if (std::fseek(b.file, place, SEEK_SET) == 0)
    block.size = std::fread(block.bytes.data(), 1, blockSize, b.file);
  std::clearerr(b.file);
}

// The block with this byte of the file: a block at hand, or else the one not used for longest.
Block& _at(Blocks& b, long offset) {
  const long place = offset - offset % static_cast<long>(blockSize);
  if (b.blocks[b.last].place != place) {
    const auto isIt = [&](const Block& block) { return block.place == place; };
    auto hit = std::find_if(b.blocks.begin(), b.blocks.end(), isIt);
    if (hit == b.blocks.end()) {
      const auto older = [](const Block& x, const Block& y) { return x.used < y.used; };
      hit = std::min_element(b.blocks.begin(), b.blocks.end(), older);
      _load(b, *hit, place);
    }
    b.last = static_cast<size_t>(hit - b.blocks.begin());
    hit->used = ++b.clock;
  }
  return b.blocks[b.last];
}

}  // namespace

bool blkRead(Blocks& b, long offset, char* bytes, size_t n) {
  while (n > 0) {
    const Block& block = _at(b, offset);
    const size_t from = static_cast<size_t>(offset - block.place);
    const size_t here = std::min(n, block.size - std::min(from, block.size));
    if (here == 0) return false;
    std::memcpy(bytes, block.bytes.data() + from, here);
    bytes += here;
    offset += static_cast<long>(here);
    n -= here;
  }
  return true;
}

bool blkWrite(Blocks& b, long offset, const char* bytes, size_t n) {
  while (n > 0 && !b.refused) {
    Block& block = _at(b, offset);
    const size_t from = static_cast<size_t>(offset - block.place);
    const size_t here = std::min(n, blockSize - from);
    std::memcpy(block.bytes.data() + from, bytes, here);
    block.size = std::max(block.size, from + here);
    block.changed = true;
    bytes += here;
    offset += static_cast<long>(here);
    n -= here;
  }
  return !b.refused;
}

bool blkFlush(Blocks& b) {
  for (Block& block : b.blocks) _write(b, block);
  return !b.refused;
}

}  // namespace mox
