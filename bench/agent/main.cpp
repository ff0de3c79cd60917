// Measures whole agents: agent_bench calls|delete|start|load|rest|agents|watchers. Prints {"figures": {name:
// value}}.
#include "agent/Outputs.h"
#include "agent/Scenarios.h"

#include <exception>
#include <iostream>
#include <map>
#include <string>

int main(int argc, char** argv) {
  const std::map<std::string, void (*)(bench::Outputs&)> scenarios{
      {"calls", bench::MeasureCalls},      {"delete", bench::MeasureDeletion},
      {"start", bench::MeasureStart},      {"load", bench::MeasureLoad},
      {"rest", bench::MeasureRest},        {"agents", bench::MeasureManyAgents},
      {"watchers", bench::MeasureWatchers}};
  const auto chosen = scenarios.find(argc == 2 ? argv[1] : "");
  if (chosen == scenarios.end()) {
    std::cerr << "usage: agent_bench calls|delete|start|load|rest|agents|watchers\n";
    return 2;
  }
  bench::Outputs outputs;
  try {
    chosen->second(outputs);
    return 0;
  } catch (const std::exception& exception) {
    std::cerr << "agent_bench " << chosen->first << ": " << exception.what() << '\n';
    return 1;
  }
}
