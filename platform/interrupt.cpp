#include "platform/interrupt.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "platform/interrupt_flag.h"
#include "platform/thread.h"
#include "platform/time_base.h"

namespace platform {

namespace detail {
std::atomic<bool> signalPending{false};
}

namespace {

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};
constexpr char kSignalByte = 's';
constexpr char kQuitByte = 'q';

// What the handler may touch: lock-free numbers only.
std::atomic<int> pipeToWatch{-1};    // real base: where a byte is written for each signal
std::atomic<int> signalsNotSeen{0};  // virtual base: signals since the scheduler last looked

InterruptWatch* watchInForce = nullptr;

void WriteByte(int pipe, char byte) {
  ssize_t written = 0;
  do {
    written = write(pipe, &byte, 1);
  } while (written < 0 && errno == EINTR);
}

void HandleSignal(int /*signal*/) {
  const int before = errno;
  const int pipe = pipeToWatch.load();
  if (pipe >= 0) {
    WriteByte(pipe, kSignalByte);
  } else {
    signalsNotSeen.fetch_add(1);
    detail::signalPending.store(true);
  }
  errno = before;
}

}  // namespace

class InterruptWatch::State {
 public:
  State() {
    if (CurrentTimeBase() != TimeBaseKind::Virtual) StartThread();
    CatchSignals();
  }

  ~State() {
    for (size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
    pipeToWatch = -1;
    signalsNotSeen = 0;
    detail::signalPending = false;
    if (!thread_) return;
    WriteByte(pipe_[1], kQuitByte);
    thread_->Join();
    close(pipe_[0]);
    close(pipe_[1]);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void Count() {
    ++count_;
    event_.Set();
  }

  Event event_{"interrupt"};
  std::atomic<int> count_{0};

 private:
  // A signal handler may do very little, so it writes a byte, and a thread does the rest.
  void StartThread() {
    if (pipe2(pipe_.data(), O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "no pipe for signals");
    }
    try {
      thread_ = platform::StartThread("interrupt watch", [this] { ReadPipe(); });
    } catch (...) {
      close(pipe_[0]);
      close(pipe_[1]);
      throw;
    }
    pipeToWatch = pipe_[1];
  }

  void ReadPipe() {
    for (;;) {
      char byte = 0;
      const ssize_t count = read(pipe_[0], &byte, 1);
      if (count < 0 && errno == EINTR) continue;
      if (count != 1 || byte == kQuitByte) return;
      Count();
    }
  }

  void CatchSignals() {
    struct sigaction action {};
    action.sa_handler = HandleSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < kSignals.size(); ++i) {
      sigaction(kSignals[i], &action, &before_[i]);
      // The program was started to outlive its terminal (nohup): it goes on ignoring the hang-up.
      const bool ignored = before_[i].sa_handler == SIG_IGN;
      if (kSignals[i] == SIGHUP && ignored) sigaction(SIGHUP, &before_[i], nullptr);
    }
  }

  std::array<struct sigaction, kSignals.size()> before_{};
  std::array<int, 2> pipe_{-1, -1};
  std::shared_ptr<Thread> thread_;  // real and paced base only
};

InterruptWatch::InterruptWatch() {
  if (watchInForce != nullptr) throw std::logic_error("signals are watched already");
  state_ = std::make_unique<State>();
  watchInForce = this;
}

InterruptWatch::~InterruptWatch() {
  watchInForce = nullptr;
  state_.reset();
}

Event& InterruptWatch::event() { return state_->event_; }

int InterruptWatch::count() const { return state_->count_.load(); }

void InterruptWatch::CountSignals(int signals) {
  for (int i = 0; i < signals; ++i) state_->Count();
}

void detail::HandSignalsOn() {
  signalPending.store(false);
  const int signals = signalsNotSeen.exchange(0);
  if (watchInForce != nullptr) watchInForce->CountSignals(signals);
}

}  // namespace platform
