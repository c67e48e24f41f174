#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "qcore/text/utf8.h"
#include "tests/qcore/engine.h"

namespace {

using qtest::Store;

struct Text : qtest::Engine {
  const ENGHANDLE charset = EngTextCharset();

  std::vector<int> Steps(const std::string& text) {
    const ENGCHAR* at = Store(text);
    std::vector<int> steps;
    while (const int step = EngTextNextChar(&at, 65535, 0, charset)) steps.push_back(step);
    return steps;
  }
  std::string Translated(std::uint16_t mode, const std::string& text, std::uint16_t limit = 1000) {
    std::string output(limit, '\0');
    output.resize(EngTextTranslate(mode, text.data(), static_cast<std::uint16_t>(text.size()), output.data(), limit));
    return output;
  }
};

TEST_F(Text, AnInvalidByteIsOneCharacter) {
  const struct {
    std::string text;
    std::vector<int> steps;
  } rows[] = {
      {"a\u00E9\u20AC\U0001F600z", {1, 2, 3, 4, 1}},
      {"\xC3", {1}},
      {"\xC3(", {1, 1}},
      {"\xE2\x82", {1, 1}},
      {"\xC0\xAF", {1, 1}},
      {"\xED\xA0\x80", {1, 1, 1}},
      {"\xF4\x90\x80\x80", {1, 1, 1, 1}},
      {"\xE0\x9F\xBF\xFF\x80", {1, 1, 1, 1, 1}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Steps(row.text), row.steps) << testing::PrintToString(row.text);
    std::uint16_t count = 0;
    EXPECT_EQ(EngTextCountChars(Store(row.text), static_cast<std::uint16_t>(row.text.size()), &count, charset), ENG_OK);
    EXPECT_EQ(count, row.steps.size());
  }
}

TEST_F(Text, WalksForwardBackAndInSpansAgreeOnAnyBytes) {
  std::mt19937 random(7);
  const unsigned char likely[] = {'a', 0xC3, 0xA9, 0xE2, 0x82, 0xAC, 0xF0, 0x9F, 0x98, 0x80, 0xFF, 0xED};
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (unsigned i = random() % 24; i > 0; --i) text += static_cast<char>(likely[random() % sizeof likely]);
    std::size_t at = 0;
    std::vector<std::size_t> starts;
    for (int step : Steps(text)) starts.push_back(std::exchange(at, at + static_cast<std::size_t>(step)));
    ASSERT_EQ(at, text.size());
    const qcore::text::Text span = qcore::text::AsText(text);
    for (std::size_t i = starts.size(); i > 0; --i) {
      at -= qcore::text::StepBack(span.data(), span.data() + at);
      ASSERT_EQ(at, starts[i - 1]) << testing::PrintToString(text);
      std::uint32_t bytes = 0;
      ASSERT_EQ(EngTextSpanBytes(span.data(), static_cast<std::uint32_t>(text.size()),
                                 static_cast<std::uint32_t>(i - 1), &bytes),
                ENG_OK);
      ASSERT_EQ(bytes, at);
    }
    for (std::size_t i = 0; i <= text.size(); ++i) {
      const bool start = i == text.size() || std::ranges::find(starts, i) != starts.end();
      ASSERT_EQ(qcore::text::IsBoundary(span, i), start) << testing::PrintToString(text) << " at " << i;
    }
    ASSERT_EQ(Translated(0, text), text);
  }
}

TEST_F(Text, NothingIsReadPastTheEnd) {
  std::uint16_t size = 9;
  EXPECT_EQ(EngTextCountBytes(Store("a\u00E9"), 3, &size, charset), ENG_ERR_TEXT_END);
  EXPECT_EQ(size, 3);
  const std::string text = "\u20AC";
  const ENGCHAR* at = Store(text);
  ENGCHAR character[5];
  EXPECT_EQ(EngTextCopyChar(&at, 2, character, charset), ENG_OK) << "a bound inside a character leaves an odd byte";
  EXPECT_STREQ(reinterpret_cast<char*>(character), "\xE2");
  at = Store(text) + 3;
  EXPECT_EQ(EngTextCopyChar(&at, 9, character, charset), ENG_ERR_TEXT_END);
  EXPECT_EQ(at, Store(text) + 3);
}

