// Operations of containers: by the handle of a rich text and by that of its top container, and what all of them refuse.
#include "tests/vq/support/records.h"
#include "vq/richobjects/vqattach.h"
#include "vq/richtext/font.h"
#include "vq/richtext/vqhotspot.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrttabl.h"

namespace {

using namespace vqtest;

class Containers : public EngineFixture {};

VQFontStyle Large() {
  VQFontStyle style;
  EXPECT_EQ(style.SetPointSize(24), VQ_OK);
  return style;
}
VQParagraphStyle Centered() {
  VQParagraphStyle style;
  EXPECT_EQ(style.SetAlignment(2), VQ_OK);
  return style;
}

// One operation on either handle; a cursor is what it is told, the second one stands a character behind it.
struct Operation {
  const char* What;
  VQSTATUS (*OnText)(VQRichText&, VQRTCursor&, VQRTCursor&);
  VQSTATUS (*OnContainer)(VQRTContainer&, VQRTCursor&, VQRTCursor&);
  VQSTATUS Status;
  const char* After;  // of "ab", a paragraph, "cd" with the cursor behind the "a"
  bool AtCursor;      // refuses a cursor of another text
};

constexpr bool kAnywhere = false;

template <typename Function>
Operation Op(const char* what, Function, VQSTATUS status, const char* after, bool atCursor = true) {
  return {
      what,
      [](VQRichText& on, VQRTCursor& at, VQRTCursor& to) { return static_cast<VQSTATUS>(Function{}(on, at, to)); },
      [](VQRTContainer& on, VQRTCursor& at, VQRTCursor& to) { return static_cast<VQSTATUS>(Function{}(on, at, to)); },
      status,
      after,
      atCursor};
}

// What was found or selected, put at the end.
template <typename Container, typename Part>
VQSTATUS Added(Container& on, VQSTATUS status, const Part& part) {
  return status == VQ_OK ? on.Append(part) : status;
}

std::vector<Operation> TextOperations() {
  return {
      Op(
          "append a string", [](auto& on, auto&, auto&) { return on.Append("e\nf"); }, VQ_OK, "ab\ncde\nf", kAnywhere),
      Op(
          "append a text", [](auto& on, auto&, auto&) { return on.Append(RichText(Reference(1) + Text("e"))); }, VQ_OK,
          "ab\ncde", kAnywhere),
      Op(
          "append an object", [](auto& on, auto&, auto&) { return on.Append(VQStylizedText("e")); }, VQ_OK, "ab\ncde",
          kAnywhere),
      Op(
          "<<", [](auto& on, auto&, auto&) { return on << VQString("e"), VQ_OK; }, VQ_OK, "ab\ncde", kAnywhere),
      Op(
          "<< a text", [](auto& on, auto&, auto&) { return on << RichText(Text("e")), VQ_OK; }, VQ_OK, "ab\ncde",
          kAnywhere),
      Op(
          "<< an object", [](auto& on, auto&, auto&) { return on << VQStylizedText("e"), VQ_OK; }, VQ_OK, "ab\ncde",
          kAnywhere),
      Op(
          "set", [](auto& on, auto&, auto&) { return on.SetValue("e\nf"); }, VQ_OK, "e\nf", kAnywhere),
      Op(
          "insert a string", [](auto& on, auto& at, auto&) { return on.Insert("e", &at); }, VQ_OK, "aeb\ncd"),
      Op(
          "insert a text", [](auto& on, auto& at, auto&) { return on.Insert(RichText(Text("e")), &at); }, VQ_OK,
          "aeb\ncd"),
      Op(
          "insert an object", [](auto& on, auto& at, auto&) { return on.Insert(VQStylizedText("e"), &at); }, VQ_OK,
          "aeb\ncd"),
      Op(
          "delete a range", [](auto& on, auto& at, auto& to) { return on.Delete(&at, &to); }, VQ_OK, "a\ncd"),
      Op(
          "delete a count", [](auto& on, auto& at, auto&) { return on.Delete(&at, 2UL); }, VQ_OK, "acd"),
      Op(
          "delete an object",
          [](auto& on, auto&, auto&) {
            VQRTObject run;
            const VQSTATUS status = on.FindFirst(VQRTTYPE_STYLIZED_TEXT, &run);
            return status == VQ_OK ? on.Delete(&run) : status;
          },
          VQ_OK, "\ncd", kAnywhere),
      Op(
          "start a paragraph", [](auto& on, auto& at, auto&) { return on.StartNewParagraph(&at); }, VQ_OK, "a\nb\ncd"),
      Op(
          "merge with the next", [](auto& on, auto& at, auto&) { return on.MergeNextParagraph(&at); }, VQ_OK, "abcd"),
      Op(
          "merge with the one before", [](auto& on, auto& at, auto&) { return on.MergePreviousParagraph(&at); },
          VQWARN_NOT_FOUND, "ab\ncd"),
      Op(
          "merge a range",
          [](auto& on, auto& at, auto&) {
            VQRTCursor end = at + 3;
            return on.MergeParagraphs(&at, &end);
          },
          VQ_OK, "abcd"),
  };
}

std::vector<Operation> OtherOperations() {
  return {
      Op(
          "select a range",
          [](auto& on, auto& at, auto& to) {
            VQRichText part;
            return Added(on, on.GetRichText(at, to, &part), part);
          },
          VQ_OK, "ab\ncdb"),
      Op(
          "select a count",
          [](auto& on, auto& at, auto&) {
            VQRichText part;
            return Added(on, on.GetRichText(at, 3UL, &part), part);
          },
          VQ_OK, "ab\ncdb\nc"),
      Op(
          "select by type",
          [](auto& on, auto& at, auto&) {
            VQRichText part;
            return Added(on, on.GetRichText(at, VQRTTYPE_STYLIZED_TEXT, &part), part);
          },
          VQ_OK, "ab\ncdab"),
      Op(
          "select an object",
          [](auto& on, auto&, auto&) {
            VQRichText part;
            VQRTObject run;
            const VQSTATUS status = on.FindLast(VQRTTYPE_STYLIZED_TEXT, &run);
            return status == VQ_OK ? Added(on, on.GetRichText(run, &part), part) : status;
          },
          VQ_OK, "ab\ncdcd", kAnywhere),
      Op(
          "find the next and the one before",
          [](auto& on, auto&, auto&) {
            VQRTObject first, found;
            VQSTATUS status = on.FindFirst(VQRTTYPE_STYLIZED_TEXT, &first);
            if (status == VQ_OK) status = on.FindNext(first, VQRTTYPE_STYLIZED_TEXT, &found);
            if (status == VQ_OK) status = on.FindPrevious(found, VQRTTYPE_STYLIZED_TEXT, &found);
            return status == VQ_OK && found != first ? VQERR_CORRUPTED : status;
          },
          VQ_OK, "ab\ncd", kAnywhere),
      Op(
          "a font", [](auto& on, auto& at, auto& to) { return on.SetFontStyle(at, to, Large()); }, VQ_OK, "ab\ncd"),
      Op(
          "a style", [](auto& on, auto& at, auto&) { return on.SetParagraphStyle(at, Centered()); }, VQ_OK, "ab\ncd"),
      Op(
          "a style on a range", [](auto& on, auto& at, auto& to) { return on.SetParagraphStyle(at, to, Centered()); },
          VQ_OK, "ab\ncd"),
      Op(
          "find a style",
          [](auto& on, auto& at, auto&) {
            VQParagraphStyle style;
            return on.FindParagraphStyle(at, &style);
          },
          VQ_OK, "ab\ncd"),
      Op(
          "find an object's style",
          [](auto& on, auto& at, auto&) {
            VQParagraphStyle style;
            VQRTObject object;
            const VQSTATUS status = at.GetRTObject(&object);
            return status == VQ_OK ? on.FindParagraphStyle(object, &style) : status;
          },
          VQ_OK, "ab\ncd"),
      Op(
          "a table", [](auto& on, auto& at, auto&) { return on.CreateTable(1, 1, &at); }, VQ_OK, "a\n\t\n\nb\ncd"),
      Op(
          "a field", [](auto& on, auto& at, auto&) { return on.CreateFormField("F", VQRTTYPE_TEXT_FIELD, &at); }, VQ_OK,
          "ab\ncd"),
      Op(
          "no field", [](auto& on, auto&, auto&) { return on.DeleteFormField("F"); }, VQWARN_NOT_FOUND, "ab\ncd",
          kAnywhere),
      Op(
          "no attachment", [](auto& on, auto&, auto&) { return on.DeleteAttachment("F"); }, VQWARN_NOT_FOUND, "ab\ncd",
          kAnywhere),
      Op(
          "a file of no slate", [](auto& on, auto& at, auto&) { return on.CreateAttachment("F", &at); },
          VQERR_ATTACHMENT_NO_SLATE, "ab\ncd", kAnywhere),
      Op(
          "a whole selection",
          [](auto& on, auto& at, auto& to) {
            VQRTSelection selection;
            return on.IsSelectionValid(at, to, &selection) ? VQSTATUS{VQ_OK} : VQSTATUS{VQERR_RT_SELECTION_INVALID};
          },
          VQ_OK, "ab\ncd", kAnywhere),
      Op(
          "no hotspot", [](auto& on, auto& at, auto& to) { return on.ClearHotspotRange(at, to); }, VQWARN_NOT_FOUND,
          "ab\ncd"),
  };
}

std::vector<Operation> Operations() {
  std::vector<Operation> all = TextOperations();
  for (const Operation& each : OtherOperations()) all.push_back(each);
  return all;
}

const std::string kSample = Reference(1) + Text("ab") + Paragraph() + Reference(1) + Text("cd");

TEST_F(Containers, DoWhatTheirRichTextsDo) {
  for (const Operation& row : Operations()) {
    SCOPED_TRACE(row.What);
    VQRichText byText = RichText(kSample), byContainer = RichText(kSample);
    VQRTCursor at = At(byText, 1), to = At(byText, 2);
    EXPECT_EQ(row.OnText(byText, at, to), row.Status);
    EXPECT_EQ(Plain(byText), row.After);
    VQRTContainer top;
    ASSERT_EQ(byContainer.GetTopContainer(&top), VQ_OK);
    at = At(byContainer, 1), to = At(byContainer, 2);
    EXPECT_EQ(row.OnContainer(top, at, to), row.Status);
    EXPECT_EQ(Written(byContainer), Written(byText));
    EXPECT_EQ(byText.IsDirty(), Written(byText) != kSample);
  }
}

TEST_F(Containers, RefuseNullAndClosedHandles) {
  VQRichText text = RichText(kSample + Hotspot(1) + Text("p") + HotspotEnd());
  VQRTObject popup;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_TEXT_POPUP, &popup), VQ_OK);
  VQRTContainer closed(popup), none;
  ASSERT_EQ(popup.GetRTObjectBody()->Delete(), VQ_OK);
  VQRichText empty;
  const std::string before = Written(text);
  for (const Operation& row : Operations()) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      VQRTCursor at = At(text, 1), to = At(text, 2);
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(StatusOf([&] { return row.OnText(empty, at, to); }), VQERR_OBJECT_NOT_INITIALIZED);
      EXPECT_EQ(StatusOf([&] { return row.OnContainer(none, at, to); }), VQERR_OBJECT_NOT_INITIALIZED);
      EXPECT_EQ(StatusOf([&] { return row.OnContainer(closed, at, to); }), VQERR_OBJECT_CLOSED);
      VQSetThrowAllErrors(0);
    }
  }
  EXPECT_EQ(Written(text), before);
}

