// Text items: standing alone, in both stored forms.
#include <functional>
#include <vector>

#include "tests/vq/support/engine_fixture.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqtext.h"

using namespace vqtest;

namespace {

using Entries = std::vector<std::string>;

VQText MakeText(const Entries& entries) {
  VQText text;
  for (const std::string& entry : entries) text << Store(entry);
  return text;
}

Entries EntriesOf(const VQText& text) {
  Entries entries;
  for (unsigned long i = 0; i < text.GetCount(); ++i) entries.push_back(TextOf(text[i]));
  return entries;
}

std::string RawValue(const VQItem& item) {
  std::string bytes(item.GetValueSize() - 2, 0);
  EXPECT_EQ(item.Read(0, bytes.size(), bytes.data()), VQ_OK);
  return bytes;
}

class Texts : public SwitchFixture {};

INSTANTIATE_TEST_SUITE_P(Switch, Texts, ::testing::Values(0, 1));

TEST_P(Texts, Unattached) {
  VQText text;
  unsigned long index = 0;
  VQString joined("before");
  EXPECT_EQ(text.GetCount(), 0u);
  EXPECT_EQ(text.DeleteAll(), VQ_OK);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Delete(0, 1); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.FindEntry("x", &index); }), VQERR_OBJECT_NOT_INITIALIZED);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Insert(1, "x"); }), VQERR_OUT_OF_RANGE);
  EXPECT_EQ(StatusOf([&] { text[1]; }), VQERR_BAD_SUBSCRIPT);
  EXPECT_EQ(TextOf(text[0]), "");
  text[0] = "lost with the element";
  EXPECT_TRUE(text.IsNull());
  EXPECT_EQ(text.GetText(&joined, ";"), VQ_OK);
  EXPECT_EQ(TextOf(joined), "");
  EXPECT_EQ(text.Insert(0, "x"), VQ_OK);
  EXPECT_EQ(EntriesOf(text), Entries{"x"});
}

struct Edit {
  const char* Name;
  Entries Before;
  std::function<VQSTATUS(VQText&)> Run;
  VQSTATUS Status;
  Entries After;
};

TEST_P(Texts, Edits) {
  const Edit rows[] = {
      {"insert in front", {"b"}, [](VQText& t) { return t.Insert(0, "a"); }, VQ_OK, {"a", "b"}},
      {"insert an empty one", {"b"}, [](VQText& t) { return t.Insert(1, ""); }, VQ_OK, {"b", ""}},
      {"insert behind the end", {"b"}, [](VQText& t) { return t.Insert(2, "x"); }, VQERR_OUT_OF_RANGE, {"b"}},
      {"insert a list",
       {"a", "d"},
       [](VQText& t) {
         return t.Insert(1, MakeText({"b", "c"}));
       },
       VQ_OK,
       {"a", "b", "c", "d"}},
      {"append a list",
       {"a", ""},
       [](VQText& t) {
         return t.Insert(2, MakeText({"b\nc", ""}));
       },
       VQ_OK,
       {"a", "", "b\nc", ""}},
      {"append an empty value", {"a"}, [](VQText& t) { return t.Insert(1, MakeText({""})); }, VQ_OK, {"a"}},
      {"insert itself", {"a", "b"}, [](VQText& t) { return t.Insert(1, t); }, VQERR_INVALID_PARAMETER, {"a", "b"}},
      {"insert nothing", {"a"}, [](VQText& t) { return t.Insert(0, VQText()); }, VQERR_UNINITIALIZED_ARGUMENT, {"a"}},
      {"delete the middle", {"a", "b", "c"}, [](VQText& t) { return t.Delete(1, 1); }, VQ_OK, {"a", "c"}},
      {"delete none", {"a"}, [](VQText& t) { return t.Delete(5, 0); }, VQ_OK, {"a"}},
      {"delete too many", {"a", "b"}, [](VQText& t) { return t.Delete(1, 2); }, VQERR_OUT_OF_RANGE, {"a", "b"}},
      {"delete the last", {"a"}, [](VQText& t) { return t.Delete(0, 1); }, VQ_OK, {}},
      {"delete all", {"a", "b"}, [](VQText& t) { return t.DeleteAll(); }, VQ_OK, {}},
      {"assign", {"a", "b", "c"}, [](VQText& t) { return t[1] = "long text", VQ_OK; }, VQ_OK, {"a", "long text", "c"}},
      {"assign an entry", {"a", "b"}, [](VQText& t) { return t[0] = t[1], VQ_OK; }, VQ_OK, {"b", "b"}},
      {"set", {"a", "b"}, [](VQText& t) { return t.SetValue("x"); }, VQ_OK, {"x"}},
      {"set a list",
       {"a"},
       [](VQText& t) {
         return t.SetValue(MakeText({"x", "y"}));
       },
       VQ_OK,
       {"x", "y"}},
      {"set nothing", {"a"}, [](VQText& t) { return t.SetValue(VQText()); }, VQ_OK, {}},
  };
  for (const Edit& row : rows) {
    VQText text = MakeText(row.Before);
    EXPECT_EQ(ReturnedStatusOf([&] { return row.Run(text); }), row.Status) << row.Name;
    EXPECT_EQ(EntriesOf(text), row.After) << row.Name;
  }
}

