// print: the instrument's sheets as PDF. Needs no display.
#include <fmt/format.h>

#include "host/cli/commands.h"
#include "host/cli/session.h"
#include "host/tray/csv.h"

namespace torvell {

namespace {

struct PrintArguments {
  std::string file;
  std::optional<int> paper;  // a rvx::Paper
};

int PrintSheet(Session& session, rvx::SheetKind kind, const PrintArguments& arguments) {
  rvx::SheetRequest request;
  request.kind = kind;
  if (arguments.paper) request.paper = static_cast<rvx::Paper>(*arguments.paper);
  std::string pdf;
  ThrowIfRefused(session.OneInstrument().scripting->MakePdf(request, pdf));
  WriteWholeFile(arguments.file, pdf);
  session.output().Progress(fmt::format("{}: written", arguments.file));
  return static_cast<int>(ExitCode::Good);
}

}  // namespace

void AddPrintCommands(const Command& program) {
  const Command print = program.AddGroup("print", "the instrument's sheets as PDF");
  const auto arguments = std::make_shared<PrintArguments>();
  print.Add("--pdf", arguments->file, "write the sheet to this file; \"-\": standard output")
      .Named("FILE")
      .Required();
  print.Add("--paper", arguments->paper, "a4 or letter (default: by the country)")
      .Named("a4|letter")
      .OneOf({{"a4", static_cast<int>(rvx::Paper::A4)},
              {"letter", static_cast<int>(rvx::Paper::Letter)}});
  print.AddCommand("constants", "the cell constants in force, with their dates",
                   [arguments](Session& session) {
                     return PrintSheet(session, rvx::SheetKind::CellConstants, *arguments);
                   });
}

}  // namespace torvell
