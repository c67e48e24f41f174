// A started engine over a settings file of its own, and a clock that stands still.
#ifndef QUILLON_TESTS_QCORE_ENGINE_H
#define QUILLON_TESTS_QCORE_ENGINE_H

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "engine/engine.h"
#include "qcore/settings/platform.h"

namespace qtest {

inline const ENGCHAR* Store(const std::string& text) { return reinterpret_cast<const ENGCHAR*>(text.data()); }

class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "qcore-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TempFolder() { std::filesystem::remove_all(path_); }
  std::string File(const std::string& name) const { return path_ + "/" + name; }
  const std::string& path() const { return path_; }
  void Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(File(name), std::ios::binary) << bytes;
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(File(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::string path_;
};

class StandingClock : public qcore::Platform {
 public:
  // 5 March 1997, 15:04:05.06 GMT.
  static constexpr std::int64_t kUsual = 857574245'06;
  explicit StandingClock(std::int64_t hundredths = kUsual) : hundredths_(hundredths) { qcore::ReplacePlatform(this); }
  ~StandingClock() override { qcore::ReplacePlatform(nullptr); }
  std::int64_t NowHundredths() override { return hundredths_; }
  void Random(std::span<std::uint8_t> bytes) override {
    for (std::uint8_t& byte : bytes) byte = next_++;
  }
  void Sleep(std::chrono::milliseconds time) override { hundredths_ += time.count() / 10; }

 private:
  std::int64_t hundredths_;
  std::uint8_t next_ = 0;
};

class Engine : public testing::Test {
 protected:
  explicit Engine(const std::string& settings = "Directory=data\n") {
    folder_.Write("QUILLON.INI", settings);
    EXPECT_EQ(EngInitWithConfig(folder_.path().c_str()), ENG_OK);
  }
  ~Engine() override {
    EngTerm();
    std::uint32_t blocks = 1;
    std::uint32_t handles = 1;
    EngMemStatistics(&blocks, nullptr, &handles);
    EXPECT_EQ(blocks, 0u);
    EXPECT_EQ(handles, 0u);
  }

  TempFolder folder_;
};

}  // namespace qtest

#endif
