#include "host/cli/parser.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <iostream>

#include "host/cli/commands.h"
#include "host/cli/exit_codes.h"
#include "platform/text.h"

namespace torvell {

namespace {

constexpr char kVersionText[] = "torvell 0.1.0";

std::string Refusal(const std::string& found, const std::string& accepted) {
  return fmt::format("found \"{}\"; accepted: {}", found, accepted);
}

std::optional<int64_t> ParseWhole(const std::string& text) {
  int64_t value = 0;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

}  // namespace

Argument& Argument::Required() {
  option_.required();
  return *this;
}

Argument& Argument::Named(const std::string& typeName) {
  option_.type_name(typeName);
  return *this;
}

Argument& Argument::Accepting(std::function<bool(const std::string&)> accepts,
                              const std::string& accepted) {
  option_.check([accepts = std::move(accepts), accepted](const std::string& text) {
    return accepts(text) ? std::string() : Refusal(text, accepted);
  });
  return *this;
}

Argument& Argument::Whole(int64_t least, int64_t most) {
  return Accepting(
      [least, most](const std::string& text) {
        const std::optional<int64_t> value = ParseWhole(text);
        return value && *value >= least && *value <= most;
      },
      most == kNoLimit ? fmt::format("a whole number from {}", least)
                       : fmt::format("a whole number from {} to {}", least, most));
}

Argument& Argument::Decimal() {
  return Accepting(
      [](const std::string& text) {
        const std::optional<double> value = platform::ParseDouble(text);
        return value && std::isfinite(*value);
      },
      "a number with a point as decimal sign");
}

Argument& Argument::OneOf(const std::map<std::string, int>& choices) {
  const auto take = [choices](std::string& text) {
    std::string accepted;
    for (const auto& [name, value] : choices) {
      if (platform::CompareNoCase(name, text) == 0) {
        text = std::to_string(value);
        return std::string();
      }
      accepted += (accepted.empty() ? "" : ", ") + name;
    }
    return Refusal(text, accepted);
  };
  option_.transform(CLI::Validator(take, ""));
  return *this;
}

Argument& Argument::Word(const std::vector<std::string>& words) {
  return Accepting(
      [words](const std::string& text) {
        return std::find(words.begin(), words.end(), text) != words.end();
      },
      fmt::format("{}", fmt::join(words, ", ")));
}

Command Command::AddCommand(const std::string& name, const std::string& description,
                            Run run) const {
  CLI::App* added = app_.add_subcommand(name, description);
  added->callback([&invocation = invocation_, run = std::move(run)] { invocation.command = run; });
  return Command(*added, invocation_);
}

Command Command::AddProgram(const std::string& name, const std::string& description,
                            std::function<int(const GlobalOptions&)> program) const {
  CLI::App* added = app_.add_subcommand(name, description);
  added->callback(
      [&invocation = invocation_, program = std::move(program)] { invocation.program = program; });
  return Command(*added, invocation_);
}

Command Command::AddGroup(const std::string& name, const std::string& description) const {
  CLI::App* group = app_.add_subcommand(name, description);
  group->require_subcommand(1);
  return Command(*group, invocation_);
}

Command Command::AddExactlyOne(const std::string& name) const {
  CLI::Option_group* group = app_.add_option_group(name);
  group->require_option(1);
  return Command(*group, invocation_);
}

template <class Target>
Argument Command::Add(const std::string& name, Target& target, const std::string& help) const {
  return Argument(*app_.add_option(name, target, help));
}

// The possible types of targets: the library's code for each of them is compiled here, once.
template Argument Command::Add(const std::string&, std::string&, const std::string&) const;
template Argument Command::Add(const std::string&, double&, const std::string&) const;
template Argument Command::Add(const std::string&, int32_t&, const std::string&) const;
template Argument Command::Add(const std::string&, int64_t&, const std::string&) const;
template Argument Command::Add(const std::string&, std::optional<std::string>&,
                               const std::string&) const;
template Argument Command::Add(const std::string&, std::optional<double>&,
                               const std::string&) const;
template Argument Command::Add(const std::string&, std::optional<int>&, const std::string&) const;
template Argument Command::Add(const std::string&, std::optional<uint64_t>&,
                               const std::string&) const;
template Argument Command::Add(const std::string&, std::vector<std::string>&,
                               const std::string&) const;
template Argument Command::Add(const std::string&, std::vector<double>&, const std::string&) const;

void Command::AddFlag(const std::string& name, bool& target, const std::string& help) const {
  app_.add_flag(name, target, help);
}

std::optional<int> ParseCommandLine(int argc, char** argv, Invocation& invocation) {
  CLI::App app{"Runs RVX viscometers: trays of samples, settings, archives.", "torvell"};
  app.set_version_flag("--version", kVersionText);
  app.set_help_flag("-h,--help", "print this help and exit");
  app.set_help_all_flag("--help-all", "print the help of all commands and exit");
  app.require_subcommand(1);
  app.fallthrough();
  DescribeCommandLine(Command(app, invocation), invocation.options);
  app.footer(
      "Exit codes: 0 good, 1 the run ended with errors or without a sample that was due,\n"
      "2 bad use or bad input, 3 no instrument, 4 not allowed, 5 archive or data failure,\n"
      "130 interrupted. See torvell(1).");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining();
    const bool isUnknownCommand = app.get_subcommands().empty() && !unknown.empty();
    std::cerr << "error: "
              << (isUnknownCommand ? "there is no command '" + unknown.front() + "'" : error.what())
              << "\nTry: torvell --help\n";
    return static_cast<int>(ExitCode::BadUse);
  }
  return std::nullopt;
}

}  // namespace torvell
