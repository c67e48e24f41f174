#include "qcore/forms/valuetext.h"

#include <bit>
#include <optional>

#include "qcore/settings/settings.h"
#include "qcore/store/wire.h"
#include "qcore/text/textlist.h"

namespace qcore::forms {

namespace {

constexpr std::uint16_t kNumber = 0x0300, kNumberList = 0x0301, kTime = 0x0400, kTimeList = 0x0401, kText = 0x0500,
                        kTextList = 0x0501;

std::string_view View(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

void AddEntry(std::string* all, std::string_view entry) {
  if (!all->empty()) *all += ", ";
  *all += entry;
}

std::string NumberText(const std::uint8_t* at, const Formats& formats) {
  const double value = std::bit_cast<double>(LoadLittle<std::uint64_t>(at));
  const std::optional<std::string> text = text::FormatNumber(settings::International(), formats.number, value);
  return text ? *text : text::FormatNumber(settings::International(), text::kGeneralFormat, value).value_or("");
}

std::string TimeText(const std::uint8_t* at, const Formats& formats) {
  const TIMEDATE moment = LoadTime(at);
  const std::optional<std::string> text = time::FormatMoment(settings::International(), formats.time, moment);
  return text ? *text : time::FormatMoment(settings::International(), time::kUsualFormat, moment).value_or("");
}

// Single entries behind a list header, then pairs; what the counts say beyond the bytes is not there.
template <typename Show>
std::string ListText(Bytes data, const char* between, Show show) {
  if (data.size() < 4) return {};
  const std::size_t singles = LoadLittle<std::uint16_t>(data.data());
  const std::size_t ranges = LoadLittle<std::uint16_t>(data.data() + 2);
  std::string all;
  std::size_t at = 4;
  for (std::size_t i = 0; i < singles && data.size() - at >= 8; ++i, at += 8) AddEntry(&all, show(data.data() + at));
  for (std::size_t i = 0; i < ranges && data.size() - at >= 16; ++i, at += 16) {
    AddEntry(&all, show(data.data() + at) + between + show(data.data() + at + 8));
  }
  return all;
}

}  // namespace

std::string ValueText(Bytes value, const Formats& formats) {
  const Bytes data = value.subspan(kSmallestValue);
  const auto number = [&](const std::uint8_t* at) { return NumberText(at, formats); };
  const auto moment = [&](const std::uint8_t* at) { return TimeText(at, formats); };
  switch (LoadLittle<std::uint16_t>(value.data())) {
    case kText:
      return std::string(View(data));
    case kTextList: {
      std::string all;
      const auto entries = text::ReadList(value, text::Prefix::kType);
      for (std::string_view entry : entries.value_or(text::Entries())) AddEntry(&all, entry);
      return all;
    }
    case kNumber:
      return data.size() >= 8 ? number(data.data()) : std::string();
    case kTime:
      return data.size() >= 8 ? moment(data.data()) : std::string();
    case kNumberList:
      return ListText(data, " - ", number);
    case kTimeList:
      return ListText(data, " - ", moment);
    default:
      return {};
  }
}

}  // namespace qcore::forms