// Cursors that stand elsewhere, or nowhere: neither text is touched.
TEST_F(Containers, RefuseCursorsOfOthers) {
  for (const Operation& row : Operations()) {
    if (!row.AtCursor) continue;
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(kSample), other = RichText(kSample);
    for (const int throws : {0, 1}) {
      VQRTCursor at = At(other, 1), to = At(other, 2), none;
      VQSetThrowAllErrors(throws);
      EXPECT_TRUE(VQIsError(StatusOf([&] { return row.OnText(text, at, to); })));
      EXPECT_TRUE(VQIsError(StatusOf([&] { return row.OnText(text, none, none); })));
      VQSetThrowAllErrors(0);
      EXPECT_EQ(Written(text), kSample);
      EXPECT_EQ(Written(other), kSample);
      EXPECT_FALSE(text.IsDirty());
      EXPECT_FALSE(other.IsDirty());
    }
  }
}

TEST_F(Containers, RefuseObjectsOfOthers) {
  using Run = VQSTATUS (*)(VQRichText & text, VQRTObject & object);
  const struct {
    const char* What;
    Run Edit;
    VQSTATUS Status;
  } rows[] = {
      {"delete", [](VQRichText& t, VQRTObject& o) { return t.Delete(&o); }, VQERR_RT_NOT_MEMBER},
      {"clear", [](VQRichText& t, VQRTObject& o) { return t.ClearHotspot(&o); }, VQERR_RT_NOT_MEMBER},
      {"select",
       [](VQRichText& t, VQRTObject& o) {
         VQRichText part;
         return t.GetRichText(o, &part);
       },
       VQERR_RT_NOT_MEMBER},
      {"the next",
       [](VQRichText& t, VQRTObject& o) {
         VQRTObject found;
         return t.FindNext(o, VQRTTYPE_OBJECT, &found);
       },
       VQERR_RT_NOT_MEMBER},
      {"the one before",
       [](VQRichText& t, VQRTObject& o) {
         VQRTObject found;
         return t.FindPrevious(o, VQRTTYPE_OBJECT, &found);
       },
       VQERR_RT_NOT_MEMBER},
      {"a style",
       [](VQRichText& t, VQRTObject& o) {
         VQParagraphStyle style;
         return t.FindParagraphStyle(o, &style);
       },
       VQERR_RT_NOT_MEMBER},
      {"the top itself",
       [](VQRichText& t, VQRTObject&) {
         VQRTContainer top;
         const VQSTATUS status = t.GetTopContainer(&top);
         return status == VQ_OK ? t.Delete(&top) : status;
       },
       VQERR_RT_NOT_MEMBER},
      {"a text as an object",
       [](VQRichText& t, VQRTObject& o) {
         VQRTObject top;
         const VQSTATUS status = o.GetParentContainer(VQRTTYPE_RICH_TEXT, &top);
         return status == VQ_OK ? t.Append(top) : status;
       },
       VQERR_CANT_INSERT_TYPE},
      {"no object", [](VQRichText& t, VQRTObject&) { return t.Append(VQRTObject()); }, VQERR_UNINITIALIZED_ARGUMENT},
      {"a character",
       [](VQRichText& t, VQRTObject&) {
         const VQStylizedText run("x");
         return t.Append(VQRTObject(run.GetStylizedTextBody(), 1));
       },
       VQERR_RT_CHARACTERS},
      {"a type that is none", [](VQRichText& t, VQRTObject& o) { return t.FindFirst(static_cast<VQRTTYPE>(70), &o); },
       VQERR_OUT_OF_RANGE},
      {"nowhere to put it", [](VQRichText& t, VQRTObject&) { return t.FindFirst(VQRTTYPE_OBJECT, nullptr); },
       VQERR_INVALID_PARAMETER},
  };
  const std::string records = kSample + Hotspot(1) + Text("p") + HotspotEnd();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.What);
    for (const int throws : {0, 1}) {
      VQRichText text = RichText(records), other = RichText(records);
      VQRTObject popup;
      ASSERT_EQ(other.FindFirst(VQRTTYPE_TEXT_POPUP, &popup), VQ_OK);
      VQSetThrowAllErrors(throws);
      EXPECT_EQ(ReturnedStatusOf([&] { return row.Edit(text, popup); }), row.Status);
      VQSetThrowAllErrors(0);
      EXPECT_EQ(Written(text) + Written(other), records + records);
      EXPECT_FALSE(text.IsDirty() || other.IsDirty());
    }
  }
}

