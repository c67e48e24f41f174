// Putting code together.
#ifndef QUILLON_QCORE_FORMULA_CODE_WRITER_H
#define QUILLON_QCORE_FORMULA_CODE_WRITER_H

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qcore/formula/code.h"

namespace qcore::formula {

// One body. Each constant is stored once; names without regard to case, as they are written first. Indexes and sizes
// that words do not hold make a body of more than kMostCode bytes, which callers refuse.
class BodyWriter {
 public:
  std::uint16_t Number(double number);
  std::uint16_t Times(const TIMEDATE_PAIR& times, bool range);
  std::uint16_t Text(ConstantKind kind, std::string_view text);

  void Put(Op op) { code_.push_back(static_cast<std::uint8_t>(op)); }
  void Put(Op op, std::uint16_t word) {
    Put(op);
    Word(word);
  }
  void Word(std::uint32_t word);
  void PatchWord(std::size_t at, std::size_t word);
  std::size_t BeginBlock();
  void EndBlock(std::size_t block);

  // Where the next operation will stand, for PatchWord.
  std::size_t at() const { return code_.size(); }
  // About the size of the finished body.
  std::size_t size() const { return code_.size() + constants_.size() + 2; }
  std::vector<std::uint8_t> Finish() const;

 private:
  std::uint16_t Intern(ConstantKind kind, std::string_view bytes, std::string key);

  std::vector<std::uint8_t> code_;
  std::vector<std::uint8_t> constants_;
  std::unordered_map<std::string, std::uint16_t> known_;
};

class CodeWriter {
 public:
  CodeWriter();
  // A section as it was read.
  void AddWhole(const Section& section);
  void AddSection(SectionKind kind, std::string_view name, Bytes body);
  // Gives the section that was added last its body.
  void ReplaceBody(Bytes body);
  // Names compare without case.
  bool Has(SectionKind kind, std::string_view name) const;
  std::size_t size() const { return code_.size(); }
  // For a size up to kMostCode.
  Code Finish();

 private:
  Code code_;
  std::vector<std::pair<SectionKind, std::string>> names_;
};

}  // namespace qcore::formula

#endif
