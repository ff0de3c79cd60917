// Judges figures by the targets: bench_report --targets FILE [--group NAME]... OUTPUT...
#include "report/Judgement.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

namespace {

using nlohmann::json;

struct Arguments {
  std::string targets;
  std::vector<std::string> groups;
  std::vector<std::string> outputs;
  std::string about;
  std::string folder;
  bool check = false;
};

std::string Read(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A program that was ended leaves an output that is empty or torn, and no figures.
Bench::Figures ReadFigures(const std::vector<std::string>& outputs) {
  Bench::Figures figures;
  for (const std::string& output : outputs) {
    try {
      Bench::AddFigures(Read(output), figures);
    } catch (const std::exception& exception) {
      std::cerr << "bench_report: " << output << ": " << exception.what() << '\n';
    }
  }
  return figures;
}

void Write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::trunc);
  stream << text;
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

void WriteResults(const Arguments& arguments, const json& targets, const std::vector<Bench::Row>& rows,
                  const Bench::Figures& figures) {
  const std::filesystem::path folder = arguments.folder;
  const json results{{"about", arguments.about}, {"targets", Bench::AsJson(rows)}, {"figures", figures}};
  Write(folder / "results.json", results.dump(2) + "\n");
  for (const json& plot : targets.at("plots")) {
    const std::string script = Bench::PlotScript(plot, figures);
    if (!script.empty()) Write(folder / (plot.at("name").get<std::string>() + ".gp"), script);
  }
}

// 0 when the targets are met, or were not to be checked; 1 when one is missed.
int Report(const Arguments& arguments) {
  const json targets = json::parse(Read(arguments.targets));
  const Bench::Figures figures = ReadFigures(arguments.outputs);
  const auto rows = Bench::Judge(targets, {arguments.groups.begin(), arguments.groups.end()}, figures);
  std::cout << Bench::Table(rows);
  if (!arguments.folder.empty()) WriteResults(arguments, targets, rows, figures);
  return arguments.check && !Bench::AllMet(rows) ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Arguments arguments;
  CLI::App app("Judges figures by the targets");
  app.add_option("--targets", arguments.targets, "The targets")->required();
  app.add_option("--group", arguments.groups, "Only the targets of this group")->allow_extra_args(false);
  app.add_option("--about", arguments.about, "What the results say of the machine");
  app.add_option("--write-to", arguments.folder, "The folder for the results and the plots' scripts");
  app.add_flag("--check", arguments.check, "Exit status 1 when a target is missed");
  app.add_option("outputs", arguments.outputs, "What the programs wrote");
  CLI11_PARSE(app, argc, argv);
  try {
    return Report(arguments);
  } catch (const std::exception& exception) {
    std::cerr << "bench_report: " << exception.what() << '\n';
    return 2;
  }
}
