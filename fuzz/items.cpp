// Item values of any type and any bytes through the typed classes: read, changed, read again.
#include "fuzz/support.h"

namespace {

using fuzz::Claim;

constexpr unsigned short kTypes[] = {TYPE_NUMBER, TYPE_NUMBER_RANGE, TYPE_TIME,  TYPE_TIME_RANGE,
                                     TYPE_TEXT,   TYPE_TEXT_LIST,    TYPE_OBJECT};

// Each step may refuse a damaged value; none may read behind it.
template <typename Step>
bool Try(Step step) {
  try {
    step();
    return true;
  } catch (VQSTATUS) {
    return false;
  }
}

template <typename List, typename Entry>
void Use(VQDocument& document, const Entry& entry) {
  List list;
  if (document.GetItem("Value", &list) != VQ_OK) return;
  unsigned long count = 0;
  Try([&] { count = list.GetCount(); });
  for (unsigned long i = 0; i < count && i < 50; ++i) Try([&] { static_cast<void>(list[i]); });
  VQString text;
  Try([&] { list.GetText(&text, ";"); });
  Try([&] { list.Delete(0, 1); });
  if (!Try([&] { list << entry; })) return;
  Claim(list.GetCount() > 0, "what was appended is there");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VQDocument& document = fuzz::World::Get().document();
  if (size < 2 || size > 8000) return 0;
  const unsigned short type = kTypes[data[0] % std::size(kTypes)];
  for (int use = 0; use < 3; ++use) {
    if (document.CreateItem("Value", type, data + 2, size - 2, 0, VQITEMOPTION_REPLACE) != VQ_OK) return 0;
    Try([&] {
      if (use == 0) Use<VQText>(document, VQString("entry"));
      if (use == 1) Use<VQNumbers>(document, 1.5);
      if (use == 2) Use<VQDatetimes>(document, VQDatetime(TIMEDATE{100, 2460000}));
    });
  }
  return 0;
}
