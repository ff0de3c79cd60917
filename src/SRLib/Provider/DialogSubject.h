#pragma once

#include <string>
#include <utility>
#include <variant>

namespace Config {
class Configurator;
}

namespace ServiceRecords {

class SRStore;

// The server whose certificate was checked before the user is asked to trust a store.
struct VerifiedServer {
  std::wstring url;
  bool isGateway = false;
};

// A store that is held, the record that is to be merged into it, and the user's configuration.
struct Replacement {
  const SRStore& held;
  const SRStore& incoming;
  const Config::Configurator& configuration;
};

// The server that an error is about.
struct ServerProblem {
  std::wstring url;
  std::wstring storeName = {};  // whose server it is
  std::wstring reason = {};     // a sentence for the user; may be empty
  std::wstring details = {};    // for whoever is to help; may be empty
};

// What the dialogs of this thread are about while it lives, beside what they are told.
class DialogSubject {
 public:
  using Subject = std::variant<std::monostate, VerifiedServer, Replacement, ServerProblem>;

  explicit DialogSubject(Subject subject)
      : subject_(std::move(subject)), outer_(std::exchange(current_, this)) {}
  ~DialogSubject() { current_ = outer_; }
  DialogSubject(const DialogSubject&) = delete;
  DialogSubject& operator=(const DialogSubject&) = delete;

  // Null when the dialogs of this thread are about nothing of that kind.
  template <class Kind>
  [[nodiscard]] static const Kind* OfThisThread() {
    return current_ != nullptr ? std::get_if<Kind>(&current_->subject_) : nullptr;
  }

 private:
  static inline thread_local const DialogSubject* current_ = nullptr;

  const Subject subject_;
  const DialogSubject* const outer_;
};

}  // namespace ServiceRecords
