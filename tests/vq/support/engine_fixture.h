// Tests on the real engine: each has a directory of its own with a settings file, and a session.
//
// At the end nothing may be left: engine memory, handles and tracked objects are back to what they were.
#ifndef QUILLON_TESTS_VQ_SUPPORT_ENGINE_FIXTURE_H
#define QUILLON_TESTS_VQ_SUPPORT_ENGINE_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <concepts>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "engine/engine.h"
#include "vq/frame/session.h"
#include "vq/frame/state.h"

namespace vqtest {

// The status of an operation, returned or thrown; 0 for one that has none.
template <class Operation>
VQSTATUS StatusOf(Operation&& operation) {
  try {
    if constexpr (std::same_as<decltype(operation()), VQSTATUS>) {
      return operation();
    } else {
      static_cast<void>(operation());
      return VQ_OK;
    }
  } catch (VQSTATUS status) {
    return status;
  }
}

// As StatusOf, for operations with a status result: these throw only while the switch is on, but for assertions.
template <class Operation>
VQSTATUS ReturnedStatusOf(Operation&& operation) {
  if (VQGetThrowAllErrors() != 0) return StatusOf(operation);
  VQSTATUS status = VQ_OK;
  try {
    status = operation();
  } catch (VQSTATUS thrown) {
    EXPECT_EQ(thrown, VQERR_ASSERTION_FAILED) << std::hex << thrown << " was thrown with the switch off";
    status = thrown;
  }
  return status;
}

inline std::string TextOf(const VQString& text) {
  return {reinterpret_cast<const char*>(text.GetBuf()), text.GetBufLength()};
}

// Store text of any bytes.
inline VQString Store(const std::string& bytes) {
  return {reinterpret_cast<const VQCHAR*>(bytes.data()), static_cast<unsigned long>(bytes.size())};
}

struct Live {
  std::uint32_t Blocks = 0;
  std::uint64_t Bytes = 0;
  std::uint32_t Handles = 0;
  unsigned long Objects = 0;
  bool operator==(const Live&) const = default;

  static Live Now() {
    Live live;
    EngMemStatistics(&live.Blocks, &live.Bytes, &live.Handles);
    live.Objects = vq::CountTrackedObjects();
    return live;
  }
  friend std::ostream& operator<<(std::ostream& out, const Live& live) {
    return out << live.Blocks << " blocks, " << live.Bytes << " bytes, " << live.Handles << " handles, " << live.Objects
               << " objects";
  }
};

// A directory that goes away with its object.
class ScratchDirectory {
 public:
  ScratchDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillon-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no scratch directory");
    Place = pattern;
  }
  ~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(Place, ignored);
  }
  std::string Path(const std::string& name = "") const { return name.empty() ? Place : Place / name; }

 private:
  std::filesystem::path Place;
};

// Directory and settings file, no session yet.
class HomeFixture : public ::testing::Test {
 protected:
  HomeFixture() { WriteSettings(""); }
  ~HomeFixture() override { VQSetThrowAllErrors(0); }

  // Lines of "Key=value".
  void WriteSettings(const std::string& lines) {
    std::ofstream(Home.Path("QUILLON.INI")) << "[Quillon]\n" << lines;
    ::setenv("QUILLON_HOME", Home.Path().c_str(), 1);
  }

  ScratchDirectory Home;
};

class EngineFixture : public HomeFixture {
 protected:
  void SetUp() override {
    Session = std::make_unique<VQQuillonSession>();
    ASSERT_EQ(Session->Init(), VQ_OK);
    Baseline = Live::Now();
  }
  void TearDown() override {
    if (Session == nullptr) return;
    VQSetThrowAllErrors(0);
    EXPECT_EQ(Live::Now(), Baseline);
    EXPECT_EQ(Session->Term(1), VQ_OK);
  }

  std::unique_ptr<VQQuillonSession> Session;
  Live Baseline;
};

// Runs with the throw switch off and on.
class SwitchFixture : public EngineFixture, public ::testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    EngineFixture::SetUp();
    VQSetThrowAllErrors(GetParam());
  }
};

}  // namespace vqtest

#endif
