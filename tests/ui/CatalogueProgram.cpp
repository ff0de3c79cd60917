#include <iostream>

extern "C" const char* CatalogueFolder();

int main() {
  std::cout << CatalogueFolder();
}
