#pragma once

#include "libs/DomLib/DocumentBounds.h"

#include <chrono>
#include <cstddef>
#include <string>

// What the parse of one document may cost.
struct ParseBounds {
  std::size_t documentBytes = kMaximumDocumentBytes;
  std::size_t nesting = kMaximumNesting;
  std::size_t entityExpansions = kMaximumEntityExpansions;
  std::size_t expandedBytes = kMaximumExpandedBytes;
  std::size_t contentModelParts = kMaximumContentModelParts;
  std::size_t enumerationCharacters = kMaximumEnumerationCharacters;  // of all attributes together
  std::size_t memory = kMaximumParserMemory;
  std::chrono::milliseconds time = kMaximumParseTime;
};

// What it has cost so far.
struct ParseMeter {
  ParseBounds bounds;
  std::size_t depth = 0;
  std::size_t expandedBytes = 0;
  std::size_t enumerationCharacters = 0;
  std::size_t memory = 0;
  std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::time_point::max();
  std::string exceeded;         // names the bound that memory allocation went past; empty while within all
  bool running = false;         // memory allocation is bounded; clean-up, which has to succeed, is not
  bool contentReached = false;  // the declarations are behind

  void Start() {
    depth = 0;
    expandedBytes = 0;
    enumerationCharacters = 0;
    exceeded.clear();
    contentReached = false;
    running = true;
    deadline = std::chrono::steady_clock::now() + bounds.time;
  }
  [[nodiscard]] bool TimeIsUp() const { return std::chrono::steady_clock::now() >= deadline; }
  [[nodiscard]] std::string TimeBound() const {
    return "the document takes longer than " + std::to_string(bounds.time.count()) + " ms to parse";
  }
};
