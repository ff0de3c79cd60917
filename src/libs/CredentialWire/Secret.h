#pragma once

#include <string.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace CredentialWire {

// Memory that is wiped before it is given back.
template <typename Value>
struct WipingAllocator {
  using value_type = Value;

  WipingAllocator() = default;
  template <typename Other>
  explicit WipingAllocator(const WipingAllocator<Other>& /*other*/) noexcept {}

  [[nodiscard]] Value* allocate(std::size_t count) { return std::allocator<Value>().allocate(count); }
  void deallocate(Value* values, std::size_t count) noexcept {
    ::explicit_bzero(values, count * sizeof(Value));
    std::allocator<Value>().deallocate(values, count);
  }

  bool operator==(const WipingAllocator& /*other*/) const = default;
};

// Text that nobody may find in memory later: a password, a code, or what was made of one. No copies; wiped
// when it goes, when it grows and when it is replaced.
class Secret {
 public:
  Secret() = default;
  explicit Secret(std::string_view text) { Append(text); }
  Secret(Secret&&) noexcept = default;
  Secret& operator=(Secret&&) noexcept = default;
  ~Secret() = default;

  void Append(std::string_view text) { bytes_.insert(bytes_.end(), text.begin(), text.end()); }
  [[nodiscard]] std::string_view View() const { return {bytes_.data(), bytes_.size()}; }
  [[nodiscard]] bool IsEmpty() const { return bytes_.empty(); }

 private:
  // A vector keeps nothing in the object itself, as a string does with a short text.
  std::vector<char, WipingAllocator<char>> bytes_;
};

}  // namespace CredentialWire
