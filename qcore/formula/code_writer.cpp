#include "qcore/formula/code_writer.h"

#include <cstring>

namespace qcore::formula {

namespace {

std::string Folded(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return folded;
}

void AppendWord(std::vector<std::uint8_t>* to, std::size_t word) {
  to->push_back(static_cast<std::uint8_t>(word));
  to->push_back(static_cast<std::uint8_t>(word >> 8));
}

void AppendWide(std::string* to, std::uint64_t word, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) to->push_back(static_cast<char>(word >> (8 * i)));
}

template <typename From>
void AppendBytes(std::vector<std::uint8_t>* to, const From& bytes) {
  to->insert(to->end(), bytes.begin(), bytes.end());
}

}  // namespace

std::uint16_t BodyWriter::Intern(ConstantKind kind, std::string_view bytes, std::string key) {
  key.push_back(static_cast<char>(kind));
  const auto known = known_.find(key);
  if (known != known_.end()) return known->second;
  const auto index = static_cast<std::uint16_t>(known_.size());
  known_.emplace(std::move(key), index);
  constants_.push_back(static_cast<std::uint8_t>(kind));
  if (kind == ConstantKind::kText || kind == ConstantKind::kName || kind == ConstantKind::kKeyword) {
    AppendWord(&constants_, bytes.size());
  }
  AppendBytes(&constants_, bytes);
  return index;
}

std::uint16_t BodyWriter::Number(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  std::string bytes;
  AppendWide(&bytes, bits, 8);
  return Intern(ConstantKind::kNumber, bytes, bytes);
}

std::uint16_t BodyWriter::Times(const TIMEDATE_PAIR& times, bool range) {
  std::string bytes;
  for (const TIMEDATE& moment : {times.Lower, times.Upper}) {
    AppendWide(&bytes, moment.TimeWord, 4);
    AppendWide(&bytes, moment.DateWord, 4);
  }
  if (!range) bytes.resize(8);
  return Intern(range ? ConstantKind::kRange : ConstantKind::kTime, bytes, bytes);
}

std::uint16_t BodyWriter::Text(ConstantKind kind, std::string_view text) {
  return Intern(kind, text, kind == ConstantKind::kName ? Folded(text) : std::string(text));
}

void BodyWriter::Word(std::uint32_t word) { AppendWord(&code_, word); }

void BodyWriter::PatchWord(std::size_t at, std::size_t word) {
  code_[at] = static_cast<std::uint8_t>(word);
  code_[at + 1] = static_cast<std::uint8_t>(word >> 8);
}

std::size_t BodyWriter::BeginBlock() {
  Word(0);
  return code_.size();
}

void BodyWriter::EndBlock(std::size_t block) { PatchWord(block - 2, code_.size() - block); }

std::vector<std::uint8_t> BodyWriter::Finish() const {
  std::vector<std::uint8_t> body;
  body.reserve(size());
  AppendWord(&body, known_.size());
  AppendBytes(&body, constants_);
  AppendBytes(&body, code_);
  return body;
}

CodeWriter::CodeWriter() : code_{'Q', 'F', kVersion, 0, 0, 0, 0, 0} {}

void CodeWriter::AddWhole(const Section& section) {
  AppendBytes(&code_, section.whole);
  names_.emplace_back(section.kind, Folded(section.name));
}

void CodeWriter::AddSection(SectionKind kind, std::string_view name, Bytes body) {
  code_.push_back(static_cast<std::uint8_t>(kind));
  if (kind != SectionKind::kSelection) {
    AppendWord(&code_, name.size());
    AppendBytes(&code_, name);
  }
  if (kind != SectionKind::kSummaryName) {
    AppendWord(&code_, body.size());
    AppendBytes(&code_, body);
  }
  names_.emplace_back(kind, Folded(name));
}

void CodeWriter::ReplaceBody(Bytes body) {
  code_.pop_back();
  code_.pop_back();
  AppendWord(&code_, body.size());
  AppendBytes(&code_, body);
}

bool CodeWriter::Has(SectionKind kind, std::string_view name) const {
  const std::string folded = Folded(name);
  for (const auto& [known_kind, known] : names_) {
    if (known_kind == kind && known == folded) return true;
  }
  return false;
}

Code CodeWriter::Finish() {
  code_[4] = static_cast<std::uint8_t>(code_.size());
  code_[5] = static_cast<std::uint8_t>(code_.size() >> 8);
  return std::move(code_);
}

}  // namespace qcore::formula
