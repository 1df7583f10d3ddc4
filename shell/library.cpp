// Loading and binding of the statistics library.
#include "shell/library.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace vexa::shell {
namespace {

const char kLibraryName[] = "libstatsmp.so";

bool IsDirectory(const std::string& path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

}  // namespace

std::string ExecutableDirectory(const char* argv0) {
  char buf[PATH_MAX];
  ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  std::string path = n > 0 ? std::string(buf, n) : std::string(argv0);
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

Library::Library(VexaKernelVector kv, const char* argv0) : kv_(kv) {
  std::string path;
  const char* env = std::getenv("VEXA_LIBRARY_PATH");
  if (env != nullptr && *env != '\0') {
    path = env;
    if (IsDirectory(path)) path += std::string("/") + kLibraryName;
  } else {
    path = ExecutableDirectory(argv0) + "/" + kLibraryName;
  }
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    const char* why = dlerror();
    status_ = std::string("the statistics library is not loaded: ") + (why ? why : path);
    return;
  }
  auto init = reinterpret_cast<EntryPoint>(dlsym(handle_, "STATS_StatsInitialize_MP"));
  if (init == nullptr) {
    status_ = "the statistics library is not loaded: " + path + " has no STATS_StatsInitialize_MP";
    dlclose(handle_);
    handle_ = nullptr;
    return;
  }
  init(kv_, ToVexaNULL(kv_));
}

Library::~Library() {
  Terminate();
}

void Library::Terminate() {
  if (handle_ == nullptr) return;
  auto term = reinterpret_cast<EntryPoint>(dlsym(handle_, "STATS_StatsTerminate_MP"));
  if (term != nullptr) term(kv_, ToVexaNULL(kv_));
  // The library stays mapped: host values may still point into its static data.
  handle_ = nullptr;
}

Library::EntryPoint Library::Find(const std::string& name) {
  if (handle_ == nullptr) return nullptr;
  auto it = cache_.find(name);
  if (it != cache_.end()) return it->second;
  auto f = reinterpret_cast<EntryPoint>(dlsym(handle_, ("STATS_" + name + "_MP").c_str()));
  cache_[name] = f;
  return f;
}

// The dynamic string table holds the name of every exported symbol: those of the form
// STATS_Vexa<Op>_MP that resolve in the library are its entry points.
std::vector<std::string> Library::Exports() const {
  std::vector<std::string> names;
  link_map* map = nullptr;
  if (handle_ == nullptr || dlinfo(handle_, RTLD_DI_LINKMAP, &map) != 0 || map == nullptr)
    return names;
  const char* table = nullptr;
  size_t size = 0;
  for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d) {
    if (d->d_tag == DT_STRTAB) {
      ElfW(Addr) at = d->d_un.d_ptr;
      table = reinterpret_cast<const char*>(at < map->l_addr ? at + map->l_addr : at);
    }
    if (d->d_tag == DT_STRSZ) size = d->d_un.d_val;
  }
  for (size_t i = 0; table != nullptr && i < size; i += std::strlen(table + i) + 1) {
    std::string symbol(table + i);
    if (symbol.size() > 13 && symbol.compare(0, 10, "STATS_Vexa") == 0 &&
        symbol.compare(symbol.size() - 3, 3, "_MP") == 0 && dlsym(handle_, symbol.c_str()))
      names.push_back(symbol.substr(6, symbol.size() - 9));
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

}  // namespace vexa::shell
