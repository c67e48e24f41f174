// What a transaction is told of its own changes is what SQLite tells of them.
#include <gtest/gtest.h>

#include "qcore/store/database.h"
#include "tests/qcore/store_fixture.h"

namespace qtest {
namespace {

using Entry = std::tuple<std::uint64_t, std::uint32_t, std::uint16_t, bool>;

class OwnChanges : public Database {
 protected:
  OwnChanges() {
    for (int i = 0; i < 4; ++i) ids_.push_back(Make({{"A", "first"}}));
    stale_ = OpenSlate(ids_[0]);
    EXPECT_EQ(EngSlateGetHeader(stale_, ENG_SLATE_ID, &ids_[0]), ENG_OK);
    SaveAndClose(OpenSlate(ids_[0]));
    EXPECT_EQ(Store().FeedEnd(&start_), ENG_OK);
  }
  ~OwnChanges() override { EXPECT_EQ(EngSlateClose(stale_), ENG_OK); }

  qcore::Store& Store() const { return qcore::Database::Find(db_)->store(); }

  // Behind a number that lies before the transaction SQLite is asked.
  std::vector<Entry> Feed(std::uint64_t asked, std::uint64_t behind) const {
    std::vector<Entry> entries;
    EXPECT_EQ(Store().ReadFeedBehind(asked,
                                     [&](const qcore::NumberedEntry& e) {
                                       if (e.feed <= behind) return;
                                       entries.emplace_back(e.feed, e.entry.id, e.entry.slate_class, e.entry.deleted);
                                     }),
              ENG_OK);
    return entries;
  }
  std::pair<ENGSTATUS, std::string> RowOf(std::uint32_t id) const {
    std::string row;
    const ENGSTATUS status = Store().ReadSlate(id, [&row](const qcore::SlateHeader& header, qcore::Bytes packed) {
      row = std::to_string(header.origin.Sequence) + " " + std::to_string(header.modified_here.TimeWord) + " " +
            std::to_string(header.parent.has_value()) + std::string(packed.begin(), packed.end());
      return ENGSTATUS{ENG_OK};
    });
    return {status, row};
  }

  void Save(std::uint32_t id, std::size_t size) {
    const ENGHANDLE slate = OpenSlate(id);
    EXPECT_EQ(Append(slate, "B", Repeated(size, 'a')), ENG_OK);
    SaveAndClose(slate);
  }
  void Step(char what, std::uint32_t id) {
    if (what == 's') Save(id, 20);
    if (what == 'l') Save(id, 9000);
    if (what == 'n') ids_.push_back(Make({{"A", "new"}}));
    if (what == 'd' || what == 'x') {
      EXPECT_EQ(EngSlateDelete(db_, id, what == 'd' ? 0 : ENG_UPDATE_NO_STUB), ENG_OK);
    }
    if (what != 'f') return;
    // Someone else has saved it since: the large value that goes first is undone.
    EXPECT_EQ(Append(stale_, "C", Repeated(9000, 'c')), ENG_OK);
    EXPECT_EQ(EngSlateUpdate(stale_, 0), ENG_ERR_SLATE_CONFLICT);
  }

  std::vector<std::uint32_t> ids_;
  ENGHANDLE stale_ = 0;
  std::uint64_t start_ = 0;
};

TEST_F(OwnChanges, AreTheStores) {
  const std::string many(2300, 's');
  for (const std::string& script : {std::string("s"), std::string("ssnls"), std::string("nsf"), std::string("sfs"),
                                    std::string("fsd"), std::string("lsx"), std::string("nn"), many + "f" + "ns"}) {
    SCOPED_TRACE(script.substr(0, 9));
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    std::vector<std::pair<ENGSTATUS, std::string>> rows;
    for (std::size_t i = 0; i < script.size(); ++i) Step(script[i], ids_[1 + i % 3]);
    std::uint64_t end = 0;
    ASSERT_EQ(Store().FeedEnd(&end), ENG_OK);
    for (std::uint64_t behind = start_; behind <= end; behind += 1 + (end - behind) / 7) {
      EXPECT_EQ(Feed(behind, behind), Feed(0, behind)) << behind;
    }
    for (const std::uint32_t id : ids_) rows.push_back(RowOf(id));
    const std::vector<Entry> told = Feed(0, 0);
    ASSERT_EQ(EngDbCommit(db_), ENG_OK);
    EXPECT_EQ(Feed(0, 0), told);
    EXPECT_EQ(Check(), ENG_OK);
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i], RowOf(ids_[i])) << i;
    const auto left = [&](std::uint32_t id) { return RowOf(id).first != ENG_OK; };
    std::erase_if(ids_, left);
    while (ids_.size() < 4) ids_.push_back(Make({}));
    start_ = end;
  }
}

TEST_F(OwnChanges, AreForgottenWithARollback) {
  const auto before = RowOf(ids_[1]);
  for (const bool again : {false, true}) {
    ASSERT_EQ(EngDbBegin(db_), ENG_OK);
    EXPECT_EQ(RowOf(ids_[1]), before) << again;
    Save(ids_[1], 20);
    EXPECT_NE(RowOf(ids_[1]), before);
    ASSERT_EQ(EngDbRollback(db_), ENG_OK);
    EXPECT_EQ(RowOf(ids_[1]), before);
    EXPECT_TRUE(Feed(start_, start_).empty());
  }
}

}  // namespace
}  // namespace qtest
