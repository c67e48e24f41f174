// Views in a scratch database, from stored bytes and back.
#ifndef QUILLON_TESTS_VQ_SUPPORT_VIEWS_FIXTURE_H
#define QUILLON_TESTS_VQ_SUPPORT_VIEWS_FIXTURE_H

#include "tests/vq/support/records.h"
#include "tests/vq/support/store_fixture.h"
#include "vq/views/viewbody.h"

namespace vqtest {

struct StoredItem {
  std::string Name;
  unsigned short Type;
  std::string Value;  // behind the type word
};

inline std::string Word(std::size_t value) {
  return Bytes({static_cast<int>(value & 255), static_cast<int>(value >> 8)});
}

// One column's record and extension, with bits and spare fields that nobody knows, and its variable data.
struct ColumnBytes {
  ColumnBytes(const std::string& name, const std::string& title) : Data(name + title) {
    Record = Word(0x4356) + Word(0) + Word(name.size()) + Word(title.size()) + Word(0) + Word(0) + Word(80) +
             Bytes({1, 0, 0, 10}) + Word(0x1000) + Bytes({1, 2, 3, 4, 5, 6, 7, 8}) + Word(2) + Word(0x0234);
    Extension =
        Word(0x4357) + Bytes({1, 1, 0, 8}) + std::string(16, '\0') + Word(0) + Word(0xBEEF) + std::string(20, '\x5A');
  }
  std::string Record, Data, Extension;
};

inline std::string FormatBytes(const std::vector<ColumnBytes>& columns) {
  std::string value = Bytes({1, 0}) + Word(columns.size()) + Word(7) + Word(0x8008) + Word(0xCAFE);
  std::string data, extensions;
  for (const ColumnBytes& column : columns) {
    value += column.Record;
    data += column.Data;
    extensions += column.Extension;
  }
  return value + data + Word(38) + Word(1) + Word(0x1111) + Bytes({1, 1, 0, 8, 1, 0, 0, 10, 1, 1, 14, 10}) +
         Word(0x2222) + Word(1) + Word(0x2BAD) + Bytes({2, 0}) + Word(1) + Bytes({1, 0x40}) + std::string(8, '\x33') +
         extensions;
}

class ViewsFixture : public StoreFixture {
 protected:
  // A view of these items, stored, and opened for its design.
  VQViewFolder Stored(const std::vector<StoredItem>& items, VQSTATUS* status = nullptr) {
    VQSlate slate;
    EXPECT_EQ(Db.CreateSlate(0xE0008, &slate), VQ_OK);
    SetText(slate, "$TITLE", "Stored");
    for (const StoredItem& item : items) {
      EXPECT_EQ(
          slate.CreateItem(Store(item.Name), item.Type, item.Value.data(), item.Value.size(), 0, VQITEMOPTION_REPLACE),
          VQ_OK);
    }
    EXPECT_EQ(slate.Save(), VQ_OK);
    VQViewFolder view;
    EXPECT_EQ(Db.GetViewFolder(slate.GetSlateID(), &view), VQ_OK);
    const VQSTATUS opened = ReturnedStatusOf([&] { return view.Open(VQVFOPENFLAGS_DESIGN_ONLY); });
    if (status != nullptr) {
      *status = opened;
    } else {
      EXPECT_EQ(opened, VQ_OK);
    }
    return view;
  }

  VQViewFolder NewView(const std::string& name) {
    VQViewFolder view;
    EXPECT_EQ(Db.CreateSlate(0xE0008, &view), VQ_OK);
    EXPECT_EQ(view.SetName(Store(name)), VQ_OK);
    return view;
  }

  VQViewFolder Reopened(const VQViewFolder& view, unsigned long flags = VQVFOPENFLAGS_DESIGN_ONLY) {
    VQViewFolder again;
    EXPECT_EQ(Db.GetViewFolder(view.GetSlateID(), &again), VQ_OK);
    EXPECT_EQ(again.Open(flags), VQ_OK);
    return again;
  }

  // What the file has, without the type word; "-" for no item.
  std::string StoredValue(const VQSlate& slate, const std::string& name) { return ReadStored(slate, name, nullptr); }
  int StoredFlags(const VQSlate& slate, const std::string& name) {
    int flags = -1;
    ReadStored(slate, name, &flags);
    return flags;
  }
  std::string StoredText(const VQSlate& slate, const std::string& name) {
    VQSlate other(Db.GetDatabaseBody(), slate.GetSlateID());
    EXPECT_EQ(other.Open(), VQ_OK);
    return TextAt(other, name);
  }

  // Names that the stored selection carries for its rows.
  std::string SummaryNames(const VQSlate& view) {
    const std::string code = StoredValue(view, "$Formula");
    ENGHANDLE list = 0;
    std::uint16_t size = 0;
    EXPECT_EQ(EngFormulaGetNames(code.data(), static_cast<std::uint32_t>(code.size()), ENG_FORMULA_NAMES_SUMMARY, &list,
                                 &size),
              ENG_OK);
    const auto* value = static_cast<const unsigned char*>(EngMemLock(list));
    VQText names;
    names = VQText(new VQTextBody(TYPE_TEXT_LIST, value + 2, size - 2));
    EngMemUnlock(list);
    EngMemFree(list);
    VQString joined;
    names.GetText(&joined, "|");
    return TextOf(joined);
  }

 private:
  std::string ReadStored(const VQSlate& slate, const std::string& name, int* flags) {
    VQSlate other(Db.GetDatabaseBody(), slate.GetSlateID());
    EXPECT_EQ(other.Open(), VQ_OK);
    VQItem item;
    if (other.GetItem(Store(name), &item) != VQ_OK) return "-";
    if (flags != nullptr) *flags = item.GetFlags();
    std::string value(item.GetValueSize() - 2, '\0');
    return value.empty() || item.Read(0, value.size(), value.data()) == VQ_OK ? value : "unreadable";
  }
};

}  // namespace vqtest

#endif
