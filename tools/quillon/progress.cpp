#include "tools/quillon/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace tool {

namespace {

constexpr auto kQuietTime = std::chrono::seconds(1);
constexpr auto kRedrawTime = std::chrono::milliseconds(100);
constexpr int kBarWidth = 30;

}  // namespace

Progress::Progress(bool wanted, std::string what, std::uint64_t total)
    : wanted_(wanted), what_(std::move(what)), total_(total), next_(start_ + kQuietTime) {}

Progress::~Progress() {
  if (drawn_) std::fputs("\r\033[K", stderr);
}

void Progress::Advance(std::uint64_t done) {
  done_ = done;
  if (!wanted_ || Clock::now() < next_) return;
  Draw();
  next_ = Clock::now() + kRedrawTime;
}

void Progress::Advance(std::uint64_t done, std::uint64_t total) {
  total_ = total;
  Advance(done);
}

void Progress::Draw() {
  drawn_ = true;
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  const unsigned long long done = done_;
  const unsigned long long total = total_;
  if (total_ == 0) {
    std::fprintf(stderr, "\r%s %llu, %.0f s\033[K", what_.c_str(), done, seconds);
    return;
  }
  const double share = std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_));
  const int filled = static_cast<int>(share * kBarWidth);
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "\r%s [%s] %llu/%llu, %.0f s\033[K", what_.c_str(), bar.c_str(), done, total, seconds);
}

void ShowProgress(void* context, unsigned long done, unsigned long total) {
  static_cast<Progress*>(context)->Advance(done, total);
}

bool ErrorIsTerminal() { return isatty(STDERR_FILENO) != 0; }

}  // namespace tool
