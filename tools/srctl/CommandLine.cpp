#include "CommandLine.h"

#include "Commands.h"
#include "NetworkCommands.h"
#include "doctor/Doctor.h"
#include "libs/Terminal/TerminalText.h"
#include "libs/Text/TextHelpers.h"
#include "opening/OpenCommand.h"
#include "print/Reports.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace Srctl {
namespace {

using Commands::Status;

// What the command line said, filled in by the parser.
struct Arguments {
  std::string command;
  std::string file;
  std::vector<std::string> files;
  std::string id;
  Commands::StoreChoice store;
  std::string gateway;
  std::string onOrOff;
  std::string url;
  std::string wait;  // seconds
  bool onTerminal = false;
  bool inWindow = false;
  bool initially = false;
  bool json = false;
  bool jsonLines = false;
  Status status = Status::Done;

  [[nodiscard]] Printing::Format Format() const {
    if (jsonLines) return Printing::Format::JsonLines;
    return json ? Printing::Format::Json : Printing::Format::Text;
  }
  [[nodiscard]] Commands::QuestionPlace Place() const {
    if (onTerminal) return Commands::QuestionPlace::Terminal;
    return inWindow ? Commands::QuestionPlace::Window : Commands::QuestionPlace::Anywhere;
  }
};

// The bus carries nothing else.
std::string ProblemWithText(const std::string& argument) {
  return util::IsUTF8(argument) ? "" : "it is not UTF-8 text";
}

const CLI::Validator kIsText(ProblemWithText, "");

// How to write a file's name that was taken for an option; empty where there is none such.
std::string HintForDash(const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    std::error_code ignored;
    if (word == "--") return {};  // names follow, so that was known
    if (word.size() < 2 || word.front() != '-' || !std::filesystem::exists(word, ignored)) continue;
    return ". To name the file " + Terminal::OneLine(word) + ", write " + Commands::ShellWord(word) +
           ", or -- before it";
  }
  return {};
}

// What is wrong with the command line and where to read on, in one line.
std::string UsageProblem(const CLI::App* app, const CLI::Error& error,
                         const std::vector<std::string>& words) {
  const std::vector<CLI::App*> commands = app->get_subcommands();
  const std::vector<std::string> unknown = app->remaining();
  std::string problem = error.what();
  if (commands.empty()) {
    problem =
        unknown.empty() ? "Name a command" : "There is no command or option \"" + unknown.front() + "\"";
  }
  const std::string command = commands.empty() ? "" : commands.front()->get_name() + " ";
  return "srctl: " + Terminal::OneLine(problem) + HintForDash(words) + ". How it is used: srctl " + command +
         "--help\n";
}

constexpr char kJson[] = "--json";
constexpr char kJsonLines[] = "--json-lines";

void AddJson(CLI::App& command, Arguments& arguments) {
  command.add_flag(kJson, arguments.json, "Print JSON");
}

// Before the command it means the same as behind it, where the command has it.
void AddJsonForAll(CLI::App& app, Arguments& arguments) {
  CLI::Option* const json = app.add_flag(kJson, arguments.json, "Have the command print JSON");
  app.parse_complete_callback([&app, json] {
    if (json->count() == 0) return;
    for (const CLI::App* command : app.get_subcommands()) {
      if (command->get_option_no_throw(kJson) == nullptr)
        throw CLI::ExtrasError(std::vector<std::string>{kJson});
      const CLI::Option* const lines = command->get_option_no_throw(kJsonLines);
      if (lines != nullptr && lines->count() > 0) throw CLI::ExcludesError(kJsonLines, kJson);
    }
  });
}

// Null where there is none.
const CLI::App* CommandNamed(const CLI::App& app, const std::string& name) {
  const auto commands = app.get_subcommands(
      [&name](const CLI::App* command) { return !name.empty() && command->get_name() == name; });
  return commands.empty() ? nullptr : commands.front();
}

