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
  // without that nothing is written. When it could not be read for a reason that passes, such as too many
  // open files, nothing is written either, and that error is the result. On an error the old file is as it
  // was.
  [[nodiscard]] std::error_code Save(const PropertyList::Dictionary& root);

  // Removes temporary files that a killed process left behind.
  void SweepTemporaries() const;

 private:
  std::filesystem::path file_;
  bool isDamaged_ = false;
  std::error_code passingFailure_;  // of the last Load
};
