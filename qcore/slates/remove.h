// Stored slates by ID: look-up and deletion without opening.
#ifndef QUILLON_QCORE_SLATES_REMOVE_H
#define QUILLON_QCORE_SLATES_REMOVE_H

#include "qcore/store/database.h"

namespace qcore {

// Turns ENG_SLATE_ID_ICON into the icon slate's ID; ENG_ERR_NO_SLATE when there is none. Other IDs stay.
[[nodiscard]] ENGSTATUS ResolveSlateId(Database& database, std::uint32_t* id);
[[nodiscard]] ENGSTATUS ReadSlateHeader(Database& database, std::uint32_t id, SlateHeader* header);
[[nodiscard]] ENGSTATUS FindSlate(Database& database, const UNIVERSALSLATEID& universal, SlateHeader* header);

// Leaves a deletion stub unless the flags have ENG_UPDATE_NO_STUB. ENG_ERR_SLATE_DELETED for a deletion stub, which
// ENG_UPDATE_NO_STUB removes.
[[nodiscard]] ENGSTATUS DeleteSlate(Database& database, std::uint32_t id, std::uint16_t flags);
// All or none; IDs that are deleted already or have no slate are passed over.
[[nodiscard]] ENGSTATUS DeleteSlates(Database& database, ENGHANDLE id_table, std::uint16_t flags);

}  // namespace qcore

#endif
