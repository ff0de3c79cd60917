#pragma once

// The agent's termination: raised once, by a signal or by the agent itself, and never taken back. Whoever
// blocks (the main loop, a dialog, a transfer) watches the descriptor, so that termination reaches it
// whatever the main thread is doing. Any thread.
namespace Termination {

// Readable from the moment on which termination was requested. Never read from it; never close it. Throws
// std::system_error when it cannot be made, which is at its first use.
[[nodiscard]] int Descriptor();
[[nodiscard]] bool Requested();

void Request();

// Makes SIGTERM and SIGINT request termination, also those that came before this call but were kept back.
// Called on the main thread before there is another one: no thread is interrupted by them from then on.
// Programs that the agent starts must let them through again. Throws std::system_error.
void RaiseOnSignals();

}  // namespace Termination
