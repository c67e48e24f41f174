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

// Whether the name is that of a file below the folder that it is read in.
bool IsBelow(const std::string& name) {
  if (name.empty() || name.find('\0') != std::string::npos) return false;
  const fs::path path(name);
  return path.is_relative() && path.has_filename() &&
         std::ranges::none_of(path, [](const fs::path& part) { return part == ".."; });
}

// The file that an address names; empty where it names another server or another place.
std::string FileOf(const std::string& address) {
  if (address.find_first_of(":\\?#") != std::string::npos) return {};
  const std::string name = Decoded(address);
  return IsBelow(name) ? name : std::string();
}

// Links may lead out of the folder.
bool LeadsOut(const fs::path& file, const fs::path& folder) {
  std::error_code error;
  const fs::path root = fs::weakly_canonical(folder, error);
  const fs::path place = error ? fs::path() : fs::weakly_canonical(file, error);
  return error || std::mismatch(root.begin(), root.end(), place.begin(), place.end()).first != root.end();
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
  return FileOf(data.substr(start, data.find('\0', start) - start));
}

void AddOnce(const std::string& name, std::vector<std::string>* names) {
  if (!name.empty() && std::ranges::find(*names, name) == names->end()) names->push_back(name);
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

// Writes the attachment as a file of that name; says why where it cannot be.
std::string WriteFile(const VQDocument& document, const std::string& name, const fs::path& folder) {
  const fs::path file = folder / name;
  std::error_code error;
  if (!IsBelow(name) || LeadsOut(file.parent_path(), folder)) return "its name leads out of the folder";
  const fs::file_status state = fs::symlink_status(file, error);
  if (fs::exists(state)) return "its place is taken";
  if (!fs::status_known(state)) return error.message();
  fs::create_directories(file.parent_path(), error);
  if (error) return error.message();
  try {
    document.Detach(FromText(name), FromText(fs::absolute(file).string()));
  } catch (VQSTATUS status) {
    return StatusWords(status);
  }
  return {};
}

}  // namespace

std::vector<std::string> AttachPictures(VQDocument& document, const VQRichText& body, const fs::path& folder) {
  std::vector<std::string> left;
  for (const std::string& name : PicturesOf(body)) {
    std::error_code error;
    const fs::path file = fs::canonical(folder / name, error);
    if (error || LeadsOut(file, folder) || !fs::is_regular_file(file, error)) continue;
    try {
      document.CreateAttachment(FromText(file.string()), FromText(name));
    } catch (VQSTATUS status) {
      left.push_back("the file " + name + ": " + StatusWords(status));
    }
  }
  return left;
}

std::vector<std::string> WriteFiles(const VQDocument& document, const VQRichText& body, const fs::path& folder) {
  std::vector<std::string> names = PicturesOf(body);
  ForEach(body, VQRTTYPE_ATTACHMENT,
          [&](const VQRTObject& shown) { AddOnce(ToText(VQRTAttachment(shown).GetAttachmentName()), &names); });
  std::vector<std::string> left;
  for (const std::string& name : names) {
    if (!document.HasAttachment(FromText(name))) continue;
    const std::string reason = WriteFile(document, name, folder);
    if (!reason.empty()) left.push_back("the file " + name + ": " + reason);
  }
  return left;
}

}  // namespace tool
