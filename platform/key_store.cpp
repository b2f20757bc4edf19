#include "platform/key_store.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/text.h"

namespace platform {
namespace {

struct Override {
  std::string key;
  std::string name;
  std::optional<uint32_t> value;
};

// One mutex over path and overrides. Never destroyed, like what it guards.
struct Store {
  std::mutex mutex;
  std::string path;
  std::vector<Override> overrides;
};

Store& TheStore() {
  static Store* const store = new Store;
  return *store;
}

// The file's bytes; nothing if it can't be read.
std::optional<std::string> ReadFile(const std::string& path) {
  if (path.empty()) return std::nullopt;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return std::nullopt;
  std::string text;
  char piece[4096];
  ssize_t count = 0;
  while ((count = read(file, piece, sizeof piece)) != 0) {
    if (count > 0) {
      text.append(piece, static_cast<size_t>(count));
    } else if (errno != EINTR) {
      break;
    }
  }
  close(file);
  if (count < 0) return std::nullopt;
  return text;
}

// The file's lines without their ends; nothing if it can't be read.
std::optional<std::vector<std::string>> ReadLines(const std::string& path) {
  const auto text = ReadFile(path);
  if (!text) return std::nullopt;
  std::vector<std::string> lines = SplitFields(*text, '\n');
  for (std::string& line : lines) {
    if (line.ends_with('\r')) line.pop_back();
  }
  return lines;
}

// The key of a line "[KEY\PATH]"; nothing for other lines.
std::optional<std::string> SectionOf(const std::string& line) {
  const std::string trimmed = Trim(line);
  if (trimmed.size() < 2 || trimmed.front() != '[' || trimmed.back() != ']') return std::nullopt;
  return Trim(std::string_view(trimmed).substr(1, trimmed.size() - 2));
}

// The text after `"Name"=`; nothing for other lines.
std::optional<std::string> AssignedText(const std::string& line, const std::string& name) {
  const std::string trimmed = Trim(line);
  if (trimmed.size() < 2 || trimmed.front() != '"') return std::nullopt;
  const size_t close = trimmed.find('"', 1);
  if (close == std::string::npos) return std::nullopt;
  if (CompareNoCase(std::string_view(trimmed).substr(1, close - 1), name) != 0) return std::nullopt;
  const std::string rest = Trim(std::string_view(trimmed).substr(close + 1));
  if (rest.empty() || rest.front() != '=') return std::nullopt;
  return Trim(std::string_view(rest).substr(1));
}

// "dword:" and one to eight hexadecimal digits.
std::optional<uint32_t> ParseDword(const std::string& text) {
  constexpr std::string_view kType = "dword:";
  if (text.size() <= kType.size() || text.size() > kType.size() + 8 ||
      CompareNoCase(std::string_view(text).substr(0, kType.size()), kType) != 0) {
    return std::nullopt;
  }
  uint32_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + kType.size(), end, value, 16);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

// The text that is assigned to a value; the last one counts, as in an import.
std::optional<std::string> Find(const std::vector<std::string>& lines, const std::string& key,
                                const std::string& name) {
  std::optional<std::string> found;
  bool inSection = false;
  for (const std::string& line : lines) {
    if (const auto section = SectionOf(line)) {
      inSection = CompareNoCase(*section, key) == 0;
    } else if (inSection) {
      if (auto assigned = AssignedText(line, name)) found = std::move(assigned);
    }
  }
  return found;
}

}  // namespace

void SetKeyStoreFile(const std::string& path) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> guard(store.mutex);
  store.path = path;
}

void OverrideKeyValue(const std::string& key, const std::string& name,
                      std::optional<uint32_t> value) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> guard(store.mutex);
  for (Override& existing : store.overrides) {
    if (CompareNoCase(existing.key, key) == 0 && CompareNoCase(existing.name, name) == 0) {
      existing.value = value;
      return;
    }
  }
  store.overrides.push_back({key, name, value});
}

std::optional<uint32_t> ReadKeyValue(const std::string& key, const std::string& name) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> guard(store.mutex);
  for (const Override& existing : store.overrides) {
    if (CompareNoCase(existing.key, key) == 0 && CompareNoCase(existing.name, name) == 0) {
      return existing.value;
    }
  }
  const auto lines = ReadLines(store.path);
  if (!lines) return std::nullopt;
  const auto assigned = Find(*lines, key, name);
  return assigned ? ParseDword(*assigned) : std::nullopt;
}

}  // namespace platform
