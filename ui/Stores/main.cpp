#include "Shared/Program.h"
#include "StoresApplication.h"

int main(int argc, char* argv[]) {
  Program::Prepare(StoresApplication::kIdentifier, SR_CATALOGUES);
  return StoresApplication().Run(argc, argv);
}
