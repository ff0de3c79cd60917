// Measures whole agents: agent_bench calls|delete|start|load|rest|agents|watchers|dialogs. Prints {"figures":
// {name: value}}.
#include "agent/Outputs.h"
#include "agent/Scenarios.h"

#include <exception>
#include <iostream>
#include <map>
#include <string>

int main(int argc, char** argv) {
  const std::map<std::string, void (*)(Bench::Outputs&)> scenarios{
      {"calls", Bench::MeasureCalls},       {"delete", Bench::MeasureDeletion},
      {"start", Bench::MeasureStart},       {"load", Bench::MeasureLoad},
      {"rest", Bench::MeasureRest},         {"agents", Bench::MeasureManyAgents},
      {"watchers", Bench::MeasureWatchers}, {"dialogs", Bench::MeasureDialogs}};
  const auto chosen = scenarios.find(argc == 2 ? argv[1] : "");
  if (chosen == scenarios.end()) {
    std::cerr << "usage: agent_bench calls|delete|start|load|rest|agents|watchers|dialogs\n";
    return 2;
  }
  Bench::Outputs outputs;
  try {
    chosen->second(outputs);
    return 0;
  } catch (const std::exception& exception) {
    std::cerr << "agent_bench " << chosen->first << ": " << exception.what() << '\n';
    return 1;
  }
}
