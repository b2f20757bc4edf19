// Shared by the benchmarks with a main of their own: a folder for their files, figures of a series,
// and the line of JSON that scripts/bench reads.
#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace bench {

// A folder below `parent`, which decides the disk; removed afterwards. Ends the program if it can't
// be made.
class WorkFolder {
 public:
  explicit WorkFolder(const std::string& parent);
  ~WorkFolder();
  WorkFolder(const WorkFolder&) = delete;
  WorkFolder& operator=(const WorkFolder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// Seconds since an arbitrary start, by the system's clock whatever the time base.
double Now();

// The value that a share of the series lies below, by the nearest rank; `share` in (0, 1].
double Quantile(std::vector<double> values, double share);
inline double Median(std::vector<double> values) { return Quantile(std::move(values), 0.5); }

// Keeps the process, with the threads that it starts from now on, on the first CPU that it may use.
// Ends the program if the system refuses.
void PinToOneCpu();

// Keeps every other CPU of the process busy while it lives, so that the kernel's own threads, which
// carry the bytes of a pseudo-terminal, have to work where the process is pinned. Make it after
// PinToOneCpu.
class BusyOthers {
 public:
  BusyOthers();
  ~BusyOthers();
  BusyOthers(const BusyOthers&) = delete;
  BusyOthers& operator=(const BusyOthers&) = delete;

 private:
  std::atomic<bool> stop_{false};
  std::vector<std::thread> threads_;
};

// Figures by name, printed on standard output as one JSON object.
class Report {
 public:
  void Add(const std::string& name, double value) { figures_.emplace_back(name, value); }
  void Print() const;

 private:
  std::vector<std::pair<std::string, double>> figures_;
};

// Says on standard error what is wrong and ends the program with code 1.
[[noreturn]] void Fail(const std::string& message);

}  // namespace bench
