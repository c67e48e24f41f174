// Stored view designs of any bytes: they load whole or give their status, and what loads is written back the same.
#include "fuzz/support.h"
#include "vq/views/vdesign.h"
#include "vq/views/viewbody.h"

namespace {

void Format(const std::string& value) {
  VQViewFolder view;
  fuzz::Claim(fuzz::World::Get().document().GetDatabase().CreateSlate(0xE0008, &view) == VQ_OK, "a view can be made");
  fuzz::Claim(view.GetColumnCount() == 0, "a new view has no columns");
  VQViewFolderBody* body = view.GetViewFolderBody();
  std::string trailer;
  const vq::viewdesign::Format format{&body->Table(), &body->Extension(), &body->GetColumns(), &trailer};
  VQSTATUS status = VQ_OK;
  try {
    status = vq::viewdesign::ReadFormat(value, format, body);
  } catch (VQSTATUS thrown) {
    status = thrown;
    body->GetColumns().Release();
  }
  fuzz::Claim(status == VQ_OK || body->GetColumns().GetCount() == 0, "nothing is kept half-decoded");
  if (status != VQ_OK) return;
  std::string written;
  fuzz::Claim(vq::viewdesign::WriteFormat(format, &written) == VQ_OK, "what was read can be written");
  const bool whole = written.size() == value.size();
  fuzz::Claim(written.size() >= value.size() || !whole, "nothing is cut off");
  if (whole) fuzz::Claim(written.substr(0, 10) == value.substr(0, 10), "the table record is the same");
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
