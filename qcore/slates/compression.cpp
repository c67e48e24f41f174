#include "qcore/slates/compression.h"

#include <zstd.h>

#include <new>

namespace qcore {

namespace {

constexpr int kLevel = 3;
constexpr int kLargestWindow = 23;  // as a power of two: 8 MB

void Require(bool made) {
  if (!made) throw std::bad_alloc();
}

}  // namespace

struct Compressor::State {
  std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context{ZSTD_createCCtx(), &ZSTD_freeCCtx};
  std::vector<std::uint8_t> out = std::vector<std::uint8_t>(ZSTD_CStreamOutSize());
};

Compressor::Compressor() : state_(std::make_unique<State>()) {
  Require(state_->context != nullptr);
  ZSTD_CCtx_setParameter(state_->context.get(), ZSTD_c_compressionLevel, kLevel);
  ZSTD_CCtx_setParameter(state_->context.get(), ZSTD_c_checksumFlag, 1);
}

Compressor::~Compressor() = default;

ENGSTATUS Compressor::Put(std::span<const std::uint8_t> bytes, const ByteSink& sink) { return Run(bytes, false, sink); }
ENGSTATUS Compressor::Finish(const ByteSink& sink) { return Run({}, true, sink); }

ENGSTATUS Compressor::Run(std::span<const std::uint8_t> bytes, bool end, const ByteSink& sink) {
  ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
  for (;;) {
    ZSTD_outBuffer out{state_->out.data(), state_->out.size(), 0};
    const std::size_t left = ZSTD_compressStream2(state_->context.get(), &out, &in, end ? ZSTD_e_end : ZSTD_e_continue);
    if (ZSTD_isError(left)) return ENG_ERR_MEMORY;
    const ENGSTATUS status = out.pos == 0 ? ENGSTATUS{ENG_OK} : sink(std::span(state_->out).first(out.pos));
    if (status != ENG_OK) return status;
    if (end ? left == 0 : in.pos == in.size) return ENG_OK;
  }
}

struct Decompressor::State {
  std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context{ZSTD_createDCtx(), &ZSTD_freeDCtx};
  std::vector<std::uint8_t> out = std::vector<std::uint8_t>(ZSTD_DStreamOutSize());
  bool complete = false;
};

Decompressor::Decompressor() : state_(std::make_unique<State>()) {
  Require(state_->context != nullptr);
  ZSTD_DCtx_setParameter(state_->context.get(), ZSTD_d_windowLogMax, kLargestWindow);
}

Decompressor::~Decompressor() = default;

bool Decompressor::IsComplete() const { return state_->complete; }

ENGSTATUS Decompressor::Put(std::span<const std::uint8_t> bytes, const ByteSink& sink) {
  ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
  // A full buffer may leave more inside.
  bool more = false;
  while (in.pos < in.size || more) {
    ZSTD_outBuffer out{state_->out.data(), state_->out.size(), 0};
    const std::size_t wanted = ZSTD_decompressStream(state_->context.get(), &out, &in);
    if (ZSTD_isError(wanted)) return ENG_ERR_OBJECT_CONTENT;
    state_->complete = wanted == 0;
    more = !state_->complete && out.pos == out.size;
    const ENGSTATUS status = out.pos == 0 ? ENGSTATUS{ENG_OK} : sink(std::span(state_->out).first(out.pos));
    if (status != ENG_OK) return status;
  }
  return ENG_OK;
}

}  // namespace qcore
