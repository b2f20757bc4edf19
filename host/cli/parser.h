// The command line as the families of commands describe it: commands, their arguments, and the
// checks of what is typed.
//
// The option parser behind this is a library of headers that takes ten seconds to compile. It is
// included in parser.cpp and nowhere else.
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

// An argument of a command, to be described further. A value that a check refuses ends the program
// with a message that says what was found and what is accepted. Valid as long as its command's
// parser.
class Argument {
 public:
  explicit Argument(CLI::Option& option) : option_(option) {}

  Argument& Required();
  // What the help calls the value.
  Argument& Named(const std::string& typeName);

  // A whole number from `least` to `most`.
  Argument& Whole(int64_t least, int64_t most = kNoLimit);
  // A finite number with a point as decimal sign.
  Argument& Decimal();
  // One of the words, in any letter case; the target takes the number that goes with it.
  Argument& OneOf(const std::map<std::string, int>& choices);
  // One of the words, as they are.
  Argument& Word(const std::vector<std::string>& words);
  // `accepts` decides; `accepted` says in the refusal what it takes.
  Argument& Accepting(std::function<bool(const std::string&)> accepts, const std::string& accepted);

 private:
  CLI::Option& option_;
};

// A command, a group of commands or the program itself, to which arguments and commands are added.
// A light handle: copies mean the same command.
class Command {
 public:
  using Run = std::function<int(Session&)>;

  // `invocation` gets the command that is chosen, and must outlive the parser.
  Command(CLI::App& app, Invocation& invocation) : app_(app), invocation_(invocation) {}

  Command AddCommand(const std::string& name, const std::string& description, Run run) const;
  // The same for a command of arguments, which Add fills.
  template <class RunWith, class Arguments>
  Command AddCommand(const std::string& name, const std::string& description, RunWith run,
                     const std::shared_ptr<Arguments>& arguments) const {
    return AddCommand(name, description,
                      [run, arguments](Session& session) { return run(session, *arguments); });
  }
  // A command that is a program of its own and opens the host itself.
  Command AddProgram(const std::string& name, const std::string& description,
                     std::function<int(const GlobalOptions&)> program) const;
  // A name for several commands, of which one has to be chosen.
  Command AddGroup(const std::string& name, const std::string& description) const;
  // Arguments of which exactly one has to be given; `name` is their heading in the help.
  Command AddExactlyOne(const std::string& name) const;

  // An argument that is read into `target`, which must outlive the parser. A name with dashes is an
  // option, one without is known by its place. parser.cpp has the types that a target may have.
  template <class Target>
  Argument Add(const std::string& name, Target& target, const std::string& help = "") const;
  // An option without a value.
  void AddFlag(const std::string& name, bool& target, const std::string& help) const;

 private:
  CLI::App& app_;
  Invocation& invocation_;
};

// Takes the command line apart into `invocation`. A result means that the program is to end at once
// with this exit code: help was asked for, or the use is bad and has been said on standard error.
std::optional<int> ParseCommandLine(int argc, char** argv, Invocation& invocation);

}  // namespace torvell
