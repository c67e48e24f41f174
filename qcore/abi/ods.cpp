#include "engine/ods.h"

#include "engine/status.h"
#include "qcore/records/layouts.h"

namespace records = qcore::records;

uint16_t EngOdsLength(uint16_t code) {
  const records::Layout* layout = records::Find(code);
  return layout ? layout->length : 0;
}

ENGSTATUS EngOdsRead(void** cursor, uint16_t code, void* target, uint16_t count) {
  const records::Layout* layout = records::Find(code);
  if (!layout) return ENG_ERR_ODS_CODE;
  if (!cursor || !*cursor || !target) return ENG_ERR_ARGUMENT;
  auto* stored = static_cast<std::byte*>(*cursor);
  records::Read(*layout, stored, target, count);
  *cursor = stored + std::size_t{layout->length} * count;
  return ENG_OK;
}

ENGSTATUS EngOdsWrite(void** cursor, uint16_t code, const void* source, uint16_t count) {
  const records::Layout* layout = records::Find(code);
  if (!layout) return ENG_ERR_ODS_CODE;
  if (!cursor || !*cursor || !source) return ENG_ERR_ARGUMENT;
  auto* stored = static_cast<std::byte*>(*cursor);
  records::Write(*layout, source, stored, count);
  *cursor = stored + std::size_t{layout->length} * count;
  return ENG_OK;
}
