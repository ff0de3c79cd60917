#pragma once

#include "Commands.h"

#include <string>

namespace Srctl {

struct OpenedStore;

// What became of an opened file, for scripts and for people. Outcomes come as the bus names them.
namespace OpeningReport {

// An outcome that only another agent knows is Refused.
[[nodiscard]] Commands::Status StatusOf(const std::string& outcome);
// Sentences in one line. `hint` is what to do where nobody could be asked.
[[nodiscard]] std::string OfStore(const OpenedStore& store, const std::string& file, const std::string& hint);
// Of a file of which no store is known.
[[nodiscard]] std::string OfFile(const std::string& outcome, const std::string& reason,
                                 const std::string& file, const std::string& hint);

}  // namespace OpeningReport

}  // namespace Srctl
