#include "Process/ClientApplication.h"

#include "Process/MainLoop.h"
#include "libs/Bus/ServiceNames.h"
#include "libs/Files/Bundle.h"
#include "libs/Termination/TerminationEvent.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Agent {
namespace {

// The application's object, whose path is its identifier with slashes.
std::string ObjectPath(std::string identifier) {
  std::replace(identifier.begin(), identifier.end(), '.', '/');
  return "/" + identifier;
}

}  // namespace

void ClientApplication::BringForward(const Display::Variables& desktop, std::function<void()> notThere) {
  desktop_ = desktop;
  notThere_.push_back(std::move(notThere));
  const std::string path = ObjectPath(kIdentifier);
  const Bus::Service application{kIdentifier, path.c_str(), Bus::ServiceNames::kApplicationInterface};
  const auto isAsked =
      Bus::Keep(activation_, bus_.CallAsync(
                                 application, {.startsService = false}, "Activate",
                                 [this](const Bus::Result<Bus::Message>& reply) { HandleActivated(reply); },
                                 PropertyList::Dictionary()));
  if (!isAsked) TellNotThere();
}

void ClientApplication::HandleActivated(const Bus::Result<Bus::Message>& reply) {
  const bool isRunning = reply || !reply.Failure().IsForWantOfOwner();
  if (isRunning) return notThere_.clear();
  if (!Termination::Requested()) Launch();
}

void ClientApplication::TellNotThere() {
  for (const auto& tell : std::exchange(notThere_, {})) tell();
}

// By a program that lies beside the agent, so that nothing of the launch stays here.
void ClientApplication::Launch() {
  if (launch_) return;
  std::vector<std::string> environment;
  if (!desktop_.empty()) environment = Display::EnvironmentOn(desktop_);
  auto program = HelperProgram::HelperProcess::Start(Files::Bundle::Main().Path() / "servicerecord-launch",
                                                     {kIdentifier}, -1, std::move(environment));
  if (!program) return TellNotThere();
  launch_.emplace(std::move(*program));
  launchEnd_ = MainLoop::Main().Watch(launch_->Ended(), [this] {
    if (launch_->HasSucceeded()) notThere_.clear();
    launchEnd_.reset();
    launch_.reset();
    TellNotThere();
  });
}

}  // namespace Agent
