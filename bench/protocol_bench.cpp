// What a reply frame costs to read, alone and with noise between the frames.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bench/pty_line.h"
#include "module/protocol/reply_reader.h"
#include "module/protocol/status_record.h"

namespace rvx {
namespace {

constexpr int kFrames = 1000;

// Handles each frame as the conversation does: classifies it and reads its record.
class Counter : public FrameHandler {
 public:
  void FrameReceived(std::span<const uint8_t> frame) override {
    if (ClassifyReply(frame) != ReplyKind::Status) return;
    if (const auto record = StatusRecord::FromData(ReplyData(frame))) {
      ++good;
      benchmark::DoNotOptimize(record->intCount());
    }
  }
  int64_t good = 0;
};

std::string CleanStream() {
  std::string stream;
  for (int i = 0; i < kFrames; ++i) stream += bench::StatusFrame("ST");
  return stream;
}

// As many noise bytes as frame bytes, CR among them and the start of a frame too, so that frames
// begin that never end; a CR before each good frame lets it through.
std::string NoisyStream() {
  const std::string frame = bench::StatusFrame("ST");
  std::string stream;
  uint32_t state = 1;
  for (int i = 0; i < kFrames; ++i) {
    for (size_t byte = 1; byte < frame.size(); ++byte) {
      state = state * 1664525 + 1013904223;
      const uint32_t draw = state >> 24;
      stream += draw < 8 ? '-' : draw < 16 ? '0' : draw < 20 ? '\r' : static_cast<char>(draw);
    }
    stream += '\r' + frame;
  }
  return stream;
}

void Read(benchmark::State& state, const std::string& stream, size_t chunk) {
  Counter counter;
  ReplyReader reader(0, &counter);
  const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(stream.data()),
                                       stream.size());
  int64_t rounds = 0;
  for (auto _ : state) {
    ++rounds;
    for (size_t at = 0; at < bytes.size(); at += chunk) {
      reader.Feed(bytes.subspan(at, std::min(chunk, bytes.size() - at)));
    }
  }
  if (counter.good != rounds * kFrames) state.SkipWithError("frames were lost or made up");
  state.SetItemsProcessed(counter.good);
  state.SetBytesProcessed(rounds * static_cast<int64_t>(bytes.size()));
}

void BM_ReadFrames(benchmark::State& state) {
  static const std::string stream = CleanStream();
  Read(state, stream, static_cast<size_t>(state.range(0)));
}
// A byte at a time, a frame at a time, and as much as a line's thread reads at once.
BENCHMARK(BM_ReadFrames)->ArgName("chunk")->Arg(1)->Arg(44)->Arg(4096);

void BM_ReadFramesInNoise(benchmark::State& state) {
  static const std::string stream = NoisyStream();
  Read(state, stream, static_cast<size_t>(state.range(0)));
}
BENCHMARK(BM_ReadFramesInNoise)->ArgName("chunk")->Arg(4096);

}  // namespace
}  // namespace rvx

BENCHMARK_MAIN();
