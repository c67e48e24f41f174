// Collections: the live index of a view or folder.
//
// A collection's rows stand in view order: categories, main documents, responses under their parents, a totals row at
// the end. Each row has a level (0 is outermost), and a place is the list of its ordinals from level 0 down. The levels
// of a row and of the row before it differ by at most one downwards.
//
// The index is shared by all handles of one database handle on one view: what one handle's update brings in, the others
// see at their next read. It is kept in the database and comes out the same when it is built anew. A handle is used by
// one thread at a time.
//
// Where formulas of a view depend on the time, or on other documents as @Responses does, its rows are those of the last
// opening that updated it; while a handle of it is open, an opening within a minute shares that time, and where
// formulas ask for the date alone, one on the same day. Where rows are the user's own, by readers' lists or by
// formulas, each of the last four users has an index that is kept.
//
// A row in the read buffer, little-endian and packed, has the fields whose mask bits are set, in this order:
//
//   0x0001  u32  slate ID; for rows that are no document bit 31 and a number for the row, bit 30 for a totals row
//   0x0002  16   universal ID, zero for rows that are no document
//   0x0004  u16  slate class, 0 for rows that are no document
//   0x0008  u32  siblings, the row itself among them
//   0x0010  u32  children
//   0x0020  u32  descendants
//   0x0080  u16  indent levels: how many documents the row hangs below; 0 for rows that are no document
//   0x0200  u16  score of a full-text hit, 0 to 100
//   0x0400  u16  1 for an unread document, or for a category with one below it
//   0x4000  var  COLLECTIONPOSITION up to the row's level: (Level + 2) * 4 bytes
//   0x8000  var  ITEM_TABLE: u16 length of all of it, u16 items, (u16 name length, u16 value length) for each, then
//                name and value (type word first) of each
//
// The summary has every column with an internal name and no constant value, in the order of columns, on every row; a
// value of no bytes stands where the row has none. A category row has its own column's value (the one segment, where
// values nest by "\") and the totals of what is below it; a document row has its own values, one of several where the
// column gives a row to each; the totals row has the totals of the view. Of a summary above 65,535 bytes the values
// that go beyond are left out.
#ifndef QUILLON_ENGINE_COLLECTION_H
#define QUILLON_ENGINE_COLLECTION_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define ENG_COLLECTION_LEVELS 32
#define ENG_COLLECTION_NO_LIMIT 31  // MaxLevel: no limit

// Ordinals count from 1. Level 0 with ordinal 0 is the place before the first row.
typedef struct COLLECTIONPOSITION {
  uint16_t Level;
  uint8_t MinLevel;
  uint8_t MaxLevel;
  uint32_t Tumbler[ENG_COLLECTION_LEVELS];
} COLLECTIONPOSITION;

#define ENG_ROW_NO_DOCUMENT 0x80000000u
#define ENG_ROW_TOTAL 0x40000000u

// Read masks
#define ENG_READ_ID 0x0001u
#define ENG_READ_UNIVERSAL_ID 0x0002u
#define ENG_READ_CLASS 0x0004u
#define ENG_READ_SIBLINGS 0x0008u
#define ENG_READ_CHILDREN 0x0010u
#define ENG_READ_DESCENDANTS 0x0020u
#define ENG_READ_INDENT 0x0080u
#define ENG_READ_SCORE 0x0200u
#define ENG_READ_UNREAD 0x0400u
#define ENG_READ_POSITION 0x4000u
#define ENG_READ_SUMMARY 0x8000u

