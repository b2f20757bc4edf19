// Runs work that may block for the parts of an instrument's session.
#pragma once

#include <QString>
#include <functional>

namespace torvell {

// Runs jobs one after the other, not on the window's thread. Called on the window's thread.
class JobRunner {
 public:
  virtual ~JobRunner() = default;
  // Runs `job` and then, on the window's thread, `done`, or `failed` with a text for people if the
  // job threw. Each of the two may be empty.
  virtual void Do(std::function<void()> job, std::function<void()> done,
                  std::function<void(const QString&)> failed) = 0;
};

}  // namespace torvell