// A cell's handle edits the cell alone.
TEST_F(Containers, CellsEditThemselves) {
  const std::string records = Reference(1) + Text("a") + TableBegin() + Cell(0, 0) + Reference(1) + Text("c") +
                              Cell(0, 1) + Reference(1) + Text("d") + TableEnd() + Text("z");
  for (const Operation& row : Operations()) {
    if (!row.AtCursor) continue;
    SCOPED_TRACE(row.What);
    VQRichText text = RichText(records);
    VQRTObject object;
    ASSERT_EQ(text.FindFirst(VQRTTYPE_TABLE_CELL, &object), VQ_OK);
    VQRTContainer cell(object);
    VQRTCursor at = At(text, 0), to = At(text, 1);
    const VQSTATUS outside = row.OnContainer(cell, at, to);
    const bool paragraphs = std::string(row.What).find("style") != std::string::npos;  // of the whole text
    EXPECT_EQ(VQIsError(outside), !paragraphs) << outside;
    if (!paragraphs) {
      EXPECT_EQ(Written(text), records);
    }
  }
  VQRichText text = RichText(records);
  VQRTObject object;
  ASSERT_EQ(text.FindFirst(VQRTTYPE_TABLE_CELL, &object), VQ_OK);
  VQRTContainer cell(object);
  VQRTCursor start, end;
  ASSERT_EQ(cell.Append("e\nf"), VQ_OK);
  ASSERT_EQ(cell.GetCursor(&start), VQ_OK);
  ASSERT_EQ(cell.GetEndCursor(&end), VQ_OK);
  EXPECT_EQ(end - start, 4);
  EXPECT_EQ(Plain(text), "ace\nf\td\t\nz");
  EXPECT_EQ(cell.MergePreviousParagraph(&end), VQ_OK);
  EXPECT_EQ(cell.Delete(&start, &end), VQ_OK);
  EXPECT_EQ(Plain(text), "a\td\t\nz");
  EXPECT_EQ(cell.SetValue("new"), VQ_OK);
  EXPECT_EQ(cell.CanInsertType(VQRTTYPE_TABLE), 0);
  EXPECT_EQ(Plain(text), "anew\td\t\nz");
  EXPECT_EQ(StatusOf([] { return VQRTContainer().CanInsertType(VQRTTYPE_TABLE) > 0; }), VQERR_OBJECT_NOT_INITIALIZED);
}

}  // namespace