TEST_F(Text, Compares) {
  const struct {
    std::string first, second;
    int order[4];  // by flags 0 to 3
  } rows[] = {
      {"abc", "ABC", {1, 0, 1, 0}},
      {"abc", "abcd", {-1, -1, -1, -1}},
      {"\u00E9t\u00E9", "ete", {1, 1, 0, 0}},
      {"e\u0301", "\u00C9", {-1, -1, 1, 0}},
      {"stra\u00DFe", "STRASSE", {1, 0, 1, 0}},
      {"\u304C", "\u304B", {1, 1, 1, 1}},
      {"a\xFF", "a\xFE", {1, 1, 1, 1}},
      {"a\xFF", "a\U0001F600", {1, 1, 1, 1}},
      {"", "", {0, 0, 0, 0}},
      {std::string("a\0b", 3), std::string("a\0c", 3), {-1, -1, -1, -1}},
  };
  for (const auto& row : rows) {
    for (std::uint32_t flags = 0; flags < 4; ++flags) {
      const int order = EngTextCompare(Store(row.first), static_cast<std::uint16_t>(row.first.size()),
                                       Store(row.second), static_cast<std::uint16_t>(row.second.size()), flags);
      EXPECT_EQ((order > 0) - (order < 0), row.order[flags]) << row.first << " " << row.second << " " << flags;
    }
  }
}

TEST_F(Text, SearchesBetweenCharacters) {
  const struct {
    std::string text, pattern;
    std::uint32_t flags;
    int offset;  // -1: not found
    unsigned length;
  } rows[] = {
      {"one two", "two", 0, 4, 3},
      {"one TWO", "two", 0, -1, 0},
      {"one TWO", "two", 1, 4, 3},
      {"caf\u00E9s", "CAFE", 3, 0, 5},
      {"cafe\u0301s", "cafe", 2, 0, 6},
      {"\u00E9", "\xA9", 0, -1, 0},
      {"\xA9\u00E9\xA9", "\xA9", 0, 0, 1},
      {"stra\u00DFe", "s", 1, 0, 1},
      {"gro\u00DF", "s", 1, -1, 0},
      {"abc", "", 0, 0, 0},
      {"", "a", 0, -1, 0},
      {std::string("x\0y", 3), "y", 0, 2, 1},
      {"aab", "ab", 1, 1, 2},
  };
  for (const auto& row : rows) {
    const ENGCHAR* at = Store(row.text);
    std::uint32_t length = 0;
    const ENGSTATUS status = EngTextSearch(&at, static_cast<std::uint32_t>(row.text.size()), Store(row.pattern),
                                           static_cast<std::uint32_t>(row.pattern.size()), row.flags, &length);
    EXPECT_EQ(status, row.offset < 0 ? ENG_ERR_TEXT_NOT_FOUND : ENG_OK) << row.text << " " << row.pattern;
    EXPECT_EQ(at - Store(row.text), std::max(row.offset, 0)) << row.text << " " << row.pattern;
    EXPECT_EQ(length, row.length) << row.text << " " << row.pattern;
  }
  const std::string text = "caf\u00E9";
  const ENGCHAR* at = Store(text);
  EXPECT_EQ(EngTextFindAny(&at, 5, Store("\u00E8\u00E9"), charset), ENG_OK);
  EXPECT_EQ(at, Store(text) + 3);
  EXPECT_EQ(EngTextFind(&at, 2, Store("x"), 9, charset), ENG_ERR_TEXT_NOT_FOUND) << "a pattern ends at its NUL";
}

