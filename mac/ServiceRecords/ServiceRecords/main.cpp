#include "Process/Application.h"

int main(int argc, char** argv) {
  return Agent::ApplicationMain(argc, argv);
}
