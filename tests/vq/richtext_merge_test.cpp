// Rich texts on their way into other texts and slates: what goes along, and what a refusal leaves.
#include <filesystem>
#include <fstream>
#include <functional>

#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/richobjects/vqattach.h"
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
      const auto* body = dynamic_cast<const VQCompositeItemBody*>(items[i].GetItemBody());
      for (const vq::ItemPlace& later : body ? body->GetExtraPlaces() : std::vector<vq::ItemPlace>()) {
        const vq::MemoryLock lock(later.Value.Pool);
        all.append(reinterpret_cast<const char*>(lock.GetBytes()) + later.Value.Block + 2, later.Size - 2);
      }
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

// A link that stands at a position of its table.
std::string Link(int position) {
  return Record(SIG_CD_V4HOTSPOTBEGIN, Bytes({11, 0, 0, 0, 0, 0, 0, 0, position & 255, position >> 8}));
}
std::string Linked(int position) {
  return Reference(1) + Text("a") + Link(position) + Text("to") + HotspotEnd() + Text("z");
}
const std::string kLinked = Linked(0);

int PositionIn(const std::string& body) {
  const std::size_t at = body.find(Link(0).substr(0, 12));
  return at == std::string::npos
             ? -1
             : static_cast<unsigned char>(body[at + 12]) | static_cast<unsigned char>(body[at + 13]) << 8;
}

