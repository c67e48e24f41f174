// Full text: what is found, in which order, and what an update leaves.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "tests/qcore/store_fixture.h"

namespace qtest {
namespace {

using Hits = std::vector<std::uint32_t>;

class FullText : public Database {
 protected:
  FT_INDEX_STATS Index(std::uint16_t options = 0) const {
    FT_INDEX_STATS statistics{};
    EXPECT_EQ(EngFtIndex(db_, options, nullptr, nullptr, &statistics), ENG_OK);
    return statistics;
  }
  // The hits in order; one hit of a status when there are none.
  Hits Search_(const std::string& query, std::uint32_t options = 0, std::uint16_t limit = 0, ENGHANDLE table = 0,
               std::vector<int>* scores = nullptr) const {
    ENGHANDLE search = 0;
    ENGHANDLE result = 0;
    std::uint32_t count = 0;
    EXPECT_EQ(EngFtOpen(&search), ENG_OK);
    const ENGSTATUS status =
        EngFtSearch(db_, &search, 0, Store(query), options, limit, table, &count, nullptr, &result);
    EXPECT_EQ(EngFtClose(search), ENG_OK);
    if (status != ENG_OK) {
      EXPECT_EQ(result, 0u);
      return {status};
    }
    Hits hits(count);
    const auto* bytes = static_cast<const unsigned char*>(EngMemLock(result));
    std::memcpy(hits.data(), bytes + ENG_FT_RESULT_HEADER, count * sizeof(std::uint32_t));
    for (std::uint32_t i = 0; scores && i < count; ++i) {
      scores->push_back(bytes[ENG_FT_RESULT_HEADER + count * sizeof(std::uint32_t) + i]);
    }
    EXPECT_EQ(EngMemUnlock(result), ENG_OK);
    EXPECT_EQ(EngMemFree(result), ENG_OK);
    return hits;
  }

