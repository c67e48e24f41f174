// Time items and their entries.
#include "vq/values/vqdts.h"

#include "engine/engine.h"
#include "engine/records.h"
#include "vq/frame/state.h"
#include "vq/values/entrycount.h"

namespace {

using List = vq::RangeListBody;

// The stored forms of a moment and of a pair.
struct StoredTimes {
  explicit StoredTimes(const TIMEDATE& moment) { Write(&moment, 1); }
  explicit StoredTimes(const TIMEDATE_PAIR& pair) { Write(&pair.Lower, 2); }
  unsigned char Bytes[List::kRangeSize] = {};

 private:
  // A pair is two moments on end.
  void Write(const TIMEDATE* moments, std::uint16_t count) {
    void* cursor = Bytes;
    vq::ThrowIfError(vq::FromEngine(EngOdsWrite(&cursor, ODS_TIMEDATE, moments, count)));
  }
};
static_assert(sizeof(TIMEDATE_PAIR) == 2 * sizeof(TIMEDATE));

VQSTATUS ReadRange(VQDatetimesBody* body, unsigned long index, VQDatetimeRange* range) {
  unsigned char entry[List::kRangeSize];
  bool is_range = false;
  if (const VQSTATUS status = body->ReadEntry(index, entry, &is_range)) return status;
  TIMEDATE moments[2] = {};
  void* cursor = entry;
  const std::uint16_t count = is_range ? 2 : 1;
  if (const VQSTATUS status = vq::FromEngine(EngOdsRead(&cursor, ODS_TIMEDATE, moments, count))) return status;
  *range = is_range ? VQDatetimeRange(TIMEDATE_PAIR{moments[0], moments[1]}) : VQDatetimeRange(moments[0]);
  return VQ_OK;
}

void CheckIsTime(const VQItem& item) {
  const VQItemBody* body = item.GetItemBody();
  if (body != nullptr && body->GetClassID() != VQCLASSID_VQDATETIMESBODY) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
}

const VQItem& TimeItem(const VQItem& item) {
  CheckIsTime(item);
  return item;
}

VQSTATUS ReadCounts(VQDatetimesBody* body, List::Counts* counts) {
  if (const VQSTATUS status = body->CheckEditable()) return status;
  return body->GetCounts(counts);
}

VQSTATUS CountKinds(VQDatetimesBody* body, List::Counts* counts) {
  return body == nullptr ? VQ_OK : ReadCounts(body, counts);
}

VQSTATUS InsertMoment(VQDatetimesBody* body, unsigned long index, const TIMEDATE& moment) {
  List::Counts counts;
  if (const VQSTATUS status = ReadCounts(body, &counts)) return status;
  if (index > counts.Total()) return VQERR_OUT_OF_RANGE;
  if (index > counts.Singles) return VQERR_DATETIMES_MUST_BE_RANGE;
  return body->InsertSingles(index, StoredTimes(moment).Bytes, 1);
}

VQSTATUS InsertRange(VQDatetimesBody* body, unsigned long index, const TIMEDATE_PAIR& pair) {
  List::Counts counts;
  if (const VQSTATUS status = ReadCounts(body, &counts)) return status;
  if (index > counts.Total()) return VQERR_OUT_OF_RANGE;
  if (index < counts.Singles) return VQERR_DATETIMES_NOT_RANGE;
  return body->InsertRanges(index, StoredTimes(pair).Bytes, 1);
}

VQSTATUS InsertBoth(VQDatetimesBody* body, unsigned long index, VQDatetimesBody* source) {
  List::Counts counts;
  List::Counts added;
  if (const VQSTATUS status = ReadCounts(body, &counts)) return status;
  if (source->CheckValue() != VQ_OK) return VQERR_UNINITIALIZED_ARGUMENT;
  if (const VQSTATUS status = source->GetCounts(&added)) return status;
  if (index > counts.Total()) return VQERR_OUT_OF_RANGE;
  const bool singles_fit = added.Singles == 0 || index <= counts.Singles;
  const bool ranges_fit = added.Ranges == 0 || index >= counts.Singles;
  if (!singles_fit || !ranges_fit) return VQERR_DATETIMES_USE_APPEND;
  const unsigned long range_at = index > counts.Singles ? index - counts.Singles : 0;
  return body->InsertAll(index, range_at, *source);
}

VQSTATUS AppendBoth(VQDatetimesBody* body, VQDatetimesBody* source) {
  List::Counts counts;
  if (const VQSTATUS status = ReadCounts(body, &counts)) return status;
  return body->InsertAll(counts.Singles, counts.Ranges, *source);
}

}  // namespace

VQDatetimesBody::VQDatetimesBody(unsigned short type, const void* value, unsigned long length)
    : RangeListBody(TYPE_TIME, type, value, length) {}

VQDatetimesBody::VQDatetimesBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : RangeListBody(TYPE_TIME, slate, name, place) {}

VQCLASSID VQDatetimesBody::GetClassID() const { return VQCLASSID_VQDATETIMESBODY; }

VQDatetimes::VQDatetimes() = default;

VQDatetimes::VQDatetimes(const VQDatetimes& other) : VQItem(other) {}

