// Rich texts on their way into other texts and slates: what goes along, and what a refusal leaves.
#include <functional>

#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/richtext/font.h"
#include "vq/richtext/fonttable.h"

namespace {

using namespace vqtest;

class Merge : public StoreFixture {
 protected:
  VQDocument Document(const std::string& links, const std::string& body) {
    VQDocument document;
    EXPECT_EQ(Db.CreateDocument(&document), VQ_OK);
    Add(document, "$Links", links);
    Add(document, "Body", body);
    return document;
  }
  static void Add(VQSlate& slate, const char* name, const std::string& value) {
    if (value.empty()) return;
    EXPECT_EQ(slate.CreateItem(name, TYPE_COMPOSITE, value.data(), value.size()), VQ_OK);
  }
  // The values of all items of the name, without their type words.
  static std::string ValueOf(const VQSlate& slate, const std::string& name) {
    std::string all;
    VQItemArray items;
    EXPECT_EQ(slate.GetItems(&items), VQ_OK);
    for (unsigned long i = 0; i < items.GetCount(); ++i) {
      if (TextOf(items[i].GetName()) != name) continue;
      std::string value(items[i].GetValueSize() - 2, 0);
      EXPECT_EQ(items[i].Read(0, value.size(), value.data()), VQ_OK);
      all += value;
    }
    return all;
  }
};

using Way = std::function<VQSTATUS(const VQRichText& source, VQSlate& target)>;

VQSTATUS AsItem(const VQRichText& source, VQSlate& target) {
  VQItem copy;
  return target.CreateItem("Copy", source, 0, VQITEMOPTION_UNIQUE, &copy);
}
VQSTATUS AsText(const VQRichText& source, VQSlate& target) {
  VQRichText copy;
  VQSTATUS status = target.GetItem("Body", &copy);
  if (status == VQ_OK) status = copy.Append(source);
  return status == VQ_OK ? copy.Update() : status;
}
VQSTATUS AsPart(const VQRichText& source, VQSlate& target) {
  VQRichText part;
  VQRTCursor start, end;
  source.GetCursor(&start);
  source.GetEndCursor(&end);
  const VQSTATUS status = source.GetRichText(start, end, &part);
  return status == VQ_OK ? AsText(part, target) : status;
}
VQSTATUS AsObject(const VQRichText& source, VQSlate& target) {
  VQRichText copy;
  VQRTObject first;
  VQRTCursor cursor;
  VQSTATUS status = target.GetItem("Body", &copy);
  if (status == VQ_OK) status = source.FindFirst(VQRTTYPE_LINK_HOTSPOT, &first);
  if (status == VQ_OK) status = copy.GetEndCursor(&cursor);
  if (status == VQ_OK) status = copy.Insert(first, &cursor);
  return status == VQ_OK ? copy.Update() : status;
}

constexpr int kLink = 11;
const std::string kLinked = Reference(1) + Text("a") + Hotspot(kLink) + Text("to") + HotspotEnd() + Text("z");

TEST_F(Merge, LinksComeWithTheirTable) {
  const std::string ours = Unknown("ours"), theirs = Unknown("theirs"), plain = Reference(1) + Text("plain");
  const struct {
    const char* What;
    Way Run;
    std::string Body, Present;
    VQSTATUS Status;
    std::string After;
  } rows[] = {
      {"an item, no table", AsItem, kLinked, "", VQ_OK, theirs},
      {"an item, the same table", AsItem, kLinked, theirs, VQ_OK, theirs},
      {"an item, another table", AsItem, kLinked, ours, VQERR_WRONG_SITUATION, ours},
      {"an item without links, another table", AsItem, plain, ours, VQ_OK, ours},
      {"a text, no table", AsText, kLinked, "", VQ_OK, theirs},
      {"a text, the same table", AsText, kLinked, theirs, VQ_OK, theirs},
      {"a text, another table", AsText, kLinked, ours, VQERR_WRONG_SITUATION, ours},
      {"a text without links", AsText, plain, "", VQ_OK, ""},
      {"a part, no table", AsPart, kLinked, "", VQ_OK, theirs},
      {"a part, another table", AsPart, kLinked, ours, VQERR_WRONG_SITUATION, ours},
      {"an object, no table", AsObject, kLinked, "", VQ_OK, theirs},
      {"an object, another table", AsObject, kLinked, ours, VQERR_WRONG_SITUATION, ours},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQDocument from = Document(theirs, row.Body), to = Document(row.Present, plain);
    VQRichText source;
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    EXPECT_EQ(row.Run(source, to), row.Status);
    EXPECT_EQ(ValueOf(to, "$Links"), row.After);
    EXPECT_EQ(Written(source), row.Body);
    if (row.Status == VQ_OK) continue;
    EXPECT_EQ(to.GetItemCount(), 2u);
    EXPECT_EQ(ValueOf(to, "Body"), plain);
  }
}

TEST_F(Merge, AFormKeepsItsLinksUnderAnotherName) {
  VQDocument from = Document(Unknown("theirs"), kLinked);
  VQSlate form;
  ASSERT_EQ(Db.CreateSlate(VQSLATECLASS_FORM | VQDESIGNKIND_FORM << 16, &form), VQ_OK);
  VQRichText source;
  ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
  ASSERT_EQ(AsItem(source, form), VQ_OK);
  EXPECT_EQ(ValueOf(form, "$FormLinks"), Unknown("theirs"));
  EXPECT_EQ(ValueOf(form, "$Links"), "");
  EXPECT_EQ(ValueOf(form, "Copy"), kLinked);
}

// Two faces come, and there is room for one.
TEST_F(Merge, ARefusalLeavesNoFaces) {
  VQDocument from = Document("", Reference(1) + Text("ab"));
  VQRichText source;
  ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
  ASSERT_EQ(source.SetFontStyle(At(source, 0), At(source, 1), VQFontStyle(0x20, 2, "Quadrata", 0, 0)), VQ_OK);
  ASSERT_EQ(source.SetFontStyle(At(source, 1), At(source, 2), VQFontStyle(0x20, 2, "Ronda", 0, 0)), VQ_OK);
  const struct {
    const char* What;
    Way Run;
  } rows[] = {{"an item", AsItem}, {"a text", AsText}, {"a part", AsPart}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQDocument to = Document("", Reference(1) + Text("c"));
    VQFontTable table;
    ASSERT_EQ(to.CreateItem("$Fonts", &table), VQ_OK);
    ASSERT_EQ(table.Append(254, 0x12, "Last"), VQ_OK);
    ASSERT_EQ(table.Update(), VQ_OK);
    EXPECT_EQ(row.Run(source, to), VQERR_TOO_MANY_FONTS);
    EXPECT_EQ(table.GetCount(), 1u);
    EXPECT_FALSE(table.IsDirty());
    EXPECT_EQ(to.GetItemCount(), 2u);
  }
}

// The font table that a refused text would have brought is not made.
TEST_F(Merge, ARefusalMakesNoFontTable) {
  VQDocument from = Document(Unknown("theirs"), kLinked);
  VQRichText source;
  ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
  ASSERT_EQ(source.SetFontStyle(At(source, 0), At(source, 1), VQFontStyle(0x20, 2, "Quadrata", 0, 0)), VQ_OK);
  for (const Way& way : {Way(AsItem), Way(AsText), Way(AsPart)}) {
    VQDocument to = Document(Unknown("ours"), Reference(1) + Text("c"));
    EXPECT_EQ(way(source, to), VQERR_WRONG_SITUATION);
    EXPECT_EQ(to.GetItemCount(), 2u);
    EXPECT_FALSE(to.HasItem("$Fonts"));
  }
}

}  // namespace
