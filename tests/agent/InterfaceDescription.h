#pragma once

#include <string>
#include <vector>

// The elements of one interface in introspection data, in order, each with its attributes sorted. Throws when
// the interface is not described.
[[nodiscard]] std::vector<std::string> InterfaceDescription(const std::string& xml,
                                                            const std::string& interface);
