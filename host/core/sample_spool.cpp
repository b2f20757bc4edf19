#include "host/core/sample_spool.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <utility>

#include "boundary/sample_constants.h"
#include "host/core/file_handle.h"
#include "host/core/sample_columns.h"
#include "platform/log.h"

namespace torvell {
namespace {

using Json = nlohmann::json;

// Room for a few hundred samples.
constexpr off_t kReserveSize = 256 * 1024;

bool IsUtf8(const std::string& text) {
  try {
    (void)Json(text).dump();
    return true;
  } catch (const Json::exception&) {
    return false;
  }
}

// JSON has no NaN, no infinity and no bytes that are not text: those are written in hexadecimal, so
// that a line gives back exactly what was stored.
Json ToJson(const ColumnValue& value) {
  if (const auto* whole = std::get_if<int64_t>(&value)) return *whole;
  if (const auto* number = std::get_if<double>(&value)) {
    if (std::isfinite(*number)) return *number;
    return Json{{"bits", std::bit_cast<uint64_t>(*number)}};
  }
  const auto& text = std::get<std::string>(value);
  if (IsUtf8(text)) return text;
  return Json{{"bytes", std::vector<uint8_t>(text.begin(), text.end())}};
}

class DamagedLine : public std::runtime_error {
 public:
  DamagedLine() : std::runtime_error("a value that is not written there") {}
};

// Returns the number if it fits its type; the library would cut it off silently.
template <class Whole>
Whole WholeOf(const Json& json) {
  const bool fits = json.is_number_unsigned()
                        ? std::in_range<Whole>(json.get<uint64_t>())
                        : json.is_number_integer() && std::in_range<Whole>(json.get<int64_t>());
  if (!fits) throw DamagedLine();
  return json.get<Whole>();
}

// Throws Json::exception or DamagedLine for what ToJson does not write.
ColumnValue FromJson(const Json& json) {
  if (json.is_number_float()) return json.get<double>();
  if (json.is_number()) return WholeOf<int64_t>(json);
  if (json.is_string()) return json.get<std::string>();
  if (json.contains("bits")) return std::bit_cast<double>(WholeOf<uint64_t>(json.at("bits")));
  if (!json.at("bytes").is_array()) throw DamagedLine();
  std::string bytes;
  for (const Json& byte : json.at("bytes")) bytes += static_cast<char>(WholeOf<uint8_t>(byte));
  return bytes;
}

std::string ToLine(const SpooledSample& spooled) {
  Json values = Json::array();
  for (const ColumnValue& value : StoredSampleValues(spooled.sample)) {
    values.push_back(ToJson(value));
  }
  return Json{{"run", spooled.run},
              {"position", spooled.position},
              {"attempt", spooled.attempt},
              {"simulated", spooled.simulated},
              {"values", values}}
             .dump() +
         "\n";
}

std::optional<SpooledSample> FromLine(const std::string& line) {
  try {
    const Json json = Json::parse(line);
    std::vector<ColumnValue> values;
    for (const Json& value : json.at("values")) values.push_back(FromJson(value));
    SpooledSample spooled;
    spooled.run = WholeOf<int64_t>(json.at("run"));
    spooled.position = WholeOf<int32_t>(json.at("position"));
    spooled.attempt = WholeOf<int32_t>(json.at("attempt"));
    if (!SampleFromStored(values, spooled.sample)) return std::nullopt;
    // Lines of older versions have no such entry; the simulator's samples are known by its serial
    // number.
    spooled.simulated =
        json.value("simulated", spooled.sample.serialNumber == rvx::kSimulatorSerialNumber);
    return spooled;
  } catch (const Json::exception&) {
    return std::nullopt;
  } catch (const DamagedLine&) {
    return std::nullopt;
  }
}

// Opens the file and locks it against other processes; the handle is closed, with errno set, on
// failure. Tries again if another process removed the file while this one waited for the lock.
FileHandle OpenLocked(const std::string& path, int flags) {
  for (;;) {
    FileHandle file(open(path.c_str(), flags | O_CLOEXEC, 0660));
    if (!file.IsOpen()) return file;
    if (flock(file.get(), LOCK_EX) != 0) return FileHandle();
    struct stat opened = {};
    struct stat present = {};
    if (fstat(file.get(), &opened) == 0 && stat(path.c_str(), &present) == 0 &&
        opened.st_ino == present.st_ino) {
      return file;
    }
  }
}

std::string SystemError() { return std::strerror(errno); }

// Adds a line as a whole or not at all. Returns an empty text, or the reason of the failure.
std::string AppendLine(const std::string& path, const std::string& line) {
  FileHandle file = OpenLocked(path, O_RDWR | O_CREAT | O_APPEND);
  if (!file.IsOpen()) return SystemError();
  const off_t size = lseek(file.get(), 0, SEEK_END);
  char last = '\n';
  if (size > 0 && pread(file.get(), &last, 1, size - 1) != 1) return SystemError();
  // A line that a crash cut off must not spoil this one.
  const std::string bytes = last == '\n' ? line : "\n" + line;
  if (WriteAll(file.get(), bytes) && fsync(file.get()) == 0 && SyncFolderOf(path)) return {};
  const int reason = errno;
  if (ftruncate(file.get(), size) != 0) {
    platform::Log(platform::LogLevel::Error, "The spool could not be cut back: " + SystemError());
  }
  errno = reason;
  return SystemError();
}

// Returns whether a file ends with these lines.
bool IsEndOf(const std::string& path, const std::string& lines) {
  const FileHandle file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string text;
  return file.IsOpen() && ReadAll(file.get(), text) && text.ends_with(lines);
}

}  // namespace

void SampleSpool::Prepare() {
  const std::string path = file_ + ".reserve";
  FileHandle reserve(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0660));
  if (!reserve.IsOpen()) return;
  if (posix_fallocate(reserve.get(), 0, kReserveSize) != 0) unlink(path.c_str());
}

std::string SampleSpool::Append(const SpooledSample& sample) {
  const std::string line = ToLine(sample);
  std::string failure = AppendLine(file_, line);
  if (!failure.empty() && unlink((file_ + ".reserve").c_str()) == 0) {
    failure = AppendLine(file_, line);
  }
  return failure;
}

SampleSpool::Outcome SampleSpool::TakeIn(
    const std::function<void(const std::vector<SpooledSample>&)>& take) {
  Outcome outcome;
  FileHandle file = OpenLocked(file_, O_RDWR);
  if (!file.IsOpen() && errno == ENOENT) return outcome;
  std::string text;
  if (!file.IsOpen() || !ReadAll(file.get(), text)) {
    outcome.unreadable = SystemError();
    return outcome;
  }

  std::vector<SpooledSample> samples;
  std::string damaged;
  size_t at = 0;
  while (at < text.size()) {
    const size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    if (line.empty()) continue;
    if (auto sample = FromLine(line)) {
      samples.push_back(std::move(*sample));
    } else {
      ++outcome.damagedLines;
      damaged += line + "\n";
    }
  }
  take(samples);
  if (!damaged.empty() && !IsEndOf(file_ + ".damaged", damaged)) {
    outcome.notPutAside = AppendLine(file_ + ".damaged", damaged);
  }
  // A spool that is not removed does no harm: at the next start, stored samples are recognised by
  // their ids, and damaged lines that were put aside by their text.
  if (outcome.notPutAside.empty()) {
    if (unlink(file_.c_str()) != 0) {
      platform::Log(platform::LogLevel::Error, "The spool could not be removed: " + SystemError());
    }
    SyncFolderOf(file_);
  }
  return outcome;
}

}  // namespace torvell
