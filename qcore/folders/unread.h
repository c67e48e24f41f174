// Unread tables: for a user, the documents not yet read.
//
// Kept in the store as a set of IDs with the place in the change feed that it stands for; what has come behind is
// folded in at each use. A document is unread once it is new or changed, but for the user who saved it. Documents that
// the user may not read are kept in the list and left out of every table.
#ifndef QUILLON_QCORE_FOLDERS_UNREAD_H
#define QUILLON_QCORE_FOLDERS_UNREAD_H

#include <string_view>

#include "qcore/store/database.h"

namespace qcore {

// A table that knows its user and database: RefreshUnread brings it up to date. The caller destroys it like any ID
// table. Without a stored list every document is unread; `create` stores one.
[[nodiscard]] ENGSTATUS GetUnreadTable(Database& database, std::string_view user, bool create, ENGHANDLE* table);
// Puts what is unread now into a table that GetUnreadTable gave; a table that did not come from there is left alone.
// `changed` tells whether it differs. ENG_ERR_MEMORY_LOCKED.
[[nodiscard]] ENGSTATUS RefreshUnread(Database& database, ENGHANDLE table, bool* changed);
// Makes the stored list that of `after`. With `before`, only what differs between the two is applied, so that documents
// that came in meanwhile stay unread.
[[nodiscard]] ENGSTATUS SetUnreadTable(Database& database, std::string_view user, ENGHANDLE before, ENGHANDLE after);

}  // namespace qcore

#endif
