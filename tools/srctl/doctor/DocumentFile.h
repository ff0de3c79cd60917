#pragma once

#include <string>

namespace Srctl {

// Reads a file, or standard input for "-", up to one byte more than a document may have. A pipe is as good as
// a file. Answers why it cannot be read, a sentence; empty when it was.
[[nodiscard]] std::string ReadDocument(const std::string& file, std::string& content);

}  // namespace Srctl
