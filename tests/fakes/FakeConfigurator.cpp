#include "fakes/FakeConfigurator.h"

#include <algorithm>
#include <stdexcept>

namespace testsupport {
namespace {

// The path's components; one trailing backslash is not part of the path.
std::vector<std::wstring> Components(std::wstring key) {
  if (key.ends_with(L'\\')) key.pop_back();
  std::vector<std::wstring> components;
  for (std::size_t start = 0; start <= key.size();) {
    const std::size_t end = std::min(key.find(L'\\', start), key.size());
    components.push_back(key.substr(start, end - start));
    start = end + 1;
  }
  return components;
}

[[noreturn]] void NotOffered() {
  throw std::logic_error("the configuration does not offer this operation");
}

}  // namespace

void FakeConfigurator::Clear() {
  const std::lock_guard lock(mutex_);
  root_.clear();
  writes_ = 0;
  readsFail_ = false;
  writesFail_ = false;
}

int FakeConfigurator::Writes() const {
  const std::lock_guard lock(mutex_);
  return writes_;
}

void FakeConfigurator::FailReads(bool fail) {
  const std::lock_guard lock(mutex_);
  readsFail_ = fail;
}

void FakeConfigurator::FailWrites(bool fail) {
  const std::lock_guard lock(mutex_);
  writesFail_ = fail;
}

Config::StorageFailures FakeConfigurator::Failures() const {
  const std::lock_guard lock(mutex_);
  return failures_;
}

std::vector<std::wstring> FakeConfigurator::Dump() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::wstring> lines;
  Describe(root_, L"", lines);
  return lines;
}

void FakeConfigurator::Describe(const Container& container, const std::wstring& path,
                                std::vector<std::wstring>& lines) {
  for (const auto& [name, node] : container) {
    if (const auto* inner = std::get_if<Container>(&node.value)) {
      lines.push_back(path + name + L"\\");
      Describe(*inner, path + name + L"\\", lines);
    } else if (const auto* number = std::get_if<std::uint32_t>(&node.value)) {
      lines.push_back(path + name + L" = " + std::to_wstring(*number));
    } else if (const auto* truth = std::get_if<bool>(&node.value)) {
      lines.push_back(path + name + L" = " + (*truth ? L"true" : L"false"));
    } else if (const auto* text = std::get_if<std::wstring>(&node.value)) {
      lines.push_back(path + name + L" = \"" + *text + L"\"");
    }
  }
}

FakeConfigurator::Node* FakeConfigurator::Child(Container& container, const std::wstring& name) {
  const auto child = std::find_if(container.begin(), container.end(),
                                  [&name](const auto& entry) { return entry.first == name; });
  return child == container.end() ? nullptr : &child->second;
}

FakeConfigurator::Node* FakeConfigurator::Find(const std::wstring& key) const {
  if (readsFail_) {
    ++failures_.reads;
    failures_.latest = "the file cannot be read";
    return nullptr;
  }
  Container* container = &root_;
  Node* node = nullptr;
  for (const std::wstring& component : Components(key)) {
    node = container == nullptr ? nullptr : Child(*container, component);
    container = node == nullptr ? nullptr : std::get_if<Container>(&node->value);
  }
  return node;
}

bool FakeConfigurator::BeginWrite() const {
  if (!readsFail_ && !writesFail_) {
    ++writes_;
    return true;
  }
  ++failures_.writes;
  failures_.latest = "the file cannot be written";
  return false;
}

bool FakeConfigurator::Store(const std::wstring& key, Node node) const {
  if (beforeWrite) beforeWrite();
  if (!BeginWrite()) return true;
  std::vector<std::wstring> components = Components(key);
  const std::wstring last = components.back();
  components.pop_back();
  Container* container = &root_;
  for (const std::wstring& component : components) {
    Node* child = Child(*container, component);
    if (child == nullptr) child = &container->emplace_back(component, Node{}).second;
    if (!std::holds_alternative<Container>(child->value)) child->value = Container{};
    container = &std::get<Container>(child->value);
  }
  if (Node* held = Child(*container, last); held != nullptr) {
    *held = std::move(node);
  } else {
    container->emplace_back(last, std::move(node));
  }
  return true;
}

bool FakeConfigurator::GetUInt(const std::wstring& key, std::uint32_t fallback, std::uint32_t& value) const {
  const std::lock_guard lock(mutex_);
  value = fallback;
  const Node* node = Find(key);
  const auto* number = node == nullptr ? nullptr : std::get_if<std::uint32_t>(&node->value);
  const auto* truth = node == nullptr ? nullptr : std::get_if<bool>(&node->value);
  if (number != nullptr) value = *number;
  if (truth != nullptr) value = *truth ? 1 : 0;
  return number != nullptr || truth != nullptr;
}