void AddHelp(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("help", "Say how a command is used");
  const auto problem = [&app](const std::string& name) {
    return CommandNamed(app, name) == nullptr ? "there is no command \"" + name + "\"" : "";
  };
  command->add_option("COMMAND", arguments.command, "The command; without it, all of them are listed")
      ->check(CLI::Validator(problem, ""));
  command->callback([&app, &arguments] {
    const CLI::App* const named = CommandNamed(app, arguments.command);
    std::cout << (named != nullptr
                      ? named->help(app.get_name())
                      : app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal));
  });
}

void AddOpen(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("open", "Open service-record files, and wait for the outcome");
  command->add_option("FILE", arguments.files, "The files, usually with the suffix cr")->required();
  command->add_flag("--terminal", arguments.onTerminal, "Be asked on this terminal");
  command->add_flag("--window", arguments.inWindow, "Be asked in a window of your desktop")
      ->excludes("--terminal");
  command->footer(
      "Without --terminal and --window you are asked on your desktop (which WAYLAND_DISPLAY or DISPLAY "
      "names) where it shows windows, else on this terminal. Ctrl+C withdraws the question.\n"
      "Exit status: 0 all stores were added or replaced, or that of the gravest outcome: 4 declined, 5 a "
      "server could not be verified, 6 no service record, 7 nobody could be asked, 8 not saved, 9 the agent "
      "ended. Before anything is opened: 1 a file is not there, 2 wrong usage, 3 the agent cannot be "
      "reached.");
  command->callback([&arguments] { arguments.status = Commands::Open(arguments.files, arguments.Place()); });
}

void AddList(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("list", "List the stores");
  AddJson(*command, arguments);
  command->callback([&arguments] { arguments.status = Commands::List(arguments.Format()); });
}

void AddShow(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("show", "Show one store with its gateways");
  command->add_option("ID", arguments.id, "The store's id, as in the list")->required()->check(kIsText);
  AddJson(*command, arguments);
  command->callback([&arguments] { arguments.status = Commands::Show(arguments.id, arguments.Format()); });
}

void AddDelete(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("delete", "Delete a store");
  command->add_option("ID", arguments.id, "The store's id, as in the list")->required()->check(kIsText);
  command->callback([&arguments] { arguments.status = Commands::Delete(arguments.id); });
}

void AddDefaultGateway(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("default-gateway", "Choose a store's default gateway");
  CLI::Option_group* store = command->add_option_group("store", "The store");
  store->add_option("--id", arguments.store.id, "The store's id")->check(kIsText);
  store->add_option("--url", arguments.store.url, "The store's URL")->check(kIsText);
  store->require_option(1);
  command->add_option("NAME", arguments.gateway, "The gateway's name")->required()->check(kIsText);
  command->callback(
      [&arguments] { arguments.status = Commands::DefaultGateway(arguments.store, arguments.gateway); });
}

void AddDiscover(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("discover", "Check a discovery document and hand it to the agent");
  command->add_option("FILE", arguments.file, "The document, or - for standard input")->required();
  command->callback([&arguments] { arguments.status = Commands::Discover(arguments.file); });
}

void AddLogging(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("logging", "Tell whether the agent writes its log, or switch it");
  command->add_option("STATE", arguments.onOrOff, "on or off")->check(CLI::IsMember({"on", "off"}));
  AddJson(*command, arguments);
  command->callback([&arguments] {
    arguments.status = arguments.onOrOff.empty()
                           ? Commands::ShowLogging(arguments.Format())
                           : Commands::SetLogging(arguments.onOrOff == "on", arguments.Format());
  });
}

// The parser's word for a flag without a value becomes the default.
std::string WithDefaultWait(std::string& wait) {
  if (wait == "true") wait = "15";
  return {};
}

