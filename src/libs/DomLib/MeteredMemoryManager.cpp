#include "libs/DomLib/MeteredMemoryManager.h"

#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <cstring>

using namespace xercesc;

namespace {

// In front of every block, its size; padded so that the block stays aligned for anything.
constexpr std::size_t kHeader = alignof(std::max_align_t);
static_assert(kHeader >= sizeof(std::size_t));

}  // namespace

MemoryManager* MeteredMemoryManager::getExceptionMemoryManager() {
  return XMLPlatformUtils::fgMemoryManager->getExceptionMemoryManager();
}

void* MeteredMemoryManager::allocate(XMLSize_t size) {
  if (meter_.exceeded.empty() && meter_.TimeIsUp()) meter_.exceeded = meter_.TimeBound();
  if (meter_.exceeded.empty() &&
      size > meter_.bounds.memory - std::min(meter_.memory, meter_.bounds.memory)) {
    meter_.exceeded = "the document expands to more than the parser may hold (" +
                      std::to_string(meter_.bounds.memory >> 20) + " MiB)";
  }
  if (!meter_.exceeded.empty()) throw OutOfMemoryException();
  auto* block = static_cast<std::byte*>(XMLPlatformUtils::fgMemoryManager->allocate(size + kHeader));
  std::memcpy(block, &size, sizeof size);
  meter_.memory += size;
  return block + kHeader;
}

void MeteredMemoryManager::deallocate(void* pointer) {
  if (pointer == nullptr) return;
  std::byte* block = static_cast<std::byte*>(pointer) - kHeader;
  XMLSize_t size = 0;
  std::memcpy(&size, block, sizeof size);
  meter_.memory -= size;
  XMLPlatformUtils::fgMemoryManager->deallocate(block);
}
