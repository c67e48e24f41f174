// Sort keys: the table for ASCII against the collator, and the order that keys give.
#include "qcore/index/sortkey.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using namespace qcore::index;

const SortOptions kOptions[] = {
    {}, {true}, {false, true}, {false, false, true}, {false, true, true}, {true, true, true}};

TEST(SortKey, AsciiTableGivesTheBytesOfTheCollator) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % (round % 100 == 0 ? 500 : 40), 'a');
    const bool letters = random() % 2 == 0;
    for (char& c : text) c = static_cast<char>(letters ? "aaaaabZYyx W"[random() % 12] : random() % 128);
    for (const SortOptions& options : kOptions) {
      std::string ours;
      std::string collator;
      AppendTextKey(text, options, &ours);
      AppendIcuTextKey(text, options, &collator);
      ASSERT_EQ(ours, collator) << text;
    }
  }
}

std::string Text(std::string_view text, const SortOptions& options = {}) {
  std::string key;
  AppendTextKey(text, options, &key);
  return key;
}

std::string Number(double number) {
  std::string key;
  AppendNumberKey(number, {}, &key);
  return key;
}

TEST(SortKey, OrderIsThatOfTheValues) {
  std::string nothing;
  AppendNothingKey({}, &nothing);
  std::string time;
  AppendTimeKey({1, 2450000}, {}, &time);
  const std::vector<std::string> rising = {
      nothing,   Number(-1e300), Number(-1), Number(0),  Number(0.5), Number(7),      time,      Text("a"), Text("A"),
      Text("ä"), Text("a b"),    Text("ab"), Text("Ab"), Text("b"),   Text("straße"), Text("z"), Text("中")};
  for (std::size_t i = 1; i < rising.size(); ++i) EXPECT_LT(rising[i - 1], rising[i]) << i;
  EXPECT_EQ(Number(0.0), Number(-0.0));
  EXPECT_GT(Text("a", {true}), Text("b", {true}));
  EXPECT_EQ(Text("aÉ", {false, true, true}), Text("Ae", {false, true, true}));
  EXPECT_NE(Text("e", {false, true}), Text("é", {false, true}));
  EXPECT_EQ(Text("e", {false, false, true}), Text("é", {false, false, true}));
  EXPECT_NE(Text("e", {false, false, true}), Text("E", {false, false, true}));
  const std::string long_text(5000, 'x');
  EXPECT_LT(Text(long_text).size(), 1200u);
  EXPECT_NE(Text(long_text + "a"), Text(long_text + "b"));
}

struct Beginning {
  const char* key;
  Match match;
  const char* text;
  bool found;
};
const Beginning kBeginnings[] = {
    {"Sm", Match::kBeginning, "smith", true},  {"Sm", Match::kBeginning, "sam", false},
    {"smith", Match::kAnyCase, "SMITH", true}, {"smith", Match::kAnyCase, "smiths", false},
    {"e", Match::kAnyCase, "é", false},        {"e", Match::kAnyAccent, "É", true},
    {"e", Match::kWhole, "E", false},          {"e", Match::kWhole, "e", true},
};

TEST(SortKey, MatchesAreBeginningsOfKeys) {
  for (const Beginning& row : kBeginnings) {
    for (const SortOptions& options : {SortOptions{}, SortOptions{true}}) {
      std::string begin;
      AppendTextMatch(row.key, options, row.match, &begin);
      EXPECT_EQ(Text(row.text, options).starts_with(begin), row.found) << row.key << " " << row.text;
    }
  }
}

}  // namespace
