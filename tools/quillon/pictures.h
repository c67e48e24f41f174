// Files that a rich text shows: attached when it comes in, written beside it when it goes out.
#ifndef QUILLON_TOOLS_QUILLON_PICTURES_H
#define QUILLON_TOOLS_QUILLON_PICTURES_H

#include <filesystem>
#include <string>
#include <vector>

#include "vq/vq.h"

namespace tool {

// Attaches the pictures that the text shows from the folder, or from below it, each under its address.
void AttachPictures(VQDocument& document, const VQRichText& body, const std::filesystem::path& folder);
// Writes the attachments that the text shows into the folder. Gives the names of those whose place was taken.
std::vector<std::string> WriteFiles(const VQDocument& document, const VQRichText& body,
                                    const std::filesystem::path& folder);

}  // namespace tool

#endif
