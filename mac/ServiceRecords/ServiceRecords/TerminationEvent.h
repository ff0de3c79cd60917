#pragma once

// The agent's termination: raised once, by a signal or by the agent itself, and never taken back. Whoever
// blocks (the main loop, a dialog, a transfer) watches the descriptor, so that termination reaches it even
// while the main thread is waiting for a lock.
namespace TerminationEvent {

// Readable from the moment on which termination was requested. Never read from it; never close it.
[[nodiscard]] int Descriptor();
[[nodiscard]] bool Requested();

// Safe in a signal handler.
void Request() noexcept;

// Makes SIGTERM and SIGINT request termination.
void RaiseOnSignals();

}  // namespace TerminationEvent
