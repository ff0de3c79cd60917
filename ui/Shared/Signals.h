#pragma once

#include "Shared/Gtk.h"

#include <functional>

// Functions of ours behind the toolkit's signals and sources. All of the thread of the toolkit.
namespace Windows::Signals {

// Calls the function at each of these signals, until the object goes.
void Connect(gpointer object, const char* signal, std::function<void()> function);
// The same of a signal that is answered by whether it was dealt with.
void ConnectAnswered(gpointer object, const char* signal, std::function<bool()> function);
// The same when a property of the object has changed.
void ConnectChange(gpointer object, const char* property, std::function<void()> function);

// Calls the function once, after that time.
void After(unsigned milliseconds, std::function<void()> function);
// Calls it when the descriptor is readable or closed, as long as it returns true.
void WhenReadable(int descriptor, std::function<bool()> function);
// Calls it when the signal of the system comes.
void OnSystemSignal(int number, std::function<void()> function);

}  // namespace Windows::Signals
