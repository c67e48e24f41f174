// One call across the engine boundary fails, for each call in turn: nothing leaks, nothing is half saved, and what
// failed succeeds when it is asked for again.
#include "tests/seam/seam.h"

#include <gtest/gtest.h>

#include <string>

#include "engine/engine.h"
#include "tests/home.h"
#include "vq/vq.h"

namespace seam {

namespace {

unsigned long gCalls = 0;
unsigned long gFailAt = 0;
const char* gFailed = nullptr;

}  // namespace

void Arm(unsigned long n) {
  gCalls = 0;
  gFailAt = n;
  gFailed = nullptr;
}

unsigned long Calls() { return gCalls; }
const char* Failed() { return gFailed; }

bool Fails(const char* operation) {
  if (++gCalls != gFailAt) return false;
  gFailed = operation;
  return true;
}

}  // namespace seam

namespace {

struct Live {
  std::uint32_t Blocks = 0;
  std::uint64_t Bytes = 0;
  std::uint32_t Handles = 0;
  bool operator==(const Live&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Live& live) {
    return out << live.Blocks << " blocks, " << live.Bytes << " bytes, " << live.Handles << " handles";
  }
  static Live Now() {
    Live live;
    EngMemStatistics(&live.Blocks, &live.Bytes, &live.Handles);
    return live;
  }
};

std::string Plain(const VQString& text) { return {reinterpret_cast<const char*>(text.GetBuf()), text.GetBufLength()}; }

// Runs a step, and once more when the fault struck it. Its last status; with the switch off a string's length is all
// that throws, since it has no status to give.
template <class Step>
VQSTATUS Twice(Step step) {
  const auto once = [&] {
    try {
      return step();
    } catch (VQSTATUS status) {
      if (status != VQERR_STRING_SIZE) ADD_FAILURE() << std::hex << status << " was thrown after " << seam::Failed();
      return status;
    }
  };
  const VQSTATUS status = once();
  return VQIsError(status) ? once() : status;
}

class Seam : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Session.Init(), VQ_OK);
    VQDatabase database;
    ASSERT_EQ(Session.CreateDatabase("day", &database, VQCreateDatabaseOptions()), VQ_OK);
    VQDocument document;
    ASSERT_EQ(database.CreateDocument(&document), VQ_OK);
    ASSERT_EQ(document.CreateItem("Subject", TYPE_TEXT, "old", 3), VQ_OK);
    ASSERT_EQ(document.CreateItem("Count", TYPE_NUMBER, "\0\0\0\0\0\0\0\0", 8), VQ_OK);
    VQRichText body;
    ASSERT_EQ(document.CreateItem("Body", &body), VQ_OK);
    body << VQString("old words");
    ASSERT_EQ(document.Save(), VQ_OK);
    Id = document.GetSlateID();
  }
  void TearDown() override { EXPECT_EQ(Session.Term(1), VQ_OK); }

  // Changes all three items to what `word` says; each step may be struck and is then asked for again.
  void ChangeAndSave(const std::string& word, double number) {
    const auto must = [](const char* what, VQSTATUS status) {
      EXPECT_EQ(status, VQ_OK) << what << " after " << (seam::Failed() != nullptr ? seam::Failed() : "no fault");
    };
    const VQString text(reinterpret_cast<const VQCHAR*>(word.data()), word.size());
    VQDatabase database;
    must("GetDatabase", Twice([&] { return Session.GetDatabase("day", &database); }));
    must("Open", Twice([&] { return database.Open(); }));
    VQDocument document;
    must("GetDocument", Twice([&] { return database.GetDocument(Id, &document); }));
    must("Open document", Twice([&] { return document.Open(); }));
    VQText subject;
    must("GetItem", Twice([&] { return document.GetItem("Subject", &subject); }));
    const VQString longer = VQString("--") += text;
    must("SetValue", Twice([&] { return subject.SetValue(longer); }));
    must("Shorten", Twice([&] { return subject.Shorten(0, 2); }));
    VQNumbers count;
    must("GetItem", Twice([&] { return document.GetItem("Count", &count); }));
    must("SetValue", Twice([&] { return count.SetValue(number); }));
    VQRichText body;
    must("GetItem", Twice([&] { return document.GetItem("Body", &body); }));
    must("Append", Twice([&] { return body.Append(VQString(" more")); }));
    must("Save", Twice([&] { return document.Save(); }));
  }

  // Subject and Count as another open reads them.
  std::string Stored() {
    VQDatabase database;
    VQDocument document;
    VQText subject;
    VQNumbers count;
    EXPECT_EQ(Session.GetDatabase("day", &database), VQ_OK);
    EXPECT_EQ(database.Open(), VQ_OK);
    EXPECT_EQ(database.GetDocument(Id, &document), VQ_OK);
    EXPECT_EQ(document.Open(), VQ_OK);
    EXPECT_EQ(document.GetItem("Subject", &subject), VQ_OK);
    EXPECT_EQ(document.GetItem("Count", &count), VQ_OK);
    return Plain(VQString(subject[0])) + " " + std::to_string(static_cast<int>(static_cast<double>(count[0])));
  }

  ClientHome Home;
  VQQuillonSession Session;
  unsigned long Id = 0;
};

