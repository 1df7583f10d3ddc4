// Binding of the statistics library: loaded with dlopen at start, initialised with the
// kernel handle; each exported STATS_Vexa<Op>_MP is callable as Vexa<Op>(...).
#ifndef VEXA_SHELL_LIBRARY_H
#define VEXA_SHELL_LIBRARY_H

#include <map>
#include <string>
#include <vector>

#include "vexa/external.h"

namespace vexa::shell {

// The folder of the running executable (argv0's when /proc is not there).
std::string ExecutableDirectory(const char* argv0);

class Library {
 public:
  using EntryPoint = ALGEB (*)(VexaKernelVector, ALGEB);

  // Loads from $VEXA_LIBRARY_PATH (a file or a folder) or beside the executable.
  Library(VexaKernelVector kv, const char* argv0);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  bool Loaded() const { return handle_ != nullptr; }
  const std::string& Status() const { return status_; }
  // The entry point for a name such as "VexaNormalDeviate", or null when not exported.
  EntryPoint Find(const std::string& name);
  // The names of every entry point the library exports (Vexa<Op>), sorted.
  std::vector<std::string> Exports() const;
  void Terminate();

 private:
  VexaKernelVector kv_;
  void* handle_ = nullptr;
  std::string status_;
  std::map<std::string, EntryPoint> cache_;
};

}  // namespace vexa::shell

#endif
