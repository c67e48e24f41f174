// Texts of statuses, the throw switch and assertions.
#include "vq/frame/status.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "engine/engine.h"
#include "vq/frame/messages.h"
#include "vq/frame/state.h"
#include "vq/frame/throwrule.h"
#include "vq/frame/vqcommon.h"

namespace vq {

ProcessState gState;

namespace {

constexpr int kNoRule = -1;
// Of the library's own code on this thread; what counts is whether the switch is 0.
thread_local int tOwnRule = kNoRule;

}  // namespace

OwnThrowRule::OwnThrowRule(bool on) : Saved(tOwnRule) { tOwnRule = on ? 1 : 0; }

OwnThrowRule::~OwnThrowRule() { tOwnRule = Saved; }

VQSTATUS Apply(VQSTATUS status) {
  if (VQIsError(status) && VQGetThrowAllErrors() != 0) throw status;
  return status;
}

void Throw(VQSTATUS status) { throw status; }

void AssertionFailed(const char* expression, const char* file, unsigned line) {
  std::snprintf(gState.AssertionText, sizeof gState.AssertionText,
                "Assertion failed in file %s at line %u.\n\nExpression: %s\n\n", file, line, expression);
  throw VQERR_ASSERTION_FAILED;
}

namespace {

constexpr unsigned kConfigNotFound = ENG_ERR_NO_CONFIG;

const char* LookUp(VQSTATUS status) {
  if (status == VQERR_ASSERTION_FAILED && gState.AssertionText[0] != 0) return gState.AssertionText;
  const unsigned index = status & 0xFFFF;
  return index < kMessageCount ? kMessages[index] : nullptr;
}

// 0 when the engine has no text for it.
unsigned long CopyEngineText(VQSTATUS status, char* buffer, unsigned long bufferlen) {
  if (!IsInitialized()) return 0;
  char text[2048];
  const std::uint16_t length = EngStatusText(0, static_cast<ENGSTATUS>(EngineError(status)), text, sizeof text);
  if (length == 0) return 0;
  const auto limit = static_cast<std::uint16_t>(bufferlen - 1);
  const std::uint16_t copied = EngTextTranslate(ENG_TRANSLATE_STORE_TO_PLATFORM, text, length, buffer, limit);
  buffer[copied] = 0;
  return copied;
}

unsigned long CopyText(const char* text, char* buffer, unsigned long bufferlen) {
  const unsigned long length = std::min<unsigned long>(std::strlen(text), bufferlen - 1);
  std::memcpy(buffer, text, length);
  buffer[length] = 0;
  return length;
}

}  // namespace
}  // namespace vq

unsigned long VQGetErrorMessageText(VQSTATUS status, char* buffer, unsigned long bufferlen, int) {
  if (buffer == nullptr) vq::Throw(VQERR_NULL_POINTER);
  if (bufferlen == 0 || bufferlen > 65535) vq::Throw(VQERR_OUT_OF_RANGE);
  buffer[0] = 0;
  if (status == 0) return 0;
  if ((status >> 16) == 0) {
    if (vq::EngineError(status) == vq::kConfigNotFound) {
      status = VQERR_CONFIG_NOT_FOUND;
    } else {
      if (const unsigned long length = vq::CopyEngineText(status, buffer, bufferlen)) return length;
      status = VQERR_NO_MESSAGE;
    }
  }
  const char* text = vq::LookUp(status);
  if (text == nullptr || *text == 0) text = vq::LookUp(VQERR_NO_MESSAGE);
  return vq::CopyText(text, buffer, bufferlen);
}

int VQGetThrowAllErrors() { return vq::tOwnRule != vq::kNoRule ? vq::tOwnRule : vq::gState.ThrowAllErrors; }

void VQSetThrowAllErrors(int flag) {
  if (vq::tOwnRule != vq::kNoRule) {
    vq::tOwnRule = flag != 0 ? 1 : 0;
  } else {
    vq::gState.ThrowAllErrors = flag;
  }
}
