// What a queued command costs from QueueCommand to CommandReply over a real line, compared with a
// bare exchange of the same bytes; and how long a command waits for a poll to end. Usage:
// conversation_bench FOLDER [EXCHANGES [POLLS]]
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "bench/pty_line.h"
#include "host/core/host.h"
#include "host/core/serial_device.h"
#include "module/execution/action_classes.h"
#include "module/instrument/c_rvx.h"
#include "module/protocol/frames.h"
#include "platform/event.h"

namespace {

// Longer than a command waits for its reply before it is given up.
constexpr platform::Milliseconds kLimit{3000};
constexpr char kIdentification[] = "RVX 4102.17BENCH-1";
// How long the poll's reply is held back, far above what a change of thread costs.
constexpr std::chrono::milliseconds kPollHeldBack{2};
constexpr int kFastPolling = 10;  // ms

// Notes when the reply of its command came.
class Client : public rvx::CommandClient {
 public:
  explicit Client(rvx::C_RVX& instrument) : CommandClient(&instrument) {}
  ~Client() override { Detach(); }
  void CommandReply(const std::string& tag) override {
    answeredAt_ = bench::Now();
    if (tag != rvx::kInjectionTag) bench::Fail("another command was answered: " + tag);
    answered_.Set();
  }
  // The moment of the reply, once it is there; nothing if the command was lost.
  std::optional<double> Wait() {
    if (!answered_.Wait(kLimit)) return std::nullopt;
    return answeredAt_;
  }

 private:
  double answeredAt_ = 0;  // handed over by the event
  platform::Event answered_{"command answered"};
};

// An instrument on COM1 of a host of its own, by the host's serial port.
class Line {
 public:
  Line(const std::string& folder, bench::PtyLine& line) {
    torvell::HostOptions options;
    options.dataFolder = folder;
    host_ = torvell::Host::Open(options);
    host_->ports().SetMapping("COM1", line.device());
    instrument_ = std::make_unique<rvx::C_RVX>("COM1", 0, kIdentification, rvx::GetActionTable());
    if (const std::string failure = host_->ports().LastFailure("COM1"); !failure.empty()) {
      bench::Fail(failure);
    }
  }
  rvx::C_RVX& instrument() { return *instrument_; }

