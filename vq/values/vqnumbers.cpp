// Number items and their entries.
#include <bit>

#include "vq/frame/state.h"
#include "vq/values/entrycount.h"
#include "vq/values/vqnumber.h"

namespace {

// The stored form: IEEE 64 bits, little-endian.
struct StoredNumber {
  explicit StoredNumber(double value) : Bytes{} {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    for (unsigned i = 0; i < 8; ++i) Bytes[i] = static_cast<unsigned char>(bits >> (8 * i));
  }
  static double Read(const unsigned char* bytes) {
    std::uint64_t bits = 0;
    for (unsigned i = 0; i < 8; ++i) bits |= std::uint64_t{bytes[i]} << (8 * i);
    return std::bit_cast<double>(bits);
  }
  unsigned char Bytes[8];
};

void CheckIsNumber(const VQItem& item) {
  const VQItemBody* body = item.GetItemBody();
  if (body != nullptr && body->GetClassID() != VQCLASSID_VQNUMBERSBODY) vq::Throw(VQERR_INCORRECT_ITEM_TYPE);
}

const VQItem& NumberItem(const VQItem& item) {
  CheckIsNumber(item);
  return item;
}

VQSTATUS ReadNumber(VQNumbersBody* body, unsigned long index, double* number) {
  unsigned char entry[vq::RangeListBody::kRangeSize];
  bool is_range = false;
  if (const VQSTATUS status = body->ReadEntry(index, entry, &is_range)) return status;
  *number = StoredNumber::Read(entry);
  return VQ_OK;
}

}  // namespace

VQNumbersBody::VQNumbersBody(unsigned short type, const void* value, unsigned long length)
    : RangeListBody(TYPE_NUMBER, type, value, length) {}

VQNumbersBody::VQNumbersBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place)
    : RangeListBody(TYPE_NUMBER, slate, name, place) {}

VQCLASSID VQNumbersBody::GetClassID() const { return VQCLASSID_VQNUMBERSBODY; }

VQNumbers::VQNumbers() = default;

VQNumbers::VQNumbers(const VQNumbers& other) : VQItem(other) {}

VQNumbers::VQNumbers(const VQItem& item) : VQItem(NumberItem(item)) {}

VQNumbers::VQNumbers(VQNumbersBody* body) : VQItem(body) {}

VQNumbers& VQNumbers::operator=(const VQNumbers& other) {
  VQItem::operator=(other);
  return *this;
}

VQNumbers& VQNumbers::operator=(const VQItem& item) {
  CheckIsNumber(item);
  VQItem::operator=(item);
  return *this;
}

VQCLASSID VQNumbers::GetClassID() const { return VQCLASSID_VQNUMBERS; }

VQNumbersElement VQNumbers::operator[](unsigned long index) const {
  if (Body == nullptr) vq::Throw(VQERR_OBJECT_NOT_INITIALIZED);
  if (index >= GetCount()) vq::Throw(VQERR_BAD_SUBSCRIPT);
  return VQNumbersElement(NumbersBody(), index);
}

VQNumbers& VQNumbers::operator<<(const VQNumbers& numbers) {
  vq::ThrowIfError(Insert(GetCount(), numbers));
  return *this;
}

VQNumbers& VQNumbers::operator<<(double number) {
  vq::ThrowIfError(Insert(GetCount(), number));
  return *this;
}

VQNumbers& VQNumbers::operator<<(const VQNumbersElement& element) { return *this << static_cast<double>(element); }

VQSTATUS VQNumbers::Delete(unsigned long index, unsigned long count) {
  if (Body == nullptr) return vq::Apply(VQERR_OBJECT_NOT_INITIALIZED);
  return vq::Apply(NumbersBody()->DeleteEntries(index, count));
}

VQSTATUS VQNumbers::DeleteAll() {
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(GetItemBody(), &count)) return vq::Apply(status);
  return count == 0 ? VQ_OK : Delete(0, count);
}

unsigned long VQNumbers::GetCount() const { return Body == nullptr ? 0 : NumbersBody()->GetEntryCount(); }

VQSTATUS VQNumbers::JoinText(VQString* out, const VQString& separator, const VQNumberFormat* format,
                             const VQInternational* international) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (out == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  VQString joined;
  unsigned long count = 0;
  if (const VQSTATUS status = vq::CountEntries(GetItemBody(), &count)) return vq::Apply(status);
  for (unsigned long i = 0; i < count; ++i) {
    VQNumber number;
    if (const VQSTATUS status = ReadNumber(NumbersBody(), i, &number.Value)) return vq::Apply(status);
    VQString text;
    if (const VQSTATUS status = number.GetText(&text, format, international)) return status;
    if (i != 0) {
      if (const VQSTATUS status = joined.Append(separator)) return status;
    }
    if (const VQSTATUS status = joined.Append(text)) return status;
  }
  *out = joined;
  return VQ_OK;
}

