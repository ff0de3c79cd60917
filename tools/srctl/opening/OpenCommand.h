#pragma once

#include "Commands.h"

#include <string>
#include <vector>

namespace Srctl::Commands {

// Where the user is to be asked: on his desktop where it shows windows, else on the terminal that srctl runs
// on; or on this one.
enum class QuestionPlace { Anywhere, Terminal, Window };

// Has the agent open the files, one after the other, and says what became of each store. The status is that
// of the gravest outcome. SIGINT withdraws the question, and ends srctl once the terminal is as it was.
[[nodiscard]] Status Open(const std::vector<std::string>& files, QuestionPlace place);

}  // namespace Srctl::Commands
