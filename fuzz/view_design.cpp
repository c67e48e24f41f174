// Stored view designs of any bytes: they load whole or give their status, what loads is written back byte for byte, and
// the engine reads the same columns and sort orders from it.
#include <algorithm>

#include "engine/ods.h"
#include "fuzz/support.h"
#include "qcore/index/design.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace {

namespace design = vq::viewdesign;
using fuzz::Claim;

constexpr std::size_t kTable = 10, kColumn = 32, kTableExtension = 38, kColumnExtension = 46;

struct Decoded {
  VQViewFolder View;
  std::string Trailer;
  VQSTATUS Status = VQ_OK;

  explicit Decoded(const std::string& value) {
    Claim(fuzz::World::Get().document().GetDatabase().CreateSlate(0xE0008, &View) == VQ_OK, "a view can be made");
    Claim(View.GetColumnCount() == 0, "a new view has no columns");
    try {
      Status = design::ReadFormat(value, Format(), View.GetViewFolderBody());
    } catch (VQSTATUS thrown) {
      Status = thrown;
      View.GetViewFolderBody()->GetColumns().Release();
    }
    Claim(Status == VQ_OK || View.GetColumnCount() == 0, "nothing is kept half-decoded");
  }
  design::Format Format() {
    VQViewFolderBody* body = View.GetViewFolderBody();
    return {&body->Table(), &body->Extension(), &body->GetColumns(), &Trailer};
  }
  std::string Written() {
    std::string written;
    Claim(design::WriteFormat(Format(), &written) == VQ_OK, "what was read can be written");
    return written;
  }
};

qcore::Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Extensions that older releases left out, or left unmarked, come back with their defaults; all else as it was.
void CheckCarried(const std::string& value, const std::string& written, std::size_t columns) {
  std::size_t front = kTable + kColumn * columns;
  for (std::size_t i = 0; i < columns; ++i) {
    for (std::size_t size = 4; size <= 10; size += 2) {
      front += vq::LoadWord(reinterpret_cast<const unsigned char*>(value.data()) + kTable + kColumn * i + size);
    }
  }
  Claim(value.size() >= front && value.compare(0, front, written, 0, front) == 0, "columns are carried");
  const std::size_t extended = front + kTableExtension;
  if (value.size() < extended) return Claim(written.size() == extended + kColumnExtension * columns, "defaults follow");
  const bool marked =
      value.compare(front + 22, 2, "\xAD\x2B") == 0 && value.compare(front, 2, std::string(2, '\0')) != 0;
  if (marked) Claim(value.compare(front, kTableExtension, written, front, kTableExtension) == 0, "so is the table");
  if (value.size() < extended + kColumnExtension * columns) return;
  Claim(value.compare(extended, std::string::npos, written, extended, std::string::npos) == 0, "so is all behind it");
}

void CheckSortOrder(Decoded* decoded, const qcore::index::Design& read) {
  const VQVFColumnBodyArray& columns = decoded->View.GetViewFolderBody()->GetColumns();
  std::vector<design::SortColumn> sort;
  for (std::uint32_t i = 0; i < columns.GetCount(); i += 2) sort.push_back({i, design::Direction::OfColumn});
  std::string value;
  if (design::WriteCollation(columns, sort, COLLATION_UNIQUE, &value) != VQ_OK) return;
  qcore::index::Collation collation;
  Claim(qcore::index::DecodeCollation(BytesOf(value), &collation), "the engine reads a sort order that was written");
  Claim(collation.unique && collation.columns.size() == sort.size(), "whole");
  for (std::size_t i = 0; i < sort.size(); ++i) {
    VQVFColumnBody* column = columns[sort[i].Column];
    const qcore::index::SortColumn& sorted = collation.columns[i];
    Claim(sorted.name == read.columns[sort[i].Column].name, "by the column's name");
    Claim(sorted.options.descending == column->HasFlag(VIEWCOLUMN_DESCENDING), "in its direction");
    Claim(sorted.category == column->HasFlag(VIEWCOLUMN_CATEGORIZED), "as its category");
  }
}

void CheckFormat(const std::string& value) {
  Decoded first(value);
  if (first.Status != VQ_OK) return;
  const std::string written = first.Written();
  const std::size_t columns = first.View.GetColumnCount();
  CheckCarried(value, written, columns);
  Decoded second(written);
  Claim(second.Status == VQ_OK && second.Written() == written, "a second round changes nothing");
  qcore::index::Design read;
  Claim(qcore::index::DecodeViewFormat(BytesOf(value), &read), "the engine reads it too");
  Claim(read.columns.size() == columns, "with as many columns");
  for (std::uint32_t i = 0; i < columns; ++i) {
    VQVFColumnBody* column = first.View.GetViewFolderBody()->GetColumns()[i];
    const std::string_view code = design::CodeOf(column->Formula());
    Claim(read.columns[i].name == column->GetStoredName(), "of the same names");
    Claim(std::equal(code.begin(), code.end(), read.columns[i].formula.begin(), read.columns[i].formula.end(),
                     [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; }),
          "and formulas");
  }
  CheckSortOrder(&first, read);
}

// A design whose signatures and sizes are right and whose other bytes are the input's.
std::string Built(const std::string& bytes) {
  std::size_t at = 0;
  const auto take = [&bytes, &at](std::size_t size) {
    std::string taken = bytes.substr(std::min(at, bytes.size()), size);
    at += size;
    taken.resize(size, '\1');
    return taken;
  };
  const auto word = [](std::size_t value) {
    return std::string{static_cast<char>(value & 255), static_cast<char>(value >> 8)};
  };
  const std::size_t columns = static_cast<unsigned char>(take(1)[0]) % 6U;
  std::string value = std::string{1, 0} + word(columns) + take(6);
  std::string data, extensions;
  for (std::size_t i = 0; i < columns; ++i) {
    value += "VC" + take(2);
    for (int part = 0; part < 4; ++part) {
      const std::size_t size = static_cast<unsigned char>(take(1)[0]) % 40U;
      value += word(size);
      data += take(size);
    }
    value += take(20);
    extensions += "WC" + take(44);
  }
  value += data + word(kTableExtension) + take(20) + "\xAD\x2B" + take(14) + extensions;
  return value + take(bytes.size() - std::min(at, bytes.size()));
}

void CheckCalendar(const std::string& value) {
  ViewCalendarRecord record = design::DefaultCalendar();
  std::string written;
  if (design::ReadCalendar(value, &record) != VQ_OK) return;
  Claim(design::WriteCalendar(record, &written) == VQ_OK, "what was read can be written");
  Claim(written.size() == EngOdsLength(ODS_VIEWCALENDAR), "whole");
  Claim(value.compare(0, written.size(), written) == 0, "every byte is carried");
}

void CheckCollation(const std::string& value) {
  CollationHeader header{};
  const VQSTATUS status = design::ReadCollation(value, &header);
  Claim((status == VQ_OK) == (value.size() >= EngOdsLength(ODS_COLLATION)), "a header that is there is read");
  qcore::index::Collation collation;
  if (!qcore::index::DecodeCollation(BytesOf(value), &collation)) return;
  Claim(collation.unique == ((header.Flags & COLLATION_UNIQUE) != 0), "and means the same to the engine");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string value(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 4 == 0) CheckCalendar(value);
  if (data[0] % 4 == 1) CheckCollation(value);
  if (data[0] % 4 == 2) CheckFormat(value);
  if (data[0] % 4 == 3) CheckFormat(Built(value));
  return 0;
}
