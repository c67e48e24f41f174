#include "qcore/forms/convert.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "qcore/settings/settings.h"
#include "qcore/text/number.h"
#include "qcore/text/textlist.h"
#include "qcore/time/timetext.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kComposite = 0x0001;
constexpr std::uint16_t kNumber = 0x0300;
constexpr std::uint16_t kTime = 0x0400;
constexpr std::uint16_t kText = 0x0500;
constexpr std::uint16_t kListBit = 0x0001;
constexpr std::size_t kTypeWord = 2;
constexpr std::size_t kListHeader = 4;
constexpr std::size_t kEntry = 8;
constexpr std::size_t kLargestText = 0x9FF0;  // of one run in an item
constexpr std::uint16_t kSigText = 0xFF85;
constexpr std::uint32_t kPlainFont = 0x0A000001;
constexpr std::size_t kTextFixedPart = 8;

using Value = std::vector<std::uint8_t>;
using Texts = std::vector<std::string>;

void PutWord(Value* value, unsigned word) {
  value->push_back(static_cast<std::uint8_t>(word));
  value->push_back(static_cast<std::uint8_t>(word >> 8));
}

std::uint16_t WordAt(formula::Bytes bytes, std::size_t at) {
  return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

// The entries of a number or time value of 8 bytes each; false for one with ranges in it.
bool Entries(formula::Bytes value, std::vector<formula::Bytes>* entries) {
  formula::Bytes data = value.subspan(kTypeWord);
  std::size_t count = 1;
  if ((WordAt(value, 0) & kListBit) != 0) {
    if (data.size() < kListHeader || WordAt(data, 2) != 0) return false;
    count = WordAt(data, 0);
    data = data.subspan(kListHeader);
  }
  if (data.size() != count * kEntry) return false;
  for (std::size_t i = 0; i < count; ++i) entries->push_back(data.subspan(i * kEntry, kEntry));
  return true;
}

ENGSTATUS TextsOf(formula::Bytes value, Texts* texts) {
  const std::uint16_t type = WordAt(value, 0);
  const formula::Bytes data = value.subspan(kTypeWord);
  if (type == kText) {
    texts->emplace_back(reinterpret_cast<const char*>(data.data()), data.size());
    return ENG_OK;
  }
  if (type == (kText | kListBit)) {
    const auto entries = text::ReadList({value.data(), value.size()}, text::Prefix::kType);
    if (!entries) return ENG_ERR_FORMULA_TYPE;
    texts->assign(entries->begin(), entries->end());
    return ENG_OK;
  }
  std::vector<formula::Bytes> entries;
  if (!Entries(value, &entries)) return ENG_ERR_FORMULA_TYPE;
  const INTLFORMAT settings = settings::International();
  for (const formula::Bytes entry : entries) {
    std::optional<std::string> text;
    if ((type & ~kListBit) == kNumber) {
      double number = 0;
      std::memcpy(&number, entry.data(), sizeof number);
      text = text::FormatNumber(settings, text::kGeneralFormat, number);
    } else {
      TIMEDATE moment{};
      std::memcpy(&moment, entry.data(), sizeof moment);
      text = time::FormatMoment(settings, time::kUsualFormat, moment);
    }
    if (!text) return ENG_ERR_FORMULA_TYPE;
    texts->push_back(*text);
  }
  return ENG_OK;
}

ENGSTATUS FromTexts(const Texts& texts, Value* value) {
  if (texts.size() == 1) {
    PutWord(value, kText);
    value->insert(value->end(), texts.front().begin(), texts.front().end());
    return ENG_OK;
  }
  const auto list = text::WriteList({texts.begin(), texts.end()}, text::Prefix::kType);
  if (!list) return ENG_ERR_FORMULA_RESULT;
  value->assign(list->begin(), list->end());
  return ENG_OK;
}

// One run; its line breaks are zero bytes already.
ENGSTATUS FromTextsToRun(const Texts& texts, Value* value) {
  std::string run;
  for (std::size_t i = 0; i < texts.size(); ++i) run.append(i == 0 ? "" : ";").append(texts[i]);
  if (run.size() > kLargestText) return ENG_ERR_FORMULA_RESULT;
  PutWord(value, kComposite);
  PutWord(value, kSigText);
  PutWord(value, static_cast<unsigned>(kTextFixedPart + run.size()));
  PutWord(value, kPlainFont & 0xFFFF);
  PutWord(value, kPlainFont >> 16);
  value->insert(value->end(), run.begin(), run.end());
  if ((run.size() & 1) != 0) value->push_back(0);
  return ENG_OK;
}

bool IsBlank(std::string_view rest) { return rest.find_first_not_of(" \t") == std::string_view::npos; }

// The whole text must be a number, or a moment.
ENGSTATUS ParseEntry(std::uint16_t type, const std::string& text, Value* value) {
  const INTLFORMAT settings = settings::International();
  std::uint8_t entry[kEntry];
  if (type == kNumber) {
    const auto number = text::ParseNumber(settings, text::kGeneralFormat, text);
    if (!number || !IsBlank(std::string_view(text).substr(number->length))) return ENG_ERR_NUMBER_PARSE;
    std::memcpy(entry, &number->value, sizeof entry);
  } else {
    const auto moment = time::ParseMoment(settings, time::kUsualFormat, text);
    if (!moment || !IsBlank(std::string_view(text).substr(moment->length))) return ENG_ERR_TIME_PARSE;
    std::memcpy(entry, &moment->moment, sizeof entry);
  }
  value->insert(value->end(), std::begin(entry), std::end(entry));
  return ENG_OK;
}

ENGSTATUS FromTextsToEntries(const Texts& texts, std::uint16_t type, Value* value) {
  PutWord(value, texts.size() == 1 ? type : type | kListBit);
  if (texts.size() != 1) {
    PutWord(value, static_cast<unsigned>(texts.size()));
    PutWord(value, 0);
  }
  for (const std::string& text : texts) {
    if (ENGSTATUS status = ParseEntry(type, text, value); status != ENG_OK) return status;
  }
  return ENG_OK;
}

}  // namespace

ENGSTATUS Convert(formula::Bytes value, const Field& field, std::vector<std::uint8_t>* converted) {
  converted->clear();
  if (value.size() < kTypeWord) return ENG_ERR_FORMULA_TYPE;
  const std::uint16_t type = WordAt(value, 0);
  const std::uint16_t family = type & ~kListBit;
  const std::uint16_t wanted = field.data_type & ~kListBit;
  if (family == wanted || (type == kText && value.size() == kTypeWord && field.data_type != kComposite)) {
    converted->assign(value.begin(), value.end());
    return ENG_OK;
  }
  if (family != kText && wanted != kText && field.data_type != kComposite) return ENG_ERR_FORMULA_TYPE;
  Texts texts;
  if (ENGSTATUS status = TextsOf(value, &texts); status != ENG_OK) return status;
  if (field.data_type == kComposite) return FromTextsToRun(texts, converted);
  if (wanted == kText) return FromTexts(texts, converted);
  return wanted == kNumber || wanted == kTime ? FromTextsToEntries(texts, wanted, converted)
                                              : ENGSTATUS{ENG_ERR_FORMULA_TYPE};
}

}  // namespace qcore::forms
