#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>

// Small files that are replaced as a whole. Any thread; not coordinated between processes beyond the rename.
namespace Files::AtomicFile {

// The whole content of a regular file. Nothing, and `error` set, when it is missing or cannot be read.
// IsMissing tells the two apart.
[[nodiscard]] std::optional<std::string> Read(const std::filesystem::path& file, std::error_code& error);

// Where a file lies, how large it is and when it was changed: by this a change shows without reading it.
struct Stamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::chrono::nanoseconds contentChanged{};  // since 1970
  std::chrono::nanoseconds statusChanged{};
  bool operator==(const Stamp&) const = default;
};

struct Content {
  std::string bytes;
  // As the file was when the reading began. Nothing when it had changed less than a second before: file
  // systems count time in steps, so another change might have left it as it was.
  std::optional<Stamp> stamp;
};

// The same, but nothing, and no error, when the file still has the stamp `known`.
[[nodiscard]] std::optional<Content> ReadUnlessKnown(const std::filesystem::path& file,
                                                     const std::optional<Stamp>& known,
                                                     std::error_code& error);

// Whether the error of Read says that there is no file. Any other one says nothing about its content.
[[nodiscard]] bool IsMissing(const std::error_code& error);

// Gives the owner of a regular file the right to read it; false when that is not this user.
[[nodiscard]] bool GiveRightToRead(const std::filesystem::path& file);

// Replaces the file, mode 0600 when it is new and its old mode otherwise, by way of a temporary in the same
// folder that is flushed to disk and renamed. A symbolic link at the file's place is followed once and stays.
// On an error the temporary is gone and the old file is as it was; the folder must be readable, too. Without
// an error the new content is in place, and has reached the disk where the file system can flush a folder.
[[nodiscard]] std::error_code Replace(const std::filesystem::path& file, std::string_view content);

// Keeps the file's content under a second name beside it: the first of `names` that is free, or that holds
// the same content already. What else has such a name stays, and so does the file itself. The error is
// file_exists when no name is free.
[[nodiscard]] std::error_code KeepBeside(const std::filesystem::path& file,
                                         std::span<const std::string> names);

// Removes temporaries of this file that a killed process left behind; those of a live writer, in this process
// or another, stay.
void SweepTemporaries(const std::filesystem::path& file);

}  // namespace Files::AtomicFile
