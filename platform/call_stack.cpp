#include "platform/call_stack.h"

#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string_view>

namespace platform::detail {
namespace {

constexpr size_t kMaxFrames = 40;
constexpr size_t kMaxCallsTold = 4;

// What a function pushes first, on each machine that has frame pointers.
struct Frame {
  const Frame* caller;
  const void* returnAddress;
};

// A broken chain may lead anywhere, so the system does the reading and fails where there is no
// memory.
bool ReadFrame(const void* address, Frame& frame) {
  const iovec to{&frame, sizeof frame};
  const iovec from{const_cast<void*>(address), sizeof frame};
  return process_vm_readv(getpid(), &to, 1, &from, 1, 0) == static_cast<ssize_t>(sizeof frame);
}

struct Module {
  std::string path;
  std::vector<uintptr_t> offsets;
};

struct Call {
  std::string function;  // empty if unknown
  std::string place;     // "file.cpp:12", or "library.so+0x1234"
};

// Without the folders, and without what addr2line adds about parts of a line.
std::string FileOf(std::string_view path) {
  path = path.substr(0, path.find(" (discriminator"));
  const size_t slash = path.rfind('/');
  return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string Quoted(const std::string& path) {
  std::string quoted = "'";
  for (const char c : path) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// Two lines for each offset, or nothing.
std::vector<std::string> AskAddr2line(const Module& module) {
  std::string command = "addr2line -C -f -e " + Quoted(module.path);
  for (const uintptr_t offset : module.offsets) command += fmt::format(" {:#x}", offset);
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "r"),
                                                   pclose);
  std::vector<std::string> lines;
  if (!pipe) return lines;
  std::string line;
  for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) {
    if (c != '\n') {
      line += static_cast<char>(c);
      continue;
    }
    lines.push_back(line);
    line.clear();
  }
  return lines;
}

// A return address is the place after the call, perhaps already on the next line.
const char* CallSite(const void* address) { return static_cast<const char*>(address) - 1; }

std::map<const void*, Call> NameCalls(std::span<const CallStack> stacks) {
  std::map<const void*, Module> modules;  // by base
  std::map<const void*, Call> calls;      // by address
  for (const CallStack& stack : stacks) {
    for (const void* address : stack) {
      Dl_info info{};
      if (dladdr(CallSite(address), &info) == 0 || info.dli_fname == nullptr) continue;
      const auto offset =
          static_cast<uintptr_t>(CallSite(address) - static_cast<const char*>(info.dli_fbase));
      Module& module = modules[info.dli_fbase];
      module.path = info.dli_fname;
      module.offsets.push_back(offset);
      calls[address].place = fmt::format("{}+{:#x}", FileOf(module.path), offset);
    }
  }
  for (auto& [base, module] : modules) {
    const std::vector<std::string> lines = AskAddr2line(module);
    if (lines.size() != 2 * module.offsets.size()) continue;
    for (size_t i = 0; i < module.offsets.size(); ++i) {
      if (lines[2 * i] == "??") continue;
      Call& call = calls[static_cast<const char*>(base) + module.offsets[i] + 1];
      call.function = lines[2 * i];
      if (lines[2 * i + 1].find("??") == std::string::npos) call.place = FileOf(lines[2 * i + 1]);
    }
  }
  return calls;
}

bool IsOfThePlatform(const void* address) {
  Dl_info here{};
  Dl_info there{};
  return dladdr(reinterpret_cast<const void*>(&WalkFrames), &here) != 0 &&
         dladdr(CallSite(address), &there) != 0 && here.dli_fbase == there.dli_fbase;
}

// Functions between the program's own that say nothing about where it is.
bool IsBetween(const Call& call) {
  constexpr std::array<std::string_view, 5> kStarts = {"std::", "int std::__invoke",
                                                       "void std::__invoke", "platform::Lock",
                                                       "platform::WaitForAny("};
  const std::string_view name = call.function;
  return name == "make_fcontext" || name.find("std::_Function_handler") != name.npos ||
         std::any_of(kStarts.begin(), kStarts.end(),
                     [name](std::string_view start) { return name.starts_with(start); });
}

}  // namespace

CallStack WalkFrames(const void* frame) {
  CallStack stack;
  Frame current{};
  while (stack.size() < kMaxFrames && ReadFrame(frame, current)) {
    if (current.returnAddress == nullptr) break;
    stack.push_back(current.returnAddress);
    if (current.caller <= frame) break;  // stacks grow downwards
    frame = current.caller;
  }
  return stack;
}

std::vector<std::vector<std::string>> DescribeCalls(std::span<const CallStack> stacks) {
  std::map<const void*, Call> calls = NameCalls(stacks);
  std::vector<std::vector<std::string>> descriptions;
  for (const CallStack& stack : stacks) {
    std::vector<std::string>& told = descriptions.emplace_back();
    for (const void* address : stack) {
      if (told.size() == kMaxCallsTold) break;
      const Call& call = calls[address];
      if (call.place.empty() || IsOfThePlatform(address) || IsBetween(call)) continue;
      told.push_back(call.function.empty() ? call.place : call.function + " (" + call.place + ")");
    }
  }
  return descriptions;
}

}  // namespace platform::detail