// Navigation. A peer is a row of the same level under the same parent; a main topic a document that hangs below none.
#define ENG_GO_CURRENT 0x00
#define ENG_GO_NEXT 0x01
#define ENG_GO_PARENT 0x03
#define ENG_GO_CHILD 0x04
#define ENG_GO_NEXT_PEER 0x05
#define ENG_GO_PREV_PEER 0x06
#define ENG_GO_FIRST_PEER 0x07  // stays where there is none before
#define ENG_GO_LAST_PEER 0x08   // stays where there is none behind
#define ENG_GO_PREV 0x09
#define ENG_GO_NEXT_UNREAD 0x0A
#define ENG_GO_MAIN 0x0B  // the main topic that the row hangs below, or is
#define ENG_GO_NEXT_MAIN 0x0C
#define ENG_GO_PREV_MAIN 0x0D
#define ENG_GO_DESCENDANTS 0x11  // next row, inside the row that the read starts from
#define ENG_GO_NEXT_UNREAD_MAIN 0x12
#define ENG_GO_NEXT_PARENT 0x13  // next peer of the nearest row above that has one
#define ENG_GO_PREV_PARENT 0x14  // previous peer of the nearest row above that has one
#define ENG_GO_PREV_UNREAD 0x15
#define ENG_GO_NEXT_HIT 0x1D  // hits of a full-text search: Level 0, the hit's number as ordinal
#define ENG_GO_PREV_HIT 0x1E
#define ENG_GO_CURRENT_HIT 0x1F
#define ENG_GO_PREV_UNREAD_MAIN 0x22
#define ENG_GO_NEXT_UNREAD_HIT 0x25
#define ENG_GO_PREV_UNREAD_HIT 0x26
#define ENG_GO_NEXT_CATEGORY 0x29
#define ENG_GO_PREV_CATEGORY 0x2A
#define ENG_GO_NEXT_DOCUMENT 0x2B
#define ENG_GO_PREV_DOCUMENT 0x2C
#define ENG_GO_MASK 0x00FF
#define ENG_GO_MIN_LEVEL 0x0100  // a row above the position's MinLevel ends the way
#define ENG_GO_MAX_LEVEL 0x0200  // rows below the position's MaxLevel are passed over
#define ENG_GO_CONTINUE 0x8000   // read on from the last row reached when not all of the skip could be made

// Signals of a read
#define ENG_SIGNAL_MORE_TO_DO 0x0020  // the buffer was full before `count` rows were read, and there are more

// EngCollectionOpen flags
#define ENG_COLLECTION_REBUILD 0x0001    // build the index from nothing
#define ENG_COLLECTION_NO_UPDATE 0x0002  // as the index was last written; without one it is built
#define ENG_COLLECTION_NO_CREATE 0x0004  // ENG_ERR_NO_COLLECTION when no index has been built yet

// Opens the collection of a view slate. `entries_db` holds the documents: the same handle as `db`, or another database,
// whose index is then kept there. `unread` (0 for none) is an ID table of unread documents that stays the caller's and
// must outlive the collection. ENG_ERR_NO_COLLECTION for an ID of 0, ENG_ERR_VIEW_DESIGN for a design that can't be
// read, ENG_ERR_INVALID_HANDLE for an `unread` that is no ID table. Reserved arguments are 0.
ENG_API ENGSTATUS EngCollectionOpen(ENGHANDLE db, ENGHANDLE entries_db, uint32_t view, uint16_t flags, ENGHANDLE unread,
                                    ENGHANDLE* collection, ENGHANDLE* reserved1, void* reserved2, ENGHANDLE* reserved3,
                                    ENGHANDLE* reserved4);
// The last handle of an index writes what has not been written. A failed write loses nothing: the index follows the
// documents again at its next opening.
ENG_API ENGSTATUS EngCollectionClose(ENGHANDLE collection);
// Brings in what has been saved since by anyone, and a changed design. Rows that change by themselves, with the time or
// by counts of responses, are built anew when the day is another one or a minute has passed. On failure nothing is
// brought in by halves: the rows are as they were, or the next read starts from what was last written.
ENG_API ENGSTATUS EngCollectionUpdate(ENGHANDLE collection);

// Moves `skip_count` times by `skip`, then reads up to `count` rows, by `navigation` from one to the next. The position
// becomes the last row read, or reached when no row is wanted; after a failure it is as it was. *buffer is 0 when no
// row is wanted, else a block that the caller frees. Null outputs (buffer with count 0, skipped, returned, signals) are
// passed over. A skip count of 0xFFFFFFFF goes to the end. ENG_ERR_NO_ENTRY when the position has no row, or when
// rows are wanted and not all of the skip could be made (without ENG_GO_CONTINUE); *skipped is set in both cases.
// ENG_ERR_ARGUMENT for unknown codes and masks, and for a way that mixes hits and rows.
ENG_API ENGSTATUS EngCollectionRead(ENGHANDLE collection, void* position, uint16_t skip, uint32_t skip_count,
                                    uint16_t navigation, uint32_t count, uint32_t mask, ENGHANDLE* buffer,
                                    uint32_t* buffer_length, uint32_t* skipped, uint32_t* returned, uint16_t* signals);