TEST_F(Text, FindsWords) {
  const std::string text = " l'\u00E9t\u00E9 99 \xFF.";
  using Step = int (*)(const ENGCHAR**, std::uint16_t, ENGHANDLE);
  const auto forward = [&](Step step, std::size_t from) {
    const ENGCHAR* at = Store(text) + from;
    return step(&at, 65535, charset) ? at - Store(text) : -1;
  };
  using BackStep = int (*)(const ENGCHAR**, const ENGCHAR*, ENGHANDLE);
  const auto back = [&](BackStep step, std::size_t from) {
    const ENGCHAR* at = Store(text) + from;
    return step(&at, Store(text), charset) ? at - Store(text) : -1;
  };
  EXPECT_EQ(forward(EngTextNextWordStart, 0), 1);
  EXPECT_EQ(forward(EngTextNextWordStart, 1), 3);
  EXPECT_EQ(forward(EngTextNextWordStart, 5), 9);
  EXPECT_EQ(forward(EngTextNextWordStart, 9), -1);
  EXPECT_EQ(forward(EngTextNextWordEnd, 0), 2);
  EXPECT_EQ(forward(EngTextNextWordEnd, 9), 11);
  EXPECT_EQ(forward(EngTextNextWordEnd, 11), -1);
  EXPECT_EQ(back(EngTextPreviousWordStart, text.size()), 9);
  EXPECT_EQ(back(EngTextPreviousWordStart, 9), 3);
  EXPECT_EQ(back(EngTextPreviousWordStart, 1), -1);
  EXPECT_EQ(back(EngTextPreviousWordEnd, text.size()), 11);
  EXPECT_EQ(back(EngTextPreviousWordEnd, 9), 8);
  EXPECT_EQ(back(EngTextPreviousWordEnd, 2), -1);
}

TEST_F(Text, TranslatesAndCutsBetweenCharacters) {
  const struct {
    std::uint16_t mode;
    std::string input;
    std::uint16_t limit;
    std::string output;
  } rows[] = {
      {ENG_TRANSLATE_UPPER, "stra\u00DFe \u00E9\xFFz", 99, "STRASSE \u00C9\xFFZ"},
      {ENG_TRANSLATE_LOWER, "ABC \u00C9\u0130", 99, "abc \u00E9i\u0307"},
      {ENG_TRANSLATE_STRIP_ACCENTS, "\u00C9te\u0301 \u00F1 \u304C \uAC00", 99, "Ete n \u304C \uAC00"},
      {ENG_TRANSLATE_UPPER, "a\u00E9", 2, "A"},
      {ENG_TRANSLATE_PLATFORM_TO_STORE, "a\u20AC", 3, "a"},
      {2, "abc", 99, ""},
  };
  for (const auto& row : rows) EXPECT_EQ(Translated(row.mode, row.input, row.limit), row.output) << row.input;
}

struct Latin : Text {
  Latin() {
    EngTerm();
    folder_.Write("QUILLON.INI", "PlatformCharset=ISO-8859-1\n");
    EXPECT_EQ(EngInitWithConfig(folder_.path().c_str()), ENG_OK);
  }
};

TEST_F(Latin, TheSettingsNameThePlatformsSet) {
  EXPECT_EQ(Translated(ENG_TRANSLATE_PLATFORM_TO_STORE, "caf\xE9"), "caf\u00E9");
  EXPECT_EQ(Translated(ENG_TRANSLATE_STORE_TO_PLATFORM, "\u00E9\u20AC\xFF"), "\xE9??");
  EXPECT_EQ(Translated(ENG_TRANSLATE_PLATFORM_TO_STORE, "a\xE9", 2), "a");
}

