#include "Process/FileOpenings.h"

#include "Process/AtEnd.h"
#include "Process/BackgroundTasks.h"
#include "Process/MainLoop.h"
#include "ResourceKeeper.h"
#include "SRLib/Platform/Messages.h"
#include "libs/Termination/TerminationEvent.h"

#include <utility>

using ServiceRecords::Opening;

namespace Agent {

std::uint64_t FileOpenings::Start(Request request) {
  const std::uint64_t id = ++last_;
  const auto file = std::make_shared<OpenFile>();
  file->terminal = std::move(request.terminal);
  if (request.isWithdrawable) file->withdrawal.emplace();
  const int withdrawal = file->withdrawal ? file->withdrawal->Descriptor() : -1;
  file->opening.emplace(Opening::Origin{.id = id,
                                        .path = std::move(request.path),
                                        .terminalDescriptor = file->terminal.Get(),
                                        .desktop = std::move(request.desktop),
                                        .withdrawalDescriptor = withdrawal});
  open_.emplace(id, Entry{file, std::move(request.finished)});
  const auto end = std::make_shared<AtEnd>(
      [this, id](bool /*result*/) { MainLoop::Main().Post([this, id] { Finish(id); }); });
  tasks_.Start([this, file, end] {
    const Opening::Handling handling(*file->opening);
    handle_(file->opening->GetOrigin().path);
  });
  return id;
}

void FileOpenings::Withdraw(std::uint64_t id) const {
  const auto entry = open_.find(id);
  if (entry != open_.end() && entry->second.file->withdrawal) entry->second.file->withdrawal->Raise();
}

void FileOpenings::Finish(std::uint64_t id) {
  const auto entry = open_.extract(id);
  Opening& opening = *entry.mapped().file->opening;
  if (!Termination::Requested()) opening.BreakOff(util::MessageFromResourceW(util::kReasonBrokenOff));
  finished_(opening);
  if (entry.mapped().finished) entry.mapped().finished(opening);
}

}  // namespace Agent
