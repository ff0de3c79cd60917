#pragma once

namespace Dialogs::ViewLibrary {

// The view of a store, made by the library beside the module, which is loaded at the first call and brings
// the toolkit along. Null when there is no such library, or it makes none. Any thread that may use the
// toolkit.
[[nodiscard]] void* MakeView(const char* details) noexcept;

}  // namespace Dialogs::ViewLibrary
