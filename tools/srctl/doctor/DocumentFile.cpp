#include "doctor/DocumentFile.h"

#include "libs/DomLib/DocumentBounds.h"
#include "print/Reports.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace Srctl {
namespace {

using Commands::Quoted;

bool ReadBounded(std::istream& in, std::string& content) {
  content.resize(DomLib::kMaximumDocumentBytes + 1);  // one more than allowed shows that there is too much
  in.read(content.data(), static_cast<std::streamsize>(content.size()));
  content.resize(static_cast<std::size_t>(in.gcount()));
  return !in.bad();
}

}  // namespace

std::string ReadDocument(const std::string& file, std::string& content) {
  if (file == "-") return ReadBounded(std::cin, content) ? "" : "Standard input cannot be read.";
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) {
    return Quoted(file) + " is not a file that holds a document.";
  }
  std::ifstream opened(file, std::ios::binary);
  if (!opened) return Quoted(file) + " cannot be read: " + std::strerror(errno) + ".";
  return ReadBounded(opened, content) ? "" : Quoted(file) + " cannot be read.";
}

}  // namespace Srctl
