#include "platform/key_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <vector>

#include "platform/text.h"

namespace platform {
namespace {

struct Override {
  std::string key;
  std::string name;
  std::optional<uint32_t> value;
};

// One mutex over path, overrides and file access: two writers of one process must not lose each
// other's value. Never destroyed, like what it guards.
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

// Where a value is and where a new one of its key would go.
struct Place {
  std::optional<size_t> value;  // line of the value; the last one counts, as in an import
  std::optional<size_t> end;    // line after the last line of the key's section
};

Place Find(const std::vector<std::string>& lines, const std::string& key, const std::string& name) {
  Place place;
  bool inSection = false;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (const auto section = SectionOf(lines[i])) {
      inSection = CompareNoCase(*section, key) == 0;
      if (inSection) place.end = i + 1;
    } else if (inSection && !Trim(lines[i]).empty()) {
      place.end = i + 1;
      if (AssignedText(lines[i], name)) place.value = i;
    }
  }
  return place;
}

bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

// Writes a new file beside the old one and puts it in its place, so that a reader, or a machine
// that fails in between, finds either the old or the new file, and finds it whole.
bool ReplaceFile(const std::string& path, const std::string& text) {
  const std::string temporary = path + ".new";
  const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file < 0) return false;
  const bool written = WriteAll(file, text) && fsync(file) == 0;
  const bool closed = close(file) == 0;
  if (written && closed && std::rename(temporary.c_str(), path.c_str()) == 0) return true;
  unlink(temporary.c_str());
  return false;
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
  const Place place = Find(*lines, key, name);
  if (!place.value) return std::nullopt;
  return ParseDword(*AssignedText((*lines)[*place.value], name));
}

bool WriteKeyValue(const std::string& key, const std::string& name, uint32_t value) {
  Store& store = TheStore();
  const std::lock_guard<std::mutex> guard(store.mutex);
  if (store.path.empty()) return false;
  struct stat status {};
  const bool exists = stat(store.path.c_str(), &status) == 0;
  auto read = ReadLines(store.path);
  // Writing would lose the values of a file that exists and can't be read.
  if (exists && !read) return false;
  std::vector<std::string> lines = read ? std::move(*read) : std::vector<std::string>();

  const std::string line = FormatText("\"%s\"=dword:%08x", name.c_str(), value);
  const Place place = Find(lines, key, name);
  if (place.value) {
    lines[*place.value] = line;
  } else if (place.end) {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(*place.end), line);
  } else {
    if (!lines.empty() && !lines.back().empty()) lines.emplace_back();
    lines.push_back("[" + key + "]");
    lines.push_back(line);
  }
  std::string text;
  for (const std::string& each : lines) text += each + "\n";
  return ReplaceFile(store.path, text);
}

}  // namespace platform