 private:
  std::unique_ptr<torvell::Host> host_;
  std::unique_ptr<rvx::C_RVX> instrument_;  // before the host
};

// Lets threads that still have work after an exchange finish it, on the one CPU.
void Settle() {
  for (int i = 0; i < 50; ++i) sched_yield();
}

double BareExchange(int device, const std::string& request, size_t replySize) {
  const double start = bench::Now();
  bench::WriteBytes(device, request);
  std::array<char, 256> bytes;
  for (size_t got = 0; got < replySize;) {
    pollfd wait = {device, POLLIN, 0};
    if (poll(&wait, 1, static_cast<int>(kLimit.count())) <= 0) bench::Fail("no bare reply");
    const ssize_t count = read(device, bytes.data(), bytes.size());
    if (count > 0) got += static_cast<size_t>(count);
  }
  return bench::Now() - start;
}

std::optional<double> QueuedExchange(rvx::C_RVX& instrument, Client& client,
                                     const std::string& text) {
  const double start = bench::Now();
  instrument.QueueCommand(text, &client);
  const std::optional<double> end = client.Wait();
  if (!end) return std::nullopt;
  return *end - start;
}

// Adds the figures, with `suffix` at the end of their names. Returns the number of commands that
// were lost.
int MeasureExchanges(const std::string& folder, int count, const std::string& suffix,
                     bench::Report& report) {
  const std::string text = rvx::InjectionCommand(0, false);
  const std::vector<uint8_t> frame = rvx::MakeFrame(text);
  const std::string request(frame.begin(), frame.end());
  const size_t replySize = bench::StatusFrame(std::string(rvx::kInjectionTag)).size();

  bench::PtyLine bareLine, queuedLine;
  bench::InstantController bareController(bareLine), queuedController(queuedLine);
  Line line(folder, queuedLine);
  Client client(line.instrument());
  std::string failure;
  torvell::FileHandle device = torvell::OpenSerialDevice(bareLine.device(), 9600, failure);
  if (!device.IsOpen()) bench::Fail(failure);

  int lost = 0;
  std::vector<double> bare, queued;
  for (int i = -count / 10; i < count; ++i) {
    Settle();
    const double b = BareExchange(device.get(), request, replySize);
    Settle();
    const std::optional<double> q = QueuedExchange(line.instrument(), client, text);
    if (!q) ++lost;
    if (i < 0 || !q) continue;  // the caches are cold at first
    bare.push_back(b);
    queued.push_back(*q);
  }
  torvell::CloseSerialDevice(device);
  report.Add("bare_us" + suffix, bench::Median(bare) * 1e6);
  report.Add("queued_us" + suffix, bench::Median(queued) * 1e6);
  report.Add("queued_to_bare" + suffix, bench::Median(queued) / bench::Median(bare));
  report.Add("bare_p99_us" + suffix, bench::Quantile(bare, 0.99) * 1e6);
  report.Add("queued_p99_us" + suffix, bench::Quantile(queued, 0.99) * 1e6);
  return lost;
}

// The controller holds back the reply to a poll until a command is queued after it. Returns the
// number of commands that were lost.
int MeasureBehindPoll(const std::string& folder, int count, bench::Report& report) {
  std::atomic<bool> armed{false};
  std::binary_semaphore pollSeen{0}, commandQueued{0}, commandSeen{0};
  double pollAnsweredAt = 0, commandSeenAt = 0;  // handed over by commandSeen
  bench::PtyLine ptyLine;
  bench::InstantController controller(ptyLine, [&](const std::string& text) {
    if (text == rvx::StatusQuery(0) && armed.exchange(false)) {
      pollSeen.release();
      commandQueued.acquire();
      std::this_thread::sleep_for(kPollHeldBack);
      pollAnsweredAt = bench::Now();
    } else if (text == rvx::InjectionCommand(0, false)) {
      commandSeenAt = bench::Now();
      commandSeen.release();
    }
  });
  Line line(folder, ptyLine);
  line.instrument().Lock();
  line.instrument().configuration().fields.statusPeriod = kFastPolling;
  line.instrument().Unlock();
  Client client(line.instrument());

  int lost = 0;
  std::vector<double> sent, answered;
  for (int i = 0; i < count; ++i) {
    armed = true;
    pollSeen.acquire();
    line.instrument().QueueCommand(rvx::InjectionCommand(0, false), &client);
    commandQueued.release();
    const std::optional<double> end = client.Wait();
    commandSeen.acquire();
    sent.push_back(commandSeenAt - pollAnsweredAt);
    if (end) answered.push_back(*end - pollAnsweredAt);
    if (!end) ++lost;
  }
  report.Add("behind_poll_sent_p50_us", bench::Median(sent) * 1e6);
  report.Add("behind_poll_sent_p99_us", bench::Quantile(sent, 0.99) * 1e6);
  report.Add("behind_poll_answered_p99_us", bench::Quantile(answered, 0.99) * 1e6);
  return lost;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) bench::Fail("usage: conversation_bench FOLDER [EXCHANGES [POLLS]]");
  const int exchanges = argc > 2 ? std::stoi(argv[2]) : 20000;
  const int polls = argc > 3 ? std::stoi(argv[3]) : 1000;
  bench::PinToOneCpu();
  const bench::WorkFolder folder(argv[1]);
  bench::Report report;
  const int code = platform::RunUnderTimeBase({}, [&] {
    int lost = MeasureExchanges(folder.path() + "/idle", exchanges, "", report);
    {
      const bench::BusyOthers busy;
      lost += MeasureExchanges(folder.path() + "/busy", exchanges, "_busy", report);
    }
    lost += MeasureBehindPoll(folder.path() + "/polls", polls, report);
    report.Add("commands", 2 * (exchanges + exchanges / 10) + polls);
    report.Add("commands_lost", lost);
    return 0;
  });
  report.Print();
  return code;
}
