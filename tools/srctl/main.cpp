#include "CommandLine.h"

#include <clocale>

int main(int argc, char* argv[]) {
  std::setlocale(LC_CTYPE, "");  // how wide characters are, for aligned columns
  return RunCommandLine(argc, argv);
}
