// Full-text queries of any bytes over a few documents, and ID tables whose blocks hold any bytes.
#include <cstring>

#include "engine/engine.h"
#include "fuzz/support.h"

namespace {

using fuzz::Claim;

ENGHANDLE Texts() {
  static const ENGHANDLE db = [] {
    const std::string path = fuzz::World::Get().folder() + "/texts.vlt";
    ENGHANDLE made = 0;
    Claim(EngDbCreate(path.c_str(), 255, 0) == ENG_OK && EngDbOpen(path.c_str(), &made) == ENG_OK, "a store is made");
    for (const char* text : {"the quick brown fox", "東京都の天気 apple", "apple pear running"}) {
      ENGHANDLE slate = 0;
      Claim(EngSlateCreate(made, &slate) == ENG_OK, "a slate is made");
      EngItemSetText(slate, reinterpret_cast<const ENGCHAR*>("Subject"), reinterpret_cast<const ENGCHAR*>(text), 500);
      Claim(EngSlateUpdate(slate, 0) == ENG_OK && EngSlateClose(slate) == ENG_OK, "it is saved");
    }
    Claim(EngFtIndex(made, 0, nullptr, nullptr, nullptr) == ENG_OK, "the index is made");
    return made;
  }();
  return db;
}

void Search(const std::string& query, std::uint32_t options) {
  ENGHANDLE search = 0;
  Claim(EngFtOpen(&search) == ENG_OK, "a search is opened");
  std::uint32_t hits = 0;
  ENGHANDLE result = 0;
  const ENGSTATUS status = EngFtSearch(Texts(), &search, 0, reinterpret_cast<const ENGCHAR*>(query.c_str()), options, 0,
                                       0, &hits, nullptr, &result);
  Claim(status == ENG_OK || status == ENG_ERR_NO_HITS || status == ENG_ERR_TEXT_QUERY, "a query has its status");
  Claim((status == ENG_OK) == (result != 0) && hits <= 3, "hits are documents");
  if (result != 0) EngMemFree(result);
  EngFtClose(search);
}

void UseTable(const std::uint8_t* data, std::size_t size) {
  ENGHANDLE table = 0;
  Claim(EngIdTableCreate(4, &table) == ENG_OK, "a table is made");
  std::uint32_t room = 0;
  EngMemGetSize(table, &room);
  std::memcpy(EngMemLock(table), data, size < room ? size : room);
  EngMemUnlock(table);
  std::uint32_t id = 0;
  for (int i = 0; i < 1000 && EngIdTableScan(table, i == 0, &id) != 0; ++i) {
  }
  EngIdTableLookup(table, id);
  EngIdTableInsert(table, id + 4, nullptr);
  EngIdTableDelete(table, id, nullptr);
  EngIdTableDestroy(table);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 2000) return 0;
  if ((data[0] & 1) != 0) {
    UseTable(data + 1, size - 1);
  } else {
    const std::uint32_t options = (data[0] & 2 ? ENG_FT_SCORES : 0) | (data[0] & 4 ? ENG_FT_STEM : 0);
    Search(std::string(reinterpret_cast<const char*>(data) + 1, size - 1), options);
  }
  return 0;
}
