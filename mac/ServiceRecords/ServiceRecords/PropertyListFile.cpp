#include "PropertyListFile.h"

#include "AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>

namespace {

constexpr char kDamagedSuffix[] = ".damaged";

// Whether the file may be whole although it could not be read.
bool Passes(const std::error_code& error) {
  constexpr std::errc kPassing[] = {std::errc::too_many_files_open, std::errc::too_many_files_open_in_system,
                                    std::errc::not_enough_memory, std::errc::io_error};
  const auto is = [&error](std::errc passing) { return error == passing; };
  return std::ranges::any_of(kPassing, is) || error == std::error_code(ESTALE, std::generic_category());
}

}  // namespace

PropertyList::Dictionary PropertyListFile::Load() {
  std::error_code error;
  const std::optional<std::string> content = AtomicFile::Read(file_, error);
  passingFailure_ = Passes(error) ? error : std::error_code();
  isDamaged_ = !content && !passingFailure_ && error != std::errc::no_such_file_or_directory;
  if (!content || content->empty()) return {};
  std::optional<PropertyList::Value> root = PropertyList::Read(*content);
  auto* const dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  isDamaged_ = dictionary == nullptr;
  return dictionary != nullptr ? std::move(*dictionary) : PropertyList::Dictionary();
}

std::error_code PropertyListFile::Save(const PropertyList::Dictionary& root) {
  if (passingFailure_) return passingFailure_;
  if (isDamaged_) {
    if (const std::error_code error = AtomicFile::KeepBeside(file_, kDamagedSuffix)) return error;
  }
  return AtomicFile::Replace(file_, PropertyList::Write(root));
}

void PropertyListFile::SweepTemporaries() const {
  AtomicFile::SweepTemporaries(file_);
  std::filesystem::path damaged = file_;
  AtomicFile::SweepTemporaries(damaged += kDamagedSuffix);
}
