#pragma once

#include "SRLib/Repository/ConfigurationStorage.h"
#include "SRLib/Repository/NumberedContainers.h"
#include "SRLib/Repository/TreeChange.h"

#include <cstddef>
#include <map>
#include <vector>

namespace Config {

// The changes that this thread gathers for one storage. It is read at the first reading and when the changes
// are put in place, so nobody waits for this thread in between.
class GatheredChanges : public Gathering {
 public:
  // Within another one of this thread for the storage it stays empty: the changes are the outer one's.
  explicit GatheredChanges(ConfigurationStorage& storage);
  ~GatheredChanges() override;
  GatheredChanges(const GatheredChanges&) = delete;
  GatheredChanges& operator=(const GatheredChanges&) = delete;

  // The outermost one; null when this thread does not gather.
  [[nodiscard]] static GatheredChanges* OfThisThread(const ConfigurationStorage& storage);

  void Add(TreeChange change) { changes_.push_back(std::move(change)); }
  // What was stored at the first reading, with the changes since. Good until the next call.
  [[nodiscard]] ConfigurationStorage::Tree Tree();
  // Of a dictionary of that tree.
  [[nodiscard]] NumberedContainers& ContainersOf(const PropertyList::Dictionary& dictionary);
  void PutInPlace() override;

 private:
  ConfigurationStorage& storage_;
  std::vector<TreeChange> changes_;
  ConfigurationStorage::Tree asRead_;
  // Null as long as nothing was changed before a reading.
  std::shared_ptr<PropertyList::Dictionary> asChanged_;
  std::size_t made_ = 0;  // of the changes, to `asChanged_`
  std::map<const PropertyList::Dictionary*, NumberedContainers> enumerated_;
};

}  // namespace Config
