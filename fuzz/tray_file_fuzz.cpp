// The tray as a CSV file.
#include "fuzz/require.h"
#include "host/tray/tray_file.h"

namespace {
constexpr int kPositions = 30;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<torvell::FileProblem> problems;
  const auto tray = torvell::ParseTrayFile(fuzz::ToText(data, size), kPositions, problems);
  if (!problems.empty()) {
    fuzz::Require(!torvell::FormatProblems("tray.csv", problems).empty(), "a refusal says why");
    return 0;
  }
  int last = 0;
  for (const torvell::TrayFilePosition& position : tray) {
    fuzz::Require(position.position > last && position.position <= kPositions,
                  "positions are in order and on the tray");
    fuzz::Require(!position.tests.empty() && position.tests.size() <= torvell::kMaxTestsOfSample,
                  "a position has 1 to 20 tests");
    last = position.position;
  }
  fuzz::Require(last > 0, "an accepted file fills a position");

  const std::string written = torvell::FormatTrayFile(tray);
  const auto second = torvell::ParseTrayFile(written, kPositions, problems);
  fuzz::Require(problems.empty(), "what is written is accepted");
  fuzz::Require(torvell::FormatTrayFile(second) == written, "what is read is what was written");
  return 0;
}