VQDatetimes::VQDatetimes(const VQItem& item) : VQItem(TimeItem(item)) {}

VQDatetimes::VQDatetimes(VQDatetimesBody* body) : VQItem(body) {}

VQDatetimes& VQDatetimes::operator=(const VQDatetimes& other) {
  VQItem::operator=(other);
  return *this;
}

VQDatetimes& VQDatetimes::operator=(const VQItem& item) {
  CheckIsTime(item);
  VQItem::operator=(item);
  return *this;
}

VQCLASSID VQDatetimes::GetClassID() const { return VQCLASSID_VQDATETIMES; }

VQDatetimesElement VQDatetimes::operator[](unsigned long index) const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return VQDatetimesElement(DatetimesBody(), index);
}

VQDatetimes& VQDatetimes::operator<<(const VQDatetimes& datetimes) {
  vq::ThrowIfError(Append(datetimes));
  return *this;
}

VQDatetimes& VQDatetimes::operator<<(const VQDatetime& datetime) {
  vq::ThrowIfError(Append(datetime));
  return *this;
}

VQDatetimes& VQDatetimes::operator<<(const VQDatetimeRange& range) {
  vq::ThrowIfError(Append(range));
  return *this;
}

VQDatetimes& VQDatetimes::operator<<(const VQDatetimesElement& element) { return *this << element.GetDatetimeRange(); }

VQSTATUS VQDatetimes::Append(const VQDatetimes& datetimes) {
  if (datetimes.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (Body == nullptr) return SetValue(datetimes);
  return vq::Apply(AppendBoth(DatetimesBody(), datetimes.DatetimesBody()));
}

VQSTATUS VQDatetimes::Append(const VQDatetimeRange& range) {
  List::Counts counts;
  if (const VQSTATUS status = CountKinds(DatetimesBody(), &counts)) return vq::Apply(status);
  return Insert(range.HasEndPart() ? counts.Total() : counts.Singles, range);
}

VQSTATUS VQDatetimes::Append(const VQDatetime& datetime) {
  List::Counts counts;
  if (const VQSTATUS status = CountKinds(DatetimesBody(), &counts)) return vq::Apply(status);
  return Insert(counts.Singles, datetime);
}

VQSTATUS VQDatetimes::Delete(unsigned long index, unsigned long count) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(DatetimesBody()->DeleteEntries(index, count));
}

VQSTATUS VQDatetimes::DeleteAll() {
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(GetItemBody(), &count)) return vq::Apply(status);
  return count == 0 ? VQ_OK : Delete(0, count);
}

unsigned long VQDatetimes::GetCount() const { return Body == nullptr ? 0 : DatetimesBody()->GetEntryCount(); }

unsigned long VQDatetimes::GetDatetimeCount() const {
  List::Counts counts;
  if (Body != nullptr) vq::ThrowIfError(DatetimesBody()->GetCounts(&counts));
  return counts.Singles;
}

unsigned long VQDatetimes::GetDatetimeRangeCount() const {
  List::Counts counts;
  if (Body != nullptr) vq::ThrowIfError(DatetimesBody()->GetCounts(&counts));
  return counts.Ranges;
}

VQSTATUS VQDatetimes::JoinText(VQString* out, const VQString& separator, const VQDatetimeFormat* format,
                               const VQInternational* international) const {
  if (out == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQString joined;
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(GetItemBody(), &count)) return vq::Apply(status);
  for (unsigned long i = 0; i < count; ++i) {
    VQDatetimeRange range;
    if (const VQSTATUS status = ReadRange(DatetimesBody(), i, &range)) return vq::Apply(status);
    VQString text;
    if (const VQSTATUS status = range.GetText(&text, format, international)) return status;
    if (i != 0) {
      if (const VQSTATUS status = joined.Append(separator)) return status;
    }
    if (const VQSTATUS status = joined.Append(text)) return status;
  }
  *out = joined;
  return VQ_OK;
}

VQSTATUS VQDatetimes::GetText(VQString* out, const VQString& separator) const {
  return JoinText(out, separator, nullptr, nullptr);
}

VQSTATUS VQDatetimes::GetText(const VQDatetimeFormat& format, const VQInternational& international, VQString* out,
                              const VQString& separator) const {
  return JoinText(out, separator, &format, &international);
}

