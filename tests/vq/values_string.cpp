// Strings and characters.
#include <chrono>
#include <functional>
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "vq/values/vqtext.h"

using namespace vqtest;

namespace {

class Strings : public SwitchFixture {};

INSTANTIATE_TEST_SUITE_P(Switch, Strings, ::testing::Values(0, 1));

TEST_P(Strings, MakingThem) {
  const struct {
    VQString Made;
    std::string Bytes;
  } rows[] = {
      {VQString(), ""},
      {VQString(0UL), "0"},
      {VQString(4294967295UL), "4294967295"},
      {VQString(static_cast<const char*>(nullptr)), ""},
      {VQString("h\xC3\xA9"), "h\xC3\xA9"},
      {Store(std::string("a\0b\0", 4)), "a\nb\n"},
      {VQString("abcdef", 3), "abc"},
      {VQString(VQString("x\xE2\x82\xACy")[1]), "\xE2\x82\xAC"},
      {VQString(static_cast<VQStringBody*>(nullptr)), ""},
  };
  for (const auto& row : rows) EXPECT_EQ(TextOf(row.Made), row.Bytes);
  EXPECT_EQ(StatusOf([] { Store(std::string(65535, 'x')); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(StatusOf([] { VQString(std::string(65535, 'x').c_str()); }), VQERR_STRING_TOO_LONG);
}

struct Edit {
  const char* Name;
  const char* Before;
  std::function<VQSTATUS(VQString&)> Run;
  VQSTATUS Status;
  const char* After;
};

TEST_P(Strings, Edits) {
  const Edit rows[] = {
      {"append nothing", "ab", [](VQString& s) { return s.Append(""); }, VQ_OK, "ab"},
      {"append itself", "ab", [](VQString& s) { return s.Append(s); }, VQ_OK, "abab"},
      {"insert in front", "\xC3\xA9z", [](VQString& s) { return s.Insert(0, "x"); }, VQ_OK, "x\xC3\xA9z"},
      {"insert behind a wide one", "\xC3\xA9z", [](VQString& s) { return s.Insert(1, "x"); }, VQ_OK, "\xC3\xA9xz"},
      {"insert at the end", "ab", [](VQString& s) { return s.Insert(2, "c"); }, VQ_OK, "abc"},
      {"insert behind the end", "ab", [](VQString& s) { return s.Insert(3, "c"); }, VQERR_INVALID_PARAMETER, "ab"},
      {"insert nothing", "ab", [](VQString& s) { return s.Insert(0, ""); }, VQERR_INVALID_PARAMETER, "ab"},
      {"insert itself", "ab", [](VQString& s) { return s.Insert(1, s); }, VQ_OK, "aabb"},
      {"delete", "a\xE2\x82\xAC\xC3\xA9z", [](VQString& s) { return s.Delete(1, 2); }, VQ_OK, "az"},
      {"delete none", "ab", [](VQString& s) { return s.Delete(0, 0); }, VQERR_INVALID_PARAMETER, "ab"},
      {"delete too many", "ab", [](VQString& s) { return s.Delete(1, 2); }, VQERR_INVALID_PARAMETER, "ab"},
      {"delete past all sums", "ab", [](VQString& s) { return s.Delete(1, ~0UL); }, VQERR_INVALID_PARAMETER, "ab"},
      {"replace by as many", "abcd", [](VQString& s) { return s.Replace(1, "\xC3\xA9y"); }, VQ_OK, "a\xC3\xA9yd"},
      {"replace over the end", "abcd", [](VQString& s) { return s.Replace(3, "xyz"); }, VQ_OK, "abcxyz"},
      {"replace behind the end", "ab", [](VQString& s) { return s.Replace(2, "x"); }, VQERR_INVALID_PARAMETER, "ab"},
      {"replace by longer", "abcd", [](VQString& s) { return s.Replace(1, 2, "12345"); }, VQ_OK, "a12345d"},
      {"replace by shorter", "abcd", [](VQString& s) { return s.Replace(0, 3, "1"); }, VQ_OK, "1d"},
      {"replace by nothing", "abcd", [](VQString& s) { return s.Replace(1, 2, ""); }, VQ_OK, "ad"},
      {"replace too many", "ab", [](VQString& s) { return s.Replace(1, 2, "x"); }, VQERR_INVALID_PARAMETER, "ab"},
      {"upper", "stra\xC3\x9F\x65", [](VQString& s) { return s.ToUpper(); }, VQ_OK, "STRASSE"},
      {"lower", "\xC3\x89T\xC3\x89", [](VQString& s) { return s.ToLower(); }, VQ_OK, "\xC3\xA9t\xC3\xA9"},
      {"accents", "\xC3\xA9t\xC3\xA9", [](VQString& s) { return s.RemoveAccent(); }, VQ_OK, "ete"},
  };
  for (const Edit& row : rows) {
    VQString text(row.Before);
    const VQString sharer(text);
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Run(text); }), row.Status) << row.Name;
    EXPECT_EQ(TextOf(text), row.After) << row.Name;
    EXPECT_EQ(TextOf(sharer), row.Before) << row.Name;
    EXPECT_EQ(text.GetLength(), Store(row.After).GetLength()) << row.Name;
  }
}

TEST_P(Strings, GrowToTheLimitAndNoFurther) {
  VQString text = Store(std::string(65533, 'x'));
  EXPECT_EQ(text.Append("y"), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Append("z"); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Insert(0, "z"); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Replace(0, 1, "zz"); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(StatusOf([&] { text += "z"; }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(text.GetBufLength(), 65534u);
  EXPECT_EQ(text[65533UL].GetChar(), 'y');
  EXPECT_EQ(text.ToUpper(), VQ_OK);
  EXPECT_EQ(text.GetByteLength(), 65534u);
  VQString growing = Store(std::string(30000, '\xC3'));  // invalid bytes are kept
  EXPECT_EQ(growing.ToUpper(), VQ_OK);
  EXPECT_EQ(TextOf(growing), std::string(30000, '\xC3'));
  std::string wide;
  for (int i = 0; i < 32000; ++i) wide += "\xC5\x89";  // each becomes three bytes
  VQString letters = Store(wide);
  EXPECT_EQ(StatusOf([&] { return letters.ToUpper(); }), VQERR_STRING_TOO_LONG);
  EXPECT_EQ(TextOf(letters), wide);
}

// A platform whose characters take one byte, and two or three in store.
class OtherPlatform : public EngineFixture {
 protected:
  OtherPlatform() { WriteSettings("PlatformCharset=windows-1252\n"); }
};

TEST_F(OtherPlatform, TextIsTakenWholeOrNotAtAll) {
  const struct {
    char Byte;
    unsigned long Count;
    unsigned long StoreBytes;  // 0: too long
  } rows[] = {{'\xE9', 32766, 65532}, {'\xE9', 32768, 0}, {'\x80', 21844, 65532}, {'\x80', 21845, 0}};
  for (const auto& row : rows) {
    const std::string platform(row.Count, row.Byte);
    VQString text;
    EXPECT_EQ(StatusOf([&] { text = platform.c_str(); }), row.StoreBytes ? VQ_OK : VQERR_STRING_TOO_LONG) << row.Count;
    EXPECT_EQ(text.GetBufLength(), row.StoreBytes) << row.Count;
    EXPECT_EQ(text.GetPlatformTextPtr(), row.StoreBytes ? platform : "") << row.Count;
  }
  EXPECT_STREQ(VQString(reinterpret_cast<const VQCHAR*>("a\xF0\x9F\x98\x80z")).GetPlatformTextPtr(), "a?z");
}

TEST_P(Strings, EmptyingASharedOneLeavesTheOther) {
  VQString first("text");
  const VQString second(first);
  first = static_cast<const VQCHAR*>(nullptr);
  EXPECT_TRUE(first.IsNull());
  EXPECT_EQ(TextOf(second), "text");
  first = "x";
  first.Assign(nullptr);
  EXPECT_EQ(first.GetLength(), 0u);
  EXPECT_STREQ(first.GetPlatformTextPtr(), "");
}

struct Search {
  const char* Text;
  VQSTATUS (VQString::*Run)(const VQString&, unsigned long, unsigned long*) const;
  const char* What;
  unsigned long Start;
  VQSTATUS Status;
  unsigned long Found;
};

TEST_P(Strings, Searches) {
  const Search rows[] = {
      {"a\xC3\xA9z\xC3\xA9", &VQString::Find, "\xC3\xA9", 2, VQ_OK, 3},
      {"abab", &VQString::Find, "ab", 1, VQ_OK, 2},
      {"abab", &VQString::Find, "ab", 4, VQWARN_NOT_FOUND, 77},
      {"abab", &VQString::Find, "ab", 5, VQERR_INVALID_PARAMETER, 77},
      {"abab", &VQString::Find, "", 0, VQERR_INVALID_PARAMETER, 77},
      {"", &VQString::Find, "x", 0, VQWARN_NOT_FOUND, 77},
      {"\xC3\xA9,b;c", &VQString::FindChar, ";,", 0, VQ_OK, 1},
      {"\xC3\xA9,b;c", &VQString::FindChar, ";,", 2, VQ_OK, 3},
      {"abc", &VQString::FindChar, "xyz", 0, VQWARN_NOT_FOUND, 77},
  };
  for (const Search& row : rows) {
    const VQString text(row.Text);
    unsigned long found = 77;
    EXPECT_EQ(ReturnedStatusOf([&] { return (text.*row.Run)(row.What, row.Start, &found); }), row.Status) << row.Text;
    EXPECT_EQ(found, row.Found) << row.Text << " " << row.What;
  }
  EXPECT_EQ(StatusOf([] { return VQString("a").Find("a", 0, nullptr); }), VQERR_INVALID_PARAMETER);
}

TEST_P(Strings, Words) {
  const VQString text("\xC3\xA9t\xC3\xA9, two");
  unsigned long found = 77;
  EXPECT_EQ(text.FindNextWordStart(0, &found), VQ_OK);
  EXPECT_EQ(found, 5u);
  EXPECT_EQ(text.FindNextWordEnd(0, &found), VQ_OK);
  EXPECT_EQ(found, 3u);
  EXPECT_EQ(text.FindPreviousWordStart(8, &found), VQ_OK);
  EXPECT_EQ(found, 5u);
  EXPECT_EQ(text.FindPreviousWordEnd(6, &found), VQ_OK);
  EXPECT_EQ(found, 3u);
  EXPECT_EQ(text.FindNextWordStart(8, &found), VQWARN_NOT_FOUND);
}

TEST_P(Strings, SubStrings) {
  VQString text("a\xE2\x82\xACz");
  EXPECT_EQ(ReturnedStatusOf([&] { return text.GetSubString(3, 0, &text); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.GetSubString(2, 2, &text); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.GetSubString(0, 1, nullptr); }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(text.GetSubString(1, 2, &text), VQ_OK);
  EXPECT_EQ(TextOf(text), "\xE2\x82\xACz");
}

TEST_P(Strings, Comparing) {
  const VQString lower("\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(VQStringCompare(lower, "\xC3\xA9t\xC3\xA9"), 0);
  EXPECT_NE(VQStringCompare(lower, "ETE", 0), 0);
  EXPECT_NE(VQStringCompare(lower, "ETE", 1), 0);
  EXPECT_EQ(VQStringCompare(lower, "ETE", 3), 0);
  EXPECT_LT(VQStringCompare("a", "b"), 0);
  EXPECT_GT(VQStringCompare("ab", "a"), 0);
  EXPECT_EQ(VQStringCompare(lower[0], lower[2]), 0);
  EXPECT_EQ(StatusOf([] { VQStringCompare("a", "b", 4); }), VQERR_INVALID_PARAMETER);
}

TEST_P(Strings, CharactersReadAndWriteTheirString) {
  VQString text("a\xE2\x82\xAC.");
  const VQString sharer(text);
  EXPECT_EQ(text[1].GetByteCount(), 3u);
  EXPECT_EQ(text[1].GetChar(), 0);
  EXPECT_EQ(text[0].GetChar(), 'a');
  EXPECT_TRUE(text[0].IsAlpha() && text[0].IsLower() && !text[0].IsDigit() && text[2].IsPunct());
  text[1] = text[0];
  text[0].ToUpper();
  text[2].Assign('\0', 1);
  EXPECT_EQ(TextOf(text), "Aa\n");
  EXPECT_EQ(TextOf(sharer), "a\xE2\x82\xAC.");
  EXPECT_EQ(StatusOf([&] { text[3]; }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([&] { text[-1]; }), VQERR_INVALID_PARAMETER);
  EXPECT_EQ(StatusOf([] { VQChar().GetByteCount(); }), VQERR_OBJECT_NOT_INITIALIZED);
  const VQChar last = text[2];
  text.Delete(1, 2);
  EXPECT_EQ(last.GetChar(), '\n');  // it kept the text, and the change was made on a copy
  EXPECT_EQ(TextOf(text), "A");
}

TEST_P(Strings, ScanByPositionStaysLinear) {
  const VQString text = Store(std::string(60000, 'x'));
  VQString own(text);
  const auto start = std::chrono::steady_clock::now();
  unsigned long letters = 0;
  for (unsigned long i = 0; i < 60000; ++i) letters += own[i].GetByteCount();
  EXPECT_EQ(letters, 60000u);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

struct Parsed {
  const char* Text;
  const char* Separators;
  unsigned short Flags;
  VQSTATUS Status;
  std::vector<std::string> Entries;
};

TEST_P(Strings, Parsing) {
  const Parsed rows[] = {
      {"a,b;c", ",;", 0, VQ_OK, {"a", "b", "c"}},
      {",,a,,b,", ",", 0, VQ_OK, {"a", "b"}},
      {"abc", ",", 0, VQWARN_NOT_FOUND, {"abc"}},
      {"", ",", 0, VQWARN_NOT_FOUND, {""}},
      {",", ",", 0, VQ_OK, {""}},
      {"a, b ,\t", ",", 1, VQ_OK, {"a", "b", ""}},
      {" , b", ",", 1, VQ_OK, {"", "b"}},
      {"a,b,c", ",", 2, VQ_OK, {"a", "b,c"}},
      {",,a,b", ",", 2, VQ_OK, {",a,b"}},
      {"\xC3\xA9|\xE2\x82\xAC|z", "|", 0, VQ_OK, {"\xC3\xA9", "\xE2\x82\xAC", "z"}},
  };
  for (const Parsed& row : rows) {
    VQText list;
    EXPECT_EQ(VQString(row.Text).Parse(row.Separators, &list, row.Flags), row.Status) << row.Text;
    std::vector<std::string> entries;
    for (unsigned long i = 0; i < list.GetCount(); ++i) entries.push_back(TextOf(list[i]));
    EXPECT_EQ(entries, row.Entries) << row.Text;
  }
  VQText list;
  EXPECT_EQ(StatusOf([&] { return VQString("a").Parse("", &list); }), VQERR_NULL_STRING);
  EXPECT_EQ(StatusOf([&] { return VQString("a").Parse(",", nullptr); }), VQERR_NULL_POINTER);
  EXPECT_EQ(StatusOf([&] { return VQString("a").Parse(",", &list, 4); }), VQERR_INVALID_PARAMETER);
}

}  // namespace
