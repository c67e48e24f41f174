// One number and its formats.
#include "vq/values/vqnumber.h"

#include <limits>

#include "engine/engine.h"
#include "vq/frame/state.h"

namespace {

constexpr unsigned kPunctuated = 0x01;
constexpr unsigned kParentheses = 0x02;
constexpr unsigned kPercentage = 0x04;
constexpr std::uint8_t kDefaultDigits = 8;
constexpr std::uint16_t kTextSize = 2048;  // 309 digits, separators of 7 bytes, 254 digits behind the point

}  // namespace

VQNumberFormat::VQNumberFormat() : Block{kDefaultDigits, VQNUMBERFORMAT_GENERAL, 0, 0} {}

VQNumberFormat::VQNumberFormat(const NFMT& block) : Block(block) {}
VQNumberFormat::VQNumberFormat(const VQNumberFormat& other) = default;

VQNumberFormat& VQNumberFormat::operator=(const VQNumberFormat& other) = default;

VQCLASSID VQNumberFormat::GetClassID() const { return VQCLASSID_VQNUMBERFORMAT; }

VQSTATUS VQNumberFormat::SetDigits(unsigned long digits) {
  if (digits > std::numeric_limits<std::uint8_t>::max()) return vq::Apply(VQERR_OUT_OF_RANGE);
  Block.Digits = static_cast<std::uint8_t>(digits);
  return VQ_OK;
}

VQSTATUS VQNumberFormat::SetFormat(VQNUMBERFORMAT format) {
  if (format > VQNUMBERFORMAT_CURRENCY) return VQERR_OUT_OF_RANGE;
  Block.Format = format;
  return VQ_OK;
}

VQSTATUS VQNumberFormat::SetAttribute(unsigned bit, int flag) {
  Block.Attributes = static_cast<std::uint8_t>(flag ? Block.Attributes | bit : Block.Attributes & ~bit);
  return VQ_OK;
}

int VQNumberFormat::GetParentheses() const { return (Block.Attributes & kParentheses) != 0; }

VQSTATUS VQNumberFormat::SetParentheses(int flag) { return SetAttribute(kParentheses, flag); }

int VQNumberFormat::GetPercentage() const { return (Block.Attributes & kPercentage) != 0; }

VQSTATUS VQNumberFormat::SetPercentage(int flag) { return SetAttribute(kPercentage, flag); }

int VQNumberFormat::GetPunctuated() const { return (Block.Attributes & kPunctuated) != 0; }

VQSTATUS VQNumberFormat::SetPunctuated(int flag) { return SetAttribute(kPunctuated, flag); }

namespace {

VQSTATUS ParseNumber(const VQString& text, double* value) {
  if (const VQSTATUS status = vq::CheckInitialized()) return status;
  if (text.IsNull()) return VQERR_NULL_STRING;
  const ENGCHAR* cursor = text.GetBuf();
  const auto length = static_cast<std::uint16_t>(text.GetBufLength());
  double parsed = 0;
  const ENGSTATUS result = EngNumberParse(nullptr, nullptr, &cursor, length, &parsed);
  const bool whole = result == ENG_OK && cursor == text.GetBuf() + length;
  *value = whole ? parsed : 0;
  return whole ? VQ_OK : vq::FromEngine(ENG_ERR_NUMBER_PARSE);
}

}  // namespace

VQNumber::VQNumber(const VQString& text, unsigned long* status) : Value(0) {
  const VQSTATUS result = ParseNumber(text, &Value);
  if (status != nullptr && (result == VQ_OK || VQGetThrowAllErrors() == 0)) {
    *status = result;
  } else {
    vq::ThrowIfError(result);
  }
}

VQNumber& VQNumber::operator=(const VQString& text) {
  vq::ThrowIfError(ParseNumber(text, &Value));
  return *this;
}

VQSTATUS VQNumber::ConvertString(const VQString& text) { return vq::Apply(ParseNumber(text, &Value)); }

VQSTATUS VQNumber::GetText(VQString* out) const { return GetText(out, nullptr, nullptr); }

VQSTATUS VQNumber::GetText(const VQNumberFormat& format, const VQInternational& international, VQString* out) const {
  return GetText(out, &format, &international);
}

VQSTATUS VQNumber::GetText(VQString* out, const VQNumberFormat* format, const VQInternational* international) const {
  if (const VQSTATUS status = vq::CheckInitialized()) return vq::Apply(status);
  if (out == nullptr) return vq::Apply(VQERR_NULL_POINTER);
  if (international != nullptr && !international->IsInitialized()) return vq::Apply(VQERR_UNINITIALIZED_ARGUMENT);
  ENGCHAR text[kTextSize];
  std::uint16_t length = 0;
  const ENGSTATUS result =
      EngNumberToText(international == nullptr ? nullptr : international->GetFormat(),
                      format == nullptr ? nullptr : format->GetBlock(), &Value, text, sizeof text, &length);
  if (result != ENG_OK) return vq::Apply(VQERR_CONVERSION_FAILED);
  *out = VQString(text, length);
  return VQ_OK;
}
