// Pages of derived data of the SQLite store.
#include "qcore/store/checksum.h"
#include "qcore/store/sqlite_sql.h"

namespace qcore {

ENGSTATUS SqliteStore::ReadPage(std::uint64_t page, std::vector<std::uint8_t>* bytes) {
  bytes->clear();
  if (!IsUpgraded()) return ENG_OK;
  Use use = Start(Sql::kReadPage);
  use.Bind(1, page);
  if (!use.Row()) return Result(use.code());
  Bytes data;
  if (Unseal(use.Blob(0), page, &data)) bytes->assign(data.begin(), data.end());
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
