#pragma once

#include "SRLib/PropertyList/PropertyList.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

// A property-list file whose root is a dictionary, read and replaced as a whole. One thread at a time.
class PropertyListFile {
 public:
  explicit PropertyListFile(std::filesystem::path file) : file_(std::move(file)) {}

  [[nodiscard]] const std::filesystem::path& Path() const { return file_; }

  // The root dictionary; an empty one when the file is missing, empty, damaged (its content is no property
  // list with a dictionary at its root) or cannot be read. A file of this user's own that lacks the right to
  // be read gets it, once.
  [[nodiscard]] PropertyList::Dictionary Load();

  // Why the last Load could not read the file, which may be whole; no error when it could, or when there is
  // none.
  [[nodiscard]] const std::error_code& ReadFailure() const { return readFailure_; }

  // Replaces the file. When the last Load could not read it, nothing is written and ReadFailure is the
  // result. When that found it damaged, the damaged file is first kept beside it under the first of
  // DamagedNames that is free; when none is, nothing is written and the result is file_exists. On an error
  // the old file is as it was.
  [[nodiscard]] std::error_code Save(const PropertyList::Dictionary& root);

  // The names for copies of a damaged file, in the order in which they are taken. None is ever replaced.
  [[nodiscard]] std::vector<std::string> DamagedNames() const;

  // Removes temporary files that a killed process left behind.
  void SweepTemporaries() const;

 private:
  std::filesystem::path file_;
  std::error_code readFailure_;
  bool isDamaged_ = false;
  bool gotRightToRead_ = false;
};
