// Where samples wait that the database did not take.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "boundary/sample.h"

namespace torvell {

struct SpooledSample {
  rvx::Sample sample;
  int64_t run = 0;  // as in SampleOrigin
  int32_t position = -1;
  int32_t attempt = 0;
  bool simulated = false;
};

// A file of lines beside the database, one sample each. Several processes may use it at once. A
// second file of some size is kept in reserve and given up when the disk is full, so that there is
// room for what has been measured.
class SampleSpool {
 public:
  explicit SampleSpool(std::string file) : file_(std::move(file)) {}

  const std::string& file() const { return file_; }
  // Makes the reserve; no effect if there is one or no room for it.
  void Prepare();
  // Adds a sample, durable when it returns: empty, or the reason why it could not be done.
  std::string Append(const SpooledSample& sample);

  struct Outcome {
    std::string unreadable;   // why the file can't be read: `take` was not called
    int damagedLines = 0;     // put aside in file() + ".damaged"
    std::string notPutAside;  // why they could not be, so that they stay in the file
  };
  // Hands what the file holds to `take`, while no other process can touch it, and removes the file
  // when `take` has returned. An exception of `take` leaves the file as it is and passes on.
  // Without a file there is no call.
  Outcome TakeIn(const std::function<void(const std::vector<SpooledSample>&)>& take);

 private:
  std::string file_;
};

}  // namespace torvell
