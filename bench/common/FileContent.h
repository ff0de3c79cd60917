#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Bench {

// All of them throw std::runtime_error, or what the library throws, on failure.
[[nodiscard]] std::string ReadFile(const std::filesystem::path& file);
// Replaces the file by a new one, without waiting for the disk.
void PutFile(const std::filesystem::path& file, std::string_view content);
// Writes the bytes once, flushes them, renames the file to its place and flushes the folder.
void ReplaceDurably(const std::filesystem::path& file, std::string_view content);

}  // namespace Bench
