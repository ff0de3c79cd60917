// Prints how many nanoseconds the first restore of a process takes, which finds nothing in memory yet.
#include "GenericFactories.h"
#include "SRLib/SRRegistryConfig.h"

#include <chrono>
#include <cstdlib>
#include <iostream>

int main() {
  const auto begin = std::chrono::steady_clock::now();
  const bool restored = !ServiceRecords::SRRegistryConfig(CGenericFactories::Instance().UserConfiguration())
                             .RestoreStores()
                             .empty();
  const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - begin;
  std::cout << time.count() << " ns" << std::endl;
  return restored ? EXIT_SUCCESS : EXIT_FAILURE;
}
