#include "Shared/Program.h"
#include "StoresApplication.h"

int main(int argc, char* argv[]) {
  Program::Prepare(Stores::StoresApplication::kIdentifier, SR_CATALOGUES);
  return Stores::StoresApplication().Run(argc, argv);
}
