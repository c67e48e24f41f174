// quillon: the command-line client.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "tools/quillon/command.h"
#include "tools/quillon/progress.h"

namespace {

constexpr char kExitCodes[] =
    "Exit codes: 0 done; 1 failed, the reason on standard error; 2 wrong command line; 3 no such document, word, view "
    "or row;\n"
    "4 check found damage or diff a difference.";

constexpr VQSTATUS kNoSettings = 421;

// The engine's own texts need a session, and the command's is gone by now.
int Report(VQSTATUS status, const tool::Options& options) {
  VQQuillonSession session;
  VQSetThrowAllErrors(0);
  options.config.empty() ? session.Init() : session.Init(options.config.c_str());
  std::fprintf(stderr, "quillon: %s (0x%08lX)\n", tool::StatusWords(status).c_str(), status);
  if (vq::EngineError(status) == kNoSettings && status <= 0xFFFF) {
    std::fputs("quillon: \"quillon init .\" makes a settings file here; --config or QUILLON_HOME names another place\n",
               stderr);
  }
  return tool::kExitFailed;
}

int Run(int argc, char** argv, tool::Options& options) {
  CLI::App app{"Work on Quillon document stores.", "quillon"};
  int result = tool::kExitDone;
  options.progress = tool::ErrorIsTerminal();
  app.add_option("--config", options.config, "QUILLON.INI or the directory that holds it");
  app.add_flag("--json", options.json, "Write JSON to standard output");
  app.add_flag("--progress,!--no-progress", options.progress, "Progress on standard error (default: on a terminal)");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(kExitCodes);
  tool::AddSettingsCommands(app, options, &result);
  tool::AddStoreCommands(app, options, &result);
  tool::AddImportCommand(app, options, &result);
  tool::AddExportCommand(app, options, &result);
  tool::AddListCommand(app, options, &result);
  tool::AddShowCommand(app, options, &result);
  tool::AddReplaceCommand(app, options, &result);
  tool::AddDiffCommand(app, options, &result);
  tool::AddTableCommand(app, options, &result);
  tool::AddViewCommands(app, options, &result);
  tool::AddViewCreateCommand(app, options, &result);
  tool::AddFormCommands(app, options, &result);
  tool::AddFormCreateCommand(app, options, &result);
  tool::AddFolderCommands(app, options, &result);
  tool::AddSearchCommands(app, options, &result);
  tool::AddFormulaCommand(app, options, &result);
  tool::AddEditCommands(app, options, &result);
  tool::AddAttachCommands(app, options, &result);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> rest = app.remaining();
    if (app.get_subcommands().empty() && !rest.empty() && !rest.front().starts_with("-")) {
      throw tool::Failure{tool::kExitUsage, "no subcommand is called \"" + tool::Printable(rest.front()) + "\""};
    }
    return app.exit(error) == 0 ? tool::kExitDone : tool::kExitUsage;
  }
  std::cout.flush();
  if (!std::cout) throw tool::Failure{tool::kExitFailed, "standard output could not be written"};
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  tool::Options options;
  try {
    return Run(argc, argv, options);
  } catch (const tool::Failure& failure) {
    std::fprintf(stderr, "quillon: %s\n", failure.words.c_str());
    return failure.code;
  } catch (VQSTATUS status) {
    return Report(status, options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quillon: %s\n", error.what());
    return tool::kExitFailed;
  }
}
