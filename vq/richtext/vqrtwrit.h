// RecordWriter: lays the records of a tree out into item values.
#ifndef QUILLON_VQ_RICHTEXT_VQRTWRIT_H
#define QUILLON_VQ_RICHTEXT_VQRTWRIT_H

#include <span>
#include <vector>

#include "vq/richtext/vqrtobjb.h"
#include "vq/store/itemplace.h"

namespace vq {

// Records in stream order. The blocks are whole item values of at most kItemTarget bytes; a longer record stands alone
// in its block, and none is split. A loaded block whose records are unchanged is kept, and its objects are not even
// looked at, unless it fits into the room beside records that must be written. Objects are not touched before Commit.
class RecordWriter {
 public:
  // `loaded` are the blocks that may be kept; without them all records are written.
  RecordWriter(VQRTBaseContainerBody& top, std::span<const LoadedBlock> loaded);
  ~RecordWriter();
  RecordWriter(const RecordWriter&) = delete;
  RecordWriter& operator=(const RecordWriter&) = delete;

  // Whether the parser will take the records back: VQERR_RT_INVALID where it will not, and for a structure without
  // its end, or what StreamCheck gives.
  [[nodiscard]] VQSTATUS Check() const;
  // An empty tree gives one block with the type word alone. A block that is kept in another place is copied.
  [[nodiscard]] VQSTATUS Write();
  std::vector<ItemBlock>& GetBlocks() { return Blocks; }
  // Points the written objects at their bytes in `stored`, which has the values that the blocks have become, and
  // puts the sources of kept blocks there.
  void Commit(std::span<LoadedBlock> stored);

  // For objects: the record comes next.
  [[nodiscard]] VQSTATUS Add(VQRTObjectBody& object);

 private:
  // Objects from First up to End (null: to the last), none of which leads another one.
  struct Stretch {
    VQRTObjectBody* First;
    VQRTObjectBody* End;
    unsigned long Bytes;
    const LoadedBlock* Kept;  // that holds just these records; null when they are to be written
  };

  [[nodiscard]] std::vector<Stretch> FindStretches() const;
  void FillRoom();
  // The loaded block, from *next on, that starts with the object and is unchanged; null when there is none.
  const LoadedBlock* UnchangedBlock(const VQRTObjectBody& object, std::size_t* next) const;
  VQRTObjectBody* NextObject(const VQRTObjectBody* object) const;
  [[nodiscard]] VQSTATUS WriteStretch(const Stretch& stretch);
  [[nodiscard]] VQSTATUS Keep(const LoadedBlock& block);
  // Its memory is still to come; `kept` is null for a new one.
  ItemBlock& AddBlock(RecordSource* kept);
  [[nodiscard]] VQSTATUS OpenBlock(std::uint32_t size);
  [[nodiscard]] VQSTATUS CloseBlock();

  VQRTBaseContainerBody& Top;
  std::span<const LoadedBlock> Loaded;
  std::vector<Stretch> Stretches;
  std::vector<ItemBlock> Blocks;
  std::vector<RecordSource*> KeptSources;  // of each block, null for a written one
  std::vector<VQRTObjectBody*> Objects;    // that have been written, in stream order
  std::vector<std::size_t> FirstObjects;   // of each block
  unsigned long Remaining = 0;
  unsigned char* Bytes = nullptr;  // of the block that is being filled, locked
  std::uint32_t Used = 0;
  std::uint32_t Allocated = 0;
  MemoryLock Reading;  // the block that records are being copied from
};

}  // namespace vq

#endif
