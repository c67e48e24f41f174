// A database with a view whose design is written as a client's would be, and verbs to read its rows.
#ifndef QUILLON_TESTS_QCORE_INDEX_FIXTURE_H
#define QUILLON_TESTS_QCORE_INDEX_FIXTURE_H

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "qcore/store/wire.h"
#include "tests/qcore/store_fixture.h"

namespace qtest {

using Span = std::span<const std::uint8_t>;

struct TestColumn {
  std::string name;
  std::uint16_t flags1 = 0;  // 1 sorted, 2 category, 4 descending, 0x4000 and 0x8000 without case and accents
  std::uint16_t flags2 = 0;  // 0x3C totals, 0x100 separate
  std::string formula = {};  // compiled where there is one
};

inline void Put16(std::string* bytes, unsigned value) {
  bytes->push_back(static_cast<char>(value));
  bytes->push_back(static_cast<char>(value >> 8));
}

inline std::string Compiled(const std::string& text) {
  ENGHANDLE code = 0;
  std::uint16_t length = 0;
  ENGFORMULAERROR error{};
  EXPECT_EQ(EngFormulaCompile(Store(text), Length(text), &code, &length, &error), ENG_OK) << text;
  const std::string bytes(static_cast<const char*>(EngMemLock(code)), length);
  EXPECT_EQ(EngMemUnlock(code), ENG_OK);
  EXPECT_EQ(EngFormulaRelease(code), ENG_OK);
  return bytes;
}

inline std::string ViewFormat(const std::vector<TestColumn>& columns, unsigned table_flags) {
  std::string records;
  std::string data;
  for (const TestColumn& column : columns) {
    const std::string code = column.formula.empty() ? std::string() : Compiled(column.formula);
    for (const unsigned word : {0x4356u, unsigned{column.flags1}, unsigned{Length(column.name)}, 0u,
                                unsigned{Length(code)}, 0u, 80u, 1u, 0u, unsigned{column.flags2}}) {
      Put16(&records, word);
    }
    records.append(12, '\0');
    data += column.name + code;
  }
  std::string bytes = {1, 0};
  for (const unsigned word : {static_cast<unsigned>(columns.size()), 0u, table_flags, 0u}) Put16(&bytes, word);
  return bytes + records + data;
}

inline std::string Collation(const std::vector<TestColumn>& columns, std::uint8_t flags = 0) {
  std::string descriptors;
  std::string names;
  unsigned items = 0;
  for (const TestColumn& column : columns) {
    if ((column.flags1 & 1) == 0) continue;
    ++items;
    const unsigned sort = (column.flags1 & 4u ? 1u : 0u) | (column.flags1 & 0x4000u ? 2u : 0u) |
                          (column.flags1 & 0x8000u ? 4u : 0u) | (column.flags2 & 0x100u ? 8u : 0u);
    descriptors += {static_cast<char>(sort), 0x66, static_cast<char>(column.flags1 & 2 ? 7 : 0)};
    Put16(&descriptors, static_cast<unsigned>(names.size()));
    Put16(&descriptors, Length(column.name));
    names += column.name;
  }
  std::string bytes;
  Put16(&bytes, static_cast<unsigned>(6 + descriptors.size() + names.size()));
  Put16(&bytes, items);
  return bytes + static_cast<char>(flags) + '\x44' + descriptors + names;
}

// A collection, closed with the scope.
class OpenCollection {
 public:
  explicit OpenCollection(ENGHANDLE db, std::uint32_t view, std::uint16_t flags = 0, ENGHANDLE unread = 0) {
    EXPECT_EQ(EngCollectionOpen(db, db, view, flags, unread, &handle_, nullptr, nullptr, nullptr, nullptr), ENG_OK);
  }
  ~OpenCollection() {
    if (handle_ != 0) {
      EXPECT_EQ(EngCollectionClose(handle_), ENG_OK);
    }
  }
  OpenCollection(const OpenCollection&) = delete;
  OpenCollection& operator=(const OpenCollection&) = delete;
  ENGHANDLE get() const { return handle_; }

