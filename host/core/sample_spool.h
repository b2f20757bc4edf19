// Keeps samples that the database could not store until the next start.
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

// A file beside the database with one sample a line. Several processes may use it at once. A second
// file is kept in reserve and given up when the disk is full, so that there is room for what has
// been measured.
class SampleSpool {
 public:
  explicit SampleSpool(std::string file) : file_(std::move(file)) {}

  const std::string& file() const { return file_; }
  // Makes the reserve file, if there is none and the disk has room for it.
  void Prepare();
  // Adds a sample, durable when it returns. Returns an empty text, or the reason of the failure.
  std::string Append(const SpooledSample& sample);

  struct Outcome {
    std::string unreadable;   // why the file can't be read: `take` was not called
    int damagedLines = 0;     // put aside in file() + ".damaged"
    std::string notPutAside;  // why they could not be, so that they stay in the file
  };
  // Passes what the file holds to `take`, while no other process can use the file, and removes the
  // file when `take` has returned. An exception of `take` leaves the file as it is and is passed
  // on. Without a file `take` is not called.
  Outcome TakeIn(const std::function<void(const std::vector<SpooledSample>&)>& take);

 private:
  std::string file_;
};

}  // namespace torvell
