// From the handles of exported functions to what they stand for.
#ifndef QUILLON_QCORE_ABI_LOOKUP_H
#define QUILLON_QCORE_ABI_LOOKUP_H

#include <memory>

#include "qcore/abi/guard.h"
#include "qcore/slates/slate.h"
#include "qcore/store/database.h"

namespace qcore::abi {

// Runs `body` with the database of a handle, which must not be a directory.
template <typename Body>
ENGSTATUS WithStore(ENGHANDLE db, Body&& body) noexcept {
  return Guard([&]() -> ENGSTATUS {
    std::shared_ptr<Database> database;
    const ENGSTATUS status = Database::FindStore(db, &database);
    return status == ENG_OK ? body(database) : status;
  });
}

template <typename Body>
ENGSTATUS WithSlate(ENGHANDLE handle, Body&& body) noexcept {
  return Guard([&]() -> ENGSTATUS {
    Slate* slate = Slate::Find(handle);
    return slate ? body(*slate) : ENGSTATUS{ENG_ERR_INVALID_HANDLE};
  });
}

// Runs `body` with the slate and the slot of one of its items.
template <typename Body>
ENGSTATUS WithItem(ENGHANDLE handle, BLOCKID item, Body&& body) noexcept {
  return WithSlate(handle, [&](Slate& slate) -> ENGSTATUS {
    Slate::Slot slot = 0;
    const ENGSTATUS status = slate.SlotOf(item, &slot);
    return status == ENG_OK ? body(slate, slot) : status;
  });
}

}  // namespace qcore::abi

#endif