// EngCollectionFind flags
#define ENG_FIND_PARTIAL 0x0001         // a text key finds texts that begin with it
#define ENG_FIND_IGNORE_CASE 0x0002     // where the column's order tells case
#define ENG_FIND_IGNORE_ACCENTS 0x0008  // where the column's order tells accents
#define ENG_FIND_UPDATE 0x0020          // not found: update the collection and look again
#define ENG_FIND_COMPARISON 0x00C0
#define ENG_FIND_FIRST_EQUAL 0x0000
#define ENG_FIND_LESS 0x0040  // the last of the rows before the key, in view order
#define ENG_FIND_LAST_EQUAL 0x0080
#define ENG_FIND_GREATER 0x00C0  // the last of the rows behind the key

// Keys stand for the sorted columns in order: an ITEM_TABLE whose items have no names. *matches (may be null) is the
// number of rows found, peers of each other. A single equal key of a category finds the category's first child. Rows
// are found whatever their level; MinLevel and MaxLevel of the result are 0 and 31. On failure *position is as it was.
// ENG_ERR_NO_ENTRY, ENG_ERR_TOO_MANY_KEYS, ENG_ERR_COUNT_UNSUPPORTED when `matches` is given and the rows found don't
// stand together, ENG_ERR_ARGUMENT for a table whose lengths lead out of it or a key of another type than text, number
// or time.
ENG_API ENGSTATUS EngCollectionFind(ENGHANDLE collection, const void* keys, uint16_t flags, void* position,
                                    uint32_t* matches);

// Expands the marks in a column's constant text for one row: those of ENG_SPECIAL_... in engine/formula.h. What is no
// such mark stays as it is. `id` is the row's as mask 0x0001 gives it. `statistics` is the record of mask 0x0438
// without the last word; null counts as zero. `unread` is not looked at: `table` tells what is unread.
// ENG_ERR_BUFFER_SIZE when the result does not fit; nothing is written then.
ENG_API ENGSTATUS EngCollectionTranslateSpecial(const ENGCHAR* text, uint16_t length, ENGCHAR* output,
                                                uint16_t output_size, uint32_t id, const void* position,
                                                const void* statistics, const void* unread, ENGHANDLE table,
                                                const ENGCHAR* db_title, const ENGCHAR* view_title,
                                                uint16_t* output_length);

// Additions of this engine.

// Sorts the rows by another stored collation: 0 for `$Collation`, n for `$Collation` followed by n. Only this handle
// changes. ENG_ERR_NO_COLLECTION when the design has no such collation.
ENG_API ENGSTATUS EngCollectionSetCollation(ENGHANDLE collection, uint16_t number);

// Called now and then while an index is built, with documents done and to do, on the thread that waits for the build.
// For the whole process; a null callback ends it. The callback must not call the engine.
typedef void (*ENGCOLLECTIONPROGRESS)(void* context, uint32_t done, uint32_t total);
ENG_API ENGSTATUS EngCollectionSetProgress(ENGCOLLECTIONPROGRESS callback, void* context);

// What happened to rows, in the order in which it happened.
#define ENG_ROW_INSERTED 1
#define ENG_ROW_REMOVED 2
#define ENG_ROW_MOVED 3    // removed at one place and inserted at another by one update
#define ENG_ROW_CHANGED 4  // another summary at the same place
typedef struct COLLECTIONCHANGE {
  uint16_t Kind;
  uint16_t Indent;
  uint32_t ID;                  // as mask 0x0001 gives it
  COLLECTIONPOSITION Position;  // where the row is now; Level 0 with ordinal 0 for a row that is gone since
} COLLECTIONCHANGE;
// The changes behind the change number *since, which becomes the number of the last one. A number of 0 gives no change
// and sets *since: that is how an observer starts. *changes is a block of *count structures that the caller frees, 0
// for none. *complete becomes 0 when changes behind *since are no longer known (the index was built anew, or more than
// 65,536 have happened): read the rows anew. The work grows with the changes only.
ENG_API ENGSTATUS EngCollectionGetChanges(ENGHANDLE collection, uint64_t* since, ENGHANDLE* changes, uint32_t* count,
                                          int* complete);

#ifdef __cplusplus
}
#endif

#endif
