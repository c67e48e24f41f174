// Record framing of any bytes: a header reads inside its bytes, a length goes back where it came from, and a stream
// that parses is written as it was read.
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/support.h"
#include "vq/richtext/vqrtbody.h"

namespace {

using fuzz::Claim;

void CheckHeaders(const std::uint8_t* data, std::uint32_t size) {
  for (std::uint32_t offset = 0; offset < size;) {
    vq::RecordHeader header;
    if (!vq::ReadRecordHeader(data + offset, size - offset, &header)) {
      Claim(size - offset < 6, "a header is at most six bytes");
      return;
    }
    std::vector<unsigned char> again(data + offset, data + offset + header.HeaderSize);
    vq::RecordHeader back;
    vq::WriteRecordLength(again.data(), header.Length);
    Claim(vq::ReadRecordHeader(again.data(), header.HeaderSize, &back), "a written header reads");
    Claim(back.Length == header.Length && back.Signature == header.Signature, "as it was");
    if (header.Length > vq::kRecordLimit) return;
    offset += vq::Padded(header.Length);
  }
}

VQRichText StandAlone(const std::uint8_t* data, std::uint32_t size) {
  ENGHANDLE memory = 0;
  Claim(EngMemAlloc(0, size + 2, &memory) == 0, "there is memory");
  {
    const vq::MemoryLock lock(memory);
    std::memcpy(lock.GetBytes() + 2, data, size);
    lock.GetBytes()[0] = 1;
    lock.GetBytes()[1] = 0;
  }
  return VQRichText(new VQRichTextBody(memory, size + 2));
}

void CheckStream(const std::uint8_t* data, std::uint32_t size) {
  const VQRichText text = StandAlone(data, size);
  if (text.GetRichTextBody()->Initialize() != VQ_OK) return;
  std::vector<vq::ItemBlock> blocks;
  Claim(text.GetRichTextBody()->WriteBlocks(&blocks) == VQ_OK, "what was read can be written");
  std::uint32_t offset = 0;
  for (const vq::ItemBlock& block : blocks) {
    {
      const vq::MemoryLock lock(block.Memory);
      const std::uint32_t bytes = std::min(block.Size - 2, size - offset);
      Claim(block.Size - 2 <= size - offset + 1, "at most a padding byte comes on");
      Claim(std::memcmp(lock.GetBytes() + 2, data + offset, bytes) == 0, "the bytes are those that were read");
      offset += bytes;
    }
    EngMemFree(block.Memory);
  }
  Claim(offset == size, "no byte is lost");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 60000) return 0;
  fuzz::World::Get();
  CheckHeaders(data, static_cast<std::uint32_t>(size));
  CheckStream(data, static_cast<std::uint32_t>(size));
  return 0;
}
