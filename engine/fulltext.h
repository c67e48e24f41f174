// Full text: an index over the text, names and rich text of all documents of a database, and searches in it.
//
// The index is a part of the database and changes when EngFtIndex is called. A search finds documents as they were
// then, but never one that has been deleted since, or whose readers leave the user out now. Without an index operations
// give ENG_ERR_NO_FULL_TEXT. The query language is described in docs/full-text.md.
#ifndef QUILLON_ENGINE_FULLTEXT_H
#define QUILLON_ENGINE_FULLTEXT_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct FT_INDEX_STATS {
  uint32_t DocsAdded;
  uint32_t DocsUpdated;
  uint32_t DocsDeleted;
  uint32_t BytesIndexed;  // of text, at most 0xFFFFFFFF
} FT_INDEX_STATS;

// EngFtIndex options
#define ENG_FT_INDEX_ANEW 0x0001  // what is there is thrown away first

// EngFtSearch options
#define ENG_FT_COLLECTION 0x0001  // hits are rows of the collection, which keeps them in their order
#define ENG_FT_REFINE 0x0004      // only IDs of the table are searched
#define ENG_FT_SCORES 0x0008      // best first, with scores of 1 to 100 relative to the best hit
#define ENG_FT_TABLE 0x0010       // the result is an ID table, else a result buffer
#define ENG_FT_BY_DATE 0x0020     // last made first; without an order by ID
#define ENG_FT_OLDEST 0x0040      // with BY_DATE: first made first
#define ENG_FT_BEST 0x0080        // a limit keeps the first of that order; without it the lowest IDs, then ordered
#define ENG_FT_STEM 0x0200        // words outside of quotation marks are found in their English forms too
#define ENG_FT_THESAURUS 0x0400   // and in the synonyms of the file that settings key FullTextThesaurus names

// A result buffer is an engine memory block: ENG_FT_RESULT_HEADER bytes, of which the u32 at 0 is the number of hits
// and bit 0 of byte 4 says that there are scores; the IDs, u32 each; the scores, one byte each.
#define ENG_FT_RESULT_HEADER 8
#define ENG_FT_RESULT_SCORES 0x01

// Between the parts of a long update; a status other than 0 ends it and is returned, with what is done kept.
typedef ENGSTATUS (*ENGFTPROGRESS)(void* context, uint32_t done, uint32_t all);

// Makes the index or brings it up to date. `statistics` and `progress` may be null.
ENG_API ENGSTATUS EngFtIndex(ENGHANDLE db, uint16_t options, ENGFTPROGRESS progress, void* context,
                             FT_INDEX_STATS* statistics);
ENG_API ENGSTATUS EngFtDeleteIndex(ENGHANDLE db);
ENG_API ENGSTATUS EngFtGetInfo(ENGHANDLE db, TIMEDATE* last_indexed);

// A search handle goes by the names that the user has at EngFtOpen. One thread at a time.
ENG_API ENGSTATUS EngFtOpen(ENGHANDLE* search);
ENG_API ENGSTATUS EngFtClose(ENGHANDLE search);
// Rows of a collection are those of its documents in `db`, else ENG_ERR_ARGUMENT.
// `limit` 0 is none. ENG_ERR_NO_HITS with *hits 0 and no result, ENG_ERR_TEXT_QUERY. The result is the caller's.
ENG_API ENGSTATUS EngFtSearch(ENGHANDLE db, ENGHANDLE* search, ENGHANDLE collection, const ENGCHAR* query,
                              uint32_t options, uint16_t limit, ENGHANDLE table, uint32_t* hits, ENGHANDLE* reserved,
                              ENGHANDLE* result);

#ifdef __cplusplus
}
#endif

#endif
