#include "Process/DesktopNotifications.h"

#include "SRLib/Platform/Messages.h"
#include "libs/Bus/BusText.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Text/HiddenCharacters.h"
#include "libs/Text/LogText.h"
#include "libs/Text/TextHelpers.h"

#include <algorithm>
#include <filesystem>
#include <utility>

using PropertyList::Dictionary;
using ServiceRecords::Opening;

namespace Agent {
namespace {

constexpr char kInterface[] = "org.freedesktop.Notifications";
constexpr Bus::Service kService{kInterface, "/org/freedesktop/Notifications", kInterface};
constexpr Bus::Service kWindow{Bus::ServiceNames::kStoresWindow, Bus::ServiceNames::kStoresWindowPath,
                               Bus::ServiceNames::kApplicationInterface};
constexpr std::int32_t kAsLongAsTheServiceLikes = -1;
constexpr std::size_t kLongestName = 200;  // in characters

// A foreign name in a sentence of ours: on one line, with nothing hidden in it, and with no say in the
// direction of the rest.
std::string Isolated(const std::string& name) {
  constexpr char kFirstStrongIsolate[] = "\u2068";
  constexpr char kPopDirectionalIsolate[] = "\u2069";
  constexpr char kEllipsis[] = "\u2026";
  const std::wstring text = util::widen(util::LogText::Line(name));
  std::string line = util::WithHiddenShown(std::wstring_view(text).substr(0, kLongestName));
  if (text.size() > kLongestName) line += kEllipsis;
  const bool isPlain =
      std::ranges::all_of(line, [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
  return isPlain ? line : kFirstStrongIsolate + line + kPopDirectionalIsolate;
}

// What is told of accepted stores, which are saved together or not at all.
int NoticeOf(Openings::Outcome outcome, bool isOne) {
  if (outcome == Openings::Outcome::NotSaved)
    return isOne ? util::kNoticeUnsaved : util::kNoticeSeveralUnsaved;
  if (!isOne) return util::kNoticeSeveralAdded;
  return outcome == Openings::Outcome::Replaced ? util::kNoticeReplaced : util::kNoticeAdded;
}

}  // namespace

void DesktopNotifications::TellAccepted(const std::vector<Opening::Store>& stores) {
  if (stores.empty()) return;
  const Opening::Store& first = stores.front();
  const bool isOne = stores.size() == 1;
  const std::string what = isOne ? Isolated(util::narrow(first.name)) : std::to_string(stores.size());
  Notify(util::WithArgument(messages_(NoticeOf(first.outcome, isOne)), what), first.reason,
         util::narrow(first.id));
}

void DesktopNotifications::TellUnasked(const std::string& path) {
  TellOfFile(path, util::kNoticeNotOpened, util::kReasonCouldNotAsk);
}

void DesktopNotifications::TellUnread(const std::string& path) {
  TellOfFile(path, util::kNoticeNotRead, util::kReasonNotRead);
}

void DesktopNotifications::TellUnusableName(const std::string& path) {
  TellOfFile(path, util::kNoticeNotRead, util::kReasonUnusableName);
}

void DesktopNotifications::TellOfFile(const std::string& path, int notice, int reason) {
  const std::string file = std::filesystem::path(path).filename();
  Notify(util::WithArgument(messages_(notice), Isolated(file)), messages_(reason), {});
}

// The signals of the service are asked for before the first notification is sent.
Bus::Result<> DesktopNotifications::Listen() {
  if (match_) return Bus::Nothing{};
  return Bus::Keep(match_, bus_.MatchLater(std::string("type='signal',interface='") + kInterface + "'",
                                           [this](const Bus::Message& signal) { HandleSignal(signal); }));
}

void DesktopNotifications::Notify(const std::wstring& summary, const std::wstring& body,
                                  const std::string& storeID) {
  if (!Listen()) return;
  std::vector<std::string> actions;
  if (!storeID.empty()) {
    const std::string label = Bus::Text(messages_(util::kNoticeShow));
    actions = {"default", label, Bus::ServiceNames::kShowStoreAction, label};
  }
  const auto remember = [this, storeID](const Bus::Result<Bus::Message>& reply) {
    const auto id = reply ? reply->Read<std::uint32_t>() : reply.Failure();
    if (id && !storeID.empty()) shown_[*id] = {reply->Sender(), storeID, {}};
  };
  Bus::Result<Bus::Slot> call = bus_.CallAsync(
      kService, {}, "Notify", remember, std::string("ServiceRecords"), std::uint32_t{0}, std::string(),
      Bus::Text(summary), Bus::Text(body), actions,
      Dictionary{{"desktop-entry", Bus::ServiceNames::kStoresWindow}}, kAsLongAsTheServiceLikes);
  if (call) Bus::LeaveToConnection(std::move(*call));
}

void DesktopNotifications::HandleSignal(const Bus::Message& signal) {
  const auto id = signal.Read<std::uint32_t>();
  const auto shown = id ? shown_.find(*id) : shown_.end();
  if (shown == shown_.end() || shown->second.service != signal.Sender()) return;
  if (signal.IsSignal(kInterface, "ActivationToken")) {
    const auto token = signal.Read<std::uint32_t, std::string>();
    if (token) shown->second.activationToken = std::get<1>(*token);
  } else if (signal.IsSignal(kInterface, "ActionInvoked")) {
    ShowStore(shown->second);
  } else if (signal.IsSignal(kInterface, "NotificationClosed")) {
    shown_.erase(shown);
  }
}

void DesktopNotifications::ShowStore(const Shown& shown) {
  Dictionary platformData;
  if (!shown.activationToken.empty()) platformData.Set("activation-token", shown.activationToken);
  Bus::Result<Bus::Slot> call = bus_.CallAsync(
      kWindow, {}, "ActivateAction", [](const Bus::Result<Bus::Message>& /*reply*/) {},
      std::string(Bus::ServiceNames::kShowStoreAction),
      std::vector<Bus::Variant<std::string>>{{shown.storeID}}, platformData);
  if (call) Bus::LeaveToConnection(std::move(*call));
}

}  // namespace Agent
