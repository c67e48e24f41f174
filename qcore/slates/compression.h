// Compressed streams: Zstandard frames, in pieces of any size and with bounded memory.
#ifndef QUILLON_QCORE_SLATES_COMPRESSION_H
#define QUILLON_QCORE_SLATES_COMPRESSION_H

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "engine/status.h"
#include "engine/types.h"

namespace qcore {

// Takes what comes out; its bytes are good during the call only.
using ByteSink = std::function<ENGSTATUS(std::span<const std::uint8_t>)>;

class Compressor {
 public:
  Compressor();
  ~Compressor();
  [[nodiscard]] ENGSTATUS Put(std::span<const std::uint8_t> bytes, const ByteSink& sink);
  [[nodiscard]] ENGSTATUS Finish(const ByteSink& sink);

 private:
  struct State;
  [[nodiscard]] ENGSTATUS Run(std::span<const std::uint8_t> bytes, bool end, const ByteSink& sink);
  std::unique_ptr<State> state_;
};

class Decompressor {
 public:
  Decompressor();
  ~Decompressor();
  // ENG_ERR_OBJECT_CONTENT for bytes that are no such stream, or one that asks for more memory than any of ours does.
  [[nodiscard]] ENGSTATUS Put(std::span<const std::uint8_t> bytes, const ByteSink& sink);
  // Whether the stream has ended where a frame does.
  bool IsComplete() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qcore

#endif
