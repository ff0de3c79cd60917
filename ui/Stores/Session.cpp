#include "Session.h"

#include "Model/OutcomeSentences.h"
#include "Shared/ShownText.h"
#include "Shared/Translations.h"

#include <filesystem>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

// The agent announces when it can read the list again, but not when it could save it.
constexpr guint kSecondsBetweenLooks = 10;

std::string FileName(const std::string& path) {
  return Taken(g_filename_display_basename(path.c_str()));
}

Overview::Page PageFor(const StoreList& stores, SavedState state) {
  if (stores.Count() > 0) return Overview::Page::Stores;
  return state == SavedState::Unreadable ? Overview::Page::Unreadable : Overview::Page::Empty;
}

}  // namespace

Session::Session(GDBusConnection* bus, Observer observer)
    : observer_(std::move(observer)),
      agent_(bus, AgentObserver()),
      locations_(stores_, [this](const std::string& url, const StoreLocations::Tell& tell) {
        agent_.LocationForStore(
            url, [tell](const std::optional<Location>& location, const std::string& /*problem*/) {
              if (location) tell(*location);
            });
      }) {}

Session::~Session() {
  if (retry_ != 0) g_source_remove(retry_);
}

AgentConnection::Observer Session::AgentObserver() {
  return {.storesChanged = [this] { Reload(); },
          .locationChanged = [this](const std::string& url) { locations_.Renew(url); },
          .loggingChanged = [this] { observer_.loggingChanged(); },
          .openingFinished = [this](const Finished& finished) { NoteFinished(finished); },
          .agentCame =
              [this] {
                Reload();
                locations_.RenewAll();
              },
          .agentWent = [this] { NoteAgentWent(); }};
}

void Session::Reload() {
  isStale_ = isReloading_;
  if (std::exchange(isReloading_, true)) return;
  agent_.AllStores([this](const auto& stores, const std::string& problem) { TakeStores(stores, problem); });
}

void Session::TakeStores(const std::optional<std::vector<Store>>& stores, const std::string& problem) {
  if (!stores) return EndReload({Overview::Page::Unreachable, Overview::Warning::None, problem});
  stores_.Take(*stores);
  AskForState();
}

void Session::AskForState() {
  agent_.StateOfSavedStores([this](const std::optional<SavedState>& state, const std::string& problem) {
    if (!state) return EndReload({Overview::Page::Unreachable, Overview::Warning::None, problem});
    TakeState(*state);
  });
}

void Session::TakeState(SavedState state) {
  const bool isUnsaved = state == SavedState::Unsaved;
  EndReload({PageFor(stores_, state), isUnsaved ? Overview::Warning::Unsaved : Overview::Warning::None});
  if (state == SavedState::Good || retry_ != 0) return;
  const auto look = [](gpointer self) -> gboolean {
    static_cast<Session*>(self)->retry_ = 0;
    static_cast<Session*>(self)->Reload();
    return G_SOURCE_REMOVE;
  };
  retry_ = g_timeout_add_seconds(kSecondsBetweenLooks, +look, this);
}

void Session::EndReload(const Overview& overview) {
  isReloading_ = false;
  Show(overview);
  observer_.reloaded();
  if (isStale_) Reload();
}

void Session::Show(const Overview& overview) {
  if (overview == overview_) return;
  overview_ = overview;
  observer_.show(overview_);
}

void Session::OpenFiles(const std::vector<std::string>& paths) {
  ++askedToOpen_;  // what is refused at once belongs to what is asked for with it
  for (const std::string& path : paths) OpenFile(path);
  --askedToOpen_;
}

void Session::OpenFile(const std::string& path) {
  const std::string name = FileName(path);
  if (path.empty() || !g_utf8_validate(path.c_str(), -1, nullptr)) {
    const char* const why = path.empty()
                                ? Translated("Only files on this computer can be opened.")
                                : Translated("“{file}” cannot be opened: its path is not UTF-8 text.");
    return Tell({ShownText::Sentence(why, {{"file", ShownText::Name(name)}})});
  }
  ++askedToOpen_;
  agent_.OpenFile(path,
                  [this, name](const std::optional<std::uint64_t>& opening, const std::string& problem) {
                    --askedToOpen_;
                    if (opening) {
                      openings_[*opening] = name;
                    } else {
                      Refuse(ShownText::Sentence(Translated("“{file}” could not be opened."),
                                                 {{"file", ShownText::Name(name)}}),
                             problem);
                      NoteOpeningsEnded();
                    }
                  });
}

void Session::NoteFinished(const Finished& finished) {
  const auto found = openings_.find(finished.opening);
  const std::string name = found != openings_.end() ? found->second : Translated("The file");
  openings_.erase(finished.opening);
  Tell({OutcomeSentences::Of(finished, name), OutcomeSentences::IsGood(finished),
        OutcomeSentences::AddedStore(finished)});
  NoteOpeningsEnded();
}

void Session::NoteOpeningsEnded() {
  if (!IsOpening()) observer_.openingsEnded();
}

void Session::NoteAgentWent() {
  if (!openings_.empty()) {
    std::vector<std::string> names;
    for (const auto& [number, name] : std::exchange(openings_, {})) names.push_back(name);
    Tell({OutcomeSentences::OfEnded(names)});
    NoteOpeningsEnded();
  }
  const bool hasStores = overview_.page == Overview::Page::Stores || overview_.page == Overview::Page::Empty;
  if (hasStores) Show({overview_.page, Overview::Warning::AgentEnded});
}

void Session::Remove(const Store& store) {
  const std::string name = ShownText::Name(store.name);
  agent_.DeleteStore(store.id, [this, name](const std::optional<bool>& done, const std::string& problem) {
    if (done && *done) {
      Tell({ShownText::Sentence(Translated("“{store}” was removed."), {{"store", name}}), true});
    } else {
      Refuse(ShownText::Sentence(Translated("“{store}” could not be removed."), {{"store", name}}), problem);
    }
    Reload();
  });
}

void Session::ChooseGateway(const std::string& storeID, const std::string& gatewayName) {
  const std::string name = ShownText::Name(gatewayName);
  agent_.SetDefaultGateway(
      storeID, gatewayName, [this, name](const std::optional<bool>& done, const std::string& problem) {
        if (!done || !*done) {
          Refuse(ShownText::Sentence(Translated("The gateway “{gateway}” could not be chosen."),
                                     {{"gateway", name}}),
                 problem);
          observer_.refused();
        }
        Reload();
      });
}

void Session::Refuse(const std::string& sentence, const std::string& problem) {
  const std::string why = problem.empty() ? "" : " " + ShownText::Isolated(ShownText::Whole(problem));
  Tell({sentence + why});
}

void Session::Tell(Notice notice) {
  notice.isFurther = hasToldOfOpenings_;
  hasToldOfOpenings_ = IsOpening();
  observer_.note(notice);
}

}  // namespace Stores
