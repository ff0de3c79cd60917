#pragma once

#include <xercesc/framework/LocalFileInputSource.hpp>

#include <string>

namespace DomLib {

enum class FileOrigin { Document, Program };

// A file that a parse needs: a regular one of at most 1 MiB. One that a document names lies below the current
// directory and is reached without following a link; the program's own files may lie anywhere, since a
// package manager may have linked them. Anything else throws a std::runtime_error that says which of these it
// is not. A missing file is left to the parser.
class BoundedFileInputSource : public xercesc::LocalFileInputSource {
 public:
  // `identifier` is the name as it is given, relative to the current directory. The memory manager holds the
  // file's content and outlives this object.
  BoundedFileInputSource(const XMLCh* identifier, FileOrigin origin, xercesc::MemoryManager& memory);

  xercesc::BinInputStream* makeStream() const override;

 private:
  const std::basic_string<XMLCh> identifier_;
  const FileOrigin origin_;
};

}  // namespace DomLib
