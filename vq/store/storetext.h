// Store text between VQString and the plain texts that bodies keep.
#ifndef QUILLON_VQ_STORE_STORETEXT_H
#define QUILLON_VQ_STORE_STORETEXT_H

#include <string>
#include <string_view>

#include "vq/store/storeword.h"
#include "vq/values/vqstring.h"

namespace vq {

inline const ENGCHAR* EngineText(std::string_view text) { return reinterpret_cast<const ENGCHAR*>(text.data()); }

// Good as long as the string is unchanged.
inline std::string_view ViewOf(const VQString& text) {
  return {reinterpret_cast<const char*>(text.GetBuf()), text.GetBufLength()};
}

inline VQString StringOf(std::string_view text) {
  return {reinterpret_cast<const VQCHAR*>(text.data()), static_cast<unsigned long>(text.size())};
}

}  // namespace vq

#endif