 private:
  ENGHANDLE handle_ = 0;
};

inline std::string Show(const COLLECTIONPOSITION& position) {
  std::string text;
  for (unsigned level = 0; level <= position.Level; ++level) {
    text += (level == 0 ? "" : ".") + std::to_string(position.Tumbler[level]);
  }
  return text;
}

inline COLLECTIONPOSITION At(const std::vector<std::uint32_t>& ordinals) {
  COLLECTIONPOSITION position{};
  position.Level = static_cast<std::uint16_t>(ordinals.size() - 1);
  position.MaxLevel = 31;
  std::copy(ordinals.begin(), ordinals.end(), position.Tumbler);
  return position;
}

inline std::string ShowValue(Span value) {
  const std::uint16_t type = value.size() < 2 ? std::uint16_t{0} : qcore::LoadLittle<std::uint16_t>(value.data());
  if (type == 0) return "-";
  if (type == 0x0300) {
    double number = 0;
    std::memcpy(&number, value.data() + 2, sizeof number);
    return std::to_string(number).substr(0, std::to_string(number).find('.') + 2);
  }
  std::string text(reinterpret_cast<const char*>(value.data()) + 2, value.size() - 2);
  if (type != 0x0500) text = "<" + std::to_string(type) + ":" + std::to_string(text.size()) + ">";
  return text;
}

// "position kind+indent value|value" for each row of a read with mask 0xC485.
inline std::vector<std::string> ShowRows(ENGHANDLE block, std::uint32_t length) {
  std::vector<std::string> rows;
  qcore::WireReader reader(Span(static_cast<const std::uint8_t*>(EngMemLock(block)), length));
  while (reader.good() && !reader.at_end()) {
    const auto id = reader.Take<std::uint32_t>();
    reader.Skip(2);
    const auto indent = reader.Take<std::uint16_t>();
    const auto unread = reader.Take<std::uint16_t>();
    COLLECTIONPOSITION position{};
    position.Level = reader.Take<std::uint16_t>();
    reader.Skip(2);
    for (unsigned level = 0; level <= position.Level && level < 32; ++level) {
      position.Tumbler[level] = reader.Take<std::uint32_t>();
    }
    const auto start = reader.position();
    const auto size = reader.Take<std::uint16_t>();
    const auto items = reader.Take<std::uint16_t>();
    const std::uint8_t* lengths = reader.Skip(items * 4u);
    const char* kind = (id & ENG_ROW_NO_DOCUMENT) == 0 ? "d" : (id & ENG_ROW_TOTAL) != 0 ? "t" : "c";
    std::string row = Show(position) + " " + kind + (indent == 0 ? "" : std::to_string(indent)) + (unread ? "*" : "");
    for (unsigned item = 0; lengths && item < items; ++item) {
      reader.Skip(qcore::LoadLittle<std::uint16_t>(lengths + 4 * item));
      const auto value = qcore::LoadLittle<std::uint16_t>(lengths + 4 * item + 2);
      const std::uint8_t* at = reader.Skip(value);
      row += (item == 0 ? " " : "|") + ShowValue(at ? Span(at, value) : Span());
    }
    EXPECT_EQ(reader.position() - start, size);
    rows.push_back(row);
  }
  EXPECT_TRUE(reader.good());
  EXPECT_EQ(EngMemUnlock(block), ENG_OK);
  EXPECT_EQ(EngMemFree(block), ENG_OK);
  return rows;
}

// All rows, read block after block.
inline std::vector<std::string> AllRows(ENGHANDLE collection) {
  std::vector<std::string> rows;
  COLLECTIONPOSITION position = At({0});
  std::uint16_t signals = ENG_SIGNAL_MORE_TO_DO;
  while ((signals & ENG_SIGNAL_MORE_TO_DO) != 0) {
    ENGHANDLE block = 0;
    std::uint32_t length = 0;
    const ENGSTATUS status = EngCollectionRead(collection, &position, ENG_GO_NEXT, 1, ENG_GO_NEXT, UINT32_MAX, 0xC485,
                                               &block, &length, nullptr, nullptr, &signals);
    if (status == ENG_ERR_NO_ENTRY) break;
    EXPECT_EQ(status, ENG_OK);
    if (status != ENG_OK) break;
    for (std::string& row : ShowRows(block, length)) rows.push_back(std::move(row));
  }
  return rows;
}

class IndexTest : public Database {
 protected:
  static constexpr unsigned kFlat = 0x0002;

