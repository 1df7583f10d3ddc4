// vexa: the shell. `vexa` starts a session at the terminal, `vexa FILE` runs a script,
// `vexa -e 'TEXT'` runs statements given on the command line.
#include <editline/readline.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "host/error.h"
#include "shell/session.h"

namespace {

const char kVersion[] = "vexa 0.1";

const char kHelp[] =
    "usage: vexa              start an interactive session (line editing, history)\n"
    "       vexa FILE         run the statements of a script\n"
    "       vexa -e 'TEXT'    run the statements given as TEXT\n"
    "       vexa --help | --version\n"
    "\n"
    "Statements end with ';' (print the value) or ':' (do not). name := expr assigns.\n"
    "Digits sets the working precision (default 10); help() lists the statistics\n"
    "commands and help(Quantile) or ?Quantile explains one. The statistics library\n"
    "(libstatsmp.so, beside the executable or at $VEXA_LIBRARY_PATH) is loaded at start;\n"
    "its entry points are called as VexaNormalDeviate(0.975, 0, 1) and so on.\n"
    "A script goes on after an error; the exit status is 1 if any statement failed,\n"
    "2 for a script that cannot be read or an unknown option.\n";

int RunScript(vexa::shell::Session& session, const std::string& text) {
  try {
    return session.Run(text) ? 0 : 1;
  } catch (const std::bad_alloc&) {
    std::cout.flush();
    std::cerr << "Error, out of memory\n";
    return 1;
  }
}

// The text of a script: a readable regular file (not a directory, a device or a pipe that may
// never end). On failure says why and returns false.
bool ReadScript(const std::string& path, std::string* text) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    std::cerr << "vexa: cannot read " << path << ": " << std::strerror(errno) << "\n";
    return false;
  }
  if (!S_ISREG(info.st_mode)) {
    std::cerr << "vexa: cannot read " << path << ": not a regular file\n";
    return false;
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::cerr << "vexa: cannot read " << path << ": " << std::strerror(errno) << "\n";
    return false;
  }
  try {
    std::stringstream buffer;
    buffer << in.rdbuf();
    *text = buffer.str();
  } catch (const std::bad_alloc&) {
    std::cerr << "vexa: cannot read " << path << ": out of memory\n";
    return false;
  }
  return true;
}

std::string HistoryFile() {
  const char* home = std::getenv("HOME");
  return home != nullptr ? std::string(home) + "/.vexa_history" : std::string();
}

// Ctrl-C stops the running statement, not the session.
void OnInterrupt(int) {
  vexa::gInterruptRequest = 1;
}

int Interactive(vexa::shell::Session& session) {
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  session.SetInteractive(true);
  std::cout << kVersion << ", Digits = 10. Type statements ending in ; or :, quit to leave.\n";
  if (!session.LibraryStatus().empty()) std::cout << session.LibraryStatus() << "\n";
  std::string history = HistoryFile();
  if (!history.empty()) read_history(history.c_str());
  std::string buffer;
  for (;;) {
    char* line = readline(buffer.empty() ? "> " : "  ");
    if (line == nullptr) break;
    std::string text = line;
    std::free(line);
    if (buffer.empty() && (text == "quit" || text == "quit;" || text == "exit")) break;
    if (!text.empty()) add_history(text.c_str());
    // ?Quantile is help(Quantile)
    size_t first = text.find_first_not_of(" \t");
    if (buffer.empty() && first != std::string::npos && text[first] == '?') {
      std::string topic = text.substr(first + 1);
      topic.erase(topic.find_last_not_of(" \t;") + 1);
      text = topic.empty() ? "help();" : "help(" + topic + ");";
    }
    buffer += text + "\n";
    if (!session.IsComplete(buffer)) continue;
    vexa::gInterruptRequest = 0;  // a Ctrl-C at the prompt is not for this statement
    RunScript(session, buffer);
    buffer.clear();
  }
  if (!history.empty()) write_history(history.c_str());
  std::cout << "\n";
  return 0;
}

// The language's recursion limits (800 calls, 1000 levels of nesting) need more stack than
// the usual 8 MB soft limit in some builds. The main thread's stack is sized from that limit
// when a program starts, so raise it to 256 MB (within the hard limit) and start again, once.
// If that cannot be done the shell runs with the stack it has: a deep recursion then ends in
// "too many levels of recursion" a little earlier.
void EnsureStack(char** argv) {
  const rlim_t want = rlim_t{256} << 20;
  struct rlimit limit;
  if (std::getenv("VEXA_STACK_RAISED") != nullptr || getrlimit(RLIMIT_STACK, &limit) != 0) return;
  if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur >= want) return;
  rlim_t target = limit.rlim_max == RLIM_INFINITY ? want : std::min(want, limit.rlim_max);
  if (target <= limit.rlim_cur) return;
  limit.rlim_cur = target;
  if (setrlimit(RLIMIT_STACK, &limit) != 0) return;
  setenv("VEXA_STACK_RAISED", "1", 1);
  execv("/proc/self/exe", argv);
}

}  // namespace

int main(int argc, char** argv) {
  EnsureStack(argv);
  std::string first = argc > 1 ? argv[1] : "";
  if (first == "--help" || first == "-h") {
    std::cout << kHelp;
    return 0;
  }
  if (first == "--version") {
    std::cout << kVersion << "\n";
    return 0;
  }
  bool unknownOption = first.size() > 1 && first[0] == '-' && first != "-e";
  if (unknownOption || argc > 3 || (first == "-e" && argc != 3) || (first != "-e" && argc == 3)) {
    if (unknownOption) std::cerr << "vexa: unknown option " << first << "\n";
    std::cerr << kHelp;
    return 2;
  }
  vexa::shell::Session session(argv[0]);  // first: it sets up the collector
  std::string script;
  if (!first.empty() && first != "-e" && !ReadScript(first, &script)) return 2;
  int status;
  if (first == "-e") {
    status = RunScript(session, argv[2]);
  } else if (!first.empty()) {
    status = RunScript(session, script);
  } else if (!isatty(0)) {
    std::string text;
    try {
      std::stringstream buffer;
      buffer << std::cin.rdbuf();
      text = buffer.str();
    } catch (const std::bad_alloc&) {
      std::cerr << "vexa: cannot read standard input: out of memory\n";
      return 2;
    }
    status = RunScript(session, text);
  } else {
    status = Interactive(session);
  }
  session.Close();
  return status;
}
