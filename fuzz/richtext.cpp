// A rich text of any bytes: it parses or gives a status; after an edit it is written back and reads the same again.
#include "fuzz/support.h"

namespace {

using fuzz::Claim;

std::string TextOf(const VQString& text) { return {reinterpret_cast<const char*>(text.GetBuf()), text.GetBufLength()}; }

// Whatever the cells are like: a status, and counts that hold.
void EditTable(VQRichText& body, VQRTCursor* cursor, std::uint8_t what) {
  VQRTObject found;
  if (body.FindFirst(VQRTTYPE_TABLE, &found) != VQ_OK) {
    body.CreateTable(1 + (what & 3), 1 + (what >> 6), cursor);
    return;
  }
  VQTable table(found);
  table.SetUnits(VQUNITS_TWIPS);
  const unsigned long rows = table.GetRowCount(), columns = table.GetColumnCount(), at = what >> 6;
  VQSTATUS status = VQ_OK;
  switch (what >> 3 & 7) {
    case 0:
      Claim(table.InsertRows(at, 2) != VQ_OK || table.GetRowCount() == rows + 2, "rows came in");
      break;
    case 1:
      Claim(table.DeleteRows(at, 1) != VQ_OK || table.GetRowCount() == rows - 1, "a row went");
      break;
    case 2:
      Claim(table.InsertColumns(at, 1) != VQ_OK || table.GetColumnCount() == columns + 1, "a column came in");
      break;
    case 3:
      Claim(table.DeleteColumns(at, 1) != VQ_OK || table.GetColumnCount() == columns - 1, "a column went");
      break;
    case 4:
      status = table.SetColumnWidth(at, 1000);
      Claim(status != VQ_OK || table.GetColumnWidth(at) == 1000, "the width is set");
      break;
    case 5:
      table.SetColumnSpacing(at * 30);
      break;
    case 6:
      table.Outline(VQTABLEBORDERSTYLE_4);
      break;
    default:
      table(at, 0).Append("text");
  }
}

void Edit(VQRichText& body, VQRTCursor* cursor, std::uint8_t what) {
  for (int i = 0; i < (what >> 4); ++i) {
    if (!cursor->IsAtEnd()) ++*cursor;
  }
  switch (what & 7) {
    case 0:
      body.Insert("a word", cursor, 0);
      break;
    case 1:
      body.Insert("two\nlines", cursor);
      break;
    case 2:
      body.Delete(cursor, 3);
      break;
    case 3:
      if (cursor->GotoNext("a") == VQ_OK) body.Delete(cursor, 1);
      break;
    case 4:
      body.StartNewParagraph(cursor);
      break;
    case 5:
      body.MergeNextParagraph(cursor);
      break;
    case 6:
      EditTable(body, cursor, static_cast<std::uint8_t>(what * 29));
      break;
    default:
      cursor->GotoNext(VQRTTYPE_ELEMENT);
  }
}

// What the stored items give when they are read afresh.
void CheckReadBack(VQDocument& document, const VQString& written) {
  VQRichText again;
  document.RefreshObjectFromSlateHandle();
  Claim(document.GetItem("Body", &again) == VQ_OK, "the item is there");
  VQString text;
  if (again.GetText(&text) == VQ_OK) Claim(TextOf(text) == TextOf(written), "what was written reads the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VQDocument& document = fuzz::World::Get().document();
  if (size < 4 || size > 32000) return 0;
  const std::size_t edits = data[0] % 4;
  const VQSTATUS made = document.CreateItem("Body", TYPE_COMPOSITE, data + 4, size - 4, 0, VQITEMOPTION_REPLACE);
  Claim(made == VQ_OK, "an item takes any bytes");
  try {
    VQRichText body;
    if (document.GetItem("Body", &body) != VQ_OK) return 0;
    VQRTCursor cursor;
    if (body.GetCursor(&cursor) != VQ_OK) return 0;
    for (std::size_t i = 0; i < edits; ++i) Edit(body, &cursor, data[1 + i]);
    VQString text;
    if (body.GetText(&text) != VQ_OK || body.Update() != VQ_OK) return 0;
    body = VQRichText();
    cursor = VQRTCursor();
    CheckReadBack(document, text);
  } catch (VQSTATUS) {
    // Operations without a status result throw theirs.
  }
  return 0;
}
