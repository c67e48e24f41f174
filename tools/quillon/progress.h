// A progress bar on standard error, for work that takes longer than a second.
#ifndef QUILLON_TOOLS_QUILLON_PROGRESS_H
#define QUILLON_TOOLS_QUILLON_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <string>

namespace tool {

// Drawn only if wanted; redrawn at most ten times a second; wiped when the object goes.
class Progress {
 public:
  // With `total` 0 it counts without a bar.
  Progress(bool wanted, std::string what, std::uint64_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Advance(std::uint64_t done);
  // Where the total comes with each step.
  void Advance(std::uint64_t done, std::uint64_t total);

 private:
  void Draw();

  using Clock = std::chrono::steady_clock;
  bool wanted_;
  bool drawn_ = false;
  std::string what_;
  std::uint64_t total_;
  std::uint64_t done_ = 0;
  Clock::time_point start_ = Clock::now();
  Clock::time_point next_;
};

// For operations that tell their progress; the context is a Progress.
void ShowProgress(void* context, unsigned long done, unsigned long total);

// Whether standard error is a terminal.
bool ErrorIsTerminal();

}  // namespace tool

#endif
