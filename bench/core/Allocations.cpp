#include "core/Allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocatedBytes = 0;

}  // namespace

void* operator new(std::size_t size) {
  allocatedBytes += size;
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}

namespace Bench {

std::uint64_t AllocatedBytes() {
  return allocatedBytes;
}

}  // namespace Bench
