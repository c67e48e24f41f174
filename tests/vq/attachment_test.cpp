// Attachments of slates, and what rich texts show of them.
#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "engine/records.h"
#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/richobjects/vqrtattach.h"
#include "vq/richtext/rthistory.h"
#include "vq/richtext/vqrttabl.h"
#include "vq/values/vqdtime.h"

namespace {

using namespace vqtest;

class Attached : public StoreFixture {
 protected:
  std::string Path(const std::string& name) const { return Home.Path(name); }
  VQString NewFile(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Store(Path(name));
  }
  std::string ReadFile(const std::string& name) const {
    std::ifstream in(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // A saved document with one attachment and a Body that shows it behind "see ".
  VQDocument NewWithAttachment(const std::string& name, const std::string& bytes) {
    VQDocument document = NewDocument("with " + name);
    VQRichText body = BodyOf(document);
    VQRTCursor cursor;
    EXPECT_EQ(body.Append("see "), VQ_OK);
    EXPECT_EQ(body.GetEndCursor(&cursor), VQ_OK);
    EXPECT_EQ(body.CreateAttachment(NewFile("source", bytes), Store(name), &cursor), VQ_OK);
    EXPECT_EQ(document.Save(), VQ_OK);
    return document;
  }
  static VQRichText BodyOf(VQDocument& document) {
    VQRichText body;
    if (document.GetItem("Body", &body) != VQ_OK) {
      EXPECT_EQ(document.CreateItem("Body", &body), VQ_OK);
    }
    return body;
  }
  // The names of a slate's attachments with what is in them.
  std::string Contents(const VQSlate& slate) const {
    VQItemArray items;
    EXPECT_EQ(slate.GetAttachments(&items), VQ_OK);
    std::string all;
    for (unsigned long i = 0; i < items.GetCount(); ++i) {
      const VQAttachment attachment(items[i]);
      EXPECT_EQ(attachment.Detach(Store(Path("out"))), VQ_OK);
      all += TextOf(attachment.GetAttachmentName()) + "=" + ReadFile("out") + ";";
    }
    return all;
  }
  // The same of what a rich text shows, "-" where the attachment is not to be had.
  std::string Shown(const VQRichText& text) const {
    std::string all;
    VQRTObject found;
    for (VQSTATUS status = text.FindFirst(VQRTTYPE_ATTACHMENT, &found); status == VQ_OK;
         status = text.FindNext(VQRTObject(found), VQRTTYPE_ATTACHMENT, &found)) {
      const VQRTAttachment attachment(found);
      const bool there = attachment.Detach(Store(Path("out"))) == VQ_OK;
      all += TextOf(attachment.GetAttachmentName()) + "=" + (there ? ReadFile("out") : "-") + ";";
    }
    return all;
  }
};

TEST_F(Attached, FactsOfAFile) {
  VQDocument document = NewDocument("facts");
  const std::string bytes(100000, 'x');
  const VQString path = NewFile("plan.txt", bytes);
  const timespec times[2] = {{0, UTIME_OMIT}, {86400, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, Path("plan.txt").c_str(), times, 0), 0);
  ASSERT_EQ(chmod(Path("plan.txt").c_str(), 0444), 0);
  for (const int compress : {0, 1}) {
    VQAttachment made;
    ASSERT_EQ(document.CreateAttachment(path, &made, compress), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
    EXPECT_EQ(made.GetFileSize(), bytes.size()) << "a handle outlives the save";
    EXPECT_EQ(TextOf(made.GetFilepath()), Path("plan.txt"));
    EXPECT_EQ(made.IsCompressed(), compress);
    EXPECT_TRUE(made.IsFileReadOnly());
    EXPECT_FALSE(made.IsFilePrivate() || made.IsInRichText() || made.IsSigned());
    EXPECT_EQ(made.GetAttachmentType(), 0);
    EXPECT_EQ(made.GetFileLastModified() - VQDatetime(TIMEDATE{0, 2440588}), 86400);
  }
  EXPECT_EQ(Contents(document), "plan.txt=" + bytes + ";plan(1).txt=" + bytes + ";") << "names are each one's own";
  EXPECT_TRUE(document.HasAttachments() && document.HasAttachment("plan(1).txt"));
  EXPECT_FALSE(document.HasAttachment("PLAN.TXT"));
  EXPECT_EQ(document.DeleteAttachment("plan.txt"), VQ_OK);
  EXPECT_EQ(document.DeleteAttachment("plan.txt"), VQWARN_NOT_FOUND);
  ASSERT_EQ(document.Save(), VQ_OK);
  EXPECT_LT(document.GetSize(), 10000u) << "the object went with its item";
}

// Only the low four bits of the compression word count, and only 1 is compressed; other bits of words are kept.
TEST_F(Attached, WordsOfTheRecord) {
  const struct {
    std::uint16_t compression, host, attributes, flags;
    int compressed, type, readOnly, isPrivate, inRichText, isSigned;
  } rows[] = {
      {0x0001, 0x0002, 1, 1, 1, 0, 1, 0, 0, 1},
      {0x00F1, 0x0F34, 2, 2, 1, 0x0F00, 0, 1, 1, 0},
      {0x0002, 0xF5FF, 0xFFFC, 0xFFFC, 0, 0x0500, 0, 0, 0, 0},
      {0x0011, 0x0100, 3, 3, 1, 0x0100, 1, 1, 1, 1},
      {0x0010, 0x0000, 0, 0, 0, 0, 0, 0, 0, 0},
  };
  VQDocument document = NewDocument("words");
  VQAttachment made;
  ASSERT_EQ(document.CreateAttachment(NewFile("a", "1"), &made), VQ_OK);
  for (const auto& row : rows) {
    FILEOBJECT file{};
    ASSERT_EQ(made.ReadODS(0, ODS_FILEOBJECT, &file), VQ_OK);
    file.CompressionType = row.compression;
    file.HostType = row.host;
    file.FileAttributes = row.attributes;
    file.Flags = row.flags;
    ASSERT_EQ(made.WriteODS(0, ODS_FILEOBJECT, &file), VQ_OK);
    ASSERT_EQ(document.RefreshObjectFromSlateHandle(), VQ_OK);
    EXPECT_EQ(made.IsCompressed(), row.compressed);
    EXPECT_EQ(made.GetAttachmentType(), row.type);
    EXPECT_EQ(made.IsFileReadOnly(), row.readOnly);
    EXPECT_EQ(made.IsFilePrivate(), row.isPrivate);
    EXPECT_EQ(made.IsInRichText(), row.inRichText);
    EXPECT_EQ(made.IsSigned(), row.isSigned);
  }
}

TEST_F(Attached, Refusals) {
  VQDocument document = NewWithAttachment("a", "bytes");
  VQDocument closed = NewWithAttachment("b", "closed");
  VQDocument strange = NewDocument("strange");
  VQAttachment attachment, late, sealed, none, odd;
  std::string record(36, '\0');
  record[6] = 3;
  ASSERT_EQ(strange.CreateItem("Odd", TYPE_OBJECT, (record + std::string("a\0b", 3)).data(), 39), VQ_OK);
  ASSERT_EQ(strange.GetItem("Odd", &odd), VQ_OK);
  ASSERT_EQ(document.GetAttachment("a", &attachment), VQ_OK);
  ASSERT_EQ(closed.GetAttachment("b", &late), VQ_OK);
  ASSERT_EQ(closed.Close(), VQ_OK);
  ASSERT_EQ(document.CreateAttachment(NewFile("s", "1"), &sealed), VQ_OK);
  ASSERT_EQ(sealed.GetAttachmentBody()->SetFlag(FILEFLAG_SIGNED, true), VQ_OK);
  VQRichText alone, body = BodyOf(document);
  ASSERT_EQ(alone.Create(), VQ_OK);
  VQRTCursor cursor, inside;
  ASSERT_EQ(alone.GetCursor(&cursor), VQ_OK);
  ASSERT_EQ(body.GetCursor(&inside), VQ_OK);
  const VQString out = Store(Path("out")), store = Store(Path("main.vlt"));
  ASSERT_TRUE(std::filesystem::exists(Path("main.vlt")));
  const std::string before = Contents(document);
  const struct {
    const char* title;
    std::function<VQSTATUS()> operation;
    VQSTATUS status;
  } rows[] = {
      {"detach nothing", [&] { return none.Detach(out); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"detach from a closed slate", [&] { return late.Detach(out); }, VQERR_SLATE_NOT_OPEN},
      {"detach to nowhere", [&] { return attachment.Detach(""); }, VQERR_NULL_STRING},
      {"detach to a folder", [&] { return attachment.Detach(Store(Path("."))); }, ENG_ERR_FILE_OPEN},
      {"detach by an unknown name", [&] { return document.Detach("none", out); }, VQWARN_NOT_FOUND},
      {"look at nothing", [&] { return none.Check(); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"look at one of a closed slate", [&] { return late.Check(); }, VQERR_SLATE_NOT_OPEN},
      {"size of nothing", [&] { return StatusOf([&] { none.GetFileSize(); }); }, VQERR_OBJECT_NOT_INITIALIZED},
      {"size after the slate closed", [&] { return StatusOf([&] { late.GetFileSize(); }); },
       VQERR_OBJECT_NOT_INITIALIZED},
      {"attach a missing file", [&] { return document.CreateAttachment(Store(Path("none"))); }, ENG_ERR_FILE_OPEN},
      {"attach an empty path", [&] { return document.CreateAttachment(""); }, VQERR_NULL_STRING},
      {"attach without a name", [&] { return document.CreateAttachment(NewFile("x", ""), ""); }, VQERR_NULL_STRING},
      {"show a name with a NUL", [&] { return body.CreateAttachment(odd, &inside); }, VQERR_INVALID_PARAMETER},
      {"show no file", [&] { return StatusOf([&] { VQRTAttachment made("", "x"); }); }, VQERR_NULL_STRING},
      {"attach the store", [&] { return document.CreateAttachment(store); }, ENG_ERR_FILE_OPEN},
      {"detach over the store", [&] { return attachment.Detach(store); }, ENG_ERR_FILE_OPEN},
      {"attach to a closed slate", [&] { return closed.CreateAttachment(out); }, VQERR_SLATE_NOT_OPEN},
      {"copy nothing", [&] { return document.CreateAttachment(none); }, VQERR_ATTACHMENT_UNINITIALIZED},
      {"copy from a closed slate", [&] { return document.CreateAttachment(late); }, VQERR_ATTACHMENT_UNINITIALIZED},
      {"copy a signed one", [&] { return document.CreateAttachment(sealed); }, VQERR_ATTACHMENT_SIGNED},
      {"show a signed one", [&] { return body.CreateAttachment(sealed, &inside); }, VQERR_ATTACHMENT_SIGNED},
      {"show nothing", [&] { return body.CreateAttachment(none, &inside); }, VQERR_ATTACHMENT_UNINITIALIZED},
      {"show a missing file", [&] { return body.CreateAttachment(Store(Path("none")), &inside); }, ENG_ERR_FILE_OPEN},
      {"show without a slate", [&] { return alone.CreateAttachment(NewFile("x", ""), &cursor); },
       VQERR_ATTACHMENT_NO_SLATE},
      {"put a file into a text without a slate", [&] { return alone.Append(VQRTAttachment(NewFile("x", ""), "")); },
       VQERR_ATTACHMENT_NO_SLATE},
      {"a text as an attachment",
       [&] {
         VQText text;
         return document.GetItem("Subject", &text) + StatusOf([&] { VQAttachment wrong(text); });
       },
       VQERR_INCORRECT_ITEM_TYPE},
      {"an empty item as an attachment", [&] { return document.CreateItem("New", &none); }, VQERR_INCORRECT_ITEM_TYPE},
  };
  for (const auto& row : rows) EXPECT_EQ(row.operation(), row.status) << row.title;
  EXPECT_EQ(Contents(document), before);
  EXPECT_EQ(Shown(body), "a=bytes;");
  EXPECT_FALSE(document.HasItem("New"));
}

// Object items that are no files, or that end before their record says, are plain items and stay in the slate.
TEST_F(Attached, ItemsThatAreNoFiles) {
  VQDocument document = NewDocument("hostile");
  std::string record(36, '\0');
  record[6] = 5;
  const struct {
    const char* name;
    std::string data;
  } rows[] = {
      {"Empty", ""},
      {"Cut", record.substr(0, 35)},
      {"NameMissing", record},
      {"NameCut", record + "abcd"},
      {"OtherKind", std::string("\x07") + record.substr(1) + "abcde"},
  };
  for (const auto& row : rows) {
    ASSERT_EQ(document.CreateItem(row.name, TYPE_OBJECT, row.data.data(), row.data.size()), VQ_OK);
    VQItem item;
    EXPECT_EQ(document.GetItem(row.name, &item), VQ_OK) << row.name;
    EXPECT_EQ(StatusOf([&] { VQAttachment wrong(item); }), VQERR_INCORRECT_ITEM_TYPE) << row.name;
  }
  EXPECT_FALSE(document.HasAttachments());
  ASSERT_EQ(document.CreateItem("Gone", TYPE_OBJECT, (record + "abcde").data(), 41), VQ_OK);
  EXPECT_EQ(document.Save(), VQ_OK);
  VQAttachment gone;
  ASSERT_EQ(document.GetAttachment("\0\0\0\0", &gone), VQWARN_NOT_FOUND);
  ASSERT_EQ(document.GetAttachment("abcde", &gone), VQ_OK);
  EXPECT_EQ(gone.Detach(Store(Path("out"))), ENG_ERR_NO_OBJECT);
  EXPECT_EQ(document.CreateAttachment(gone), ENG_ERR_NO_OBJECT);
  EXPECT_FALSE(std::filesystem::exists(Path("out")));
}

using Way = std::function<VQSTATUS(const VQRichText& from, VQRichText& to, VQSlate& target)>;

// Whatever way a rich text takes into another slate, its attachments come along, each under a name of its own.
TEST_F(Attached, RichTextsTakeTheirAttachmentsAlong) {
  VQRTCursor start, end;
  VQRichText part;
  VQRTObject object;
  const struct {
    const char* title;
    Way way;
  } rows[] = {
      {"appended", [](const VQRichText& from, VQRichText& to, VQSlate&) { return to.Append(from); }},
      {"inserted",
       [&](const VQRichText& from, VQRichText& to, VQSlate&) { return to.GetCursor(&end) + to.Insert(from, &end); }},
      {"a range of it",
       [&](const VQRichText& from, VQRichText& to, VQSlate&) {
         return from.GetCursor(&start) + from.GetEndCursor(&end) + from.GetRichText(start, end, &part) +
                to.Append(part);
       }},
      {"the object alone", [&](const VQRichText& from, VQRichText& to,
                               VQSlate&) { return from.GetAttachment("a", &object) + to.Append(object); }},
      {"as an item", [](const VQRichText& from, VQRichText&,
                        VQSlate& target) { return target.CreateItem("Body", from, 0, VQITEMOPTION_REPLACE); }},
      {"joined to an item", [](const VQRichText& from, VQRichText&,
                               VQSlate& target) { return target.CreateItem("Body", from, 0, VQITEMOPTION_APPEND); }},
  };
  VQDatabase second;
  ASSERT_EQ(Session->CreateDatabase("second", &second, VQCreateDatabaseOptions()), VQ_OK);
  for (VQDatabase& database : {std::ref(Db), std::ref(second)}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(row.title);
      VQDocument source = NewWithAttachment("a", "theirs"), target;
      ASSERT_EQ(database.CreateDocument(&target), VQ_OK);
      ASSERT_EQ(target.CreateAttachment(NewFile("a", "mine")), VQ_OK);
      VQRichText body = BodyOf(target);
      ASSERT_EQ(row.way(BodyOf(source), body, target), VQ_OK);
      ASSERT_EQ(target.Save(), VQ_OK);
      ASSERT_EQ(Db.DeleteSlate(&source), VQ_OK);
      EXPECT_EQ(Contents(target), "a=mine;a(1)=theirs;");
      EXPECT_EQ(Shown(BodyOf(target)), "a(1)=theirs;");
      VQAttachment made;
      ASSERT_EQ(target.GetAttachment("a(1)", &made), VQ_OK);
      EXPECT_TRUE(made.IsInRichText());
    }
  }
}

// What cannot be shown leaves no copy behind in the slate.
TEST_F(Attached, ShowsAnotherOrStaysAsItWas) {
  VQDocument document = NewWithAttachment("a", "mine"), source = NewWithAttachment("b", "theirs");
  VQRichText body = BodyOf(document);
  VQAttachment theirs, sealed, none;
  ASSERT_EQ(source.GetAttachment("b", &theirs), VQ_OK);
  ASSERT_EQ(document.CreateAttachment(NewFile("s", "sealed"), &sealed), VQ_OK);
  ASSERT_EQ(sealed.GetAttachmentBody()->SetFlag(FILEFLAG_SIGNED, true), VQ_OK);
  ASSERT_EQ(body.Append(RichText(Record(SIG_CD_HOTSPOTBEGIN, Bytes({4, 0, 0, 0, 0, 0, 9, 0})) + HotspotEnd())), VQ_OK);
  VQRTObject first, damaged;
  ASSERT_EQ(body.FindFirst(VQRTTYPE_ATTACHMENT, &first), VQ_OK);
  ASSERT_EQ(body.FindNext(VQRTObject(first), VQRTTYPE_ATTACHMENT, &damaged), VQ_OK);
  const struct {
    VQRTObject shown;
    VQAttachment attachment;
    VQSTATUS status;
    const char* contents;
  } rows[] = {
      {first, none, VQERR_ATTACHMENT_UNINITIALIZED, "a=mine;s=sealed;"},
      {first, sealed, VQERR_ATTACHMENT_SIGNED, "a=mine;s=sealed;"},
      {damaged, theirs, VQERR_RT_INVALID, "a=mine;s=sealed;"},
      {first, theirs, VQ_OK, "a=mine;s=sealed;b=theirs;"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(VQRTAttachment(row.shown).SetAttachment(row.attachment), row.status);
    EXPECT_EQ(Contents(document), row.contents);
  }
  EXPECT_EQ(TextOf(VQRTAttachment(first).GetAttachmentName()), "b");
}

// A document copied as a whole, here or elsewhere, keeps the names and has the bytes for itself.
TEST_F(Attached, DocumentsAreCopiedWithTheirFiles) {
  VQDatabase second;
  ASSERT_EQ(Session->CreateDatabase("second", &second, VQCreateDatabaseOptions()), VQ_OK);
  for (VQDatabase& database : {std::ref(Db), std::ref(second)}) {
    VQDocument source = NewWithAttachment("a", "bytes"), copy;
    ASSERT_EQ(database.CreateSlate(source, &copy), VQ_OK);
    ASSERT_EQ(Db.DeleteSlate(&source), VQ_OK);
    EXPECT_EQ(Contents(copy), "a=bytes;");
    EXPECT_EQ(Shown(BodyOf(copy)), "a=bytes;");
  }
}

// A document that was never saved keeps its files when a copy of it is saved.
TEST_F(Attached, NewDocumentsAreCopiedWithTheirFiles) {
  VQDocument source, copy;
  ASSERT_EQ(Db.CreateDocument(&source), VQ_OK);
  ASSERT_EQ(source.CreateAttachment(NewFile("a", "bytes")), VQ_OK);
  ASSERT_EQ(Db.CreateSlate(source, &copy), VQ_OK);
  ASSERT_EQ(source.Save(), VQ_OK);
  EXPECT_EQ(Contents(source) + Contents(copy), "a=bytes;a=bytes;");
}

// A name of the greatest length becomes another one that a VQString holds, and of whole characters.
TEST_F(Attached, LongNamesStayTheirOwn) {
  VQDocument document = NewDocument("long");
  std::string name;
  while (name.size() < 65534) name += "\xC3\xA9";
  for (int i = 0; i < 3; ++i) ASSERT_EQ(document.CreateAttachment(NewFile("a", "1"), Store(name)), VQ_OK);
  VQItemArray items;
  ASSERT_EQ(document.GetAttachments(&items), VQ_OK);
  ASSERT_EQ(items.GetCount(), 3u);
  for (unsigned long i = 0; i < 3; ++i) {
    const std::string present = TextOf(VQAttachment(items[i]).GetAttachmentName());
    const std::string tail = i == 0 ? "\xC3\xA9" : "\xC3\xA9(" + std::to_string(i) + ")";
    EXPECT_TRUE(present.ends_with(tail)) << present.size();
  }
}

// What has lost its attachment does not come to show another one of that name.
TEST_F(Attached, DanglingReferences) {
  VQDocument source = NewWithAttachment("a", "theirs"), target = NewDocument("target");
  ASSERT_EQ(source.DeleteAttachment("a"), VQ_OK);
  EXPECT_EQ(Shown(BodyOf(source)), "a=-;");
  ASSERT_EQ(target.CreateAttachment(NewFile("a", "mine")), VQ_OK);
  ASSERT_EQ(BodyOf(target).Append(BodyOf(source)), VQ_OK);
  EXPECT_EQ(Shown(BodyOf(target)), "a(1)=-;");
  EXPECT_EQ(Contents(target), "a=mine;");
}

using Edit = std::function<VQSTATUS(VQDocument& document, VQRichText& body)>;

// What no rich text shows any more says so from the next save on, and what one shows again too.
TEST_F(Attached, KnowsWhetherATextShowsIt) {
  VQRTHistory history;
  VQRTObject shown;
  VQRTCursor start, end;
  const auto remove = [&](VQDocument&, VQRichText& body) {
    EXPECT_EQ(body.GetAttachment("a", &shown), VQ_OK);
    return body.Delete(&shown);
  };
  const struct {
    const char* title;
    Edit edit;
    bool inRichText;
  } rows[] = {
      {"object deleted", remove, false},
      {"undone before a save",
       [&](VQDocument& document, VQRichText& body) {
         return history.Watch(body) + history.Begin() + remove(document, body) + history.End() + history.Undo();
       },
       true},
      {"undone after a save",
       [&](VQDocument& document, VQRichText& body) {
         return history.Watch(body) + history.Begin() + remove(document, body) + history.End() + document.Save() +
                history.Undo();
       },
       true},
      {"all text replaced", [](VQDocument&, VQRichText& body) { return body.SetValue("other"); }, false},
      {"range deleted",
       [&](VQDocument&, VQRichText& body) {
         return body.GetCursor(&start) + body.GetEndCursor(&end) + body.Delete(&start, &end);
       },
       false},
      {"item deleted", [](VQDocument& document, VQRichText&) { return document.DeleteItem("Body"); }, false},
      {"shown twice, one deleted",
       [&](VQDocument& document, VQRichText& body) { return body.Append(VQRichText(body)) + remove(document, body); },
       true},
      {"another one shown instead",
       [&](VQDocument& document, VQRichText& body) {
         VQAttachment other;
         return document.CreateAttachment(NewFile("b", "2"), &other) + body.GetAttachment("a", &shown) +
                VQRTAttachment(shown).SetAttachment(other);
       },
       false},
      {"a second text shows it",
       [&](VQDocument& document, VQRichText& body) {
         VQRichText more;
         return document.CreateItem("More", &more) + more.Append(VQRichText(body)) + remove(document, body);
       },
       true},
      {"a second text that cannot be read",
       [&](VQDocument& document, VQRichText& body) {
         return document.CreateItem("More", TYPE_COMPOSITE, "\xFF\xFF\xFF", 3) + remove(document, body);
       },
       true},
      {"a word changed", [](VQDocument&, VQRichText& body) { return body.Append("word"); }, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    VQDocument document = NewWithAttachment("a", "1");
    VQRichText body = BodyOf(document);
    ASSERT_EQ(row.edit(document, body), VQ_OK);
    ASSERT_EQ(document.Save(), VQ_OK);
    ASSERT_EQ(document.Close(), VQ_OK);
    ASSERT_EQ(document.Open(), VQ_OK);
    VQAttachment attachment;
    ASSERT_EQ(document.GetAttachment("a", &attachment), VQ_OK);
    EXPECT_EQ(attachment.IsInRichText(), row.inRichText);
  }
}

// A text that stands alone keeps its attachments as long as their slate is open; later it is refused.
TEST_F(Attached, TextsAloneNeedTheSlateOfTheirAttachments) {
  VQDocument source = NewWithAttachment("a", "theirs"), target = NewDocument("target");
  VQRichText alone, copy;
  ASSERT_EQ(alone.Create(), VQ_OK);
  ASSERT_EQ(alone.Append(BodyOf(source)), VQ_OK);
  ASSERT_EQ(BodyOf(target).Append(alone), VQ_OK);
  ASSERT_EQ(source.Close(), VQ_OK);
  ASSERT_EQ(copy.Create(), VQ_OK);
  ASSERT_EQ(copy.Append(alone), VQ_OK);
  for (const VQRichText& lost : {alone, copy}) {
    EXPECT_EQ(ReturnedStatusOf([&] { return BodyOf(target).Append(lost); }), VQERR_ATTACHMENT_UNINITIALIZED);
  }
  EXPECT_EQ(Shown(BodyOf(target)), "a=theirs;");
}

TEST_F(Attached, WhatARichTextShows) {
  VQDocument document = NewWithAttachment("plan.pdf", "12345");
  ASSERT_EQ(document.Close(), VQ_OK);
  ASSERT_EQ(document.Open(), VQ_OK);
  VQRichText body = BodyOf(document);
  VQRTObject object;
  ASSERT_EQ(body.GetAttachment("plan.pdf", &object), VQ_OK);
  VQRTAttachment shown(object);
  EXPECT_EQ(TextOf(shown.GetDisplayText()), "plan.pdf - 5 bytes");
  EXPECT_EQ(TextOf(shown.GetFilename()), "source");
  EXPECT_EQ(TextOf(shown.GetFilepath()), Path("source"));
  EXPECT_EQ(shown.GetHotspotType(), 4);
  VQGraphic graphic;
  EXPECT_EQ(shown.GetGraphic(&graphic), VQWARN_NOT_FOUND);

  VQFontStyle bold;
  ASSERT_EQ(bold.SetAttributes(VQFONT_BOLD), VQ_OK);
  ASSERT_EQ(shown.SetDisplayText("The plan"), VQ_OK);
  ASSERT_EQ(shown.SetDisplayTextFontStyle(bold), VQ_OK);
  const std::string picture =
      Record(SIG_CD_GRAPHIC, std::string(4, '\1')) + Record(SIG_CD_CGMMETA, std::string(9, '\2'));
  ASSERT_EQ(graphic.SetRecords(picture.data(), picture.size()), VQ_OK);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(shown.SetGraphic(graphic), VQ_OK) << "the second takes the first one's place";
  ASSERT_EQ(document.Save(), VQ_OK);
  ASSERT_EQ(document.Close(), VQ_OK);
  ASSERT_EQ(document.Open(), VQ_OK);
  body = BodyOf(document);
  ASSERT_EQ(body.GetAttachment("plan.pdf", &object), VQ_OK);
  shown = object;
  EXPECT_EQ(TextOf(shown.GetDisplayText()), "The plan");
  EXPECT_EQ(shown.GetDisplayTextFontStyle().GetAttributes(), VQFONT_BOLD);
  ASSERT_EQ(shown.GetGraphic(&graphic), VQ_OK);
  EXPECT_EQ(graphic.GetPictureType(), VQRTTYPE_CGM_METAFILE);
  std::string records(graphic.GetSize(), 0);
  ASSERT_EQ(graphic.GetRecords(records.data(), records.size()), VQ_OK);
  EXPECT_EQ(records, picture);
  ASSERT_EQ(body.DeleteAttachment("plan.pdf"), VQ_OK);
  EXPECT_EQ(Shown(body) + Contents(document), "");
}

// A file that the text still shows elsewhere stays when a cell's part goes.
TEST_F(Attached, DeletingInACellLeavesTheRest) {
  VQDocument document = NewWithAttachment("a", "bytes");
  VQRichText body = BodyOf(document);
  VQAttachment file;
  VQRTCursor cursor;
  VQTable table;
  ASSERT_EQ(document.GetAttachment("a", &file), VQ_OK);
  ASSERT_EQ(body.Append("x"), VQ_OK);
  ASSERT_EQ(body.GetEndCursor(&cursor), VQ_OK);
  ASSERT_EQ(body.CreateTable(1, 1, &cursor, &table), VQ_OK);
  VQTableCell cell = table(0, 0);
  ASSERT_EQ(cell.GetCursor(&cursor), VQ_OK);
  ASSERT_EQ(cell.CreateAttachment(file, &cursor), VQ_OK);
  ASSERT_EQ(cell.DeleteAttachment("a"), VQ_OK);
  EXPECT_EQ(cell.DeleteAttachment("a"), VQWARN_NOT_FOUND);
  EXPECT_EQ(Shown(body) + Contents(document), "a=bytes;a=bytes;");
  ASSERT_EQ(body.DeleteAttachment("a"), VQ_OK);
  EXPECT_EQ(Shown(body) + Contents(document), "");
}

// A text that does not fit leaves all runs; one that does takes the place of all.
TEST_F(Attached, DisplayTextsOfSeveralRuns) {
  VQRichText text = RichText(Record(SIG_CD_HOTSPOTBEGIN, Bytes({4, 0, 0, 0, 0, 0, 2, 0, 'a', 0})) + Text("one") +
                             Unknown("u") + Text("two") + HotspotEnd());
  VQRTObject object;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_ATTACHMENT, &object), VQ_OK);
  VQRTAttachment shown(object);
  const std::string records = Written(text);
  EXPECT_TRUE(VQIsError(shown.SetDisplayText(Store(std::string(60000, 'x')))));
  EXPECT_EQ(Written(text), records);
  EXPECT_EQ(TextOf(shown.GetDisplayText()), "onetwo");
  EXPECT_EQ(shown.SetDisplayText("x"), VQ_OK);
  EXPECT_EQ(TextOf(shown.GetDisplayText()), "x");
}

TEST_F(Attached, DataOfEmbeddedObjects) {
  VQDocument document = NewWithAttachment("a", "1");
  const VQRichText body = BodyOf(document);
  VQRTObject object;
  ASSERT_EQ(body.GetAttachment("a", &object), VQ_OK);
  VQRTEmbeddedObject embedded(object);
  char bytes[] = "bcd\0e";
  const struct {
    unsigned short offset, length;
    const char* data;
    VQSTATUS status;
    std::string after;
  } rows[] = {
      {0, 5, bytes, VQ_OK, std::string("bcd\0e", 5)},      {3, 2, "xy", VQ_OK, "bcdxy"},
      {6, 1, "z", VQERR_INVALID_PARAMETER, "bcdxy"},       {0, 3, nullptr, VQERR_INVALID_PARAMETER, "bcdxy"},
      {5, 65000, bytes, VQERR_INVALID_PARAMETER, "bcdxy"}, {1, 0, nullptr, VQ_OK, "b"},
  };
  std::string large(65000, 'l');
  for (const auto& row : rows) {
    char* data = row.length == 65000 ? large.data() : const_cast<char*>(row.data);
    EXPECT_EQ(embedded.SetData(row.offset, row.length, data), row.status);
    unsigned short length = 0;
    ASSERT_EQ(embedded.GetData(&length, &data), VQ_OK);
    EXPECT_EQ(std::string(data, length), row.after);
  }
  ASSERT_EQ(embedded.SetHotspotFlags(0x12345678), VQ_OK);
  EXPECT_EQ(embedded.GetHotspotFlags(), 0x12345678u);
  EXPECT_EQ(StatusOf([&] { VQRTAttachment wrong{VQRTObject(body.GetRichTextBody()->GetTop())}; }),
            VQERR_CONVERSION_FAILED);
}

// Begin records that end early, or claim more data than there is.
TEST_F(Attached, HostileBeginRecords) {
  const std::string tail = Text("t") + HotspotEnd();
  const struct {
    const char* title;
    std::string begin;
    VQSTATUS status;
    std::string name;
  } rows[] = {
      {"no data", Record(SIG_CD_HOTSPOTBEGIN, Bytes({4, 0, 0, 0, 0, 0, 0, 0})), VQ_OK, ""},
      {"no NUL", Record(SIG_CD_HOTSPOTBEGIN, Bytes({4, 0, 0, 0, 0, 0, 2, 0, 'a', 'b'})), VQ_OK, "ab"},
      {"more than there is", Record(SIG_CD_HOTSPOTBEGIN, Bytes({4, 0, 0, 0, 0, 0, 3, 0, 'a', 'b'})), VQERR_RT_INVALID,
       ""},
  };
  for (const auto& row : rows) {
    VQRichText text = RichText(row.begin + tail);
    VQRTObject object;
    ASSERT_EQ(text.FindFirst(VQRTTYPE_ATTACHMENT, &object), VQ_OK) << row.title;
    const VQRTAttachment shown(object);
    VQString name;
    EXPECT_EQ(StatusOf([&] { name = shown.GetAttachmentName(); }), row.status) << row.title;
    EXPECT_EQ(TextOf(name), row.name) << row.title;
    VQAttachment none;
    EXPECT_EQ(shown.GetAttachment(&none), VQWARN_NOT_FOUND) << row.title;
    VQDocument document = NewDocument("x");
    EXPECT_EQ(BodyOf(document).Append(text), VQ_OK) << row.title;
    EXPECT_EQ(document.Save(), VQ_OK) << row.title;
  }
}

}  // namespace
