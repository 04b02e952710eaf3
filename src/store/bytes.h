// Numbers on disk: one or two bytes, unsigned, little-endian.
#pragma once

namespace mox {

inline int get1(const unsigned char* p) { return p[0]; }
inline int get2(const unsigned char* p) { return p[0] | p[1] << 8; }

// The low 8 or 16 bits of n are stored.
inline void put1(unsigned char* p, int n) { p[0] = static_cast<unsigned char>(n & 0xFF); }
inline void put2(unsigned char* p, int n) {
  put1(p, n);
  put1(p + 1, n >> 8);
}

}  // namespace mox
