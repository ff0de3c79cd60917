#include "libs/Warden_SDK/Crypto.h"

#include "libs/Lifetime/UniqueHandle.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <string.h>

#include <array>
#include <vector>

namespace Warden {
namespace {

using HashContextPtr = Lifetime::UniqueHandle<EVP_MD_CTX, EVP_MD_CTX_free>;
using HashPtr = Lifetime::UniqueHandle<EVP_MD, EVP_MD_free>;

const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

void AppendHexadecimal(const unsigned char* bytes, std::size_t count, auto& text) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  for (std::size_t index = 0; index < count; ++index) {
    const std::array<char, 2> digits{kDigits[bytes[index] >> 4], kDigits[bytes[index] & 0xF]};
    text(std::string_view(digits.data(), digits.size()));
  }
}

}  // namespace

std::optional<CredentialWire::Secret> HexHash(HashAlgorithm algorithm,
                                              std::initializer_list<std::string_view> pieces) {
  const char* const name = algorithm == HashAlgorithm::SHA256 ? "SHA256" : "MD5";
  const HashPtr hash(EVP_MD_fetch(nullptr, name, nullptr));
  const HashContextPtr context(EVP_MD_CTX_new());
  if (!hash || !context || EVP_DigestInit_ex(context.get(), hash.get(), nullptr) != 1) return std::nullopt;
  for (const std::string_view piece : pieces) {
    if (EVP_DigestUpdate(context.get(), piece.data(), piece.size()) != 1) return std::nullopt;
  }
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned count = 0;
  if (EVP_DigestFinal_ex(context.get(), bytes.data(), &count) != 1) return std::nullopt;
  CredentialWire::Secret text;
  auto append = [&text](std::string_view digits) { text.Append(digits); };
  AppendHexadecimal(bytes.data(), count, append);
  ::explicit_bzero(bytes.data(), bytes.size());
  return text;
}

CredentialWire::Secret Base64(std::string_view bytes) {
  // The function ends its text with a NUL.
  std::vector<unsigned char, CredentialWire::WipingAllocator<unsigned char>> text((bytes.size() + 2) / 3 * 4 +
                                                                                  1);
  const int length = EVP_EncodeBlock(text.data(), Bytes(bytes), static_cast<int>(bytes.size()));
  return CredentialWire::Secret(
      {reinterpret_cast<const char*>(text.data()), static_cast<std::size_t>(length)});
}

std::optional<std::string> FromBase64(std::string_view text) {
  if (text.empty() || text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  std::string bytes(text.size() / 4 * 3, '\0');
  const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), Bytes(text),
                                     static_cast<int>(text.size()));
  if (length < 0) return std::nullopt;
  bytes.resize(static_cast<std::size_t>(length) - padding);
  return bytes;
}

std::optional<std::string> RandomDigits() {
  std::array<unsigned char, 16> bytes{};
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) return std::nullopt;
  std::string digits;
  auto append = [&digits](std::string_view more) { digits += more; };
  AppendHexadecimal(bytes.data(), bytes.size(), append);
  return digits;
}

}  // namespace Warden
