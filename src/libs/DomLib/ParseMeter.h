#pragma once

#include "libs/DomLib/DocumentBounds.h"

#include <time.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace DomLib {

// What the parse of one document may cost.
struct ParseBounds {
  std::size_t documentBytes = kMaximumDocumentBytes;
  std::size_t nesting = kMaximumNesting;
  std::size_t attributes = kMaximumAttributes;
  std::size_t entityExpansions = kMaximumEntityExpansions;
  std::size_t entityMarkup = kMaximumEntityMarkup;    // characters of an entity that holds markup
  std::size_t expandedBytes = kMaximumExpandedBytes;  // of UTF-8
  std::size_t contentModelParts = kMaximumContentModelParts;
  std::size_t modelComparisons = kMaximumModelComparisons;
  std::size_t enumerationCharacters = kMaximumEnumerationCharacters;  // of all attributes together
  std::size_t memory = kMaximumParserMemory;
  std::chrono::milliseconds time = kMaximumParseTime;
};

// The steady clock as of the kernel's last tick, which is near enough and a fraction of the cost: it is asked
// at every tag and every text.
[[nodiscard]] inline std::chrono::steady_clock::time_point LastTick() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
  return std::chrono::steady_clock::time_point(std::chrono::seconds(time.tv_sec) +
                                               std::chrono::nanoseconds(time.tv_nsec));
}

// What it has cost so far.
struct ParseMeter {
  ParseBounds bounds;
  std::size_t depth = 0;
  std::size_t elements = 0;
  std::size_t largestModel = 0;  // parts and characters of their names
  std::size_t expandedBytes = 0;
  std::size_t enumerationCharacters = 0;
  std::size_t memory = 0;
  std::size_t blocksSinceLook = 0;  // made since the parser last compared the meter with the bounds
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  std::string exceeded;          // names the bound that memory allocation went past; empty while within all
  bool running = false;          // memory allocation is bounded; clean-up, which has to succeed, is not
  bool makingAutomaton = false;  // any allocation may fail

  void Start() {
    depth = 0;
    elements = 0;
    largestModel = 0;
    expandedBytes = 0;
    enumerationCharacters = 0;
    blocksSinceLook = 0;
    exceeded.clear();
    running = true;
    deadline = LastTick() + bounds.time;
  }

  [[nodiscard]] bool ExceedsMemory(std::size_t moreMemory) const {
    return moreMemory > bounds.memory || memory > bounds.memory - moreMemory;
  }
  [[nodiscard]] bool IsLate() const { return LastTick() >= deadline; }

  // Names the bound that the parse is past with so much more memory; empty while within time and memory.
  [[nodiscard]] std::string Excess(std::size_t moreMemory) const {
    if (ExceedsMemory(moreMemory)) {
      return "the document expands to more than the parser may hold (" + std::to_string(bounds.memory >> 20) +
             " MiB)";
    }
    if (!IsLate()) return "";
    return "the document takes longer than " + std::to_string(bounds.time.count()) + " ms to parse";
  }
};

}  // namespace DomLib
