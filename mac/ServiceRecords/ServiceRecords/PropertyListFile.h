#pragma once

#include "SRLib/PropertyList/PropertyList.h"

#include <filesystem>
#include <system_error>
#include <utility>

// A property-list file whose root is a dictionary, read and replaced as a whole. One thread at a time.
class PropertyListFile {
 public:
  explicit PropertyListFile(std::filesystem::path file) : file_(std::move(file)) {}

  [[nodiscard]] const std::filesystem::path& Path() const { return file_; }

  // The root dictionary; an empty one when the file is missing, empty or damaged.
  [[nodiscard]] PropertyList::Dictionary Load();

  // Replaces the file. When the last Load found it damaged (not readable, or no property list with a
  // dictionary at its root), the damaged file is first kept beside it with ".damaged" appended to its name;
  // without that nothing is written. On an error the old file is as it was.
  [[nodiscard]] std::error_code Save(const PropertyList::Dictionary& root);

  // Removes temporary files that a killed process left behind.
  void SweepTemporaries() const;

 private:
  std::filesystem::path file_;
  bool isDamaged_ = false;
};
