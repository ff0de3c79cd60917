#include "Model/OutcomeSentences.h"

#include "Shared/ShownText.h"
#include "Shared/Translations.h"
#include "libs/Openings/Outcome.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace Stores::OutcomeSentences {

using namespace Windows;

namespace {

using Openings::Outcome;

constexpr std::size_t kMostNamed = 6;

struct Pattern {
  Outcome outcome;
  const char* ofStore;
  const char* ofFile;
};

#define N_(text) text

constexpr std::array kPatterns{
    Pattern{Outcome::Added, N_("“{store}” was added."), N_("The stores of “{file}” were added.")},
    Pattern{Outcome::Replaced, N_("“{store}” was replaced by what the file describes."),
            N_("Stores were replaced by what “{file}” describes.")},
    Pattern{Outcome::Declined, N_("“{store}” was not added, because you decided against it."),
            N_("“{file}” was not opened, because you decided against it.")},
    Pattern{Outcome::ServerNotVerified,
            N_("“{store}” was not added, because its server could not be verified."),
            N_("No store of “{file}” was added, because no server could be verified.")},
    Pattern{Outcome::NotAServiceRecord,
            N_("“{store}” was not added, because its description is not complete."),
            N_("“{file}” is not a service record. Open the file that your administrator gave you.")},
    Pattern{Outcome::CouldNotAsk, N_("“{store}” was not added, because its question could not be shown."),
            N_("“{file}” was not opened, because its question could not be shown.")},
    Pattern{Outcome::NotSaved, N_("“{store}” could not be saved."),
            N_("The stores of “{file}” could not be saved.")},
    Pattern{Outcome::Ended, N_("“{store}” was not added, because the background service was ended."),
            N_("“{file}” was not opened, because the background service was ended.")}};
static_assert(kPatterns.size() == Openings::kOutcomeNames.size());

// None for a word that only another version of the agent knows.
const Pattern* PatternFor(std::string_view word) {
  const std::optional<Outcome> outcome = Openings::OutcomeOf(word);
  const auto* const found =
      std::find_if(kPatterns.begin(), kPatterns.end(),
                   [outcome](const Pattern& pattern) { return pattern.outcome == outcome; });
  return found != kPatterns.end() ? found : nullptr;
}

std::string WithReason(const std::string& sentence, const std::string& reason) {
  return reason.empty() ? sentence : sentence + " " + ShownText::Isolated(ShownText::Lines(reason));
}

std::string OfFile(const Finished& finished, const std::string& fileName) {
  const std::string shown = ShownText::Name(fileName);
  const Pattern* const pattern = PatternFor(finished.outcome);
  const char* text = pattern ? pattern->ofFile : N_("“{file}” was opened.");
  if (pattern && pattern->outcome == Outcome::NotAServiceRecord && !finished.reason.empty())
    text = N_("“{file}” could not be read.");
  return WithReason(ShownText::Sentence(Translated(text), {{"file", shown}}), finished.reason);
}

std::string OfStore(const StoreOutcome& store) {
  const std::string shown = ShownText::Name(store.name);
  const Pattern* const pattern = PatternFor(store.outcome);
  const char* const text = pattern ? pattern->ofStore : N_("“{store}” was looked at.");
  return WithReason(ShownText::Sentence(Translated(text), {{"store", shown}}), store.reason);
}

bool IsGoodOutcome(std::string_view word) {
  const std::optional<Outcome> outcome = Openings::OutcomeOf(word);
  return outcome == Outcome::Added || outcome == Outcome::Replaced;
}

std::string OfFurtherStores(std::size_t count) {
  return ShownText::Sentence(
      TranslatedCount("The file has {count} more store.", "The file has {count} more stores.",
                      static_cast<unsigned long>(count)),
      {{"count", std::to_string(count)}});
}

std::string OfFurtherFiles(std::size_t count) {
  return ShownText::Sentence(
      TranslatedCount("{count} more file was not opened.", "{count} more files were not opened.",
                      static_cast<unsigned long>(count)),
      {{"count", std::to_string(count)}});
}

std::string OfFurtherNotices(std::size_t count) {
  return ShownText::Sentence(
      TranslatedCount("There is {count} more message.", "There are {count} more messages.",
                      static_cast<unsigned long>(count)),
      {{"count", std::to_string(count)}});
}

// A line for each of the first few items, and one for those that are not named.
template <class Item, class Line>
std::string Lines(const std::vector<Item>& items, Line lineOf, std::string (*lineOfFurther)(std::size_t)) {
  const std::size_t named = std::min(items.size(), kMostNamed);
  std::string lines;
  for (std::size_t index = 0; index < named; ++index) {
    if (index > 0) lines += '\n';
    lines += lineOf(items[index]);
  }
  if (named < items.size()) lines += '\n' + lineOfFurther(items.size() - named);
  return lines;
}

}  // namespace

std::string Of(const Finished& finished, const std::string& fileName) {
  if (finished.stores.empty()) return OfFile(finished, fileName);
  return Lines(finished.stores, OfStore, OfFurtherStores);
}

std::string OfEnded(const std::vector<std::string>& fileNames) {
  const Finished ended{.opening = 0, .outcome = std::string(NameOf(Outcome::Ended)), .stores = {}};
  return Lines(
      fileNames, [&](const std::string& name) { return OfFile(ended, name); }, OfFurtherFiles);
}

std::string OfAll(const std::vector<Notice>& notices) {
  return Lines(
      notices, [](const Notice& notice) { return notice.sentences; }, OfFurtherNotices);
}

std::string AddedStore(const Finished& finished) {
  const auto found = std::find_if(finished.stores.begin(), finished.stores.end(),
                                  [](const StoreOutcome& store) { return IsGoodOutcome(store.outcome); });
  return found != finished.stores.end() ? found->id : std::string();
}

bool IsGood(const Finished& finished) {
  return IsGoodOutcome(finished.outcome);
}

}  // namespace Stores::OutcomeSentences
