// The stored form of every structure of engine/records.h.
//
// A structure's layout is one list of its fields, in stored order; length, read and write come from it. Where fields
// lie side by side in the host structure as they do in the stored form, they move as one run of bytes.
#ifndef QUILLON_QCORE_RECORDS_LAYOUTS_H
#define QUILLON_QCORE_RECORDS_LAYOUTS_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace qcore::records {

struct Run {
  std::uint16_t host;  // offset in the host structure
  std::uint16_t stored;
  std::uint16_t length;
};

struct Layout {
  std::uint16_t code;
  std::uint16_t length;     // bytes stored
  std::uint16_t host_size;  // bytes of the host structure
  std::span<const Run> runs;
};

// Null for an unknown code.
const Layout* Find(std::uint16_t code);
std::span<const Layout> All();

// `stored` holds count * layout.length bytes, `host` as many structures. Bytes of the host structure between its fields
// stay as they are.
void Read(const Layout& layout, const std::byte* stored, void* host, std::uint16_t count);
void Write(const Layout& layout, const void* host, std::byte* stored, std::uint16_t count);

}  // namespace qcore::records

#endif
