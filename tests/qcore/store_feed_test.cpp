// The change feed as others follow it: another handle, a store of an earlier version, a feed that was trimmed.
#include <gtest/gtest.h>

#include "qcore/store/checksum.h"
#include "qcore/store/database.h"
#include "qcore/store/feed.h"
#include "tests/qcore/store_fixture.h"

namespace qtest {
namespace {

using Changes = std::vector<std::pair<std::uint32_t, bool>>;  // slate, deleted

class Feed : public Database {
 protected:
  ~Feed() override { EXPECT_EQ(EngDbClose(other_), ENG_OK); }

  static qcore::Store& StoreOf(ENGHANDLE db) { return qcore::Database::Find(db)->store(); }
  static std::uint64_t EndOf(ENGHANDLE db) {
    std::uint64_t end = 0;
    EXPECT_EQ(StoreOf(db).FeedEnd(&end), ENG_OK);
    return end;
  }
  static Changes Behind(ENGHANDLE db, std::uint64_t behind) {
    Changes changes;
    std::uint64_t last = behind;
    const auto take = [&](const qcore::NumberedEntry& change) {
      EXPECT_GT(change.feed, last);
      last = change.feed;
      changes.emplace_back(change.entry.id, change.entry.deleted);
    };
    EXPECT_EQ(StoreOf(db).ReadFeedBehind(behind, take), ENG_OK);
    return changes;
  }
  void Touch(std::uint32_t id) const { SaveAndClose(OpenSlate(id)); }

