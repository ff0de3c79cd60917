#include "libs/DomLib/MeteredMemoryManager.h"

#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

namespace DomLib {

using namespace xercesc;

namespace {

// Nothing but a single long text needs a block as large as this.
constexpr std::size_t kHugeBlock = std::size_t{128} << 20;

// The library fails cleanly only where it expects to: its destructors allocate (lists of the parts of content
// models), and it deletes members before it makes their successors. A reader, made for each entity, and a
// huge buffer are made where it does neither; everything else is left to the parser's next look at the meter.
// A copy of a text may be as large by chance, so a parser that was cut off is never destroyed.
const std::size_t kSizeOfNewReader =
    XMLPlatformUtils::alignPointerForNewBlockAllocation(sizeof(void*)) + sizeof(XMLReader);

// Whether a list that the library's content models make in their destructors ever takes so many bytes.
constexpr bool IsSizeOfGrowingList(std::size_t size) {
  std::size_t count = 10;
  while (count * sizeof(void*) < size) count = std::max(count + 1, count + count / 4);
  return count * sizeof(void*) == size;
}
static_assert(!IsSizeOfGrowingList(alignof(void*) + sizeof(XMLReader)) &&
              !IsSizeOfGrowingList(alignof(std::max_align_t) + sizeof(XMLReader)));

}  // namespace

MemoryManager* MeteredMemoryManager::getExceptionMemoryManager() {
  return XMLPlatformUtils::fgMemoryManager->getExceptionMemoryManager();
}

void MeteredMemoryManager::Meter(XMLSize_t size) {
  ++meter_.blocksSinceLook;
  const bool mayFail = meter_.makingAutomaton || size == kSizeOfNewReader || size > kHugeBlock;
  if (!mayFail || std::uncaught_exceptions() != 0) return;
  meter_.exceeded = meter_.Excess(size);
  if (meter_.exceeded.empty()) return;
  meter_.running = false;
  throw OutOfMemoryException();
}

void* MeteredMemoryManager::allocate(XMLSize_t size) {
  if (meter_.running) Meter(size);
  void* memory = XMLPlatformUtils::fgMemoryManager->allocate(sizeof(Header) + size);
  auto* header = new (memory) Header{&blocks_, blocks_.next, sizeof(Header) + size};
  header->next->previous = header;
  blocks_.next = header;
  meter_.memory += header->size;
  // An automaton that ran out of memory frees what its tables name, the entries without a value yet too.
  if (meter_.makingAutomaton) std::memset(static_cast<void*>(header + 1), 0, size);
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

void MeteredMemoryManager::FreeAll() {
  while (blocks_.next != &blocks_) deallocate(blocks_.next + 1);
}

}  // namespace DomLib
