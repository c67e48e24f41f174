// Rows of a view's read buffer, and find keys, of any bytes: nothing is read behind them.
#include "fuzz/support.h"
#include "vq/views/entryrow.h"
#include "vq/views/vfindkey.h"

namespace {

void Rows(const unsigned char* bytes, std::size_t size, bool scored) {
  for (std::size_t at = 0; at < size;) {
    COLLECTIONPOSITION position;
    vq::EntryRow row;
    std::size_t used = 0;
    if (vq::ReadRow(bytes + at, size - at, scored, &position, &row, &used) != VQ_OK) return;
    fuzz::Claim(used > 0 && used <= size - at, "a row lies inside the bytes");
    std::span<const unsigned char> value;
    for (std::uint16_t item = 0; item < 8; ++item) {
      vq::FindInSummary({row.Summary, row.SummarySize}, item, "", &value);
      if (value.data() == nullptr) continue;
      fuzz::Claim(value.data() + value.size() <= row.Summary + row.SummarySize, "a value lies inside its summary");
    }
    at += used;
  }
}

void Keys(const std::string& text) {
  VQVFFindKeys keys;
  const VQString key(reinterpret_cast<const VQCHAR*>(text.data()), text.size());
  const void* table = nullptr;
  if (keys.Append(key) != VQ_OK || keys.GetItemTable(&table) != VQ_OK) return;
  fuzz::Claim(static_cast<VQString>(keys[0]).GetBufLength() == key.GetBufLength(), "a key keeps its text");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::World::Get();
  if (size == 0) return 0;
  Rows(data + 1, size - 1, (data[0] & 1) != 0);
  Keys(std::string(reinterpret_cast<const char*>(data + 1), size - 1));
  return 0;
}
