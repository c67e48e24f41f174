// quillon init: the settings file.
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>

#include "tools/quillon/command.h"

namespace tool {

namespace {

constexpr char kFileName[] = "QUILLON.INI";
constexpr char kRows[] =
    "; Settings of the Quillon engine, found through QUILLON_HOME, in the working directory or along PATH.\n"
    "; EDITIMPn and EDITEXPn: name,reserved,library,argument,extensions of one converter each.\n"
    "EDITIMP1=Text,0,textconv,,TXT,TEXT,RST,LOG,CSV,INI,C,CPP,H,PY,SH\n"
    "EDITIMP2=Markdown,0,mdconv,,MD,MARKDOWN,MKD\n"
    "EDITIMP3=HTML,0,htmlconv,,HTML,HTM,XHTML\n"
    "EDITEXP1=Text,0,textconv,,TXT,TEXT,LOG\n"
    "EDITEXP2=Markdown,0,mdconv,,MD,MARKDOWN,MKD\n"
    "EDITEXP3=HTML,0,htmlconv,,HTML,HTM,XHTML\n";

struct Arguments {
  std::string directory = ".";
  std::string converters;
  std::string user;
  bool force = false;
};

int Run(const Options& options, const Arguments& arguments) {
  namespace fs = std::filesystem;
  const fs::path path = fs::path(arguments.directory) / kFileName;
  if (fs::exists(path) && !arguments.force) {
    throw Failure{kExitFailed, path.string() + " is there already; --force replaces it"};
  }
  fs::create_directories(arguments.directory);
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << kRows;
  if (!arguments.converters.empty()) file << "ConverterPath=" << fs::absolute(arguments.converters).string() << '\n';
  if (!arguments.user.empty()) file << "UserName=" << arguments.user << '\n';
  file.close();
  if (!file) throw Failure{kExitFailed, path.string() + " could not be written"};
  PrintPath(options, path.string());
  return kExitDone;
}

}  // namespace

void AddSettingsCommands(CLI::App& app, Options& options, int* result) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* init = app.add_subcommand("init", "Make a settings file QUILLON.INI with the converters' rows");
  init->add_option("directory", arguments->directory, "Where (default: here)");
  init->add_option("--converters", arguments->converters, "Directory of converter libraries");
  init->add_option("--user", arguments->user, "Name of the user, for what is saved");
  init->add_flag("--force", arguments->force, "Replace a file that is there");
  init->callback([&options, arguments, result] { *result = Run(options, *arguments); });
}

}  // namespace tool
