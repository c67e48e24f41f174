// Folders and unread lists.
//
// A folder is a design slate of the view class whose $Flags have the letter F. What is in it is kept beside the slate:
// a document that is deleted leaves every folder with the same change. Every operation is whole or changes nothing.
// `folder` that is no folder gives ENG_ERR_NOT_FOLDER, ENG_ERR_SLATE_DELETED or ENG_ERR_NO_SLATE.
//
// A user's unread list is the set of documents that were new or changed and not read since; what a user saves is read
// for that user. It stands in the database, so that every process sees the same list. Documents whose readers leave
// the user out are not in its tables.
#ifndef QUILLON_ENGINE_FOLDER_H
#define QUILLON_ENGINE_FOLDER_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// EngFolderCreate sharing options
#define ENG_FOLDER_SHARED 0
#define ENG_FOLDER_PRIVATE 1  // its maker alone sees it

// `format` is a view or folder of `format_db` (0: of db) that the design is taken from; 0 gives a folder without
// columns of its own. Names are as in $TITLE, synonyms behind "|". ENG_ERR_FOLDER_NAME, ENG_ERR_FOLDER_EXISTS when one
// of the names is that of a view or folder that the user can see.
ENG_API ENGSTATUS EngFolderCreate(ENGHANDLE db, ENGHANDLE reserved1, uint32_t format, ENGHANDLE format_db,
                                  const ENGCHAR* name, uint16_t length, uint16_t sharing, uint32_t reserved2,
                                  uint32_t* id);
// Design and documents.
ENG_API ENGSTATUS EngFolderCopy(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, ENGHANDLE reserved2,
                                const ENGCHAR* name, uint16_t length, uint32_t reserved3, uint32_t* id);
// Writes $TITLE and $Name of the stored slate.
ENG_API ENGSTATUS EngFolderRename(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, const ENGCHAR* name,
                                  uint16_t length, uint32_t reserved2);
// Nothing is kept for an open folder; tells whether it is one.
ENG_API ENGSTATUS EngFolderClose(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, uint32_t reserved2);

// ENG_ERR_SLATE_DELETED, ENG_ERR_NO_SLATE or ENG_ERR_NOT_DOCUMENT when one of the IDs is no document of `db`: none is
// added then. Tables stay the caller's.
ENG_API ENGSTATUS EngFolderDocAdd(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, ENGHANDLE table,
                                  uint32_t reserved2);
// IDs that are not in the folder are passed over.
ENG_API ENGSTATUS EngFolderDocRemove(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, ENGHANDLE table,
                                     uint32_t reserved2);
ENG_API ENGSTATUS EngFolderDocRemoveAll(ENGHANDLE db, ENGHANDLE reserved1, uint32_t folder, uint32_t reserved2);
// A new table of the documents in the folder.
ENG_API ENGSTATUS EngFolderGetTable(ENGHANDLE db, uint32_t folder, ENGHANDLE* table);

// A new table of what is unread for `user`; ENG_ERR_USER_NAME. A user without a list has all documents unread;
// `create` 1 stores such a list, from which on the user's own saves count as read. A collection that was opened with
// the table keeps it up to date, and so does EngDbRefreshUnreadTable; a locked table is refused with
// ENG_ERR_MEMORY_LOCKED. *changed may be null.
ENG_API ENGSTATUS EngDbGetUnreadTable(ENGHANDLE db, const ENGCHAR* user, uint16_t user_length, int create,
                                      ENGHANDLE* table);
ENG_API ENGSTATUS EngDbRefreshUnreadTable(ENGHANDLE db, ENGHANDLE table, int* changed);
// Makes the stored list that of `after`. With a table `before`, which the changes started from, only what differs
// between the two is done, so that documents that came in meanwhile stay unread. IDs that are no documents are passed
// over.
ENG_API ENGSTATUS EngDbSetUnreadTable(ENGHANDLE db, const ENGCHAR* user, uint16_t user_length, ENGHANDLE before,
                                      ENGHANDLE after);

#ifdef __cplusplus
}
#endif

#endif
