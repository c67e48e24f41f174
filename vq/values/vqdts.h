// Time items: moments, and ranges of moments behind them.
#ifndef QUILLON_VQ_VALUES_VQDTS_H
#define QUILLON_VQ_VALUES_VQDTS_H

#include "vq/values/rangelist.h"
#include "vq/values/vqdtime.h"

class VQDatetimesElement;

class VQ_API VQDatetimesBody : public vq::RangeListBody {
 public:
  VQDatetimesBody(unsigned short type, const void* value, unsigned long length);
  VQDatetimesBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  VQCLASSID GetClassID() const override;
};

// Positions count the single moments first and the ranges behind them, so a moment can't be inserted behind a range
// nor a range in front of a moment. An unattached VQDatetimes gets a value of its own by SetValue, Append, or Insert
// at 0. Uninitialised arguments give VQERR_UNINITIALIZED_ARGUMENT, positions behind the end VQERR_OUT_OF_RANGE.
class VQ_API VQDatetimes : public VQItem {
 public:
  VQDatetimes();
  VQDatetimes(const VQDatetimes& other);
  // An item that is no time throws VQERR_INCORRECT_ITEM_TYPE.
  VQDatetimes(const VQItem& item);
  explicit VQDatetimes(VQDatetimesBody* body);
  // Assignment shares the value.
  VQDatetimes& operator=(const VQDatetimes& other);
  VQDatetimes& operator=(const VQItem& item);
  VQCLASSID GetClassID() const override;

  // Throws VQERR_OBJECT_NOT_INITIALIZED without a value, VQERR_BAD_SUBSCRIPT at or behind the end.
  VQDatetimesElement operator[](unsigned long index) const;
  // Append; failures are thrown.
  VQDatetimes& operator<<(const VQDatetimes& datetimes);
  VQDatetimes& operator<<(const VQDatetime& datetime);
  VQDatetimes& operator<<(const VQDatetimeRange& range);
  VQDatetimes& operator<<(const VQDatetimesElement& element);
  // Moments behind the moments, ranges behind the ranges.
  VQSTATUS Append(const VQDatetimes& datetimes);
  VQSTATUS Append(const VQDatetimeRange& range);
  VQSTATUS Append(const VQDatetime& datetime);
  // VQERR_INVALID_PARAMETER for a count of 0.
  VQSTATUS Delete(unsigned long index, unsigned long count = 1);
  VQSTATUS DeleteAll();
  unsigned long GetCount() const;
  unsigned long GetDatetimeCount() const;
  unsigned long GetDatetimeRangeCount() const;
  VQSTATUS GetText(VQString* out, const VQString& separator) const;
  VQSTATUS GetText(const VQDatetimeFormat& format, const VQInternational& international, VQString* out,
                   const VQString& separator) const;
  // VQERR_DATETIMES_MUST_BE_RANGE behind a range.
  VQSTATUS Insert(unsigned long index, const VQDatetime& datetime);
  // VQERR_DATETIMES_NOT_RANGE in front of a moment. A range without an end is inserted as a moment.
  VQSTATUS Insert(unsigned long index, const VQDatetimeRange& range);
  // VQERR_DATETIMES_USE_APPEND where not both kinds can stand.
  VQSTATUS Insert(unsigned long index, const VQDatetimes& datetimes);
  VQSTATUS SetValue(const VQDatetime& datetime);
  VQSTATUS SetValue(const VQDatetimeRange& range);
  VQSTATUS SetValue(const VQDatetimes& datetimes);

 private:
  VQDatetimesBody* DatetimesBody() const { return static_cast<VQDatetimesBody*>(Body); }
  VQSTATUS JoinText(VQString* out, const VQString& separator, const VQDatetimeFormat* format,
                    const VQInternational* international) const;
};

// One entry, read by conversion and written by assignment; it keeps the value alive.
class VQ_API VQDatetimesElement : public VQQuillonClass {
 public:
  VQDatetimesElement(VQDatetimesBody* body, unsigned long index);
  VQDatetimesElement(const VQDatetimesElement& other);
  ~VQDatetimesElement() override;
  VQDatetimesElement& operator=(const VQDatetimesElement& other);
  // The entry's kind can't change: VQERR_DATETIMES_MUST_BE_RANGE or VQERR_DATETIMES_NOT_RANGE is thrown.
  VQDatetimesElement& operator=(const VQDatetime& datetime);
  VQDatetimesElement& operator=(const VQDatetimeRange& range);
  // A range gives its begin.
  operator VQDatetime() const;
  // A moment gives a range with a begin only.
  VQDatetimeRange GetDatetimeRange() const;
  VQCLASSID GetClassID() const override;

 private:
  VQDatetimesBody* Datetimes;
  std::uint32_t Index;
};

#endif
