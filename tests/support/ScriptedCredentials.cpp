#include "support/ScriptedCredentials.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace TestSupport {

const char* const ScriptedCredentials::kScript = R"(#!/bin/sh
here=${0%/*}
{
  echo "$1"
  while IFS= read -r line && [ -n "$line" ]; do echo "$line"; done
  echo
} >>"$here/requests"
echo "$DISPLAY" >>"$here/displays"
if [ "$1" = get ] && [ -p "$here/held" ]; then
  echo held >"$here/held"
  exec cat
fi
if [ "$1" != get ]; then
  printf 'status=ok\nsecret-service=available\n\n'
  exit
fi
for reply in "$here"/reply-*; do
  [ -f "$reply" ] || break
  cat "$reply"
  rm "$reply"
  exit
done
printf 'status=no-terminal\n\n'
)";

void ScriptedCredentials::Install() const {
  const std::filesystem::path program = folder_ / "servicerecord-credential";
  std::filesystem::remove(program);
  std::ofstream(program) << kScript;
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
}

void ScriptedCredentials::WillReply(const std::string& lines) {
  std::ofstream(folder_ / ("reply-" + std::to_string(++replies_))) << lines << "\n\n";
}

void ScriptedCredentials::WillGive(const std::string& userName, const std::string& password,
                                   const std::string& more) {
  WillReply("status=ok\nsecret-service=available\nusername=" + userName + "\npassword=" + password +
            (more.empty() ? "\nsource=asked" : "\n" + more));
}

// Open for both, so that no program ever finds that nobody reads.
void ScriptedCredentials::WillHold() {
  const std::filesystem::path fifo = folder_ / "held";
  if (::mkfifo(fifo.c_str(), 0600) != 0) throw std::runtime_error("no fifo");
  held_ = Files::FileDescriptor(::open(fifo.c_str(), O_RDWR | O_CLOEXEC));
}

void ScriptedCredentials::WaitUntilHeld(int questions) const {
  char next = '\0';
  while (questions > 0 && ::read(held_.Get(), &next, 1) == 1) {
    if (next == '\n') --questions;
  }
}

std::vector<std::string> ScriptedCredentials::Requests() const {
  std::ifstream file(folder_ / "requests");
  std::string text{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> requests;
  for (std::size_t end = text.find("\n\n"); end != std::string::npos; end = text.find("\n\n")) {
    requests.push_back(text.substr(0, end + 1));
    text.erase(0, end + 2);
  }
  return requests;
}

std::vector<std::string> ScriptedCredentials::Displays() const {
  std::ifstream file(folder_ / "displays");
  std::vector<std::string> displays;
  for (std::string line; std::getline(file, line);) displays.push_back(line);
  return displays;
}

std::vector<std::string> ScriptedCredentials::Actions() const {
  std::vector<std::string> actions;
  for (const std::string& request : Requests()) actions.push_back(request.substr(0, request.find('\n')));
  return actions;
}

}  // namespace TestSupport
