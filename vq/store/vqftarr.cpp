#include "vq/store/vqftarr.h"

#include <algorithm>

#include "engine/fulltext.h"
#include "engine/idtable.h"
#include "engine/memory.h"
#include "vq/store/storetext.h"

namespace {

constexpr std::uint32_t kIDSize = 4;

std::uint32_t LoadLong(const unsigned char* bytes) {
  return vq::LoadWord(bytes) | static_cast<std::uint32_t>(vq::LoadWord(bytes + 2)) << 16;
}

}  // namespace

VQFTArrayBody::VQFTArrayBody(ENGHANDLE result) {
  if (result == 0) return;
  std::uint32_t size = 0;
  vq::ThrowIfError(vq::FromEngine(EngMemGetSize(result, &size)));
  const auto* bytes = static_cast<const unsigned char*>(EngMemLock(result));
  if (bytes == nullptr) vq::Throw(VQERR_INVALID_PARAMETER);
  bool good = size >= ENG_FT_RESULT_HEADER;
  if (good) {
    ResultCount = LoadLong(bytes);
    const std::uint64_t each = kIDSize + ((bytes[4] & ENG_FT_RESULT_SCORES) != 0 ? 1 : 0);
    good = ResultCount * each <= size - ENG_FT_RESULT_HEADER;
  }
  if (!good) {
    EngMemUnlock(result);
    vq::Throw(VQERR_CORRUPTED);
  }
  Result = bytes;
  ResultBlock = result;
}

VQFTArrayBody::~VQFTArrayBody() { VQFTArrayBody::Close(); }

VQSTATUS VQFTArrayBody::Close() {
  if (ResultBlock != 0) {
    EngMemUnlock(ResultBlock);
    EngMemFree(ResultBlock);
  }
  if (ResultTable != 0) EngIdTableDestroy(ResultTable);
  ResultBlock = ResultTable = 0;
  Result = nullptr;
  ResultCount = 0;
  return VQIDTable::Close();
}

VQSTATUS VQFTArrayBody::RefuseChange() const {
  const VQSTATUS status = CheckUsable();
  return status == VQ_OK ? VQERR_INVALID_FOR_FULL_TEXT : status;
}

VQSTATUS VQFTArrayBody::Add(std::uint32_t) { return RefuseChange(); }
VQSTATUS VQFTArrayBody::AddTable(ENGHANDLE) { return RefuseChange(); }
VQSTATUS VQFTArrayBody::Remove(std::uint32_t) { return RefuseChange(); }
VQSTATUS VQFTArrayBody::RemoveTable(ENGHANDLE) { return RefuseChange(); }
VQSTATUS VQFTArrayBody::RemoveAll() { return RefuseChange(); }

unsigned long VQFTArrayBody::GetCount() {
  vq::ThrowIfError(CheckUsable());
  return ResultCount;
}

std::uint32_t VQFTArrayBody::GetID(unsigned long index) {
  vq::ThrowIfError(CheckUsable());
  if (index >= ResultCount) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return LoadLong(Result + ENG_FT_RESULT_HEADER + index * kIDSize);
}

int VQFTArrayBody::Contains(std::uint32_t id) {
  VQ_ASSERT_TEXT(id, "slateid", "VQIDTAB");
  return EngIdTableLookup(GetHandle(), id) != 0;
}

ENGHANDLE VQFTArrayBody::GetHandle() {
  vq::ThrowIfError(CheckUsable());
  if (ResultTable != 0) return ResultTable;
  std::vector<std::uint32_t> ids(ResultCount);
  for (std::uint32_t i = 0; i < ResultCount; ++i) ids[i] = GetID(i);
  std::sort(ids.begin(), ids.end());  // a table takes IDs in ascending order much faster
  ENGHANDLE table = 0;
  vq::ThrowIfError(vq::FromEngine(EngIdTableCreate(kIDSize, &table)));
  for (std::uint32_t id : ids) {
    const VQSTATUS status = vq::FromEngine(EngIdTableInsert(table, id, nullptr));
    if (status == VQ_OK) continue;
    EngIdTableDestroy(table);
    vq::Throw(status);
  }
  ResultTable = table;
  return table;
}

unsigned short VQFTArrayBody::GetScore(unsigned long index) const {
  vq::ThrowIfError(CheckUsable());
  if (index >= ResultCount) vq::Throw(VQERR_BAD_SUBSCRIPT);
  const bool has_scores = (Result[4] & ENG_FT_RESULT_SCORES) != 0;
  return has_scores ? Result[ENG_FT_RESULT_HEADER + ResultCount * std::size_t{kIDSize} + index] : 0;
}
