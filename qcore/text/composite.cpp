#include "qcore/text/composite.h"

#include <algorithm>

namespace qcore::text {

namespace {

constexpr std::uint32_t kLargestRecord = 0x10400;
constexpr std::uint16_t kParagraph = 0x81;
constexpr std::uint16_t kText = 0xFF85;
constexpr std::uint16_t kTableCell = 0xA4;
constexpr std::uint16_t kTableEnd = 0xA5;
constexpr std::size_t kTextFixedPart = 8;

std::uint32_t Number(const ENGCHAR* at, std::size_t bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < bytes; ++i) number |= std::uint32_t{at[i]} << (8 * i);
  return number;
}

std::optional<CompositeRecord> WithLength(std::uint16_t signature, std::uint32_t length, std::uint32_t header,
                                          Text rest) {
  if (length == 0) length = header;
  if (length < header || length > kLargestRecord || length > rest.size()) return std::nullopt;
  return CompositeRecord{signature, length};
}

class Lines {
 public:
  Lines(std::string_view separator, std::uint16_t width) : separator_(separator), width_(width) {}

  void Add(Text run) {
    while (!run.empty()) {
      const auto end = std::ranges::find(run, ENGCHAR{0});
      const auto length = static_cast<std::size_t>(end - run.begin());
      line_.append(reinterpret_cast<const char*>(run.data()), length);
      run = run.subspan(length);
      if (run.empty()) return;
      End();
      run = run.subspan(1);
    }
  }
  void End() {
    Fold();
    text_ += separator_;
  }
  void EndIfBegun() {
    if (!line_.empty()) End();
  }
  std::string Take() {
    Fold();
    return std::move(text_);
  }

 private:
  // Moves the line to the text, folded.
  void Fold() {
    std::string_view rest = line_;
    while (width_ != 0) {
      const Span fits = Measure({reinterpret_cast<const ENGCHAR*>(rest.data()), rest.size()}, width_);
      if (fits.bytes == rest.size()) break;
      const std::size_t space = rest.substr(0, fits.bytes + 1).rfind(' ');
      const bool at_space = space != std::string_view::npos && space > 0;
      text_ += rest.substr(0, at_space ? space : fits.bytes);
      text_ += separator_;
      rest.remove_prefix(at_space ? space + 1 : fits.bytes);
    }
    text_ += rest;
    line_.clear();
  }

  std::string_view separator_;
  std::uint16_t width_;
  std::string line_;
  std::string text_;
};

bool AddRecord(const CompositeRecord& record, Text bytes, Lines* lines) {
  switch (record.signature) {
    case kParagraph:
      lines->End();
      break;
    case kText:
      if (record.length < kTextFixedPart) return false;
      lines->Add(bytes.subspan(kTextFixedPart, record.length - kTextFixedPart));
      break;
    case kTableCell:
    case kTableEnd:
      lines->EndIfBegun();
      break;
  }
  return true;
}

}  // namespace

//  nn LL           byte form: LL neither 0x00 nor 0xFF
//  nn FF LL LL     word form, the signature is 0xFFnn
//  nn 00 LL LL LL LL  long form
std::optional<CompositeRecord> RecordAt(Text rest) {
  if (rest.size() < 2) return std::nullopt;
  const auto word = static_cast<std::uint16_t>(Number(rest.data(), 2));
  switch (word >> 8) {
    case 0x00:
      if (rest.size() < 6) return std::nullopt;
      return WithLength(word, Number(rest.data() + 2, 4), 6, rest);
    case 0xFF:
      if (rest.size() < 4) return std::nullopt;
      return WithLength(word, Number(rest.data() + 2, 2), 4, rest);
    default:
      return WithLength(word & 0xFF, word >> 8, 2, rest);
  }
}

std::optional<std::string> FromComposite(Text records, std::string_view separator, std::uint16_t line_width) {
  Lines lines(separator, line_width);
  while (!records.empty()) {
    const std::optional<CompositeRecord> record = RecordAt(records);
    if (!record || !AddRecord(*record, records, &lines)) return std::nullopt;
    records = records.subspan(std::min<std::size_t>(records.size(), record->length + record->length % 2));
  }
  return lines.Take();
}

}  // namespace qcore::text
