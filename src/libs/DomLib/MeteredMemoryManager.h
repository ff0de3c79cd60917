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

  xercesc::MemoryManager* getExceptionMemoryManager() override;
  // Throws xercesc::OutOfMemoryException past the meter's bounds, once in a parse.
  void* allocate(XMLSize_t size) override;
  void deallocate(void* pointer) override;

 private:
  void Meter(XMLSize_t size);

  ParseMeter& meter_;
};
