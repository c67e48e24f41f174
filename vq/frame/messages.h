// The message table, indexed by the low word of a status; entry 0 is null.
#ifndef QUILLON_VQ_FRAME_MESSAGES_H
#define QUILLON_VQ_FRAME_MESSAGES_H

namespace vq {

inline constexpr unsigned kMessageCount = 282;
extern const char* const kMessages[kMessageCount];

}  // namespace vq

#endif
