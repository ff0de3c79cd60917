#include "Agent/StoreCheck.h"

#include <array>
#include <csignal>
#include <utility>

namespace Stores {

using namespace Windows;

namespace {

bool IsCancelled(const ErrorPtr& error) {
  return error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED);
}

CheckEnd EndOf(GSubprocess* process, bool foundSomething) {
  const int status = g_subprocess_get_if_exited(process) ? g_subprocess_get_exit_status(process) : -1;
  switch (status) {
    case 0:
      return CheckEnd::Done;
    case 1:
      return foundSomething ? CheckEnd::Done : CheckEnd::NotInList;
    case 3:
      return CheckEnd::Unreachable;
    default:
      return CheckEnd::Failed;
  }
}

}  // namespace

std::unique_ptr<StoreCheck> StoreCheck::Start(const std::string& program, const std::string& storeID,
                                              Observer observer) {
  const std::array<const char*, 6> command{program.c_str(), "doctor",       "--store",
                                           storeID.c_str(), "--json-lines", nullptr};
  ErrorPtr error;
  ObjectPtr<GSubprocess> process(
      g_subprocess_newv(command.data(), G_SUBPROCESS_FLAGS_STDOUT_PIPE, Out(error)));
  if (process) return std::unique_ptr<StoreCheck>(new StoreCheck(std::move(process), std::move(observer)));
  g_warning("%s", error->message);
  return nullptr;
}

StoreCheck::StoreCheck(ObjectPtr<GSubprocess> process, Observer observer)
    : observer_(std::move(observer)),
      process_(std::move(process)),
      output_(g_data_input_stream_new(g_subprocess_get_stdout_pipe(process_.get()))) {
  ReadLine();
}

StoreCheck::~StoreCheck() {
  g_cancellable_cancel(gone_.get());
  g_subprocess_send_signal(process_.get(), SIGTERM);
}

void StoreCheck::ReadLine() {
  g_data_input_stream_read_line_async(output_.get(), G_PRIORITY_DEFAULT, gone_.get(), &TakeLine, this);
}

void StoreCheck::TakeLine(GObject* stream, GAsyncResult* result, gpointer self) {
  ErrorPtr error;
  const TextPtr line(
      g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(stream), result, nullptr, Out(error)));
  if (IsCancelled(error)) return;
  auto* const check = static_cast<StoreCheck*>(self);
  if (!line) {
    g_subprocess_wait_async(check->process_.get(), check->gone_.get(), &TakeEnd, self);
    return;
  }
  if (const auto finding = FindingFromLine(line.get())) {
    check->foundSomething_ = true;
    check->observer_.found(*finding);
  }
  check->ReadLine();
}

void StoreCheck::TakeEnd(GObject* process, GAsyncResult* result, gpointer self) {
  ErrorPtr error;
  g_subprocess_wait_finish(G_SUBPROCESS(process), result, Out(error));
  if (IsCancelled(error)) return;
  auto* const check = static_cast<StoreCheck*>(self);
  const auto ended = check->observer_.ended;  // the observer may destroy the check
  ended(EndOf(G_SUBPROCESS(process), check->foundSomething_));
}

}  // namespace Stores
