// VQVFObserver: what has happened to the rows of a view since it was last asked.
//
// An observer is registered with an open view and starts there. Asking brings in what anyone has saved meanwhile and
// gives the changes, in the order in which they happened; nothing is called from elsewhere. The work grows with the
// changes and not with the view. Navigators of the same view read the rows at their new places from then on; counts
// that they have read before stand until their Refresh.
//
// An observer belongs to the view's thread, keeps the view alive and ends with the view's Close; a copy goes on from
// where the other stands. Operations on one that is not registered give VQERR_OBJECT_NOT_INITIALIZED.
#ifndef QUILLON_VQ_VIEWS_VFOBSERVER_H
#define QUILLON_VQ_VIEWS_VFOBSERVER_H

#include <vector>

#include "vq/views/ventbody.h"

enum VQVFCHANGEKIND : unsigned int {
  VQVFCHANGEKIND_INSERTED = 1,
  VQVFCHANGEKIND_REMOVED = 2,
  VQVFCHANGEKIND_MOVED = 3,    // to another place by one change
  VQVFCHANGEKIND_CHANGED = 4,  // other values at the same place
};

struct VQVFChange {
  VQVFCHANGEKIND Kind;
  VQVFENTRYTYPE Type;
  unsigned long SlateID;  // as VQVFEntry::GetSlateID gives it
  unsigned long IndentLevels;
  bool IsGone;            // the row has left the view since
  VQVFPosition Position;  // where the row is now, unless it is gone
};

class VQ_API VQVFObserver {
 public:
  VQVFObserver();

  // The view's entries must be open; VQERR_UNINITIALIZED_ARGUMENT for a null view. On failure the observer is as it
  // was.
  VQSTATUS Register(const VQViewFolder& view);
  VQSTATUS Unregister();
  bool IsRegistered() const { return Entries.GetNavigatorBody() != nullptr; }

  // Replaces the list. VQWARN_NOT_FOUND when nothing has happened. *complete, which may be null, is 0 when the list
  // cannot tell all (the index was built anew, or more than 65,536 changes came together): the list is empty then, and
  // the rows are to be read anew. After an error the same changes are given the next time.
  VQSTATUS GetChanges(std::vector<VQVFChange>* changes, int* complete = nullptr);

 private:
  [[nodiscard]] VQSTATUS Read(std::vector<VQVFChange>* changes, int* complete);

  VQVFNavigator Entries;
  std::uint64_t Since;  // number of the last change that was given
};

#endif
