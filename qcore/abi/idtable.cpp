#include "engine/idtable.h"

#include "engine/status.h"
#include "qcore/abi/guard.h"
#include "qcore/idtables/idtable.h"

using qcore::abi::Guard;
using qcore::abi::GuardValue;
namespace idtable = qcore::idtable;

ENGSTATUS EngIdTableCreate(uint16_t element_size, ENGHANDLE* table) {
  if (!table || element_size != sizeof(uint32_t)) return ENG_ERR_ARGUMENT;
  return Guard([&] { return idtable::Create(table); });
}

ENGSTATUS EngIdTableCopy(ENGHANDLE table, ENGHANDLE* copy) {
  if (!copy) return ENG_ERR_ARGUMENT;
  return Guard([&] { return idtable::Copy(table, copy); });
}

ENGSTATUS EngIdTableDestroy(ENGHANDLE table) {
  return Guard([&] { return idtable::Destroy(table); });
}

uint32_t EngIdTableEntries(ENGHANDLE table) { return idtable::Entries(table); }

ENGSTATUS EngIdTableInsert(ENGHANDLE table, uint32_t id, int* flag) {
  bool changed = false;
  const ENGSTATUS status = Guard([&] { return idtable::Insert(table, id, &changed); });
  if (flag) *flag = changed;
  return status;
}

ENGSTATUS EngIdTableDelete(ENGHANDLE table, uint32_t id, int* flag) {
  bool changed = false;
  const ENGSTATUS status = Guard([&] { return idtable::Delete(table, id, &changed); });
  if (flag) *flag = changed;
  return status;
}

ENGSTATUS EngIdTableInsertTable(ENGHANDLE table, ENGHANDLE other) {
  return Guard([&] { return idtable::InsertTable(table, other); });
}

ENGSTATUS EngIdTableDeleteTable(ENGHANDLE table, ENGHANDLE other) {
  return Guard([&] { return idtable::DeleteTable(table, other); });
}

ENGSTATUS EngIdTableDeleteAll(ENGHANDLE table) {
  return Guard([&] { return idtable::DeleteAll(table); });
}

int EngIdTableLookup(ENGHANDLE table, uint32_t id) { return idtable::Contains(table, id) ? 1 : 0; }

int EngIdTableScan(ENGHANDLE table, int first, uint32_t* id) {
  if (!id || (first == 0 && *id == UINT32_MAX)) return 0;
  return idtable::Next(table, first != 0 ? 0 : *id + 1, id) ? 1 : 0;
}
