// Stored view designs of any bytes: they load whole or give their status, and what loads is written back the same.
#include "fuzz/support.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace {

struct Decoded {
  VQViewFolder View;
  std::string Trailer;
  VQSTATUS Status = VQ_OK;

  explicit Decoded(const std::string& value) {
    fuzz::Claim(fuzz::World::Get().document().GetDatabase().CreateSlate(0xE0008, &View) == VQ_OK, "a view can be made");
    fuzz::Claim(View.GetColumnCount() == 0, "a new view has no columns");
    try {
      Status = vq::viewdesign::ReadFormat(value, Format(), View.GetViewFolderBody());
    } catch (VQSTATUS thrown) {
      Status = thrown;
      View.GetViewFolderBody()->GetColumns().Release();
    }
    fuzz::Claim(Status == VQ_OK || View.GetColumnCount() == 0, "nothing is kept half-decoded");
  }
  vq::viewdesign::Format Format() {
    VQViewFolderBody* body = View.GetViewFolderBody();
    return {&body->Table(), &body->Extension(), &body->GetColumns(), &Trailer};
  }
  std::string Written() {
    std::string written;
    fuzz::Claim(vq::viewdesign::WriteFormat(Format(), &written) == VQ_OK, "what was read can be written");
    return written;
  }
};

// Up to the table's extension, where older releases leave fields out, every byte is carried.
void Format(const std::string& value) {
  Decoded first(value);
  if (first.Status != VQ_OK) return;
  const std::string written = first.Written();
  const std::size_t columns = first.View.GetColumnCount();
  const std::size_t extensions = 38 + columns * 46 + first.Trailer.size();
  const std::size_t carried = written.size() - extensions;
  fuzz::Claim(value.size() >= carried && value.compare(0, carried, written, 0, carried) == 0, "every byte is carried");
  Decoded second(written);
  fuzz::Claim(second.Status == VQ_OK && second.Written() == written, "a second round changes nothing");
}

void Calendar(const std::string& value) {
  ViewCalendarRecord record = vq::viewdesign::DefaultCalendar();
  std::string written;
  if (vq::viewdesign::ReadCalendar(value, &record) != VQ_OK) return;
  fuzz::Claim(vq::viewdesign::WriteCalendar(record, &written) == VQ_OK, "what was read can be written");
  fuzz::Claim(value.compare(0, written.size(), written) == 0, "every byte is carried");
}

void Collation(const std::string& value) {
  CollationHeader header{};
  const VQSTATUS status = vq::viewdesign::ReadCollation(value, &header);
  fuzz::Claim((status == VQ_OK) == (value.size() >= 6), "a header that is there is read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string value(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (data[0] % 4 == 0) Calendar(value);
  if (data[0] % 4 == 1) Collation(value);
  if (data[0] % 4 > 1) Format(value);
  return 0;
}
