#pragma once

#include "Files/ConfigurationFile.h"
#include "Files/NumberedContainers.h"
#include "Files/TreeChange.h"
#include "SRLib/Platform/Configurator.h"

#include <cstddef>
#include <map>
#include <vector>

// The changes that this thread gathers to one scope's file. The file is read at the first reading and when
// the changes are put in place, so nobody waits for this thread in between.
class GatheredChanges : public Config::Gathering {
 public:
  // At most one for a thread and a scope.
  explicit GatheredChanges(bool perUser);
  ~GatheredChanges() override;
  GatheredChanges(const GatheredChanges&) = delete;
  GatheredChanges& operator=(const GatheredChanges&) = delete;

  // Null when this thread does not gather.
  [[nodiscard]] static GatheredChanges* OfThisThread(bool perUser);

  void Add(TreeChange change) { changes_.push_back(std::move(change)); }
  // What the file held at the first reading, with the changes since. Good until the next call.
  [[nodiscard]] ConfigurationFile::Tree Tree();
  // Of a dictionary of that tree.
  [[nodiscard]] NumberedContainers& ContainersOf(const PropertyList::Dictionary& dictionary);
  void PutInPlace() override;

 private:
  const bool perUser_;
  std::vector<TreeChange> changes_;
  ConfigurationFile::Tree asRead_;
  // Null as long as nothing was changed before a reading.
  std::shared_ptr<PropertyList::Dictionary> asChanged_;
  std::size_t made_ = 0;  // of the changes, to `asChanged_`
  std::map<const PropertyList::Dictionary*, NumberedContainers> enumerated_;
};
