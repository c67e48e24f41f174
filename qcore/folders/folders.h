// Folders: design slates of the view class with a stored list of documents.
//
// Membership is kept beside the folder's slate, with a change number of its own for each folder: a document's deletion
// takes it out of every folder in the same transaction, the folder's deletion empties it. All changes are whole or do
// not happen. Operations take the database's mutex; those that need it held say so.
#ifndef QUILLON_QCORE_FOLDERS_FOLDERS_H
#define QUILLON_QCORE_FOLDERS_FOLDERS_H

#include <memory>
#include <string_view>
#include <vector>

#include "qcore/store/database.h"

namespace qcore {

// ENG_ERR_NOT_FOLDER, ENG_ERR_SLATE_DELETED, ENG_ERR_NO_SLATE; the last one also for a private folder of another user.
[[nodiscard]] ENGSTATUS CheckFolder(const std::shared_ptr<Database>& database, std::uint32_t folder);

enum class FolderSharing : std::uint16_t { kShared = 0, kPrivate = 1 };

// A new folder of the design of slate `format` in `format_database`; `format` 0 gives one without columns.
// ENG_ERR_FOLDER_NAME, ENG_ERR_FOLDER_EXISTS; ENG_ERR_NOT_FOLDER when `format` is neither a view nor a folder. A
// private folder can be read by its maker alone.
[[nodiscard]] ENGSTATUS CreateFolder(const std::shared_ptr<Database>& database,
                                     const std::shared_ptr<Database>& format_database, std::uint32_t format,
                                     std::string_view name, FolderSharing sharing, std::uint32_t* id);
// Design and members.
[[nodiscard]] ENGSTATUS CopyFolder(const std::shared_ptr<Database>& database, std::uint32_t folder,
                                   std::string_view name, std::uint32_t* id);
[[nodiscard]] ENGSTATUS RenameFolder(const std::shared_ptr<Database>& database, std::uint32_t folder,
                                     std::string_view name);

// ENG_ERR_SLATE_DELETED or ENG_ERR_NO_SLATE, and no change, when one of the IDs is no document of this database; IDs
// that are members already stay.
[[nodiscard]] ENGSTATUS AddToFolder(const std::shared_ptr<Database>& database, std::uint32_t folder,
                                    ENGHANDLE id_table);
// IDs that are no members are passed over.
[[nodiscard]] ENGSTATUS RemoveFromFolder(const std::shared_ptr<Database>& database, std::uint32_t folder,
                                         ENGHANDLE id_table);
[[nodiscard]] ENGSTATUS EmptyFolder(const std::shared_ptr<Database>& database, std::uint32_t folder);

// Every member of one folder becomes one of the other.
[[nodiscard]] ENGSTATUS CopyMembers(Database& database, std::uint32_t from, std::uint32_t to);

// With the mutex held: the members in ascending order; the number of the folder's last change, 0 for none; what was
// added and removed behind change `since`, in ascending order, each ID in at most one list.
[[nodiscard]] ENGSTATUS FolderMembers(Database& database, std::uint32_t folder, std::vector<std::uint32_t>* ids);
[[nodiscard]] ENGSTATUS FolderSequence(Database& database, std::uint32_t folder, std::uint64_t* sequence);
[[nodiscard]] ENGSTATUS FolderChanges(Database& database, std::uint32_t folder, std::uint64_t since,
                                      std::vector<std::uint32_t>* added, std::vector<std::uint32_t>* removed);

}  // namespace qcore

#endif
