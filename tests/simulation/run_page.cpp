#include "tests/simulation/run_page.h"

#include <fmt/format.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace rvx::soak {
namespace {

template <size_t kSize>
void Copy(char (&to)[kSize], std::string_view from) {
  const size_t length = std::min(from.size(), kSize - 1);
  std::memcpy(to, from.data(), length);
  to[length] = '\0';
}

}  // namespace

RunPage* RunPage::Map() {
  void* memory =
      mmap(nullptr, sizeof(RunPage), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return memory == MAP_FAILED ? nullptr : static_cast<RunPage*>(memory);
}

void RunPage::Unmap(RunPage* page) { munmap(page, sizeof(RunPage)); }

void RunPage::Begin(uint64_t seed) {
  seed_ = seed;
  broken_[0] = '\0';
  count_ = 0;
}

void RunPage::Done(const RunFigures& figures) { figures_ = figures; }

void RunPage::Clear() {
  seeds_ = 0;
  sum_ = {};
}

void RunPage::Count() {
  ++seeds_;
  sum_.switches += figures_.switches;
  sum_.steps += figures_.steps;
  sum_.simulated += figures_.simulated;
  sum_.samples += figures_.samples;
}

void RunPage::Note(int64_t time, std::string_view text) {
  Line& line = lines_[count_++ % kLines];
  line.time = time;
  Copy(line.text, text);
}

void RunPage::Break(int64_t time, std::string_view what) {
  Note(time, "BROKEN: " + std::string(what));
  Copy(broken_, what);
  std::_Exit(kBrokenRunExitCode);
}

std::string RunPage::History(size_t lines) const {
  std::string text;
  const uint64_t kept = std::min<uint64_t>({count_, kLines, lines});
  for (uint64_t i = count_ - kept; i < count_; ++i) {
    const Line& line = lines_[i % kLines];
    text += fmt::format("  {:>13.6f} s  {}\n", static_cast<double>(line.time) / 1e6, line.text);
  }
  return text;
}

}  // namespace rvx::soak
