#include "CommandLine.h"

#include <clocale>
#include <iostream>

int main(int argc, char* argv[]) {
  std::setlocale(LC_CTYPE, "");  // how wide characters are, for aligned columns
  const int status = Srctl::RunCommandLine(argc, argv);
  if (std::cout.flush()) return status;
  std::cerr << "srctl: The output could not be written. Check that its reader still runs, or that its disk "
               "has space.\n";
  return status == 0 ? 1 : status;
}
