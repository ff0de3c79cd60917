#include "PropertyListFile.h"

#include "AtomicFile.h"

#include <optional>

PropertyList::Dictionary PropertyListFile::Load() {
  isDamaged_ = false;
  std::optional<std::string> content = AtomicFile::Read(file_, readFailure_);
  if (readFailure_ == std::errc::permission_denied && !gotRightToRead_) {
    gotRightToRead_ = AtomicFile::GiveRightToRead(file_);
    if (gotRightToRead_) content = AtomicFile::Read(file_, readFailure_);
  }
  if (AtomicFile::IsMissing(readFailure_)) readFailure_.clear();
  if (!content || content->empty()) return {};
  std::optional<PropertyList::Value> root = PropertyList::Read(*content);
  auto* const dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  isDamaged_ = dictionary == nullptr;
  return dictionary != nullptr ? std::move(*dictionary) : PropertyList::Dictionary();
}

std::error_code PropertyListFile::Save(const PropertyList::Dictionary& root) {
  if (readFailure_) return readFailure_;
  if (isDamaged_) {
    if (const std::error_code error = AtomicFile::KeepBeside(file_, DamagedNames())) return error;
  }
  return AtomicFile::Replace(file_, PropertyList::Write(root));
}

std::vector<std::string> PropertyListFile::DamagedNames() const {
  constexpr int kCopies = 10;
  const std::string first = file_.filename().string() + ".damaged";
  std::vector<std::string> names{first};
  for (int copy = 1; copy < kCopies; ++copy) names.push_back(first + "." + std::to_string(copy));
  return names;
}

void PropertyListFile::SweepTemporaries() const {
  AtomicFile::SweepTemporaries(file_);
}
