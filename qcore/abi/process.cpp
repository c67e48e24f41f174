#include "engine/process.h"

#include <string>

#include "engine/status.h"
#include "qcore/abi/guard.h"
#include "qcore/abi/later.h"
#include "qcore/abi/output.h"
#include "qcore/forms/render.h"
#include "qcore/formula/compute.h"
#include "qcore/formula/lookups.h"
#include "qcore/fulltext/search.h"
#include "qcore/index/lookup.h"
#include "qcore/memory/memory.h"
#include "qcore/settings/libraries.h"
#include "qcore/settings/settings.h"
#include "qcore/settings/startup.h"
#include "qcore/settings/statustext.h"
#include "qcore/store/database.h"
#include "qcore/text/translate.h"
#include "qcore/time/zone.h"

namespace settings = qcore::settings;
namespace libraries = qcore::libraries;
using qcore::abi::Guard;
using qcore::abi::GuardValue;

namespace {

// Rooms go down from the top one.
void CloseEverything() {
  qcore::formula::Compute::StopAll();
  qcore::TextSearch::CloseAll();
  qcore::forms::RenderTarget::CloseAll();
  qcore::Database::CloseAll();
  libraries::CloseAll();
  qcore::memory::FreeAll();
}

ENGSTATUS OpenEverything() {
  qcore::formula::SetLookupsMaker(qcore::index::MakeLookups);
  return qcore::text::UsePlatformCharset(settings::Get("PlatformCharset"));
}

ENGSTATUS StartWith(const char* named_settings) {
  return Guard([&] { return qcore::startup::Start(named_settings, OpenEverything); });
}

ENGSTATUS WriteUserName(ENGCHAR* buffer, uint16_t size) {
  if (!buffer || size == 0) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    const std::string platform = settings::UserName();
    const std::string store = qcore::text::Translate(0, qcore::text::AsText(platform), UINT16_MAX);
    settings::CopyText(store, reinterpret_cast<char*>(buffer), size);
    return ENG_OK;
  });
}

std::string TextOf(ENGSTATUS status) {
  const char* text = qcore::StatusText(status);
  if (text) return text;
  const char* operation = qcore::LaterOperationName(status);
  return operation ? "Operation " + std::string(operation) + " is not available in this release" : std::string();
}

}  // namespace

ENGSTATUS EngInit(int argc, char** argv) {
  const char* named = nullptr;
  for (int i = 0; argv && i < argc; ++i) {
    if (!named && argv[i] && argv[i][0] == '=') named = argv[i] + 1;
  }
  return StartWith(named);
}

ENGSTATUS EngInitWithConfig(const char* path) { return path ? StartWith(path) : ENGSTATUS{ENG_ERR_ARGUMENT}; }

void EngTerm(void) {
  GuardValue(0, [] {
    qcore::startup::End(CloseEverything);
    return 0;
  });
}

ENGSTATUS EngThreadInit(void) { return qcore::startup::ThreadStart(); }

ENGSTATUS EngThreadTerm(void) { return qcore::startup::ThreadEnd(); }

long EngEnvGetInt(const char* key) {
  return key ? GuardValue(0L, [&] { return settings::GetInt(key, 0); }) : 0;
}

uint16_t EngEnvGetString(const char* key, char* buffer, uint16_t size) {
  if (!key) return settings::CopyText({}, buffer, size);
  return GuardValue<uint16_t>(0, [&] { return settings::CopyText(settings::Get(key), buffer, size); });
}

ENGSTATUS EngEnvSetInt(const char* key, long value) {
  if (!key) return ENG_ERR_ARGUMENT;
  return Guard([&] { return settings::Set(key, std::to_string(value)); });
}

ENGSTATUS EngEnvSetString(const char* key, const char* value) {
  if (!key) return ENG_ERR_ARGUMENT;
  return Guard([&] { return settings::Set(key, value ? value : ""); });
}

uint16_t EngDataDirectory(char* buffer) {
  constexpr uint16_t kSize = 256;
  return GuardValue<uint16_t>(0, [&] {
    const std::string directory = settings::DataDirectory();
    return settings::CopyText(directory.size() < kSize ? directory : std::string(), buffer, kSize);
  });
}

ENGSTATUS EngOsLoadLibrary(const char* name, uint32_t, ENGHANDLE* handle, void** entry) {
  if (!name || !*name || !handle || !entry) return ENG_ERR_ARGUMENT;
  return Guard([&] { return libraries::Open(name, handle, entry); });
}

ENGSTATUS EngOsFreeLibrary(ENGHANDLE handle) {
  return Guard([&] { return libraries::Close(handle); });
}

ENGSTATUS EngOsSetCallback(uint32_t slot, void* callback) { return libraries::SetCallback(slot, callback); }

void* EngOsGetCallback(uint32_t slot) { return libraries::Callback(slot); }

uint16_t EngStatusText(ENGHANDLE, ENGSTATUS status, char* buffer, uint16_t size) {
  return GuardValue<uint16_t>(0, [&] { return settings::CopyText(TextOf(status & ENG_ERROR_MASK), buffer, size); });
}

ENGSTATUS EngUserNameGet(ENGCHAR* buffer) { return WriteUserName(buffer, 256); }

ENGSTATUS EngNameGetUser(ENGCHAR* buffer, uint16_t size) { return WriteUserName(buffer, size); }

ENGSTATUS EngIntlGet(INTLFORMAT* format) {
  if (!format) return ENG_ERR_ARGUMENT;
  return Guard([&]() -> ENGSTATUS {
    *format = qcore::time::OwnSettings();
    return ENG_OK;
  });
}