VQSTATUS VQNumbers::GetText(VQString* out, const VQString& separator) const {
  return JoinText(out, separator, nullptr, nullptr);
}

VQSTATUS VQNumbers::GetText(const VQNumberFormat& format, const VQInternational& international, VQString* out,
                            const VQString& separator) const {
  return JoinText(out, separator, &format, &international);
}

VQSTATUS VQNumbers::Insert(unsigned long index, const VQNumbers& numbers) {
  if (Body == nullptr) return index == 0 ? SetValue(numbers) : vq::Apply(VQERR_OUT_OF_RANGE);
  vq::RangeListBody::Counts counts;
  if (const VQSTATUS status = NumbersBody()->CheckEditable()) return vq::Apply(status);
  if (numbers.Body == nullptr) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  if (const VQSTATUS status = NumbersBody()->GetCounts(&counts)) return vq::Apply(status);
  if (index > counts.Total()) return vq::Apply(VQERR_OUT_OF_RANGE);
  const unsigned long range_at = index > counts.Singles ? index - counts.Singles : 0;
  return vq::Apply(NumbersBody()->InsertAll(index, range_at, *numbers.NumbersBody()));
}

VQSTATUS VQNumbers::Insert(unsigned long index, const double& number) {
  if (Body == nullptr) return index == 0 ? SetValue(number) : vq::Apply(VQERR_OUT_OF_RANGE);
  vq::RangeListBody::Counts counts;
  if (const VQSTATUS status = NumbersBody()->CheckEditable()) return vq::Apply(status);
  if (const VQSTATUS status = NumbersBody()->GetCounts(&counts)) return vq::Apply(status);
  if (index > counts.Total()) return vq::Apply(VQERR_OUT_OF_RANGE);
  return vq::Apply(NumbersBody()->InsertSingles(index, StoredNumber(number).Bytes, 1));
}

VQSTATUS VQNumbers::SetValue(const VQNumbers& numbers) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (numbers.Body == nullptr) return Assign(nullptr, nullptr);
  if (const VQSTATUS status = numbers.NumbersBody()->CheckValue()) return vq::Apply(status);
  if (Body != nullptr) return vq::Apply(NumbersBody()->SetValueOf(*numbers.NumbersBody()));
  auto* body = new VQNumbersBody(TYPE_NUMBER, nullptr, 0);
  const VQNumbers keeper(body);
  if (const VQSTATUS status = body->SetValueOf(*numbers.NumbersBody())) return vq::Apply(status);
  return Assign(nullptr, body);
}

VQSTATUS VQNumbers::SetValue(const double& number) {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  const StoredNumber stored(number);
  if (Body != nullptr) return vq::Apply(NumbersBody()->SetSingle(stored.Bytes));
  auto* body = new VQNumbersBody(TYPE_NUMBER, stored.Bytes, sizeof stored.Bytes);
  const VQNumbers keeper(body);
  return Assign(nullptr, body);
}

VQNumbersElement::VQNumbersElement(VQNumbersBody* body, unsigned long index)
    : Numbers(body), Index(static_cast<std::uint32_t>(index)) {
  Numbers->AddReference();
}

VQNumbersElement::VQNumbersElement(const VQNumbersElement& other)
    : VQQuillonClass(other), Numbers(other.Numbers), Index(other.Index) {
  Numbers->AddReference();
}

VQNumbersElement::~VQNumbersElement() { Numbers->Release(); }

VQNumbersElement& VQNumbersElement::operator=(const VQNumbersElement& other) {
  if (this == &other) return *this;
  return *this = static_cast<double>(other);
}

VQNumbersElement& VQNumbersElement::operator=(const double& number) {
  vq::ThrowIfError(Numbers->WriteEntry(Index, StoredNumber(number).Bytes, false));
  return *this;
}

VQNumbersElement::operator double() const {
  double number = 0;
  vq::ThrowIfError(ReadNumber(Numbers, Index, &number));
  return number;
}

VQCLASSID VQNumbersElement::GetClassID() const { return VQCLASSID_VQNUMBERSELEMENT; }
