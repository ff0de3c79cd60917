#include "libs/Display/DisplayVariables.h"

#include "libs/Text/TextHelpers.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string_view>

namespace Display {
namespace {

constexpr std::array<std::string_view, 2> kDisplays{"WAYLAND_DISPLAY", "DISPLAY"};
constexpr std::array<std::string_view, 3> kOfDisplays{"GDK_BACKEND", "XAUTHORITY", "XDG_CURRENT_DESKTOP"};
constexpr std::array<std::string_view, 4> kLanguages{"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};

std::string_view NameOf(std::string_view variable) {
  return variable.substr(0, variable.find('='));
}

bool IsAmong(std::span<const std::string_view> names, std::string_view variable) {
  return std::ranges::find(names, NameOf(variable)) != names.end();
}

bool IsOfDesktop(std::string_view variable) {
  return IsAmong(kDisplays, variable) || IsAmong(kOfDisplays, variable) || IsAmong(kLanguages, variable);
}

bool NamesDisplay(std::string_view variable) {
  return variable.size() > NameOf(variable).size() + 1 && IsAmong(kDisplays, variable);
}

// The language is part of the path of the texts that a program shows, which would be anybody's then.
bool LeadsElsewhere(std::string_view variable) {
  return IsAmong(kLanguages, variable) && variable.find('/') != std::string_view::npos;
}

Variables Environment() {
  return CopyOf(environ);
}

}  // namespace

Variables Among(const Variables& environment) {
  if (std::ranges::none_of(environment, NamesDisplay)) return {};
  Variables desktop;
  std::ranges::copy_if(environment, std::back_inserter(desktop), [](const std::string& variable) {
    return IsOfDesktop(variable) && !LeadsElsewhere(variable) && util::IsUTF8(variable);
  });
  return desktop;
}

Variables OfThisProcess() {
  return Among(Environment());
}

std::vector<Variables> ToShowOn(const Variables& named) {
  std::vector<Variables> desktops;
  if (!named.empty()) desktops.push_back(named);
  const Variables own = OfThisProcess();
  if (!own.empty() && !std::ranges::is_permutation(own, named)) desktops.emplace_back();
  return desktops;
}

Variables EnvironmentOn(const Variables& desktop) {
  Variables environment = Environment();
  std::erase_if(environment, IsOfDesktop);
  environment.insert(environment.end(), desktop.begin(), desktop.end());
  return environment;
}

std::map<std::string, std::string> ByName(const Variables& variables) {
  std::map<std::string, std::string> byName;
  for (const std::string& variable : variables) {
    const std::string name(NameOf(variable));
    byName[name] = variable.substr(name.size() + 1);
  }
  return byName;
}

std::vector<const char*> PointersTo(const Variables& variables) {
  std::vector<const char*> pointers;
  pointers.reserve(variables.size() + 1);
  for (const std::string& variable : variables) pointers.push_back(variable.c_str());
  pointers.push_back(nullptr);
  return pointers;
}

Variables CopyOf(const char* const* variables) {
  Variables copies;
  for (; variables != nullptr && *variables != nullptr; ++variables) copies.emplace_back(*variables);
  return copies;
}

}  // namespace Display
