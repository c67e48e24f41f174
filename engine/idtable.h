// ID tables: ordered sets of 32-bit slate IDs in a block of engine memory.
//
// The handle can be locked like any memory handle. The block starts with structure code 31 (IDTABLEHEADER);
// unless its Flags have bit 0x8000, RunCount runs of 5 bytes follow: Extra, then the start ID, unaligned;
// a run is the Extra + 1 IDs start, start + Step and so on. A locked table cannot be changed.
#ifndef QUILLON_ENGINE_IDTABLE_H
#define QUILLON_ENGINE_IDTABLE_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

ENG_API ENGSTATUS EngIdTableCreate(uint16_t element_size, ENGHANDLE* table);
ENG_API ENGSTATUS EngIdTableCopy(ENGHANDLE table, ENGHANDLE* copy);
ENG_API ENGSTATUS EngIdTableDestroy(ENGHANDLE table);
ENG_API uint32_t EngIdTableEntries(ENGHANDLE table);
// *flag (may be null) tells whether the table changed.
ENG_API ENGSTATUS EngIdTableInsert(ENGHANDLE table, uint32_t id, int* flag);
ENG_API ENGSTATUS EngIdTableDelete(ENGHANDLE table, uint32_t id, int* flag);
ENG_API ENGSTATUS EngIdTableInsertTable(ENGHANDLE table, ENGHANDLE other);
ENG_API ENGSTATUS EngIdTableDeleteTable(ENGHANDLE table, ENGHANDLE other);
ENG_API ENGSTATUS EngIdTableDeleteAll(ENGHANDLE table);
ENG_API int EngIdTableLookup(ENGHANDLE table, uint32_t id);
// first 1: the first ID; 0: the one behind *id. Gives 0 at the end and leaves *id.
ENG_API int EngIdTableScan(ENGHANDLE table, int first, uint32_t* id);

#ifdef __cplusplus
}
#endif

#endif
