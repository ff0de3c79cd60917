#include "libs/DomLib/BoundedFileInputSource.h"

#include "libs/DomLib/DocumentBounds.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/WholeContent.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xercesc/util/BinMemInputStream.hpp>
#include <xercesc/util/TransService.hpp>

#include <cerrno>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

namespace DomLib {

using namespace xercesc;

namespace {

[[noreturn]] void Refuse(const std::string& name, const std::string& reason) {
  throw std::runtime_error("the document names the file \"" + name + "\", which " + reason);
}

// Opens one step of the path without following a link; not open when there is nothing of that name.
Files::FileDescriptor OpenStep(const Files::FileDescriptor& folder, const std::string& step, bool last,
                               const std::string& name) {
  if (step == "..") Refuse(name, "does not lie below the current directory");
  const int flags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | (last ? 0 : O_DIRECTORY);
  Files::FileDescriptor next(::openat(folder.Get(), step.c_str(), flags));
  if (!next && errno == ELOOP) Refuse(name, "is reached through a link");
  if (!next && !last && errno == ENOTDIR) {
    struct stat status {};
    const bool link =
        ::fstatat(folder.Get(), step.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
    if (link) Refuse(name, "is reached through a link");
  }
  return next;
}

Files::FileDescriptor OpenBelowCurrentDirectory(const std::string& name) {
  if (name.starts_with('/')) Refuse(name, "does not lie below the current directory");
  Files::FileDescriptor place(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (std::size_t start = 0; place && start <= name.size();) {
    const std::size_t end = std::min(name.find('/', start), name.size());
    const std::string step = name.substr(start, end - start);
    if (!step.empty() && step != ".") place = OpenStep(place, step, end == name.size(), name);
    start = end + 1;
  }
  return place;
}

Files::FileDescriptor OpenAnywhere(const std::string& name) {
  return Files::FileDescriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
}

std::vector<XMLByte> ReadAll(const Files::FileDescriptor& file, const std::string& name) {
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) Refuse(name, "is not a regular file");
  std::vector<XMLByte> content(kMaximumNamedFileBytes + 1);
  const std::size_t size =
      Files::ReadInto(file.Get(), {reinterpret_cast<char*>(content.data()), content.size()}).bytes;
  if (size > kMaximumNamedFileBytes) Refuse(name, "is larger than 1 MiB");
  content.resize(size);
  return content;
}

}  // namespace

BoundedFileInputSource::BoundedFileInputSource(const XMLCh* identifier, FileOrigin origin,
                                               MemoryManager& memory)
    : LocalFileInputSource(identifier, &memory), identifier_(identifier), origin_(origin) {}

BinInputStream* BoundedFileInputSource::makeStream() const {
  const TranscodeToStr utf8(identifier_.c_str(), "UTF-8");
  const std::string name(reinterpret_cast<const char*>(utf8.str()));
  const Files::FileDescriptor file =
      origin_ == FileOrigin::Program ? OpenAnywhere(name) : OpenBelowCurrentDirectory(name);
  if (!file) return nullptr;
  const std::vector<XMLByte> content = ReadAll(file, name);
  return new (getMemoryManager())
      BinMemInputStream(content.data(), content.size(), BinMemInputStream::BufOpt_Copy, getMemoryManager());
}

}  // namespace DomLib
