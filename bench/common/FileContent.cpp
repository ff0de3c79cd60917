#include "common/FileContent.h"

#include "libs/Files/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>

namespace Bench {
namespace {

void Check(bool succeeded, const std::filesystem::path& file) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), file.string());
}

std::filesystem::path Beside(const std::filesystem::path& file) {
  return file.string() + ".new";
}

}  // namespace

std::string ReadFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  Check(stream.is_open(), file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void PutFile(const std::filesystem::path& file, std::string_view content) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(Beside(file), std::ios::binary | std::ios::trunc);
  stream << content;
  stream.close();
  Check(stream.good(), file);
  std::filesystem::rename(Beside(file), file);
}

void ReplaceDurably(const std::filesystem::path& file, std::string_view content) {
  const std::filesystem::path written = Beside(file);
  const Files::FileDescriptor descriptor(
      ::open(written.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  Check(descriptor.Get() >= 0, written);
  for (std::string_view left = content; !left.empty();) {
    const ssize_t count = ::write(descriptor.Get(), left.data(), left.size());
    Check(count > 0, written);
    left.remove_prefix(static_cast<std::size_t>(count));
  }
  Check(::fsync(descriptor.Get()) == 0, written);
  Check(::rename(written.c_str(), file.c_str()) == 0, file);
  const Files::FileDescriptor folder(::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  Check(folder.Get() >= 0 && ::fsync(folder.Get()) == 0, file.parent_path());
}

}  // namespace Bench
