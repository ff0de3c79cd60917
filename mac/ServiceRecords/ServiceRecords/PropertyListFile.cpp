#include "PropertyListFile.h"

#include "AtomicFile.h"

#include <optional>
#include <string>

namespace {

constexpr char kDamagedSuffix[] = ".damaged";

}  // namespace

PropertyList::Dictionary PropertyListFile::Load() {
  std::error_code error;
  const std::optional<std::string> content = AtomicFile::Read(file_, error);
  isDamaged_ = !content && error != std::errc::no_such_file_or_directory;
  if (!content || content->empty()) return {};
  std::optional<PropertyList::Value> root = PropertyList::Read(*content);
  auto* const dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  isDamaged_ = dictionary == nullptr;
  return dictionary != nullptr ? std::move(*dictionary) : PropertyList::Dictionary();
}

std::error_code PropertyListFile::Save(const PropertyList::Dictionary& root) {
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
