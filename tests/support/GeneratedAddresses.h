#pragma once

#include <random>
#include <string>

namespace TestSupport {

// Texts that could pass for addresses of two servers at once; the same ones in every run. One thread.
class GeneratedAddresses {
 public:
  // UTF-8; may be no address at all.
  [[nodiscard]] std::string Next();

 private:
  template <std::size_t count>
  const char* OneOf(const char* const (&texts)[count]) {
    return texts[random_() % count];
  }
  [[nodiscard]] std::string Address();
  [[nodiscard]] std::string Jumble();
  void Damage(std::string& text);

  std::mt19937 random_;
};

}  // namespace TestSupport
