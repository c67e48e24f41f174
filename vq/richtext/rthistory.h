// VQRTHistory: takes edits of a rich text back, and does them again.
#ifndef QUILLON_VQ_RICHTEXT_RTHISTORY_H
#define QUILLON_VQ_RICHTEXT_RTHISTORY_H

#include <cstddef>
#include <list>
#include <vector>

#include "vq/richtext/vqrtbody.h"

// Watches one rich text. Edits between Begin and End are one step; what was edited outside of such a group since the
// last step is a step of its own. A step that is taken back, or done again, leaves the records of the text byte for
// byte as they were; handles and cursors in the part that changed go with it, all others stay. What an edit does
// beside the text stays done: faces and links in the slate's tables, files attached, or taken off by DeleteAttachment.
//
// Keeps a copy of the records, and of each step the part that it changed, before and after. Begin, End, Undo and Redo
// take time that grows with the text. The rich text may be saved in between. Not for use in two threads at once; copies
// are not made.
class VQ_API VQRTHistory {
 public:
  VQRTHistory();
  ~VQRTHistory();
  VQRTHistory(const VQRTHistory&) = delete;
  VQRTHistory& operator=(const VQRTHistory&) = delete;

  // Starts with the text as it is now; what was kept of another one is gone. VQERR_UNINITIALIZED_ARGUMENT for null;
  // a text that cannot be parsed gives its status. After a failure the history is as it was.
  VQSTATUS Watch(const VQRichText& richText);

  // VQERR_WRONG_SITUATION for a group in a group. Operations but Watch give VQERR_NOT_INITIALIZED when there is no
  // text, VQERR_OBJECT_CLOSED when its slate has been closed.
  VQSTATUS Begin();
  // Ends the group. Steps that were taken back before can no longer be done again, unless the group has changed
  // nothing: it leaves no step then. VQERR_WRONG_SITUATION without a group.
  VQSTATUS End();
  // Ends the group and takes back what it has done; no step is left of it.
  VQSTATUS Cancel();
  bool IsInGroup() const { return InGroup; }

  // Takes the last step back (does the one taken back last again). `cursor`, which may be null, is put at the start of
  // what changed. VQWARN_NOT_FOUND when there is none, VQERR_WRONG_SITUATION inside a group. After an error the text is
  // as it was.
  VQSTATUS Undo(VQRTCursor* cursor = nullptr);
  VQSTATUS Redo(VQRTCursor* cursor = nullptr);

  // Steps that can be taken back, and that can be done again.
  unsigned long GetUndoCount() const { return static_cast<unsigned long>(Done.size()); }
  unsigned long GetRedoCount() const { return static_cast<unsigned long>(Undone.size()); }
  // Bytes of all steps. Above the limit the oldest ones go, but not the last; 0, as at first, is no limit.
  std::size_t GetSize() const { return StepBytes; }
  VQSTATUS SetLimit(std::size_t bytes);
  // Forgets all steps, and an open group. The text stays as it is.
  VQSTATUS Clear();

 private:
  using Bytes = std::vector<unsigned char>;
  // The records, and where those of each object at the top level start.
  struct Stream {
    Bytes Records;
    std::vector<std::size_t> Starts;
  };
  // Lies between two objects of the top level, before the step and after it.
  struct Step {
    std::size_t Offset;
    Bytes Before;
    Bytes After;
    std::size_t GetSize() const { return Before.size() + After.size(); }
  };

  [[nodiscard]] VQSTATUS Read(Stream* stream) const;
  // Enters what has changed since the last step, if anything.
  [[nodiscard]] VQSTATUS Record();
  [[nodiscard]] static Step Compare(const Stream& before, const Stream& after);
  [[nodiscard]] VQSTATUS Move(std::list<Step>& from, std::list<Step>& to, bool back, VQRTCursor* cursor);
  // Puts the tree from Current into the state where `with` stands in the place of `size` bytes.
  [[nodiscard]] VQSTATUS Replace(std::size_t offset, std::size_t size, const Bytes& with, VQRTCursor* cursor);
  [[nodiscard]] VQSTATUS ReplaceAll(std::size_t offset, std::size_t size, const Bytes& with);
  [[nodiscard]] VQSTATUS Exchange(std::size_t offset, std::size_t size, const Bytes& with);
  VQRTObjectBody* ChildAt(std::size_t offset) const;
  [[nodiscard]] VQSTATUS Check() const;
  void ForgetUndone();
  void Trim();

  VQRichText Text;
  Stream Current;  // when the last step ended
  std::list<Step> Done;
  std::list<Step> Undone;
  std::size_t StepBytes = 0;
  std::size_t Limit = 0;
  bool InGroup = false;
};

#endif
