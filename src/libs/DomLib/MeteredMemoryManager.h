#pragma once

#include "libs/DomLib/ParseMeter.h"

#include <xercesc/framework/MemoryManager.hpp>

#include <cstddef>

namespace DomLib {

// The library's memory manager with a meter on it: what a parser holds at one time is bounded, and a parse
// that expands entities without telling anybody (in attribute values, in declarations) is seen here first.
// One parser, one thread.
class MeteredMemoryManager : public xercesc::MemoryManager {
 public:
  explicit MeteredMemoryManager(ParseMeter& meter) : meter_(meter) {}
  ~MeteredMemoryManager() override { FreeAll(); }
  MeteredMemoryManager(const MeteredMemoryManager&) = delete;
  MeteredMemoryManager& operator=(const MeteredMemoryManager&) = delete;

  xercesc::MemoryManager* getExceptionMemoryManager() override;
  // Throws xercesc::OutOfMemoryException past the meter's bounds, once in a parse. Whatever was being made is
  // then in no state to be destroyed.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* pointer) override;

  // Frees every block, without a destructor of what is in it.
  void FreeAll();

 private:
  // Stands in front of every block, padded so that the block is aligned for anything.
  struct alignas(std::max_align_t) Header {
    Header* previous = this;
    Header* next = this;
    std::size_t size = 0;  // with the header
  };

  void Meter(XMLSize_t size);

  ParseMeter& meter_;
  Header blocks_;  // of the ring of all blocks in use
};

}  // namespace DomLib
