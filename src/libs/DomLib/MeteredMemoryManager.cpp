#include "libs/DomLib/MeteredMemoryManager.h"

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/validators/common/ContentSpecNode.hpp>

#include <algorithm>
#include <exception>
#include <new>

using namespace xercesc;

namespace {

// More than any content model of a document needs for its clean-up.
constexpr std::size_t kHugeBlock = std::size_t{128} << 20;

template <class Object>
std::size_t SizeOfNew() {
  return XMLPlatformUtils::alignPointerForNewBlockAllocation(sizeof(MemoryManager*)) + sizeof(Object);
}

// The library's content models allocate in their destructors, where an exception ends the process. So while
// declarations are read, only what no destructor makes may fail: further parts of a content model, readers of
// entities and huge buffers.
bool IsMadeByNoDestructor(std::size_t size) {
  return size == SizeOfNew<ContentSpecNode>() || size == SizeOfNew<XMLReader>() || size > kHugeBlock;
}

}  // namespace

MemoryManager* MeteredMemoryManager::getExceptionMemoryManager() {
  return XMLPlatformUtils::fgMemoryManager->getExceptionMemoryManager();
}

void MeteredMemoryManager::Meter(XMLSize_t size) {
  if (meter_.exceeded.empty() && meter_.TimeIsUp()) meter_.exceeded = meter_.TimeBound();
  if (meter_.exceeded.empty() &&
      size > meter_.bounds.memory - std::min(meter_.memory, meter_.bounds.memory)) {
    meter_.exceeded = "the document expands to more than the parser may hold (" +
                      std::to_string(meter_.bounds.memory >> 20) + " MiB)";
  }
  if (meter_.exceeded.empty() || std::uncaught_exceptions() != 0) return;
  if (!meter_.contentReached && !IsMadeByNoDestructor(size)) return;
  meter_.running = false;
  throw OutOfMemoryException();
}

void* MeteredMemoryManager::allocate(XMLSize_t size) {
  if (meter_.running) Meter(size);
  void* memory = XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Header) + size);
  auto* header = new (memory) Header{&blocks_, blocks_.next, size};
  header->next->previous = header;
  blocks_.next = header;
  meter_.memory += size;
  return header + 1;
}

void MeteredMemoryManager::deallocate(void* pointer) {
  if (pointer == nullptr) return;
  Header* header = static_cast<Header*>(pointer) - 1;
  header->previous->next = header->next;
  header->next->previous = header->previous;
  meter_.memory -= header->size;
  XMLPlatformUtils::fgMemoryManager->deallocate(header);
}

void MeteredMemoryManager::FreeLeftovers() {
  while (blocks_.next != &blocks_) deallocate(blocks_.next + 1);
}