  std::uint32_t MakeView(const std::vector<TestColumn>& columns, unsigned table_flags = 0,
                         const std::string& selection = "", std::uint8_t collation_flags = 0) {
    const ENGHANDLE slate = NewSlate();
    const std::uint16_t view_class = 8;
    EXPECT_EQ(EngSlateSetHeader(slate, ENG_SLATE_CLASS, &view_class), ENG_OK);
    EXPECT_EQ(Append(slate, "$TITLE", "view"), ENG_OK);
    EXPECT_EQ(Append(slate, "$ViewFormat", ViewFormat(columns, table_flags), 5), ENG_OK);
    EXPECT_EQ(Append(slate, "$Collation", Collation(columns, collation_flags), 2), ENG_OK);
    if (!selection.empty()) {
      EXPECT_EQ(Append(slate, "$Formula", Compiled(selection), 0x0600), ENG_OK);
    }
    return SaveAndClose(slate);
  }
  // Text items, text lists where a value has commas, numbers where the name begins with "n".
  static void Fill(ENGHANDLE slate, const std::vector<std::pair<std::string, std::string>>& items) {
    for (const auto& [name, text] : items) {
      if (name[0] == 'n') {
        const double number = std::stod(text);
        EXPECT_EQ(Append(slate, name, std::string(reinterpret_cast<const char*>(&number), 8), 0x0300), ENG_OK);
      } else if (text.find(',') != std::string::npos) {
        EXPECT_EQ(Append(slate, name, List(text), kTextList), ENG_OK);
      } else {
        EXPECT_EQ(Append(slate, name, text), ENG_OK);
      }
    }
  }
  static std::string List(const std::string& text) {
    std::string lengths;
    std::string entries;
    unsigned count = 0;
    for (std::size_t at = 0; at <= text.size(); ++count) {
      const std::size_t end = std::min(text.find(',', at), text.size());
      Put16(&lengths, static_cast<unsigned>(end - at));
      entries += text.substr(at, end - at);
      at = end + 1;
    }
    std::string bytes;
    Put16(&bytes, count);
    return bytes + lengths + entries;
  }
  std::uint32_t Doc(const std::vector<std::pair<std::string, std::string>>& items, std::uint32_t parent = 0) {
    const ENGHANDLE slate = NewSlate();
    Fill(slate, items);
    if (parent != 0) SetParent(slate, parent);
    return SaveAndClose(slate);
  }
  void SetParent(ENGHANDLE slate, std::uint32_t parent) {
    ORIGINATORID origin{};
    EXPECT_EQ(EngSlateGetInfo(db_, parent, &origin, nullptr, nullptr), ENG_OK);
    static_cast<void>(EngItemDeleteByName(slate, Store("$REF"), 4));
    EXPECT_EQ(Append(slate, "$REF", "\1" + std::string(1, '\0') + std::string(reinterpret_cast<char*>(&origin), 16), 4),
              ENG_OK);
  }
  void Change(std::uint32_t id, const std::vector<std::pair<std::string, std::string>>& items,
              std::uint32_t parent = 0) {
    const ENGHANDLE slate = OpenSlate(id);
    for (const auto& [name, text] : items) static_cast<void>(EngItemDeleteByName(slate, Store(name), Length(name)));
    Fill(slate, items);
    if (parent != 0) SetParent(slate, parent);
    SaveAndClose(slate);
  }
};

}  // namespace qtest

#endif
