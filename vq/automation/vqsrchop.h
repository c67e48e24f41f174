// The bounds of a search by formula: VQDatabase::Search.
#ifndef QUILLON_VQ_AUTOMATION_VQSRCHOP_H
#define QUILLON_VQ_AUTOMATION_VQSRCHOP_H

#include "vq/frame/vqcommon.h"
#include "vq/values/vqdtime.h"

class VQString;

// A plain value. Fresh: documents, of any time, without a limit; the three moments are not set (all bits 1).
class VQ_API VQSearchOptions : public VQQuillonClass {
 public:
  VQSearchOptions();
  VQCLASSID GetClassID() const override { return VQCLASSID_VQSEARCHOPTIONS; }

  // Slates saved in this file at or after the begin and at or before the end are looked at.
  TIMEDATE GetBeginDate() const { return BeginDate; }
  TIMEDATE GetEndDate() const { return EndDate; }
  VQSTATUS SetBeginDate(const VQDatetime& moment);
  VQSTATUS SetEndDate(const VQDatetime& moment);
  // A text that is no moment gives the status of VQDatetime and keeps the old date.
  VQSTATUS SetBeginDate(const VQString& moment);
  VQSTATUS SetEndDate(const VQString& moment);
  // Set by a search: the moment to begin with the next time.
  TIMEDATE GetCompletedDate() const { return CompletedDate; }
  VQSTATUS SetCompletedDate(const TIMEDATE* moment);
  // 0 is no limit.
  unsigned long GetMaxSlates() const { return MaxSlates; }
  VQSTATUS SetMaxSlates(unsigned long count);
  // A class mask.
  unsigned long GetSlateType() const { return SlateType; }
  VQSTATUS SetSlateType(unsigned long type);

  static bool IsSet(const TIMEDATE& moment);

 private:
  static VQSTATUS Parse(const VQString& text, TIMEDATE* moment);

  TIMEDATE BeginDate;
  TIMEDATE EndDate;
  TIMEDATE CompletedDate;
  std::uint32_t MaxSlates;
  std::uint32_t SlateType;
};

#endif
