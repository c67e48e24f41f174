// RecordContent: what a body holds of its record.
#ifndef QUILLON_VQ_RICHTEXT_RECBYTES_H
#define QUILLON_VQ_RICHTEXT_RECBYTES_H

#include "vq/richtext/recsrc.h"

namespace vq {

// Nothing, a view on a loaded block, or bytes of its own. Few bytes, as paragraph records, references, table cells and
// words have, stand in the object itself:
//
//   [ kind | size |          up to 22 bytes              ]
//   [ kind |      | length  | source           | offset  ]
//   [ kind |      | size    | bytes            | room    ]
class RecordContent {
 public:
  RecordContent() { Parts.Inside = {}; }
  ~RecordContent() { Clear(); }
  RecordContent(const RecordContent&) = delete;
  RecordContent& operator=(const RecordContent&) = delete;
  RecordContent& operator=(RecordContent&& other) {
    Clear();
    Parts = other.Parts;
    other.Parts.Inside = {};
    return *this;
  }

  // A view counts on its source. Null gives nothing.
  void Look(RecordSource* source, std::uint32_t offset, std::uint32_t length) {
    Clear();
    if (!source) return;
    source->AddReference();
    Parts.View = {kView, length, source, offset};
  }
  void Clear() {
    if (Kind() == kView) Parts.View.Source->Release();
    if (Kind() == kOutside) delete[] Parts.Outside.Bytes;
    Parts.Inside = {};
  }

  // Null where there is no view, whose offset and length are of no meaning then.
  RecordSource* GetSource() const { return Kind() == kView ? Parts.View.Source : nullptr; }
  std::uint32_t GetOffset() const { return Parts.View.Offset; }
  std::uint32_t GetLength() const { return Parts.View.Length; }

  bool IsOwn() const { return Kind() == kInside || Kind() == kOutside; }
  // Of own bytes.
  std::uint32_t GetSize() const { return Kind() == kInside ? Parts.Inside.Size : Parts.Outside.Size; }
  const unsigned char* GetBytes() const { return Kind() == kInside ? Parts.Inside.Bytes : Parts.Outside.Bytes; }
  unsigned char* GetBytes() { return Kind() == kInside ? Parts.Inside.Bytes : Parts.Outside.Bytes; }
  // What it holds becomes bytes of its own, none where it held nothing or a view; new ones are 0.
  void Resize(std::uint32_t size);
  // Own bytes can then become so many without more memory.
  void Reserve(std::uint32_t size);
  // Makes `oldBytes` at an offset `newBytes`, whose values are open.
  void Splice(std::uint32_t offset, std::uint32_t oldBytes, std::uint32_t newBytes);

 private:
  enum Kinds : unsigned char { kNone, kView, kInside, kOutside };
  static constexpr std::uint32_t kRoomInside = 22;

  Kinds Kind() const { return Parts.Inside.Kind; }
  void Grow(std::uint32_t size);

  union {
    struct {
      Kinds Kind;
      unsigned char Size;
      unsigned char Bytes[kRoomInside];
    } Inside;
    struct {
      Kinds Kind;
      std::uint32_t Length;
      RecordSource* Source;
      std::uint32_t Offset;
    } View;
    struct {
      Kinds Kind;
      std::uint32_t Size;
      unsigned char* Bytes;
      std::uint32_t Room;
    } Outside;
  } Parts;
};

}  // namespace vq

#endif
