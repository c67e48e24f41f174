// Rows of views: order, categories, responses, totals, and how they follow the documents.
#include "tests/qcore/index_fixture.h"

namespace {

using qtest::AllRows;
using qtest::OpenCollection;
using qtest::TestColumn;

using Strings = std::vector<std::string>;

struct Views : qtest::IndexTest {};

TEST_F(Views, SortedRowsFollowTheirDocuments) {
  Doc({{"Name", "beta"}});
  const std::uint32_t first = Doc({{"Name", "Alpha"}});
  Doc({{"Name", "gamma"}});
  const std::uint32_t view = MakeView({{"Name", 1}});
  const OpenCollection collection(db_, view);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d Alpha", "2 d beta", "3 d gamma"}));
  Change(first, {{"Name", "zeta"}});
  Doc({{"Name", "delta"}});
  EXPECT_EQ(AllRows(collection.get()).size(), 3u);
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d beta", "2 d delta", "3 d gamma", "4 d zeta"}));
  EXPECT_EQ(EngSlateDelete(db_, first, 0), ENG_OK);
  EXPECT_EQ(EngCollectionUpdate(collection.get()), ENG_OK);
  EXPECT_EQ(AllRows(collection.get()), (Strings{"1 d beta", "2 d delta", "3 d gamma"}));
}

}  // namespace
