#include "libs/Files/WholeContent.h"

#include "libs/Files/SystemError.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Files {

Transferred ReadInto(int descriptor, std::span<char> room) {
  Transferred read;
  while (read.bytes < room.size()) {
    const ssize_t count = ::read(descriptor, room.data() + read.bytes, room.size() - read.bytes);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) read.error = LastError();
    if (count <= 0) break;
    read.bytes += static_cast<std::size_t>(count);
  }
  return read;
}

std::error_code ReadAll(int descriptor, std::size_t expectedBytes, std::string& content) {
  content.resize(std::max<std::size_t>(expectedBytes + 1, 4096));
  Transferred read = ReadInto(descriptor, content);
  std::size_t length = read.bytes;
  while (!read.error && length == content.size()) {
    content.resize(length * 2);
    read = ReadInto(descriptor, std::span(content).subspan(length));
    length += read.bytes;
  }
  content.resize(length);
  return read.error;
}

Transferred WriteAll(int descriptor, std::string_view content) {
  Transferred written;
  while (written.bytes < content.size() && !written.error) {
    const ssize_t count = ::write(descriptor, content.data() + written.bytes, content.size() - written.bytes);
    if (count >= 0) {
      written.bytes += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      written.error = LastError();
    }
  }
  return written;
}

}  // namespace Files
