// RecordWriter: lays the records of a tree out into item values.
#ifndef QUILLON_VQ_RICHTEXT_VQRTWRIT_H
#define QUILLON_VQ_RICHTEXT_VQRTWRIT_H

#include <vector>

#include "vq/richtext/vqrtobjb.h"
#include "vq/store/itemplace.h"

namespace vq {

// Objects hand their records over in stream order. The blocks are whole item values of at most kItemTarget bytes; a
// longer record stands alone in its block, and none is split. The objects are not touched before Commit.
class RecordWriter {
 public:
  // `total` is the size of all records that will come.
  explicit RecordWriter(unsigned long total);
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  [[nodiscard]] VQSTATUS Add(VQRTObjectBody& object);
  // Ends the last block. An empty tree gives one block with the type word alone.
  [[nodiscard]] VQSTATUS Finish();
  std::vector<ItemBlock>& GetBlocks() { return Blocks; }
  // Points each object at its bytes in the new blocks, of which `sources` has one each.
  void Commit(const std::vector<RecordSource*>& sources);

 private:
  [[nodiscard]] VQSTATUS OpenBlock(std::uint32_t size);
  [[nodiscard]] VQSTATUS CloseBlock();

  std::vector<ItemBlock> Blocks;
  std::vector<VQRTObjectBody*> Objects;   // that have a record, in stream order
  std::vector<std::size_t> FirstObjects;  // of each block
  unsigned long Remaining;
  unsigned char* Bytes = nullptr;  // of the block that is being filled, locked
  std::uint32_t Used = 0;
  std::uint32_t Allocated = 0;
  MemoryLock Reading;  // the block that records are being copied from
};

}  // namespace vq

#endif
