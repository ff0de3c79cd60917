#pragma once

#include "libs/DomLib/ParseMeter.h"

#include <xercesc/framework/MemoryManager.hpp>

#include <cstddef>

// The library's memory manager with a meter on it: what a parser holds at one time is bounded, and a parse
// that expands entities without telling anybody (in attribute values) is seen here first. One parser, one
// thread.
class MeteredMemoryManager : public xercesc::MemoryManager {
 public:
  explicit MeteredMemoryManager(ParseMeter& meter) : meter_(meter) {}
  ~MeteredMemoryManager() override { FreeLeftovers(); }
  MeteredMemoryManager(const MeteredMemoryManager&) = delete;
  MeteredMemoryManager& operator=(const MeteredMemoryManager&) = delete;

  xercesc::MemoryManager* getExceptionMemoryManager() override;
  // Throws xercesc::OutOfMemoryException past the meter's bounds, once in a parse.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* pointer) override;

  // The library loses blocks when an exception cuts a parse off; this frees them. Only once the parser is
  // gone.
  void FreeLeftovers();

 private:
  // Stands in front of every block, padded so that the block is aligned for anything.
  struct alignas(std::max_align_t) Header {
    Header* previous = this;
    Header* next = this;
    std::size_t size = 0;
  };

  void Meter(XMLSize_t size);

  ParseMeter& meter_;
  Header blocks_;  // of the ring of all blocks in use
};
