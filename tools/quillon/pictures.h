// Files that a rich text shows: attached when it comes in, written beside it when it goes out.
#ifndef QUILLON_TOOLS_QUILLON_PICTURES_H
#define QUILLON_TOOLS_QUILLON_PICTURES_H

#include <filesystem>
#include <string>
#include <vector>

#include "vq/vq.h"

namespace tool {

// Both give a line for each file that could not be taken along, and why.

// Attaches the pictures that the text shows from the folder, or from below it, each under its address.
std::vector<std::string> AttachPictures(VQDocument& document, const VQRichText& body,
                                        const std::filesystem::path& folder);
// Writes the attachments that the text shows into the folder, and none over a file that is there.
std::vector<std::string> WriteFiles(const VQDocument& document, const VQRichText& body,
                                    const std::filesystem::path& folder);

}  // namespace tool

#endif
