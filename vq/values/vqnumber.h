// Numbers: one 64-bit float, its text form, and the view of number items.
#ifndef QUILLON_VQ_VALUES_VQNUMBER_H
#define QUILLON_VQ_VALUES_VQNUMBER_H

#include "engine/types.h"
#include "vq/values/rangelist.h"
#include "vq/values/vqintl.h"
#include "vq/values/vqstring.h"

class VQNumbersElement;

enum VQNUMBERFORMAT : unsigned char {
  VQNUMBERFORMAT_GENERAL = 0,
  VQNUMBERFORMAT_FIXED = 1,
  VQNUMBERFORMAT_SCIENTIFIC = 2,
  VQNUMBERFORMAT_CURRENCY = 3,
};

// How a number becomes text: general, 8 digits, by default.
class VQ_API VQNumberFormat : public VQQuillonClass {
 public:
  VQNumberFormat();
  explicit VQNumberFormat(const NFMT& block);
  VQNumberFormat(const VQNumberFormat& other);
  VQNumberFormat& operator=(const VQNumberFormat& other);
  VQCLASSID GetClassID() const override;

  unsigned long GetDigits() const { return Block.Digits; }
  // VQERR_OUT_OF_RANGE above 255; the format stays.
  VQSTATUS SetDigits(unsigned long digits);
  VQNUMBERFORMAT GetFormat() const { return static_cast<VQNUMBERFORMAT>(Block.Format); }
  // VQERR_OUT_OF_RANGE for a format that is none; returned, never thrown.
  VQSTATUS SetFormat(VQNUMBERFORMAT format);
  int GetParentheses() const;
  VQSTATUS SetParentheses(int flag);
  int GetPercentage() const;
  VQSTATUS SetPercentage(int flag);
  int GetPunctuated() const;
  VQSTATUS SetPunctuated(int flag);
  const NFMT* GetBlock() const { return &Block; }

 private:
  VQSTATUS SetAttribute(unsigned bit, int flag);

  NFMT Block;
};

// A number. Everything that meets text needs a session.
class VQ_API VQNumber {
 public:
  VQNumber() : Value(0) {}
  VQNumber(double value) : Value(value) {}
  // As ConvertString. The status goes to *status while the throw switch is off and the pointer is not null; else an
  // error is thrown.
  explicit VQNumber(const VQString& text, unsigned long* status = nullptr);
  VQNumber& operator=(const VQString& text);
  operator double() const { return Value; }

  // The whole text must be a number: else the engine's status 1029, and Value is 0. VQERR_NULL_STRING for an empty one.
  VQSTATUS ConvertString(const VQString& text);
  // Null pointers stand for the engine's own settings. VQERR_CONVERSION_FAILED if the engine has no text for it.
  VQSTATUS GetText(VQString* out) const;
  VQSTATUS GetText(const VQNumberFormat& format, const VQInternational& international, VQString* out) const;
  VQSTATUS GetText(VQString* out, const VQNumberFormat* format, const VQInternational* international) const;

  double Value;
};

class VQ_API VQNumbersBody : public vq::RangeListBody {
 public:
  VQNumbersBody(unsigned short type, const void* value, unsigned long length);
  VQNumbersBody(VQSlateBody* slate, std::string_view name, const vq::ItemPlace& place);
  VQCLASSID GetClassID() const override;
};

// A number item: numbers, with stored ranges of numbers behind them; a range reads as its lower number.
// An unattached VQNumbers gets a value of its own by SetValue, or by Insert at 0.
class VQ_API VQNumbers : public VQItem {
 public:
  VQNumbers();
  VQNumbers(const VQNumbers& other);
  // An item that is no number throws VQERR_INCORRECT_ITEM_TYPE.
  VQNumbers(const VQItem& item);
  explicit VQNumbers(VQNumbersBody* body);
  // Assignment shares the value.
  VQNumbers& operator=(const VQNumbers& other);
  VQNumbers& operator=(const VQItem& item);
  VQCLASSID GetClassID() const override;

  // VQERR_BAD_SUBSCRIPT is thrown at or behind the end.
  VQNumbersElement operator[](unsigned long index) const;
  // Append; failures are thrown.
  VQNumbers& operator<<(const VQNumbers& numbers);
  VQNumbers& operator<<(double number);
  VQNumbers& operator<<(const VQNumbersElement& element);
  // VQERR_INVALID_PARAMETER for a count of 0, VQERR_OUT_OF_RANGE for entries that are not there.
  VQSTATUS Delete(unsigned long index, unsigned long count = 1);
  VQSTATUS DeleteAll();
  unsigned long GetCount() const;
  VQSTATUS GetText(VQString* out, const VQString& separator) const;
  VQSTATUS GetText(const VQNumberFormat& format, const VQInternational& international, VQString* out,
                   const VQString& separator) const;
  VQSTATUS Insert(unsigned long index, const VQNumbers& numbers);
  VQSTATUS Insert(unsigned long index, const double& number);
  VQSTATUS SetValue(const VQNumbers& numbers);
  VQSTATUS SetValue(const double& number);

 private:
  VQNumbersBody* NumbersBody() const { return static_cast<VQNumbersBody*>(Body); }
  VQSTATUS JoinText(VQString* out, const VQString& separator, const VQNumberFormat* format,
                    const VQInternational* international) const;
};

// One entry, read by conversion and written by assignment; it keeps the value alive.
class VQ_API VQNumbersElement : public VQQuillonClass {
 public:
  VQNumbersElement(VQNumbersBody* body, unsigned long index);
  VQNumbersElement(const VQNumbersElement& other);
  ~VQNumbersElement() override;
  VQNumbersElement& operator=(const VQNumbersElement& other);
  VQNumbersElement& operator=(const double& number);
  operator double() const;
  VQCLASSID GetClassID() const override;

 private:
  VQNumbersBody* Numbers;
  std::uint32_t Index;
};

#endif