VQSTATUS VQDatetimes::Insert(unsigned long index, const VQDatetime& datetime) {
  if (Body == nullptr) return index == 0 ? SetValue(datetime) : vq::Apply(VQERR_OUT_OF_RANGE);
  if (const VQSTATUS status = DatetimesBody()->CheckEditable()) return vq::Apply(status);
  if (datetime.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(InsertMoment(DatetimesBody(), index, *datetime.GetTIMEDATE()));
}

VQSTATUS VQDatetimes::Insert(unsigned long index, const VQDatetimeRange& range) {
  if (Body == nullptr) return index == 0 ? SetValue(range) : vq::Apply(VQERR_OUT_OF_RANGE);
  if (const VQSTATUS status = DatetimesBody()->CheckEditable()) return vq::Apply(status);
  if (!range.HasBeginPart()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const TIMEDATE_PAIR& pair = *range.GetTIMEDATEPAIR();
  if (!range.HasEndPart()) return vq::Apply(InsertMoment(DatetimesBody(), index, pair.Lower));
  return vq::Apply(InsertRange(DatetimesBody(), index, pair));
}

VQSTATUS VQDatetimes::Insert(unsigned long index, const VQDatetimes& datetimes) {
  if (Body == nullptr) return index == 0 ? SetValue(datetimes) : vq::Apply(VQERR_BAD_SUBSCRIPT);
  if (const VQSTATUS status = DatetimesBody()->CheckEditable()) return vq::Apply(status);
  if (datetimes.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  return vq::Apply(InsertBoth(DatetimesBody(), index, datetimes.DatetimesBody()));
}

VQSTATUS VQDatetimes::SetValue(const VQDatetime& datetime) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (datetime.IsUninitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const StoredTimes stored(*datetime.GetTIMEDATE());
  if (Body != nullptr) return vq::Apply(DatetimesBody()->SetSingle(stored.Bytes));
  auto* body = new VQDatetimesBody(TYPE_TIME, stored.Bytes, List::kSingleSize);
  const VQDatetimes keeper(body);
  return Assign(nullptr, body);
}

VQSTATUS VQDatetimes::SetValue(const VQDatetimeRange& range) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (!range.HasBeginPart()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  const TIMEDATE_PAIR& pair = *range.GetTIMEDATEPAIR();
  const StoredTimes stored(pair);
  if (Body != nullptr) {
    return vq::Apply(range.HasEndPart() ? DatetimesBody()->SetRange(stored.Bytes)
                                        : DatetimesBody()->SetSingle(stored.Bytes));
  }
  auto* body = new VQDatetimesBody(TYPE_TIME, stored.Bytes, List::kSingleSize);
  const VQDatetimes keeper(body);
  if (range.HasEndPart()) {
    if (const VQSTATUS status = body->SetRange(stored.Bytes)) return vq::Apply(status);
  }
  return Assign(nullptr, body);
}

VQSTATUS VQDatetimes::SetValue(const VQDatetimes& datetimes) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (datetimes.Body == nullptr) return Assign(nullptr, nullptr);
  if (const VQSTATUS status = datetimes.DatetimesBody()->CheckValue()) return vq::Apply(status);
  if (Body != nullptr) return vq::Apply(DatetimesBody()->SetValueOf(*datetimes.DatetimesBody()));
  auto* body = new VQDatetimesBody(TYPE_TIME, nullptr, 0);
  const VQDatetimes keeper(body);
  if (const VQSTATUS status = body->SetValueOf(*datetimes.DatetimesBody())) return vq::Apply(status);
  return Assign(nullptr, body);
}

VQDatetimesElement::VQDatetimesElement(VQDatetimesBody* body, unsigned long index)
    : Datetimes(body), Index(static_cast<std::uint32_t>(index)) {
  Datetimes->AddReference();
}

VQDatetimesElement::VQDatetimesElement(const VQDatetimesElement& other)
    : VQQuillonClass(other), Datetimes(other.Datetimes), Index(other.Index) {
  Datetimes->AddReference();
}

VQDatetimesElement::~VQDatetimesElement() { Datetimes->Release(); }

VQDatetimesElement& VQDatetimesElement::operator=(const VQDatetimesElement& other) {
  if (this == &other) return *this;
  return *this = other.GetDatetimeRange();
}

VQDatetimesElement& VQDatetimesElement::operator=(const VQDatetime& datetime) {
  if (datetime.IsUninitialized()) vq::Throw(VQERR_UNINITIALIZED_ARGUMENT);
  const VQSTATUS status = Datetimes->WriteEntry(Index, StoredTimes(*datetime.GetTIMEDATE()).Bytes, false);
  vq::ThrowIfError(status == VQERR_INAPPROPRIATE ? VQERR_DATETIMES_MUST_BE_RANGE : status);
  return *this;
}

VQDatetimesElement& VQDatetimesElement::operator=(const VQDatetimeRange& range) {
  if (!range.HasBeginPart()) vq::Throw(VQERR_UNINITIALIZED_ARGUMENT);
  const bool is_range = range.HasEndPart() != 0;
  const VQSTATUS status = Datetimes->WriteEntry(Index, StoredTimes(*range.GetTIMEDATEPAIR()).Bytes, is_range);
  const VQSTATUS wrong_kind = is_range ? VQERR_DATETIMES_NOT_RANGE : VQERR_DATETIMES_MUST_BE_RANGE;
  vq::ThrowIfError(status == VQERR_INAPPROPRIATE ? wrong_kind : status);
  return *this;
}

VQDatetimeRange VQDatetimesElement::GetDatetimeRange() const {
  VQDatetimeRange range;
  vq::ThrowIfError(ReadRange(Datetimes, Index, &range));
  return range;
}

VQDatetimesElement::operator VQDatetime() const { return VQDatetime(GetDatetimeRange().GetTIMEDATEPAIR()->Lower); }

VQCLASSID VQDatetimesElement::GetClassID() const { return VQCLASSID_VQDATETIMESELEMENT; }
