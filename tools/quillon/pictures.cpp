#include "tools/quillon/pictures.h"

#include <algorithm>

#include "tools/quillon/command.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// Flag of a link hotspot whose text stands for a picture, and the picture's place among the texts of its data.
constexpr unsigned long kPictureFlag = 1;
constexpr std::size_t kPicturePlace = 2;

std::string Decoded(const std::string& address) {
  std::string text;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const std::string digits = address[i] == '%' ? address.substr(i + 1, 2) : "";
    if (digits.size() == 2 && digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos) {
      text += static_cast<char>(std::stoi(digits, nullptr, 16));
      i += 2;
    } else {
      text += address[i];
    }
  }
  return text;
}

// Of a file below the folder that the address is read in; no other server, no other place.
bool IsBelow(const std::string& address) {
  if (address.empty() || address.find_first_of(":\\?#") != std::string::npos ||
      address.find('\0') != std::string::npos) {
    return false;
  }
  const fs::path path(address);
  return path.is_relative() && std::ranges::none_of(path, [](const fs::path& part) { return part == ".."; });
}

std::string PictureOf(const VQHotspot& link) {
  if ((link.GetHotspotFlags() & kPictureFlag) == 0) return {};
  std::string data(link.GetDataLength(), '\0');
  link.ReadData(0, data.data(), data.size());
  std::size_t start = 0;
  for (std::size_t i = 0; i < kPicturePlace; ++i) {
    start = data.find('\0', start);
    if (start++ == std::string::npos) return {};
  }
  return Decoded(data.substr(start, data.find('\0', start) - start));
}

void AddOnce(const std::string& name, std::vector<std::string>* names) {
  if (IsBelow(name) && std::ranges::find(*names, name) == names->end()) names->push_back(name);
}

template <typename Take>
void ForEach(const VQRichText& body, VQRTTYPE type, Take take) {
  VQRTObject object;
  VQSTATUS status = body.FindFirst(type, &object);
  for (; status == VQ_OK; status = body.FindNext(VQRTObject(object), type, &object)) take(object);
}

std::vector<std::string> PicturesOf(const VQRichText& body) {
  std::vector<std::string> names;
  ForEach(body, VQRTTYPE_URL_LINK, [&](const VQRTObject& link) { AddOnce(PictureOf(VQHotspot(link)), &names); });
  return names;
}

}  // namespace

void AttachPictures(VQDocument& document, const VQRichText& body, const fs::path& folder) {
  std::error_code error;
  const fs::path root = fs::canonical(folder, error);
  for (const std::string& name : PicturesOf(body)) {
    // Links may lead out of the folder.
    const fs::path file = fs::canonical(folder / name, error);
    const bool inside = !error && std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first == root.end();
    if (!inside || !fs::is_regular_file(file)) continue;
    document.CreateAttachment(FromText(file.string()), FromText(name));
  }
}

std::vector<std::string> WriteFiles(const VQDocument& document, const VQRichText& body, const fs::path& folder) {
  std::vector<std::string> names = PicturesOf(body);
  ForEach(body, VQRTTYPE_ATTACHMENT,
          [&](const VQRTObject& shown) { AddOnce(ToText(VQRTAttachment(shown).GetAttachmentName()), &names); });
  std::vector<std::string> taken;
  for (const std::string& name : names) {
    if (!document.HasAttachment(FromText(name))) continue;
    const fs::path file = folder / name;
    if (fs::exists(fs::symlink_status(file))) {
      taken.push_back(name);
      continue;
    }
    fs::create_directories(file.parent_path());
    document.Detach(FromText(name), FromText(fs::absolute(file).string()));
  }
  return taken;
}

}  // namespace tool
