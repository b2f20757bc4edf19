// The command line as the families of commands describe it: commands, their arguments, and the
// checks of what is typed.
//
// The library that parses takes ten seconds to compile, so only parser.cpp includes it.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/cli/options.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace torvell {

inline constexpr int64_t kNoLimit = std::numeric_limits<int64_t>::max();

// An argument of a command; the functions below describe it further. A value that a check refuses
// ends the program with a message that says what was found and what is accepted. Valid as long as
// the parser of its command.
class Argument {
 public:
  explicit Argument(CLI::Option& option) : option_(option) {}

  Argument& Required();
  // Sets what the help calls the value.
  Argument& Named(const std::string& typeName);

  // A whole number from `least` to `most`.
  Argument& Whole(int64_t least, int64_t most = kNoLimit);
  // A finite number with a point as decimal sign.
  Argument& Decimal();
  // One of the words, in any letter case; the target gets the number of the word.
  Argument& OneOf(const std::map<std::string, int>& choices);
  // One of the words, exactly as given.
  Argument& Word(const std::vector<std::string>& words);
  // A value for which `accepts` returns true; `accepted` describes such values in the refusal.
  Argument& Accepting(std::function<bool(const std::string&)> accepts, const std::string& accepted);

 private:
  CLI::Option& option_;
};

// A command, a group of commands or the program itself, to which arguments and commands are added.
// Copies refer to the same command.
class Command {
 public:
  using Run = std::function<int(Session&)>;

  // `invocation` receives the chosen command, and must outlive the parser.
  Command(CLI::App& app, Invocation& invocation) : app_(app), invocation_(invocation) {}

  Command AddCommand(const std::string& name, const std::string& description, Run run) const;
  // The same for a command with arguments, which Add fills in.
  template <class RunWith, class Arguments>
  Command AddCommand(const std::string& name, const std::string& description, RunWith run,
                     const std::shared_ptr<Arguments>& arguments) const {
    return AddCommand(name, description,
                      [run, arguments](Session& session) { return run(session, *arguments); });
  }
  // Adds a command that opens the host itself.
  Command AddProgram(const std::string& name, const std::string& description,
                     std::function<int(const GlobalOptions&)> program) const;
  // Adds a name for several commands, one of which has to be chosen.
  Command AddGroup(const std::string& name, const std::string& description) const;
  // Adds a set of arguments, exactly one of which has to be given; `name` is their heading in the
  // help.
  Command AddExactlyOne(const std::string& name) const;

  // Adds an argument that is read into `target`, which must outlive the parser. A name with dashes
  // is an option; one without is recognised by its place. parser.cpp lists the types that a target
  // may have.
  template <class Target>
  Argument Add(const std::string& name, Target& target, const std::string& help = "") const;
  // Adds an option without a value.
  void AddFlag(const std::string& name, bool& target, const std::string& help) const;

 private:
  CLI::App& app_;
  Invocation& invocation_;
};

// Parses the command line into `invocation`. Returns an exit code if the program is to end at once:
// help was asked for, or the use is wrong, which is already reported on standard error.
std::optional<int> ParseCommandLine(int argc, char** argv, Invocation& invocation);

}  // namespace torvell
