#pragma once

#include "libs/ThreadSafety/ThreadSafety.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The message catalogue: texts for the user by numeric id, in the user's language, from MessagesIdName.txt
// and <language>.lproj/Messages.mc. Texts are UTF-8. Any thread.
class ResourceKeeper {
 public:
  using Languages = std::function<std::vector<std::string>()>;

  // `preferredLanguages` is asked at every lookup, most preferred first.
  ResourceKeeper(std::filesystem::path resources, Languages preferredLanguages);

  // The catalogue of the main bundle.
  static ResourceKeeper& Main();

  // The text, or an explanation of why there is none, which also goes to the system log.
  [[nodiscard]] std::string messageFromResource(int id);

 private:
  // Each gives nothing when there is no such file, name or message.
  [[nodiscard]] std::optional<std::string> localizedMessage(const std::string& name,
                                                            const std::string& countryCode) const;
  [[nodiscard]] std::optional<std::string> resourceStringName(int id) const;
  [[nodiscard]] std::optional<std::string> messagesMC(const std::string& countryCode) const;
  [[nodiscard]] std::optional<std::string> GetLocalizedFileContents(const std::string& countryCode) const;
  [[nodiscard]] std::optional<std::string> checkMessageInCache(int id, const std::string& countryCode)
      SR_REQUIRES(mutex_);

  const std::filesystem::path resources_;
  const Languages preferredLanguages_;
  ThreadSafety::Mutex mutex_;
  std::map<int, std::string> _resourceCache SR_GUARDED_BY(mutex_);
  std::string _countryCodeOfCache SR_GUARDED_BY(mutex_);
};

namespace util {

// The main bundle's text for the user's language, or an explanation of why there is none. Never null. The
// characters stay good until a different text is looked up under the same id; callers copy them at once. Any
// thread.
[[nodiscard]] const wchar_t* MessageFromResourceW(int id);

}  // namespace util
