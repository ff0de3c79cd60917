#pragma once

#include <xercesc/framework/LocalFileInputSource.hpp>

#include <string>

// A file that a document names. It is opened only if it is a regular file of at most 1 MiB that lies below
// the current directory, reached without following a link; anything else throws a std::runtime_error that
// says which of these it is not. A missing file is left to the parser.
class BoundedFileInputSource : public xercesc::LocalFileInputSource {
 public:
  // `identifier` is the name as the document gives it, relative to the current directory. The memory manager
  // holds the file's content and outlives this object.
  BoundedFileInputSource(const XMLCh* identifier, xercesc::MemoryManager& memory);

  xercesc::BinInputStream* makeStream() const override;

 private:
  const std::basic_string<XMLCh> identifier_;
};
