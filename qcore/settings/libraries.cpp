#include "qcore/settings/libraries.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <string_view>
#include <vector>

#include "qcore/handles/handles.h"
#include "qcore/settings/settings.h"

namespace qcore::libraries {

namespace {

std::array<std::atomic<void*>, kCallbackSlots> callbacks{};

std::string OwnDirectory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&Open), &info) == 0 || !info.dli_fname) return ".";
  const std::string path = info.dli_fname;
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

void AddCandidates(const std::string& directory, const std::string& name, std::vector<std::string>* paths) {
  paths->push_back(directory + "/" + name);
  paths->push_back(directory + "/" + name + ".so");
  paths->push_back(directory + "/lib" + name + ".so");
}

std::vector<std::string> Candidates(const std::string& name) {
  if (name.find('/') != std::string::npos) return {name};
  std::vector<std::string> paths;
  const std::string listed = settings::Get("ConverterPath");
  std::string_view rest = listed;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(':'), rest.size());
    if (end > 0) AddCandidates(std::string(rest.substr(0, end)), name, &paths);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  AddCandidates(OwnDirectory(), name, &paths);
  AddCandidates(OwnDirectory() + "/quillon", name, &paths);
  return paths;
}

}  // namespace

ENGSTATUS Open(const char* name, ENGHANDLE* handle, void** entry) {
  for (const std::string& path : Candidates(name)) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) continue;
    void* found = dlsym(library, "ConverterMain");
    const ENGHANDLE given = found ? handle_table.Insert(Kind::kLibrary, library) : 0;
    if (given == 0) {
      dlclose(library);
      if (found) return ENG_ERR_TOO_MANY_HANDLES;
      continue;
    }
    *entry = found;
    *handle = given;
    return ENG_OK;
  }
  return ENG_ERR_LOAD_LIBRARY;
}

ENGSTATUS Close(ENGHANDLE handle) {
  void* library = handle_table.Remove(Kind::kLibrary, handle);
  if (!library) return ENG_ERR_INVALID_HANDLE;
  return dlclose(library) == 0 ? ENG_OK : ENG_ERR_LOAD_LIBRARY;
}

void CloseAll() {
  for (ENGHANDLE handle : handle_table.All(Kind::kLibrary)) static_cast<void>(Close(handle));
  for (auto& callback : callbacks) callback = nullptr;
}

ENGSTATUS SetCallback(std::uint32_t slot, void* callback) {
  if (slot >= kCallbackSlots) return ENG_ERR_ARGUMENT;
  callbacks[slot] = callback;
  return ENG_OK;
}

void* Callback(std::uint32_t slot) { return slot < kCallbackSlots ? callbacks[slot].load() : nullptr; }

}  // namespace qcore::libraries
