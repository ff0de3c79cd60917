#include "ErrorBoxes.h"

#include "ErrorBox.h"
#include "ErrorLog.h"
#include "libs/Lifetime/NoDestructor.h"
#include "libs/PropertyList/PropertyList.h"

#include <algorithm>
#include <thread>

namespace Dialogs {
namespace {

std::optional<std::uint64_t> OpeningOf(const std::string& details) {
  const std::optional<PropertyList::Value> root = PropertyList::Read(details);
  const auto* dictionary = root ? root->As<PropertyList::Dictionary>() : nullptr;
  const PropertyList::Value* id = dictionary != nullptr ? dictionary->Find("OpeningID") : nullptr;
  return id != nullptr ? id->AsNumber() : std::nullopt;
}

}  // namespace

ErrorBoxes& ErrorBoxes::Instance() {
  static Lifetime::NoDestructor<ErrorBoxes> boxes;
  return *boxes;
}

void ErrorBoxes::Show(const std::string& details, const Display::Variables& desktop, int termination) {
  const Opening opening = OpeningOf(details);
  if (!Take(opening, details, desktop, termination)) ErrorLog::Write(ErrorLog::kTooMany, details);
}

bool ErrorBoxes::Take(const Opening& opening, const std::string& details, const Display::Variables& desktop,
                      int termination) {
  const ThreadSafety::MutexLock lock(mutex_);
  std::erase_if(open_, [](const Open& open) { return open.box->IsClosed(); });
  if (ErrorBox* const box = BoxOf(opening)) {
    const ErrorBox::Adding adding = box->Add(details);
    if (adding != ErrorBox::Adding::Closed) return adding == ErrorBox::Adding::Taken;
  }
  if (open_.size() >= kMostOpen) return false;
  const auto box = std::make_shared<ErrorBox>(desktop, termination);
  if (box->Add(details) != ErrorBox::Adding::Taken) return false;
  // The box outlives the call, so a thread of its own keeps the program's input open and reaps the program.
  std::thread([box] { box->Keep(); }).detach();
  open_.push_back({opening, box});
  return true;
}

ErrorBox* ErrorBoxes::BoxOf(const Opening& opening) {
  if (!opening) return nullptr;
  const auto found = std::ranges::find(open_, opening, &Open::opening);
  return found != open_.end() ? found->box.get() : nullptr;
}

}  // namespace Dialogs