  StandingClock clock_;
};

constexpr std::uint32_t kNone = ENG_ERR_NO_HITS;
constexpr std::uint32_t kBad = ENG_ERR_TEXT_QUERY;

TEST_F(FullText, QueriesFindWhatTheySay) {
  // By letter: a document each.
  const std::pair<char, std::vector<std::pair<std::string, std::string>>> documents[] = {
      {'a', {{"Subject", "Überraschung für Zoë"}, {"Body", "the quick brown fox jumps"}}},
      {'b', {{"Subject", "quick report"}, {"From", "CN=Jane Doe/O=Acme"}}},
      {'c', {{"Subject", "東京都の天気"}, {"$Hidden", "secret"}}},
      {'d', {{"Subject", "京都 東"}, {"Body", "fox quick"}, {"Note", "the end"}}},
      {'e', {{"Subject", "running uphill"}, {"Body", "co-operation, don't"}}},
      {'f', {{"Subject", "He runs"}, {"Body", "ภาษาไทย ง่าย"}}},
  };
  std::map<std::uint32_t, char> letters{{kNone, '-'}, {kBad, '!'}};
  for (const auto& [letter, items] : documents) letters[Make(items)] = letter;
  EXPECT_EQ(Index().DocsAdded, std::size(documents));
  const struct {
    const char* query;
    const char* found;
    std::uint32_t options = 0;
  } rows[] = {
      {"uberraschung", "a"},
      {"ÜBERRASCHUNG", "a"},
      {"zoe", "a"},
      {"quick", "abd"},
      {"quick fox", "ad"},
      {"\"quick fox\"", "-"},
      {"\"fox quick\"", "d"},
      {"\"quick the\"", "-"},
      {"quick and not fox", "b"},
      {"quick NOT fox", "b"},
      {"quick !fox", "b"},
      {"zoe OR report", "ab"},
      {"zoe | report & jane", "ab"},
      {"(zoe | report) jane", "b"},
      {"quick near/0 brown", "a"},
      {"the near/2 fox", "ad"},
      {"the near/1 fox", "-"},
      {"the near fox", "ad"},
      {"jane doe", "b"},
      {"東", "cd"},
      {"京都", "cd"},
      {"東京", "c"},
      {"天気", "c"},
      {"都の天", "c"},
      {"東都", "-"},
      {"ภาษา", "f"},
      {"secret", "-"},
      {"qui*", "abd"},
      {"run", "-"},
      {"run", "ef", ENG_FT_STEM},
      {"\"run\"", "-", ENG_FT_STEM},
      {"runs", "ef", ENG_FT_STEM},
      {"co-operation", "e"},
      {"don't", "e"},
      {"\"the end\"", "d"},
      {"field subject contains quick", "b"},
      {"[Body] contains (quick fox)", "ad"},
      {"quick NOT [body] contains fox", "b"},
      {"[body] contains (quick NOT the)", "d"},
      {"京都 NOT [body] contains (quick NOT the)", "c"},
      {"[subject] contains (the or 東)", "cd"},
      {"[Body] contains \"quick brown\"", "a"},
      {"[Body] contains (quick near/1 jumps)", "-"},
      {"[Body] contains (quick near/2 jumps)", "a"},
      {"", "!"},
      {"   ", "!"},
      {"and", "!"},
      {"quick and", "!"},
      {"(quick", "!"},
      {"quick)", "!"},
      {"\"quick", "!"},
      {"not quick", "!"},
      {"...", "!"},
      {"*", "!"},
      {"q*k", "!"},
      {"[Body] quick", "!"},
      {"quick near (a or b)", "!"},
      {"near/x", "!"},
      {"field contains", "!"},
  };
  for (const auto& row : rows) {
    std::string found;
    for (std::uint32_t id : Search_(row.query, row.options)) found += letters[id];
    EXPECT_EQ(found, row.found) << row.query;
  }
  EXPECT_EQ(Search_(std::string(40, '(') + "a" + std::string(40, ')')), Hits{kBad});
  std::string many = "a";
  for (int i = 0; i < 600; ++i) many += " or a" + std::to_string(i);
  EXPECT_EQ(Search_(many), Hits{kBad});
}

TEST_F(FullText, AnUpdateFollowsTheChanges) {
  EXPECT_EQ(Search_("apple"), Hits{ENG_ERR_NO_FULL_TEXT});
  EXPECT_EQ(EngFtDeleteIndex(db_), ENG_ERR_NO_FULL_TEXT);
  const std::uint32_t a = Make({{"Subject", "apple"}});
  const std::uint32_t b = Make({{"Subject", "banana apple"}});
  Make({{"$TITLE", "apple form"}, {"Text", "apple"}}, 4);
  FT_INDEX_STATS done = Index();
  EXPECT_EQ(done.DocsAdded, 2u);
  EXPECT_EQ(done.BytesIndexed, 17u);
  ENGHANDLE slate = OpenSlate(a);
  EXPECT_EQ(EngItemSetText(slate, Store("Subject"), Store("cherry"), 100), ENG_OK);
  SaveAndClose(slate);
  EXPECT_EQ(EngSlateDelete(db_, b, 0), ENG_OK);
  const std::uint32_t c = Make({{"Subject", "cherry"}});
  EXPECT_EQ(Search_("banana"), Hits{kNone}) << "deleted since";
  done = Index();
  EXPECT_EQ(done.DocsAdded, 1u);
  EXPECT_EQ(done.DocsUpdated, 1u);
  EXPECT_EQ(done.DocsDeleted, 1u);
  Reopen();
  EXPECT_EQ(Search_("apple"), Hits{kNone});
  EXPECT_EQ(Search_("cherry"), (Hits{a, c}));
  EXPECT_EQ(Index(ENG_FT_INDEX_ANEW).DocsAdded, 2u);
  EXPECT_EQ(Search_("cherry"), (Hits{a, c}));
  EXPECT_EQ(Check(), ENG_OK);
  EXPECT_EQ(EngFtDeleteIndex(db_), ENG_OK);
  TIMEDATE moment;
  EXPECT_EQ(EngFtGetInfo(db_, &moment), ENG_ERR_NO_FULL_TEXT);
}

TEST_F(FullText, OrderLimitAndRestriction) {
  const std::uint32_t a = Make({{"Body", "apple and very many other words of no concern"}});
  clock_.Sleep(std::chrono::seconds(1));
  const std::uint32_t b = Make({{"Body", "apple apple"}});
  clock_.Sleep(std::chrono::seconds(1));
  const std::uint32_t c = Make({{"Body", "apple with some words"}});
  for (int i = 0; i < 9; ++i) Make({{"Body", "pear"}});
  Index();
  std::vector<int> scores;
  EXPECT_EQ(Search_("apple", ENG_FT_SCORES, 0, 0, &scores), (Hits{b, c, a}));
  EXPECT_EQ(scores[0], 100);
  EXPECT_GT(scores[1], scores[2]);
  EXPECT_GT(scores[2], 0);
  EXPECT_EQ(Search_("apple", ENG_FT_SCORES | ENG_FT_BEST, 2), (Hits{b, c}));
  EXPECT_EQ(Search_("apple", ENG_FT_SCORES, 2), (Hits{b, a}));
  EXPECT_EQ(Search_("apple", ENG_FT_BY_DATE), (Hits{c, b, a}));
  EXPECT_EQ(Search_("apple", ENG_FT_BY_DATE | ENG_FT_OLDEST | ENG_FT_BEST, 1), Hits{a});
  ENGHANDLE table = 0;
  ASSERT_EQ(EngIdTableCreate(4, &table), ENG_OK);
  EXPECT_EQ(Search_("apple", ENG_FT_REFINE, 0, table), Hits{kNone});
  EXPECT_EQ(EngIdTableInsert(table, c, nullptr), ENG_OK);
  EXPECT_EQ(Search_("apple", ENG_FT_REFINE, 0, table), Hits{c});
  EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  EXPECT_EQ(Search_("apple", ENG_FT_REFINE, 0, table), Hits{ENG_ERR_INVALID_HANDLE});
  EXPECT_EQ(Search_("apple", 0x8000), Hits{ENG_ERR_ARGUMENT});
}

TEST_F(FullText, ReadersKeepOthersOut) {
  char me[256];
  ASSERT_EQ(EngUserNameGet(reinterpret_cast<ENGCHAR*>(me)), ENG_OK);
  const std::uint32_t open = Make({{"Subject", "apple"}});
  const std::uint32_t mine = Make({{"Subject", "apple"}, {"$Readers", me}});
  const std::uint32_t others = Make({{"Subject", "apple"}, {"$Readers", "CN=Jane Doe/OU=Dev/O=Acme"}});
  Index();
  EXPECT_EQ(Search_("apple"), (Hits{open, mine}));
  const ENGHANDLE slate = OpenSlate(open);
  EXPECT_EQ(EngItemSetText(slate, Store("$Readers"), Store("*/Dev/Acme"), 100), ENG_OK);
  SaveAndClose(slate);
  EXPECT_EQ(Search_("apple"), Hits{mine}) << "readers that the index does not know yet";
  ASSERT_EQ(EngEnvSetString("UserName", "CN=jane doe/OU=Dev/O=ACME"), ENG_OK);
  EXPECT_EQ(Search_("apple"), (Hits{open, others}));
}

TEST_F(FullText, ADamagedDocumentHidesNoOther) {
  const std::uint32_t bad = Make({{"Subject", "apple"}, {"$Readers", "*"}});
  const std::uint32_t good = Make({{"Subject", "apple"}, {"$Readers", "*"}});
  Index();
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  Execute(("UPDATE slate SET packed=zeroblob(90) WHERE id=" + std::to_string(bad)).c_str());
  db_ = Open();
  for (const int order : {0, ENG_FT_SCORES | ENG_FT_BEST, ENG_FT_BY_DATE}) {
    EXPECT_EQ(Search_("apple", static_cast<std::uint32_t>(order)), Hits{good}) << order;
  }
  EXPECT_EQ(Search_("[Subject] CONTAINS apple"), Hits{good});
}

// Another process makes the index anew between two parts of an update, and gets less far than that update was.
TEST_F(FullText, AnUpdateGoesOnWhereARemadeIndexStands) {
  constexpr std::uint32_t kEarlier = 10;
  constexpr std::uint32_t kPart = 10000;
  for (std::uint32_t i = 0; i < kEarlier; ++i) Make({{"Body", "apple"}});
  Index();
  ASSERT_EQ(EngDbBegin(db_), ENG_OK);
  for (std::uint32_t i = 0; i < kPart + kEarlier; ++i) Make({{"Body", "apple"}});
  ASSERT_EQ(EngDbCommit(db_), ENG_OK);
  ENGHANDLE other = Open();
  const auto remake = [](void* context, std::uint32_t, std::uint32_t) -> ENGSTATUS {
    auto& handle = *static_cast<ENGHANDLE*>(context);
    if (handle == 0) return ENG_OK;
    const auto stop = [](void*, std::uint32_t, std::uint32_t) -> ENGSTATUS { return ENG_ERR_ARGUMENT; };
    EXPECT_EQ(EngFtIndex(handle, ENG_FT_INDEX_ANEW, stop, nullptr, nullptr), ENG_ERR_ARGUMENT);
    EXPECT_EQ(EngDbClose(handle), ENG_OK);
    handle = 0;
    return ENG_OK;
  };
  EXPECT_EQ(EngFtIndex(db_, 0, remake, &other, nullptr), ENG_OK);
  EXPECT_EQ(Search_("apple").size(), kPart + 2 * kEarlier);
}

// A folder stands for any view here.
class FolderHits : public FullText {
 protected:
  ~FolderHits() override {
    if (rows_ != 0) {
      EXPECT_EQ(EngCollectionClose(rows_), ENG_OK);
    }
  }
  static ENGHANDLE Table(const Hits& ids) {
    ENGHANDLE table = 0;
    EXPECT_EQ(EngIdTableCreate(4, &table), ENG_OK);
    for (std::uint32_t id : ids) EXPECT_EQ(EngIdTableInsert(table, id, nullptr), ENG_OK);
    return table;
  }
  void Change(const Hits& ids, ENGSTATUS (*change)(ENGHANDLE, ENGHANDLE, std::uint32_t, ENGHANDLE, std::uint32_t)) {
    const ENGHANDLE table = Table(ids);
    EXPECT_EQ(change(db_, 0, folder_id_, table, 0), ENG_OK);
    EXPECT_EQ(EngIdTableDestroy(table), ENG_OK);
  }
  // The hits of "apple" in a folder of these documents, which its collection keeps.
  Hits SearchFolder(const Hits& members, std::uint16_t limit, ENGHANDLE unread) {
    Index();
    EXPECT_EQ(EngFolderCreate(db_, 0, 0, 0, Store("Fruit"), 5, 0, 0, &folder_id_), ENG_OK);
    Change(members, EngFolderDocAdd);
    EXPECT_EQ(EngCollectionOpen(db_, db_, folder_id_, 0, unread, &rows_, nullptr, nullptr, nullptr, nullptr), ENG_OK);
    ENGHANDLE search = 0;
    ENGHANDLE result = 0;
    std::uint32_t hits = 0;
    EXPECT_EQ(EngFtOpen(&search), ENG_OK);
    const std::uint32_t options = ENG_FT_COLLECTION | ENG_FT_TABLE | ENG_FT_SCORES | ENG_FT_BEST;
    EXPECT_EQ(EngFtSearch(db_, &search, rows_, Store("apple"), options, limit, 0, &hits, nullptr, &result), ENG_OK);
    EXPECT_EQ(EngFtClose(search), ENG_OK);
    const Hits found = Ids(result);
    EXPECT_EQ(EngIdTableDestroy(result), ENG_OK);
    return found;
  }
  // What a step from a hit, counted from 1, leads to; 0 for nothing.
  std::uint32_t StepFrom(std::uint32_t hit, std::uint16_t code, std::uint32_t count) {
    COLLECTIONPOSITION position{};
    position.Tumbler[0] = hit;
    ENGHANDLE buffer = 0;
    std::uint32_t length = 0;
    std::uint32_t returned = 0;
    std::uint16_t signals = 0;
    const ENGSTATUS status = EngCollectionRead(rows_, &position, code, count, ENG_GO_NEXT_HIT, 1, ENG_READ_ID, &buffer,
                                               &length, nullptr, &returned, &signals);
    EXPECT_EQ(status, length == 4 ? ENG_OK : ENG_ERR_NO_ENTRY);
    std::uint32_t id = 0;
    if (status != ENG_OK) return 0;
    std::memcpy(&id, EngMemLock(buffer), sizeof id);
    EXPECT_EQ(EngMemUnlock(buffer), ENG_OK);
    EXPECT_EQ(EngMemFree(buffer), ENG_OK);
    return id;
  }

