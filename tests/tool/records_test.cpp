// The tool's own reading of record streams, which check and diff rely on.
#include "tools/quillon/records.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct WalkRow {
  const char* what;
  std::vector<unsigned char> value;  // without the type word
  std::string records;               // signature/length of each
  bool damaged;
};

TEST(RecordWalk, FramesTheThreeForms) {
  const WalkRow rows[] = {
      {"nothing", {}, "", false},
      {"byte form", {0x81, 0x02, 0x83, 0x04, 1, 0}, "129/2 131/4 ", false},
      {"word form, odd with padding", {0x85, 0xFF, 9, 0, 1, 0, 0, 10, 'a', 0, 0x81, 2}, "65413/9 129/2 ", false},
      {"odd at the very end", {0x85, 0xFF, 9, 0, 1, 0, 0, 10, 'a'}, "65413/9 ", false},
      {"long form", {0x99, 0x00, 8, 0, 0, 0, 1, 2}, "153/8 ", false},
      {"length 0 counts as the header", {0x85, 0xFF, 0, 0, 0x81, 2}, "65413/4 129/2 ", false},
      {"one byte left", {0x81, 2, 0x81}, "129/2 ", true},
      {"header cut", {0x85, 0xFF, 9}, "", true},
      {"record cut", {0x83, 4, 1}, "", true},
      {"shorter than its header", {0x85, 0xFF, 3, 0}, "", true},
      {"longer than any", {0x99, 0, 1, 4, 1, 0}, "", true},
      {"length that wraps", {0x99, 0, 0xFF, 0xFF, 0xFF, 0xFF}, "", true},
  };
  for (const WalkRow& row : rows) {
    std::vector<unsigned char> value{1, 0};
    value.insert(value.end(), row.value.begin(), row.value.end());
    tool::RecordWalk walk{value};
    std::string seen;
    for (tool::Record record; walk.Next(&record);) {
      seen += std::to_string(record.signature) + "/" + std::to_string(record.bytes.size()) + " ";
    }
    EXPECT_EQ(seen, row.records) << row.what;
    EXPECT_EQ(walk.damage() != nullptr, row.damaged) << row.what;
  }
}

}  // namespace