TEST_F(Text, ClassesKnowUnicodeAndNoInvalidByte) {
  using Test = int (*)(const ENGCHAR*, ENGHANDLE);
  const struct {
    Test test;
    std::string members, others;
  } rows[] = {
      {EngCharIsAlpha, "aZ\u00E9\u4E2D", "1 -"},
      {EngCharIsAlnum, "a1\u0661", " -"},
      {EngCharIsDigit, "09\u0661", "a"},
      {EngCharIsUpper, "A\u00C9",
       "a\u00E9"
       "1"},
      {EngCharIsLower, "a\u00E9", "A\u00C9"},
      {EngCharIsSpace, " \t\n\u00A0\u2003", "a"},
      {EngCharIsPunct, ".$\u00BF", "a "},
      {EngCharIsCntrl, "\x01\x7F\u0085", "a "},
      {EngCharIsArith, "+-*/=\u00D7", "a,1"},
  };
  for (const auto& row : rows) {
    for (const ENGCHAR* at = Store(row.members); *at; EngTextNextChar(&at, 4, 0, charset)) {
      EXPECT_TRUE(row.test(at, charset)) << at;
    }
    for (const ENGCHAR* at = Store(row.others); *at; EngTextNextChar(&at, 4, 0, charset)) {
      EXPECT_FALSE(row.test(at, charset)) << at;
    }
    EXPECT_FALSE(row.test(Store("\xFF"), charset));
  }
}

struct Composite : Text {
  // The status, or the plain text.
  std::string Plain(const std::string& records, std::uint16_t width = 0) {
    ENGHANDLE source = 0, result = 0;
    EXPECT_EQ(EngMemAlloc(0, static_cast<std::uint32_t>(records.size()) + 3, &source), ENG_OK);
    std::memcpy(static_cast<char*>(EngMemLock(source)) + 3, records.data(), records.size());
    EXPECT_EQ(EngMemUnlock(source), ENG_OK);
    std::uint32_t length = 0;
    const ENGSTATUS status = EngTextFromComposite({source, 1}, 2, static_cast<std::uint32_t>(records.size()),
                                                  Store("|"), width, &result, &length);
    if (status != ENG_OK) return std::to_string(status);
    const std::string text(static_cast<char*>(EngMemLock(result)), length);
    EXPECT_EQ(EngMemUnlock(result), ENG_OK);
    return text;
  }
  static std::string Run(const std::string& text) {
    std::string record("\x85\xFF\x00\x00\x00\x00\x00\x00", 8);
    record[2] = static_cast<char>(8 + text.size());
    record += text;
    return record.size() % 2 == 0 ? record : record + '\0';
  }
};

TEST_F(Composite, PlainTextOfRecords) {
  const std::string paragraph = "\x81\x02", cell = "\xA4\x02", unknown("\x95\0\x08\0\0\0zz", 8);
  EXPECT_EQ(Plain(Run("one ") + unknown + Run("two") + paragraph + Run("x")), "one two|x");
  EXPECT_EQ(Plain(Run(std::string("a\0b", 3)) + paragraph + paragraph), "a|b||");
  EXPECT_EQ(Plain(cell + Run("a") + cell + Run("b") + "\xA5\x02"), "a|b|");
  EXPECT_EQ(Plain(Run("one two three"), 7), "one two|three");
  EXPECT_EQ(Plain(Run("\u00E9\u00E9\u00E9"), 2), "\u00E9\u00E9|\u00E9");
  EXPECT_EQ(Plain(std::string("\x81\0\0\0\0\0", 6) + Run("x")), "|x") << "a length of 0 is the header's";
  const std::string damaged = std::to_string(ENG_ERR_RECORD_DAMAGED);
  EXPECT_EQ(Plain(Run("text").substr(0, 11)), damaged);
  EXPECT_EQ(Plain(std::string("\x85\xFF\x06\0zz", 6)), damaged);
  EXPECT_EQ(Plain(std::string("\x81\0\xFF\xFF\xFF\xFF", 6)), damaged);
  EXPECT_EQ(Plain("\x81"), damaged);
}

}  // namespace
