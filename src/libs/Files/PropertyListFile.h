#pragma once

#include "libs/Files/AtomicFile.h"
#include "libs/PropertyList/PropertyList.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace Files {

// A property-list file whose root is a dictionary, read and replaced as a whole. Any thread; writers take
// turns by themselves.
class PropertyListFile {
 public:
  // What the file held at one time. Copies share the tree, which never changes.
  class Reading {
   public:
    // Of a missing file.
    Reading();
    // The root dictionary; an empty one when the file is missing, empty, damaged (its content is no property
    // list with a dictionary at its root) or cannot be read. Never null.
    [[nodiscard]] const std::shared_ptr<const PropertyList::Dictionary>& Root() const { return root_; }
    // Why the file, which may be whole, could not be read; no error when it could, or when there is none.
    [[nodiscard]] const std::error_code& Failure() const { return failure_; }

   private:
    friend class PropertyListFile;
    void Parse(std::string bytes);
    // The file's text when this becomes its root.
    [[nodiscard]] std::string TextWith(const PropertyList::Dictionary& root) const;

    std::shared_ptr<const PropertyList::Dictionary> root_;
    std::error_code failure_;
    bool isDamaged_ = false;
    std::shared_ptr<const std::string> bytes_;
    bool isWritten_ = false;  // the bytes are what Write gave for the root
    std::optional<AtomicFile::Stamp> stamp_;
  };

  explicit PropertyListFile(std::filesystem::path file) : file_(std::move(file)) {}

  [[nodiscard]] const std::filesystem::path& Path() const { return file_; }

  // What the file holds now. Bytes that `before` was read from, or has written, are not parsed again; without
  // a change that shows in the file's stamp they are not even read. A file of this user's own that lacks the
  // right to be read gets it, once.
  [[nodiscard]] Reading Load(const Reading& before) const;
  [[nodiscard]] Reading Load() const { return Load(Reading()); }

  // Replaces the file, of which `reading` tells what it held, and what it holds on success. When it could not
  // be read, nothing is written and the result is that failure. When it was damaged, the damaged file is
  // first kept beside it under the first of DamagedNames that is free; when none is, nothing is written and
  // the result is file_exists. On an error the old file is as it was. Texts have to be WritableText, and no
  // container may lie too deep, or the file holds less than `reading` tells.
  [[nodiscard]] std::error_code Save(Reading& reading, PropertyList::Dictionary root) const;

  // The names for copies of a damaged file, in the order in which they are taken. None is ever replaced.
  [[nodiscard]] std::vector<std::string> DamagedNames() const;

  // Removes temporary files that a killed process left behind.
  void SweepTemporaries() const;

 private:
  [[nodiscard]] std::optional<AtomicFile::Content> ReadUnlessKnown(
      const std::optional<AtomicFile::Stamp>& known, std::error_code& error) const;

  std::filesystem::path file_;
  mutable std::atomic<bool> gotRightToRead_ = false;
};

}  // namespace Files
