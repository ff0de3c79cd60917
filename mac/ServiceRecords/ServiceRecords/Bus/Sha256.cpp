#include "Bus/Sha256.h"

#include "libs/Transfer/OpenSslHandles.h"

#include <stdexcept>

namespace Agent {

Sha256Digest Sha256(std::string_view bytes) {
  Sha256Digest digest{};
  if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), nullptr, EVP_sha256(), nullptr) != 1)
    throw std::runtime_error("no SHA-256 of a document");
  return digest;
}

}  // namespace Agent