  ENGHANDLE other_ = Open();
};

TEST_F(Feed, AnotherHandleSeesWhatIsCommittedAndNothingElse) {
  const std::uint32_t a = Make({{"A", "a"}});
  const std::uint32_t b = Make({{"A", "b"}});
  const std::uint64_t start = EndOf(db_);
  for (const bool kept : {false, true}) {
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    Touch(b);
    Touch(a);
    Touch(b);
    EXPECT_EQ(Behind(db_, start), (Changes{{a, false}, {b, false}}));
    EXPECT_EQ(Behind(db_, 0), (Changes{{a, false}, {b, false}}));
    EXPECT_EQ(Behind(other_, start), Changes());
    EXPECT_EQ(EndOf(other_), start);
    ASSERT_EQ(kept ? EngDbCommit(db_) : EngDbRollback(db_), ENG_OK);
    EXPECT_EQ(Behind(db_, start), Behind(other_, start));
  }
  EXPECT_EQ(Behind(other_, start), (Changes{{a, false}, {b, false}}));
  EXPECT_EQ(EngSlateDelete(other_, a, ENG_UPDATE_NO_STUB), ENG_OK);
  Touch(b);
  EXPECT_EQ(Behind(other_, start), (Changes{{a, true}, {b, false}}));
  EXPECT_EQ(Search(1), std::vector<std::uint32_t>{b});
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Feed, AnEarlierVersionIsReadAndBroughtUpWithAChange) {
  for (const int version : {1, 2, 3}) {
    SCOPED_TRACE(version);
    const std::vector<std::uint32_t> designs = Search(8);
    const std::uint32_t view = Make({{"A", "view"}}, 8);
    const std::uint32_t a = Make({{"A", "a"}});
    const std::uint32_t b = Make({{"A", "b"}});
    const std::uint32_t c = Make({{"A", "c"}});
    EXPECT_EQ(EngSlateDelete(db_, b, 0), ENG_OK);
    const std::uint64_t start = EndOf(db_) - 4;
    ASSERT_EQ(EngDbClose(db_), ENG_OK);
    ASSERT_EQ(EngDbClose(other_), ENG_OK);
    MakeVersion(version);
    // One that went at a number of its own.
    if (version == 2) Execute("INSERT INTO removed SELECT max(feed)+1,max(id)+4,4294967297 FROM slate");
    db_ = Open();
    other_ = Open();
    Changes changes{{a, false}, {c, false}, {b, true}};
    if (version == 2) changes.emplace_back(c + 4, true);
    EXPECT_EQ(Behind(db_, start), changes);
    TIMEDATE data{};
    TIMEDATE design{};
    EXPECT_EQ(EngDbGetModifiedTime(db_, &data, &design), ENG_OK);
    EXPECT_NE(data.DateWord, 0u);
    EXPECT_EQ(Count("PRAGMA user_version"), version) << "reading changes nothing";
    Touch(a);
    EXPECT_EQ(Count("PRAGMA user_version"), 3);
    changes.erase(changes.begin());
    changes.emplace_back(a, false);
    EXPECT_EQ(Behind(db_, start), changes);
    EXPECT_EQ(Behind(other_, start), changes) << "of a handle that was open";
    Touch(view);
    EXPECT_EQ(Search(8).size(), designs.size() + 1);
    EXPECT_EQ(Search(8).back(), view);
    EXPECT_EQ(Check(), ENG_OK);
  }
}

TEST_F(Feed, IsTrimmedOfWhatLaterChangesHaveReplaced) {
  const std::uint32_t a = Make({{"A", "a"}});
  const std::uint32_t b = Make({{"A", "b"}});
  const std::uint32_t c = Make({{"A", "c"}});
  const std::uint64_t start = EndOf(db_);
  EXPECT_EQ(EngSlateDelete(db_, b, ENG_UPDATE_NO_STUB), ENG_OK);
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    for (int i = 0; i < 9000; ++i) Touch(a);  // more than wait in memory
    Touch(c);
    EXPECT_EQ(Behind(db_, start), (Changes{{b, true}, {a, false}, {c, false}}));
    ASSERT_EQ(EngDbCommit(db_), ENG_OK);
    EXPECT_LT(Count("SELECT sum(length(entries)) FROM change"), 100);
  }
  EXPECT_EQ(Behind(other_, start), (Changes{{b, true}, {a, false}, {c, false}}));
  for (int i = 0; i < 5; ++i) Touch(a);
  EXPECT_EQ(Count("SELECT count(*) FROM change"), 6) << "not trimmed each time";
  EXPECT_EQ(Behind(other_, start), (Changes{{b, true}, {c, false}, {a, false}}));
  EXPECT_EQ(Check(), ENG_OK);
}

TEST_F(Feed, DamageIsFoundAndStopsNoSave) {
  const std::uint32_t a = Make({{"A", "a"}});
  const char* const faults[] = {"UPDATE change SET entries=x'0102030405'", "UPDATE change SET here=here+1",
                                "DELETE FROM change"};
  for (const char* fault : faults) {
    SCOPED_TRACE(fault);
    Touch(a);
    Execute(fault);
    EXPECT_EQ(Check(), ENG_ERR_DB_DAMAGED);
    Touch(a);
    Execute("DELETE FROM change WHERE feed<(SELECT max(feed) FROM slate)");
    EXPECT_EQ(Check(), ENG_OK);
  }
}

TEST(FeedBlock, HostileBytesAreNone) {
  using qcore::FeedRecord;
  const std::vector<FeedRecord> records{{{7, {4, 1, false}}, 90, false}, {{9, {8, 0x8001, true}}, 100, true}};
  const std::uint64_t seed = 9 ^ (std::uint64_t{100} << 32);
  std::vector<FeedRecord> read;
  const std::vector<std::uint8_t> block = qcore::EncodeFeedBlock(records);
  ASSERT_TRUE(qcore::DecodeFeedBlock(9, 100, block, &read));
  EXPECT_EQ(qcore::EncodeFeedBlock(read), block);
  EXPECT_TRUE(read[1].gone && read[1].change.entry.deleted && read[0].here == 90);
  const std::pair<const char*, std::vector<std::uint8_t>> rows[] = {
      {"cut", {0, 4, 4}},
      {"a number of 0", {9, 4, 4, 0}},
      {"an ID above 31 bits", {0, 0x80, 0x80, 0x80, 0x80, 8, 4, 0}},
      {"a class above 16 bits", {0, 4, 0x80, 0x80, 0x10, 0}},
      {"a time before all", {0, 4, 4, 101}},
      {"an endless number", std::vector<std::uint8_t>(12, 0xFF)},
  };
  for (const auto& [what, bytes] : rows) {
    EXPECT_FALSE(qcore::DecodeFeedBlock(9, 100, qcore::Sealed(bytes, seed), &read)) << what;
  }
  EXPECT_FALSE(qcore::DecodeFeedBlock(8, 100, block, &read)) << "of another number";
}

}  // namespace
}  // namespace qtest
