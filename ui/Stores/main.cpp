#include "Shared/Program.h"
#include "StoresApplication.h"
#include "libs/Bus/ServiceNames.h"

int main(int argc, char* argv[]) {
  Windows::Program::Prepare(Bus::ServiceNames::kStoresWindow, SR_CATALOGUES);
  return Stores::StoresApplication().Run(argc, argv);
}