TEST_F(Merge, LinksComeWithTheirTable) {
  const std::string ours = Unknown("ours"), theirs = Unknown("theirs"), plain = Reference(1) + Text("plain");
  const std::string damaged = ours.substr(0, 6), full = Unknown("x");
  std::string most;
  for (int i = 0; i < 0xFFFE; ++i) most += Bytes({0x81, 2});
  const struct {
    const char* What;
    Way Run;
    std::string Body, Present;
    VQSTATUS Status;
    std::string After;
    int Position;
  } rows[] = {
      {"an item, no table", AsItem, kLinked, "", VQ_OK, theirs, 0},
      {"an item, the same table", AsItem, kLinked, theirs, VQ_OK, theirs, 0},
      {"an item, another table", AsItem, kLinked, ours, VQ_OK, ours + theirs, 1},
      {"an item, a table that cannot be joined", AsItem, kLinked, damaged, VQERR_WRONG_SITUATION, damaged, -1},
      {"an item without links, another table", AsItem, plain, ours, VQ_OK, ours, -1},
      {"a text, no table", AsText, kLinked, "", VQ_OK, theirs, 0},
      {"a text, the same table", AsText, kLinked, theirs, VQ_OK, theirs, 0},
      {"a text, another table", AsText, kLinked, ours, VQ_OK, ours + theirs, 1},
      {"a text, a table with the link", AsText, kLinked, ours + full + theirs, VQ_OK, ours + full + theirs, 2},
      {"a text whose link leads nowhere", AsText, Linked(7), ours, VQ_OK, ours, 0xFFFF},
      {"a text, a full table", AsText, kLinked, most, VQERR_OUT_OF_RANGE, most, -1},
      {"a text, a table that cannot be joined", AsText, kLinked, damaged, VQERR_WRONG_SITUATION, damaged, -1},
      {"a text without links", AsText, plain, "", VQ_OK, "", -1},
      {"a part, no table", AsPart, kLinked, "", VQ_OK, theirs, 0},
      {"a part, another table", AsPart, kLinked, ours, VQ_OK, ours + theirs, 1},
      {"an object, no table", AsObject, kLinked, "", VQ_OK, theirs, 0},
      {"an object, another table", AsObject, kLinked, ours, VQ_OK, ours + theirs, 1},
      {"an object, a table that cannot be joined", AsObject, kLinked, damaged, VQERR_WRONG_SITUATION, damaged, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    VQDocument from = Document(theirs, row.Body), to = Document(row.Present, plain);
    VQRichText source;
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    EXPECT_EQ(row.Run(source, to), row.Status);
    EXPECT_TRUE(ValueOf(to, "$Links") == row.After);
    EXPECT_EQ(Written(source), row.Body);
    EXPECT_EQ(PositionIn(ValueOf(to, "Copy") + ValueOf(to, "Body")), row.Position);
    if (row.Status == VQ_OK) continue;
    EXPECT_EQ(to.GetItemCount(), 2u);
    EXPECT_EQ(ValueOf(to, "Body"), plain);
  }
}

// Neither those that come come to lead into a table that is there, nor those that are there into one that comes.
TEST_F(Merge, LinksWithoutATableLeadNowhere) {
  const std::string ours = Unknown("ours"), plain = Reference(1) + Text("plain");
  for (const auto way : {AsItem, AsText, AsPart, AsObject}) {
    VQDocument from = Document("", kLinked), to = Document(ours, plain);
    VQRichText source;
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    ASSERT_EQ(way(source, to), VQ_OK);
    EXPECT_EQ(ValueOf(to, "$Links"), ours);
    EXPECT_EQ(PositionIn(ValueOf(to, "Copy") + ValueOf(to, "Body")), 0xFFFF);
    VQDocument bare = Document("", kLinked), full = Document(ours, kLinked);
    if (way == AsItem) continue;
    ASSERT_EQ(full.GetItem("Body", &source), VQ_OK);
    ASSERT_EQ(way(source, bare), VQ_OK);
    const std::string body = ValueOf(bare, "Body");
    EXPECT_EQ(PositionIn(body), 0xFFFF);
    EXPECT_EQ(PositionIn(body.substr(body.find("to") + 2)), 0);
    EXPECT_EQ(ValueOf(bare, "$Links"), ours);
  }
}

TEST_F(Merge, RecordsWithoutAPositionComeAsTheyAre) {
  const std::string kept = Record(SIG_CD_LINK_A, "") + Record(SIG_CD_LINK_B, "\1") + Unknown("?") +
                           Record(SIG_CD_V4HOTSPOTBEGIN, Bytes({11, 0, 0, 0, 0, 0, 0, 0})) + Text("to") + HotspotEnd() +
                           Record(SIG_CD_LINK_B, std::string("\0\0tail", 6)) + Text("z");
  for (const auto way : {AsItem, AsText, AsPart}) {
    VQDocument from = Document(Unknown("theirs"), Reference(1) + Text("a") + kept);
    VQDocument to = Document(Unknown("theirs"), Reference(1) + Text("b"));
    VQRichText source;
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    ASSERT_EQ(way(source, to), VQ_OK);
    EXPECT_NE((ValueOf(to, "Copy") + ValueOf(to, "Body")).find(kept), std::string::npos);
    VQDocument other = Document(Unknown("ours"), Reference(1) + Text("b"));
    ASSERT_EQ(way(source, other), VQ_OK);
    std::string moved = kept;
    moved[moved.find("tail") - 2] = 1;  // the only one that has a position
    EXPECT_NE((ValueOf(other, "Copy") + ValueOf(other, "Body")).find(moved), std::string::npos);
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
    VQDocument to = Document(Unknown("ours").substr(0, 6), Reference(1) + Text("c"));
    EXPECT_EQ(way(source, to), VQERR_WRONG_SITUATION);
    EXPECT_EQ(to.GetItemCount(), 2u);
    EXPECT_FALSE(to.HasItem("$Fonts"));
  }
}

// Faces, links and files come into another database, and stay when the first one is gone.
TEST_F(Merge, OtherDatabasesGetAllThatATextNeeds) {
  std::ofstream(Home.Path("file")) << "bytes";
  for (const Way& way : {Way(AsItem), Way(AsText), Way(AsPart)}) {
    VQDocument from = Document(Unknown("theirs"), kLinked);
    VQRichText source, copy;
    VQRTCursor cursor;
    ASSERT_EQ(from.GetItem("Body", &source), VQ_OK);
    ASSERT_EQ(source.SetFontStyle(At(source, 0), At(source, 1), VQFontStyle(0x20, 2, "Quadrata", 0, 0)), VQ_OK);
    ASSERT_EQ(source.GetEndCursor(&cursor), VQ_OK);
    ASSERT_EQ(source.CreateAttachment(Store(Home.Path("file")), &cursor), VQ_OK);
    ASSERT_EQ(from.Save(), VQ_OK);
    VQDatabase other;
    ASSERT_EQ(Session->CreateDatabase("other", &other, VQCreateDatabaseOptions()), VQ_OK);
    VQDocument to, read;
    ASSERT_EQ(other.CreateDocument(&to), VQ_OK);
    Add(to, "Body", Reference(1) + Text("b"));
    Add(to, "$Links", Unknown("ours"));
    ASSERT_EQ(way(source, to), VQ_OK);
    ASSERT_EQ(to.Save(), VQ_OK);
    ASSERT_EQ(Db.DeleteSlate(&from), VQ_OK);
    ASSERT_EQ(other.GetDocument(to.GetSlateID(), &read), VQ_OK);
    ASSERT_EQ(read.Open(), VQ_OK);
    EXPECT_EQ(ValueOf(read, "$Links"), Unknown("ours") + Unknown("theirs"));
    EXPECT_EQ(PositionIn(ValueOf(read, "Copy") + ValueOf(read, "Body")), 1);
    ASSERT_EQ(read.GetItem(read.HasItem("Copy") ? "Copy" : "Body", &copy), VQ_OK);
    ASSERT_EQ(copy.GetCursor(&cursor), VQ_OK);
    ASSERT_EQ(cursor.GotoFirst("a"), VQ_OK);
    VQFontStyle font;
    ASSERT_EQ(cursor.GetFontStyle(&font), VQ_OK);
    EXPECT_EQ(TextOf(font.GetFaceName()), "Quadrata");
    VQAttachment attachment;
    ASSERT_EQ(read.GetAttachment("file", &attachment), VQ_OK);
    EXPECT_EQ(attachment.Detach(Store(Home.Path("out"))), VQ_OK);
    EXPECT_EQ(std::filesystem::file_size(Home.Path("out")), 5u);
    read = to = VQDocument();
    source = copy = VQRichText();
    cursor = VQRTCursor();
    attachment = VQAttachment();
    font = VQFontStyle();
    ASSERT_EQ(Session->DeleteDatabase(&other), VQ_OK);
  }
}

}  // namespace
