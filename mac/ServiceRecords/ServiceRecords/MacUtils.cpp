#include "MacUtils.h"

#include "libs/DomLib/DocumentSize.h"
#include "libs/Files/FileDescriptor.h"
#include "libs/Files/SystemError.h"
#include "libs/Files/WholeContent.h"
#include "libs/Termination/TerminationEvent.h"
#include "libs/Text/TextHelpers.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace util {
namespace {

// The whole content, but at most one byte more than a document may have.
std::string ReadDocument(const Files::FileDescriptor& file) {
  std::string content;
  std::array<char, 65536> buffer;
  std::size_t count = 0;
  do {
    count = Files::ReadInto(file.Get(), buffer).bytes;
    content.append(buffer.data(), count);
  } while (count == buffer.size() && content.size() <= DomLib::kMaximumDocumentBytes);
  content.resize(std::min(content.size(), DomLib::kMaximumDocumentBytes + 1));
  return content;
}

}  // namespace

std::error_code ReadDocumentFile(const std::wstring& path, std::wstring& text) {
  // Not blocking, so that a pipe put in a document's place cannot hold the caller; a terminal there must not
  // become the caller's, whose hang-up would end it.
  const Files::FileDescriptor file(
      ::open(narrow(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file || ::fstat(file.Get(), &status) != 0) return Files::LastError();
  if (!S_ISREG(status.st_mode)) return std::make_error_code(std::errc::is_a_directory);
  text = widen(ReadDocument(file));
  return {};
}

bool ReadUTF8File(const std::wstring& path, std::wstring& text) {
  return !ReadDocumentFile(path, text);
}

bool WaitOneSecond() {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + std::chrono::seconds(1);
  // Rounded up, or the last part of the second would be spent in a busy loop.
  for (auto left = end - steady_clock::now(); left.count() > 0; left = end - steady_clock::now()) {
    pollfd termination{Termination::Descriptor(), POLLIN, 0};
    const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    if (::poll(&termination, 1, static_cast<int>(milliseconds)) > 0) return false;
  }
  return true;
}

}  // namespace util
