#pragma once

#include "SRLib/SRStore.h"
#include "libs/Display/DisplayVariables.h"
#include "libs/Openings/Outcome.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ServiceRecords {

// A file that is being opened, and what becomes of it and of its stores. Belongs to the thread that handles
// the file; afterwards it can be read by another.
class Opening {
 public:
  struct Origin {
    std::uint64_t id = 0;
    std::string path = {};  // UTF-8
    // Borrowed, good while the file is handled. The terminal on which to ask; -1 for none.
    int terminalDescriptor = -1;
    // On which to ask where there is no terminal; none: wherever the dialogs are shown otherwise.
    Display::Variables desktop = {};
    // Readable as soon as nobody wants an answer any more; -1 for never.
    int withdrawalDescriptor = -1;
  };

  struct Store {
    std::wstring id;
    std::wstring name;
    std::wstring url;
    Openings::Outcome outcome;
    std::wstring reason;  // a sentence for the user; may be empty
  };

  explicit Opening(Origin origin) : origin_(std::move(origin)) {}

  [[nodiscard]] const Origin& GetOrigin() const { return origin_; }
  // In the order of the ids.
  [[nodiscard]] std::vector<Store> Stores() const;
  // The gravest of its stores'.
  [[nodiscard]] Openings::Outcome GravestOutcome() const;
  // Whether the file could not be read, which the flow shows nobody.
  [[nodiscard]] bool IsUnread() const { return isUnread_; }
  // Of the whole where there are no stores: a sentence for the user; may be empty.
  [[nodiscard]] const std::wstring& ReasonWithoutStores() const { return reasonWithoutStores_; }
  // The handling has not come to its end, and why: what it has left undecided is not saved.
  void BreakOff(const std::wstring& reason);

  // For as long as it lives, this thread handles the opening.
  class Handling {
   public:
    explicit Handling(Opening& opening);
    ~Handling();
    Handling(const Handling&) = delete;
    Handling& operator=(const Handling&) = delete;
  };

  // Null on a thread that handles none.
  [[nodiscard]] static const Opening* OfThisThread();
  // Whether nobody wants to be asked about this thread's opening any more.
  [[nodiscard]] static bool IsWithdrawn();
  // Where this thread's opening is asked about from now on. Nothing on a thread that handles none.
  static void AskOn(Display::Variables desktop);

  // What the flow over the file finds out. On a thread that handles no file these do nothing.
  static void NoteUnread(const std::wstring& reason);
  static void NoteStores(const StoreMap& stores);
  static void NoteAccepted(const std::wstring& id, bool isReplacement);
  static void NoteDeclined(const std::wstring& id);
  static void NoteNotVerified(const std::wstring& id, const std::wstring& reason);
  // What is accepted, or will be, does not reach the saved list, and why.
  static void NoteNotSaved(const std::wstring& reason);
  static void NoteSaved();
  // The next store that is declined or not verified is so because of this: the agent is ending, or nobody
  // could be asked.
  static void NoteHindrance(Openings::Outcome hindrance);

 private:
  struct Progress {
    Store store;
    std::optional<Openings::Outcome> outcome;  // nothing yet: what happens to the whole happens to the store
  };

  static void Decide(const std::wstring& id, Openings::Outcome outcome, const std::wstring& reason = {});
  static void Refuse(const std::wstring& id, Openings::Outcome outcome, const std::wstring& reason = {});
  [[nodiscard]] Store Decided(const Progress& progress) const;

  Origin origin_;
  std::map<std::wstring, Progress> stores_;
  Openings::Outcome withoutStores_ = Openings::Outcome::Ended;  // the whole's where there are none
  std::wstring reasonWithoutStores_;
  bool isUnread_ = false;
  std::optional<std::wstring> whyNotSaved_;
  std::optional<Openings::Outcome> hindrance_;
};

}  // namespace ServiceRecords