  std::uint32_t folder_id_ = 0;
  ENGHANDLE rows_ = 0;
};

TEST_F(FolderHits, AreRowsBestFirst) {
  const std::uint32_t far = Make({{"Body", "apple and very many other words of no concern"}});
  const std::uint32_t outside = Make({{"Body", "apple apple apple"}});
  const std::uint32_t near = Make({{"Body", "apple apple"}});
  EXPECT_EQ(SearchFolder({far, near}, 2, 0), (Hits{far, near})) << outside << " has no row";
  EXPECT_EQ(StepFrom(1, ENG_GO_CURRENT_HIT, 0), near);
  EXPECT_EQ(StepFrom(1, ENG_GO_NEXT_HIT, 1), far);
  COLLECTIONPOSITION first{0, 0, 0, {1}};
  ENGHANDLE buffer = 0;
  std::uint32_t returned = 0;
  const auto read = [&](std::uint16_t skip, std::uint16_t navigation) {
    return EngCollectionRead(rows_, &first, skip, 0, navigation, 5, ENG_READ_ID, &buffer, nullptr, nullptr, &returned,
                             nullptr);
  };
  EXPECT_EQ(read(ENG_GO_NEXT_HIT, ENG_GO_NEXT), ENG_ERR_ARGUMENT) << "no way leads from hits to rows";
  EXPECT_EQ(read(ENG_GO_CURRENT_HIT, ENG_GO_CURRENT), ENG_OK);
  EXPECT_EQ(returned, 1U);
  EXPECT_EQ(EngMemFree(buffer), ENG_OK);
}

TEST_F(FolderHits, UnreadOnesThatAreGoneAreNotStoppedAt) {
  const std::uint32_t read = Make({{"Body", "apple apple apple"}});
  const std::uint32_t gone = Make({{"Body", "apple apple"}});
  const std::uint32_t also_read = Make({{"Body", "apple and some words"}});
  const std::uint32_t last = Make({{"Body", "apple and very many other words of no concern"}});
  const ENGHANDLE unread = Table({gone, last});
  SearchFolder({read, gone, also_read, last}, 0, unread);
  EXPECT_EQ(StepFrom(1, ENG_GO_NEXT_UNREAD_HIT, 1), gone);
  Change({gone}, EngFolderDocRemove);
  EXPECT_EQ(EngCollectionUpdate(rows_), ENG_OK);
  EXPECT_EQ(StepFrom(1, ENG_GO_NEXT_UNREAD_HIT, 1), last);
  EXPECT_EQ(StepFrom(4, ENG_GO_PREV_UNREAD_HIT, 1), 0U);
  EXPECT_EQ(EngIdTableDestroy(unread), ENG_OK);
}

TEST_F(FullText, AKillWithinAnUpdateLeavesAGoodIndex) {
  for (int i = 0; i < 40; ++i) Make({{"Body", "apple number " + std::to_string(i)}});
  Index();
  for (int i = 0; i < 40; ++i) Make({{"Body", "pear number " + std::to_string(i)}});
  ASSERT_EQ(EngDbClose(db_), ENG_OK);
  db_ = 0;
  const pid_t child = fork();
  if (child == 0) {
    const ENGHANDLE db = Open();
    EngDbBegin(db);
    FT_INDEX_STATS statistics;
    EngFtIndex(db, 0, nullptr, nullptr, &statistics);
    kill(getpid(), SIGKILL);
  }
  int how = 0;
  ASSERT_EQ(waitpid(child, &how, 0), child);
  ASSERT_TRUE(WIFSIGNALED(how));
  db_ = Open();
  EXPECT_EQ(Search_("apple").size(), 40u);
  EXPECT_EQ(Search_("pear"), Hits{kNone});
  EXPECT_EQ(Index().DocsAdded, 40u);
  EXPECT_EQ(Search_("pear").size(), 40u);
  EXPECT_EQ(Check(), ENG_OK);
}

}  // namespace
}  // namespace qtest
