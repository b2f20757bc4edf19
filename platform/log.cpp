#include "platform/log.h"

#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/spdlog.h>

#include <cstdlib>
#include <memory>

#include "platform/log_level.h"
#include "platform/text.h"

namespace platform {
namespace {

spdlog::level::level_enum LevelFromEnvironment() {
  const char* text = std::getenv("TORVELL_LOG");
  if (text == nullptr) return spdlog::level::off;
  if (CompareNoCase(text, "debug") == 0) return spdlog::level::debug;
  if (CompareNoCase(text, "info") == 0) return spdlog::level::info;
  if (CompareNoCase(text, "warn") == 0) return spdlog::level::warn;
  if (CompareNoCase(text, "error") == 0) return spdlog::level::err;
  return spdlog::level::off;
}

spdlog::level::level_enum LevelOf(LogLevel level) {
  switch (level) {
    case LogLevel::Debug:
      return spdlog::level::debug;
    case LogLevel::Info:
      return spdlog::level::info;
    case LogLevel::Warning:
      return spdlog::level::warn;
    case LogLevel::Error:
      return spdlog::level::err;
  }
  return spdlog::level::err;
}

// Never destroyed: threads may log while the process ends.
spdlog::logger& Logger() {
  static spdlog::logger* const logger = [] {
    auto* made = new spdlog::logger("torvell", std::make_shared<spdlog::sinks::stderr_sink_mt>());
    made->set_level(LevelFromEnvironment());
    made->set_pattern("%H:%M:%S.%e %l %v");
    return made;
  }();
  return *logger;
}

}  // namespace

namespace detail {

bool IsLogged(LogLevel level) { return Logger().should_log(LevelOf(level)); }

}  // namespace detail

void Log(LogLevel level, const std::string& message) {
  Logger().log(LevelOf(level), spdlog::string_view_t(message.data(), message.size()));
}

}  // namespace platform