bool FakeConfigurator::GetBoolean(const std::wstring& key, bool fallback, bool& value) const {
  std::uint32_t number = 0;
  const bool found = GetUInt(key, fallback ? 1 : 0, number);
  value = number != 0;
  return found;
}

bool FakeConfigurator::GetString(const std::wstring& key, const std::wstring& fallback,
                                 std::wstring& value) const {
  const std::lock_guard lock(mutex_);
  value = fallback;
  const Node* node = Find(key);
  const auto* text = node == nullptr ? nullptr : std::get_if<std::wstring>(&node->value);
  if (text != nullptr) value = *text;
  return text != nullptr;
}

bool FakeConfigurator::GetList(const std::wstring& key, std::vector<std::wstring>& list) const {
  const std::lock_guard lock(mutex_);
  list.clear();
  const Node* node = Find(key);
  const auto* held = node == nullptr ? nullptr : std::get_if<List>(&node->value);
  if (held != nullptr) list = *held;
  return held != nullptr;
}

bool FakeConfigurator::SetList(const std::wstring& key, const std::vector<std::wstring>& list) const {
  const std::lock_guard lock(mutex_);
  return Store(key, {list});
}

bool FakeConfigurator::SetUInt(const std::wstring& key, std::uint32_t value) const {
  const std::lock_guard lock(mutex_);
  return Store(key, {value});
}

bool FakeConfigurator::SetBoolean(const std::wstring& key, bool value) const {
  const std::lock_guard lock(mutex_);
  return Store(key, {value});
}

bool FakeConfigurator::SetString(const std::wstring& key, const std::wstring& value) const {
  const std::lock_guard lock(mutex_);
  return Store(key, {value});
}

bool FakeConfigurator::CreateContainer(const std::wstring& key) const {
  const std::lock_guard lock(mutex_);
  return Find(key) != nullptr || Store(key, {Container{}});
}

bool FakeConfigurator::DeleteContainer(const std::wstring& key) const {
  const std::lock_guard lock(mutex_);
  if (!BeginWrite()) return true;
  std::vector<std::wstring> components = Components(key);
  const std::wstring last = components.back();
  components.pop_back();
  Container* container = &root_;
  for (const std::wstring& component : components) {
    Node* child = container == nullptr ? nullptr : Child(*container, component);
    container = child == nullptr ? nullptr : std::get_if<Container>(&child->value);
  }
  if (container != nullptr) container->remove_if([&last](const auto& entry) { return entry.first == last; });
  return true;
}

bool FakeConfigurator::EnumContainers(const std::wstring& key, std::uint32_t index,
                                      std::wstring& name) const {
  if (beforeRead) beforeRead();
  const std::lock_guard lock(mutex_);
  const Node* node = Find(key);
  const auto* container = node == nullptr ? nullptr : std::get_if<Container>(&node->value);
  if (container == nullptr) return false;
  for (const auto& [childName, child] : *container) {
    if (!std::holds_alternative<Container>(child.value)) continue;
    if (index-- != 0) continue;
    name = childName;
    return true;
  }
  return false;
}

bool FakeConfigurator::GetBinary(const std::wstring& /*key*/, std::uint8_t* /*buffer*/,
                                 std::uint32_t& /*size*/) const {
  NotOffered();
}

bool FakeConfigurator::SetBinary(const std::wstring& /*key*/, const std::uint8_t* /*bytes*/,
                                 std::uint32_t /*size*/) const {
  NotOffered();
}

bool FakeConfigurator::DeleteValue(const std::wstring& /*key*/) const {
  NotOffered();
}

bool FakeConfigurator::EnumValues(const std::wstring& /*key*/, std::uint32_t /*index*/,
                                  std::wstring& /*name*/, std::uint32_t& /*type*/) const {
  NotOffered();
}

std::uint32_t FakeConfigurator::NotifyContainer(const std::wstring& /*key*/, bool /*recursive*/,
                                                std::uint32_t /*events*/,
                                                Config::ContainerCallback /*callback*/,
                                                void* /*context*/) const {
  NotOffered();
}

bool FakeConfigurator::UnnotifyContainer(const std::uint32_t& /*handle*/) const {
  NotOffered();
}

}  // namespace testsupport
