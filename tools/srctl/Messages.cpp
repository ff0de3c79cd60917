#include "SRLib/Platform/Messages.h"

namespace util {

// srctl says in its own words what it finds; the texts of the agent's dialogs stay out of it.
const wchar_t* MessageFromResourceW(int /*id*/) {
  return L"";
}

}  // namespace util
