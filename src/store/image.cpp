#include "store/image.h"

#include <algorithm>
#include <cstring>

#include "session/session.h"

namespace mox {

namespace {

std::int64_t _length(std::size_t n) { return static_cast<std::int64_t>(n); }

constexpr std::int64_t _none = -1;

std::size_t _number(std::int64_t offset) { return static_cast<std::size_t>(offset) / blockSize; }

bool _isHeld(const Block& b) { return b.from < b.to; }

// Hands a block's held bytes to the operating system. A part that was written before the host
// refused is taken back, as far as the file had other bytes there.
void _put(Image& m, Block& b) {
  if (!_isHeld(b) || m.refused) return;
  const std::int64_t offset = b.place + _length(b.from);
  std::string old(b.to - b.from, '\0');
  old.resize(OS_FileRead(m.f, offset, old.data(), old.size()));
  m.refused = !OS_FileWrite(m.f, offset, b.bytes.data() + b.from, b.to - b.from);
  if (m.refused && !old.empty()) OS_FileWrite(m.f, offset, old.data(), old.size());
  if (!m.refused) b.from = b.to = 0;
}

void _load(Image& m, Block& b, std::int64_t place) {
  b.place = place;
  b.bytes.resize(blockSize);
  b.size = OS_FileRead(m.f, place, b.bytes.data(), blockSize);
  std::fill(b.bytes.begin() + _length(b.size), b.bytes.end(), '\0');
  if (b.size == blockSize || OS_FileSize(m.f) <= place + _length(b.size)) return;
  b.place = _none;  // the next look reads again
  b.size = 0;
  ReadFailed(m.name);
}

Block* _find(Image& m, std::int64_t offset) {
  const std::size_t number = _number(offset);
  const std::size_t slot = number < m.slots.size() ? m.slots[number] : 0;
  return slot == 0 ? nullptr : &m.blocks[slot - 1];
}

// A block for the bytes of the file at a place.
Block& _free(Image& m, std::int64_t place) {
  m.ahead = place == m.loaded + _length(blockSize) ? m.ahead + 1 : 0;
  m.loaded = place;
  Block* b = m.ahead > 1 ? _find(m, place - 2 * _length(blockSize)) : nullptr;
  if (!b || _isHeld(*b)) {
    if (m.blocks.size() < blockCount) return m.blocks.emplace_back();
    const auto older = [](const Block& x, const Block& y) { return x.used < y.used; };
    b = &*std::min_element(m.blocks.begin(), m.blocks.end(), older);
    if (_isHeld(*b)) imgPut(m);
  }
  if (b->place != _none) m.slots[_number(b->place)] = 0;
  return *b;
}

// The block with this byte of the file.
Block& _at(Image& m, std::int64_t offset) {
  Block* b = _find(m, offset);
  if (!b) {
    const std::int64_t place = offset - offset % _length(blockSize);
    b = &_free(m, place);
    _load(m, *b, place);
    if (b->place == _none) return *b;
    m.slots.resize(std::max(m.slots.size(), _number(offset) + 1));
    m.slots[_number(offset)] = static_cast<std::uint8_t>(b - m.blocks.data() + 1);
  }
  b->used = ++m.clock;
  return *b;
}

void _forget(Image& m) {
  m.blocks.clear();
  m.slots.clear();
}

// Forgets what may be old. Nothing is held over a wait.
void _refresh(Image& m) {
  if (m.holds || m.waits == OS_Waits()) return;
  m.waits = OS_Waits();
  _forget(m);
  m.size = std::max<std::int64_t>(OS_FileSize(m.f), 0);
}

// Puts bytes into the blocks, held or, when they are in the file already, only into those that are
// there.
void _patch(Image& m, std::int64_t offset, const char* bytes, std::size_t n, bool held) {
  if (offset > m.size) {  // blocks at the end of the file don't know of the gap
    imgPut(m);
    _forget(m);
  }
  m.size = std::max(m.size, offset + _length(n));
  while (n > 0) {
    const std::int64_t place = offset - offset % _length(blockSize);
    const std::size_t from = static_cast<std::size_t>(offset - place);
    const std::size_t here = std::min(n, blockSize - from);
    Block* const b = held ? &_at(m, offset) : _find(m, offset);
    if (b && b->place != place) {
      m.refused = true;
    } else if (b) {
      std::memcpy(b->bytes.data() + from, bytes, here);
      b->size = std::max(b->size, from + here);
      if (held) {
        b->from = _isHeld(*b) ? std::min(b->from, from) : from;
        b->to = std::max(b->to, from + here);
      }
    }
    bytes += here;
    offset += _length(here);
    n -= here;
  }
}

// Writes at once. What the host refused is taken back as far as it came.
bool _writeThrough(Image& m, std::int64_t offset, const char* bytes, std::size_t n) {
  const std::int64_t inside = std::clamp<std::int64_t>(m.size - offset, 0, _length(n));
  std::string old(static_cast<std::size_t>(inside), '\0');
  const bool known = imgRead(m, offset, old.data(), old.size());
  if (OS_FileWrite(m.f, offset, bytes, n)) return true;
  m.torn |= inside > 0 && !(known && OS_FileWrite(m.f, offset, old.data(), old.size()));
  if (offset + _length(n) > m.size && OS_FileSize(m.f) > m.size) OS_FileResize(m.f, m.size);
  return false;
}

}  // namespace

void imgOpen(Image& m, FileHandle f, const std::string& name) {
  m = Image{};
  m.f = f;
  m.name = name;
  m.waits = OS_Waits();
  m.size = std::max<std::int64_t>(OS_FileSize(f), 0);
}

bool imgRead(Image& m, std::int64_t offset, char* bytes, std::size_t n) {
  _refresh(m);
  while (n > 0) {
    const Block& b = _at(m, offset);
    const std::size_t from = static_cast<std::size_t>(offset - b.place);
    const std::size_t here = std::min(n, b.size - std::min(from, b.size));
    if (here == 0) return false;
    std::memcpy(bytes, b.bytes.data() + from, here);
    bytes += here;
    offset += _length(here);
    n -= here;
  }
  return true;
}

bool imgHas(Image& m, std::int64_t offset, std::size_t n) {
  _refresh(m);
  return offset + _length(n) <= m.size;
}

bool imgWrite(Image& m, std::int64_t offset, const char* bytes, std::size_t n) {
  _refresh(m);
  if (m.refused || (!m.holds && !_writeThrough(m, offset, bytes, n))) return false;
  _patch(m, offset, bytes, n, m.holds);
  return !m.refused;
}

bool imgPut(Image& m) {
  std::vector<Block*> held;
  for (Block& b : m.blocks)
    if (_isHeld(b)) held.push_back(&b);
  const auto before = [](const Block* x, const Block* y) {
    return (x->place == 0) != (y->place == 0) ? y->place == 0 : x->place < y->place;
  };
  std::sort(held.begin(), held.end(), before);
  for (Block* const b : held) _put(m, *b);
  return !m.refused;
}

bool imgLetGo(Image& m) {
  m.holds = false;
  if (imgPut(m)) return true;
  m.refused = false;
  _forget(m);
  m.size = std::max<std::int64_t>(OS_FileSize(m.f), 0);
  return false;
}

}  // namespace mox
