#include "libs/Files/PropertyListFile.h"

#include "libs/Lifetime/NoDestructor.h"

namespace Files {

std::optional<AtomicFile::Content> PropertyListFile::ReadUnlessKnown(
    const std::optional<AtomicFile::Stamp>& known, std::error_code& error) const {
  std::optional<AtomicFile::Content> content = AtomicFile::ReadUnlessKnown(file_, known, error);
  if (error != std::errc::permission_denied || gotRightToRead_) return content;
  gotRightToRead_ = AtomicFile::GiveRightToRead(file_);
  return gotRightToRead_ ? AtomicFile::ReadUnlessKnown(file_, known, error) : std::nullopt;
}

PropertyListFile::Reading PropertyListFile::Load(const Reading& before) const {
  Reading reading;
  std::optional<AtomicFile::Content> content = ReadUnlessKnown(before.stamp_, reading.failure_);
  if (!content && !reading.failure_) return before;
  if (AtomicFile::IsMissing(reading.failure_)) reading.failure_.clear();
  if (!content) return reading;
  if (before.bytes_ != nullptr && *before.bytes_ == content->bytes) {
    reading = before;
  } else {
    reading.Parse(std::move(content->bytes));
  }
  reading.stamp_ = content->stamp;
  return reading;
}

PropertyListFile::Reading::Reading() {
  static const Lifetime::NoDestructor<std::shared_ptr<const PropertyList::Dictionary>> empty(
      std::make_shared<PropertyList::Dictionary>());
  root_ = *empty;
}

void PropertyListFile::Reading::Parse(std::string bytes) {
  std::optional<PropertyList::Value> root;
  if (!bytes.empty()) root = PropertyList::Read(bytes);
  auto* const dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  isDamaged_ = dictionary == nullptr && !bytes.empty();
  if (dictionary != nullptr) root_ = std::make_shared<PropertyList::Dictionary>(std::move(*dictionary));
  bytes_ = std::make_shared<std::string>(std::move(bytes));
}

std::string PropertyListFile::Reading::TextWith(const PropertyList::Dictionary& root) const {
  if (isWritten_) return PropertyList::WriteChange(root, *root_, *bytes_);
  return PropertyList::Write(root, bytes_ != nullptr ? bytes_->size() : 0);
}

std::error_code PropertyListFile::Save(Reading& reading, PropertyList::Dictionary root) const {
  if (reading.failure_) return reading.failure_;
  if (reading.isDamaged_) {
    if (const std::error_code error = AtomicFile::KeepBeside(file_, DamagedNames())) return error;
  }
  auto bytes = std::make_shared<const std::string>(reading.TextWith(root));
  if (const std::error_code error = AtomicFile::Replace(file_, *bytes)) return error;
  reading = Reading();
  reading.root_ = std::make_shared<PropertyList::Dictionary>(std::move(root));
  reading.bytes_ = std::move(bytes);
  reading.isWritten_ = true;
  return {};
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

}  // namespace Files
