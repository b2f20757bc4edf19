// A line as a pseudo-terminal, and a controller at its other end that answers at once.
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace bench {

// Both ends raw. The near end is a device that a program opens by its name.
class PtyLine {
 public:
  PtyLine();
  ~PtyLine();
  PtyLine(const PtyLine&) = delete;
  PtyLine& operator=(const PtyLine&) = delete;
  const std::string& device() const { return device_; }
  int farEnd() const { return farEnd_; }

 private:
  int farEnd_ = -1;
  int keptOpen_ = -1;  // a near end, so that the far one gets no hang-up between two openings
  std::string device_;
};

// A status frame at address 0 with this tag as the command that it answers: an idle instrument.
std::string StatusFrame(const std::string& tag);

// Reads requests on a thread and replies to each with a status frame as soon as its CR has arrived.
class InstantController {
 public:
  // Called on the controller's thread with the text of each request ("0QST"), before its reply.
  using Hook = std::function<void(const std::string& text)>;
  // `line` must outlive it.
  explicit InstantController(PtyLine& line, Hook before = {});
  ~InstantController();

 private:
  void Main();
  void Answer(const std::string& text);

  PtyLine& line_;
  const Hook before_;
  int stop_[2] = {-1, -1};
  std::thread thread_;
};

// Writes all bytes, waiting for room; ends the program on failure.
void WriteBytes(int descriptor, const std::string& bytes);

}  // namespace bench