TEST_P(Texts, StoredForms) {
  VQText text;
  EXPECT_EQ(text.SetValue("a\nb"), VQ_OK);
  EXPECT_EQ(text.GetType(), TYPE_TEXT);
  EXPECT_EQ(RawValue(text), std::string("a\0b", 3));
  EXPECT_EQ(TextOf(text[0]), "a\nb");
  EXPECT_EQ(text.Insert(1, "c\n"), VQ_OK);
  EXPECT_EQ(text.GetType(), TYPE_TEXT_LIST);
  EXPECT_EQ(RawValue(text), std::string("\2\0\3\0\2\0a\0bc\0", 11));
  EXPECT_EQ(text.DeleteAll(), VQ_OK);
  EXPECT_EQ(text.GetType(), TYPE_TEXT);
  EXPECT_EQ(text.GetValueSize(), 2u);
  EXPECT_EQ(StatusOf([&] { text[1]; }), VQERR_BAD_SUBSCRIPT);
  text[0] = "again";
  EXPECT_EQ(EntriesOf(text), Entries{"again"});
}

TEST_P(Texts, FindAndJoin) {
  const VQText text = MakeText({"x", "y", "x"});
  unsigned long index = 9;
  EXPECT_EQ(text.FindEntry("X", &index), VQWARN_NOT_FOUND);
  EXPECT_EQ(index, 9u);
  EXPECT_EQ(text.FindEntry("x", &index), VQ_OK);
  EXPECT_EQ(index, 0u);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.FindEntry("x", nullptr); }), VQERR_INVALID_PARAMETER);
  VQString joined;
  EXPECT_EQ(text.GetText(&joined, ", "), VQ_OK);
  EXPECT_EQ(TextOf(joined), "x, y, x");
  EXPECT_EQ(MakeText({"alone"}).GetText(&joined, ", "), VQ_OK);
  EXPECT_EQ(TextOf(joined), "alone");
  EXPECT_EQ(ReturnedStatusOf([&] { return text.GetText(nullptr); }), VQERR_INVALID_PARAMETER);
}

TEST_P(Texts, FullListStaysAsItWas) {
  VQText text = MakeText({std::string(40000, 'a'), "b"});
  const VQString big = Store(std::string(30000, 'c'));
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Insert(1, big); }), VQSTATUS{ENG_ERR_LIST_FULL});
  EXPECT_EQ(StatusOf([&] { text << big; }), VQSTATUS{ENG_ERR_LIST_FULL});
  text[0] = big;  // in place of the longer one there is room
  EXPECT_EQ(EntriesOf(text), (Entries{std::string(30000, 'c'), "b"}));
  std::string many;
  for (int i = 0; i < 20000; ++i) many += "e,";
  VQText pieces;
  EXPECT_EQ(Store(many).Parse(",", &pieces), VQ_OK);
  EXPECT_EQ(pieces.GetCount(), 20000u);
  EXPECT_EQ(StatusOf([&] { return Store(many + many.substr(0, 20000)).Parse(",", &pieces); }),
            VQSTATUS{ENG_ERR_LIST_FULL});
  EXPECT_EQ(pieces.GetCount(), 20000u);
  VQString joined;
  EXPECT_EQ(pieces.GetText(&joined, ","), VQ_OK);
  EXPECT_EQ(TextOf(joined) + ",", many);
  EXPECT_EQ(ReturnedStatusOf([&] { return text.Insert(1, pieces); }), VQSTATUS{ENG_ERR_LIST_FULL});
  EXPECT_EQ(pieces.Delete(1, 19998), VQ_OK);
  EXPECT_EQ(EntriesOf(pieces), (Entries{"e", "e"}));
}

TEST_P(Texts, DamagedListsAreRefused) {
  const struct {
    const char* What;
    std::string Data;
  } rows[] = {{"half a count", std::string("\1", 1)},
              {"count without lengths", std::string("\2\0\1\0", 4)},
              {"length past the end", std::string("\1\0\5\0abc", 7)},
              {"endless count", std::string("\xFF\xFF", 2)}};
  for (const auto& row : rows) {
    VQText text(new VQTextBody(TYPE_TEXT_LIST, row.Data.data(), row.Data.size()));
    EXPECT_NE(StatusOf([&] { TextOf(text[0]); }), VQ_OK) << row.What;
    EXPECT_NE(ReturnedStatusOf([&] { return text.Insert(0, "x"); }), VQ_OK) << row.What;
    EXPECT_EQ(RawValue(text), row.Data) << row.What;
  }
}

TEST_P(Texts, AppendReadsAListThatWasWrittenOver) {
  const struct {
    const char* What;
    unsigned long Offset;
    unsigned char Word[2];
    VQSTATUS Status;
    std::string After;
  } rows[] = {
      {"a length past the end", 2, {9, 0}, VQSTATUS{ENG_ERR_LIST_DAMAGED}, std::string("\3\0\x9\0\1\0\1\0abcd", 12)},
      {"a count that leaves bytes over", 0, {1, 0}, VQ_OK, std::string("\2\0\2\0\1\0\1\0x", 9)}};
  for (const auto& row : rows) {
    VQText text = MakeText({"ab", "c", "d"});
    EXPECT_EQ(text.Write(row.Offset, 2, row.Word), VQ_OK) << row.What;
    EXPECT_EQ(StatusOf([&] { text << VQString("x"); }), row.Status) << row.What;
    EXPECT_EQ(RawValue(text), row.After) << row.What;
  }
}

TEST_P(Texts, OtherItemsAreRefused) {
  VQNumbers numbers;
  numbers << 1.5;
  const VQItem item(numbers);
  VQText text = MakeText({"a"});
  EXPECT_EQ(StatusOf([&] { VQText wrong(item); }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(StatusOf([&] { text = item; }), VQERR_INCORRECT_ITEM_TYPE);
  EXPECT_EQ(EntriesOf(text), Entries{"a"});
}

}  // namespace
