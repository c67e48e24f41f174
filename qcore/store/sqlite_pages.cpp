// Pages of derived data of the SQLite store.
#include "qcore/store/checksum.h"
#include "qcore/store/sqlite_sql.h"

namespace qcore {

namespace {

void TakePage(Bytes stored, std::uint64_t page, std::vector<std::uint8_t>* bytes) {
  Bytes data;
  if (Unseal(stored, page, &data)) bytes->assign(data.begin(), data.end());
}

}  // namespace

ENGSTATUS SqliteStore::ReadPage(std::uint64_t page, std::vector<std::uint8_t>* bytes) {
  bytes->clear();
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kReadPage);
  use.Bind(1, page);
  if (!use.Row()) return Result(use.code());
  TakePage(use.Blob(0), page, bytes);
  return ENG_OK;
}

ENGSTATUS SqliteStore::ReadPages(std::uint64_t first, std::uint64_t second, std::vector<std::uint8_t>* first_bytes,
                                 std::vector<std::uint8_t>* second_bytes) {
  first_bytes->clear();
  second_bytes->clear();
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kReadPages);
  use.Bind(1, first);
  use.Bind(2, second);
  if (!use.Row()) return Result(use.code());
  TakePage(use.Blob(0), first, first_bytes);
  TakePage(use.Blob(1), second, second_bytes);
  return ENG_OK;
}

ENGSTATUS SqliteStore::WritePage(std::uint64_t page, Bytes bytes) {
  const std::vector<std::uint8_t> sealed = Sealed(bytes, page);
  Use use = Start(Sql::kWritePage);
  use.Bind(1, page);
  use.Bind(2, Bytes(sealed));
  return Finish(use);
}

ENGSTATUS SqliteStore::DropPages(std::uint64_t first, std::uint64_t last) {
  Use use = Start(Sql::kDropPages);
  use.Bind(1, first);
  use.Bind(2, last);
  return Finish(use);
}

}  // namespace qcore
