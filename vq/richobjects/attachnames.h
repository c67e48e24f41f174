// The attachments of a slate and their names.
#ifndef QUILLON_VQ_RICHOBJECTS_ATTACHNAMES_H
#define QUILLON_VQ_RICHOBJECTS_ATTACHNAMES_H

#include <functional>
#include <set>
#include <string>

#include "vq/richobjects/vqattach.h"

namespace vq {

// In the order of their items, until the visitor gives false.
using AttachmentVisitor = std::function<bool(const ItemPlace& place, const std::string& name)>;
[[nodiscard]] VQSTATUS ForEachAttachment(VQSlateBody* slate, const AttachmentVisitor& visit);
[[nodiscard]] VQSTATUS AttachmentAt(VQSlateBody* slate, const ItemPlace& place, VQAttachment* attachment);

// The last part of a path, with either kind of slash.
std::string_view LastPart(std::string_view path);

class AttachmentNames {
 public:
  [[nodiscard]] VQSTATUS Read(VQSlateBody* slate);
  // The name itself if no attachment has it, else with a number before its ending.
  std::string MakeUnique(const std::string& name) const;

 private:
  std::set<std::string> Names;
};

}  // namespace vq

#endif