void AddLocation(CLI::App& app, Arguments& arguments) {
  constexpr unsigned kLongestWait = 24 * 60 * 60;
  CLI::App* command = app.add_subcommand("location", "Tell where this machine stands relative to a store");
  command->add_option("URL", arguments.url, "The store's URL, as in the list")->required()->check(kIsText);
  // A flag, so that an argument that follows it is not taken for its value. Not bound to a number: some
  // releases of the parser check the number of a flag that is not given, too.
  CLI::Option* wait =
      command
          ->add_flag("--wait", arguments.wait,
                     "While that is being decided, wait for the decision; 15 seconds without a number")
          ->option_text("[=SECONDS]")
          ->transform(CLI::Validator(WithDefaultWait, ""))
          ->check(CLI::Range(1U, kLongestWait));
  AddJson(*command, arguments);
  command->footer("Exit status: 1 also when no store has the URL, for which the agent answers all the same.");
  command->callback([&arguments, wait] {
    std::optional<std::chrono::seconds> limit;
    if (wait->count() > 0) limit = std::chrono::seconds(wait->as<unsigned>());
    arguments.status = Commands::Location(arguments.url, limit, arguments.Format());
  });
}

void AddGateway(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("gateway", "Show the current gateway of the store behind a URL");
  command->add_option("URL", arguments.url, "Any URL that points at the store")->required()->check(kIsText);
  AddJson(*command, arguments);
  command->callback(
      [&arguments] { arguments.status = Commands::Gateway(arguments.url, arguments.Format()); });
}

void AddReachability(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand("reachability", "Tell how the network is reached");
  AddJson(*command, arguments);
  command->callback([&arguments] { arguments.status = Commands::Reachability(arguments.Format()); });
}

void AddWatch(CLI::App& app, Arguments& arguments) {
  CLI::App* command = app.add_subcommand(
      "watch", "Print a line whenever the stores or a location change, until interrupted (Ctrl+C)");
  command->add_flag("--json", arguments.json, "Print a JSON object in each line");
  command->add_flag("--initial", arguments.initially,
                    "First tell the stores and their locations as they are");
  command->callback(
      [&arguments] { arguments.status = Commands::Watch(arguments.initially, arguments.Format()); });
}

void AddDoctor(CLI::App& app, Arguments& arguments) {
  CLI::App* command =
      app.add_subcommand("doctor", "Check the agent, its files and every store, and say what to do");
  AddJson(*command, arguments);
  command
      ->add_flag(kJsonLines, arguments.jsonLines, "Print each finding as a JSON object in a line of its own")
      ->excludes(kJson);
  CLI::Option* const store =
      command->add_option("--store", arguments.id, "Only the store with this id")->check(kIsText);
  CLI::Option* const record =
      command
          ->add_option("FILE|URL", arguments.file,
                       "Only the stores of this service-record file, or the server at this address, which "
                       "need not be in the list")
          ->excludes(store);
  command->callback([&arguments, store, record] {
    if (record->count() > 0) {
      arguments.status = Commands::DoctorOfRecord(arguments.file, arguments.Format());
      return;
    }
    arguments.status = store->count() > 0 ? Commands::DoctorOfStore(arguments.id, arguments.Format())
                                          : Commands::Doctor(arguments.Format());
  });
}

}  // namespace

int RunCommandLine(int argc, const char* const* argv) {
  CLI::App app("Looks after the application stores that the service-records agent keeps.", "srctl");
  app.footer(
      "Exit status: 0 done, 1 refused or not found, 2 wrong usage, 3 the agent cannot be reached; further "
      "ones "
      "of opening a file: srctl open --help.");
  app.set_version_flag("--version", "srctl " SR_VERSION);
  app.require_subcommand(1);
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  app.failure_message([&words](const CLI::App* failed, const CLI::Error& error) {
    return UsageProblem(failed, error, words);
  });
  Arguments arguments;
  AddJsonForAll(app, arguments);
  for (const auto add : {AddHelp, AddOpen, AddList, AddShow, AddDelete, AddDefaultGateway, AddDiscover,
                         AddLocation, AddGateway, AddReachability, AddWatch, AddLogging, AddDoctor}) {
    add(app, arguments);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    const bool asked = app.exit(error) == 0;  // --help and --version end here too
    return static_cast<int>(asked ? Status::Done : Status::Usage);
  }
  return static_cast<int>(arguments.status);
}

}  // namespace Srctl