TEST_F(Seam, EachCallMayFailOnce) {
  static_cast<void>(Stored());
  const Live before = Live::Now();
  bool struck = true;
  unsigned long calls = 0;
  for (unsigned long n = 1; struck && n < 5000 && !HasFailure(); ++n) {
    SCOPED_TRACE(n);
    seam::Arm(n);
    ChangeAndSave("word" + std::to_string(n), static_cast<double>(n));
    struck = seam::Failed() != nullptr;
    const std::string struck_at = struck ? seam::Failed() : "nothing";
    calls = seam::Calls();
    seam::Arm(0);
    EXPECT_EQ(Stored(), "word" + std::to_string(n) + " " + std::to_string(n)) << struck_at;
    EXPECT_EQ(Live::Now(), before) << struck_at;
  }
  EXPECT_FALSE(struck) << "the last run has no call left to strike";
  EXPECT_GT(calls, 40U) << "the library must come by here";
}

// A save that fails leaves the old document whole for everybody else.
TEST_F(Seam, AFailedSaveShowsNothingOfTheChange) {
  bool struck = true;
  for (unsigned long n = 1; struck && n < 5000 && !HasFailure(); ++n) {
    SCOPED_TRACE(n);
    VQDatabase database;
    VQDocument document;
    VQText subject;
    VQNumbers count;
    ASSERT_EQ(Session.GetDatabase("day", &database), VQ_OK);
    ASSERT_EQ(database.Open(), VQ_OK);
    ASSERT_EQ(database.GetDocument(Id, &document), VQ_OK);
    ASSERT_EQ(document.Open(), VQ_OK);
    ASSERT_EQ(document.GetItem("Subject", &subject), VQ_OK);
    ASSERT_EQ(document.GetItem("Count", &count), VQ_OK);
    const std::string old = Stored();
    ASSERT_EQ(subject.SetValue(VQString("changed") += VQString(n)), VQ_OK);
    ASSERT_EQ(count.SetValue(static_cast<double>(n)), VQ_OK);
    seam::Arm(n);
    const VQSTATUS status = document.Save();
    struck = seam::Failed() != nullptr;
    const std::string struck_at = struck ? seam::Failed() : "nothing";
    seam::Arm(0);
    const std::string fresh = "changed" + std::to_string(n) + " " + std::to_string(n);
    const std::string stored = Stored();
    EXPECT_TRUE(stored == fresh || (status != VQ_OK && stored == old)) << stored << " after " << struck_at;
    EXPECT_TRUE(document.IsOpen());
  }
}

}  // namespace
