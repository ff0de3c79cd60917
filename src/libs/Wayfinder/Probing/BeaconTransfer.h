#pragma once

#include "libs/Wayfinder/Probing/CurlHandles.h"
#include "libs/Wayfinder/Probing/ProbeOutcome.h"
#include "libs/Wayfinder/Probing/TriedSockets.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Wayfinding {

class TlsTrust;
struct BeaconURL;

// One exchange with one URL of a beacon, as a transfer of a multi handle. An https URL is asked for its
// handshake only, an http URL for the head of its answer, without following redirects. Nothing goes through a
// proxy, which would answer for everybody. One thread.
class BeaconTransfer {
 public:
  enum class Method { Head, Get };

  // `addresses`: where the host is; none for a numeric one. Throws std::bad_alloc when memory is short.
  BeaconTransfer(CURLM* transfers, TlsTrust& trust, const BeaconURL& url, Method method,
                 const std::vector<std::string>& addresses, std::chrono::milliseconds limit);
  ~BeaconTransfer();
  BeaconTransfer(const BeaconTransfer&) = delete;
  BeaconTransfer& operator=(const BeaconTransfer&) = delete;

  [[nodiscard]] bool Is(const CURL* transfer) const { return transfer_.get() == transfer; }

  // What the transfer that ended with this code means.
  [[nodiscard]] ProbeOutcome Judge(CURLcode code) const;
  // The numeric address that said anything, were it nonsense; empty when none did.
  [[nodiscard]] std::string HeardFrom(CURLcode code) const;
  // The server does not know the method, which says nothing about the beacon.
  [[nodiscard]] bool WantsGet(CURLcode code) const;

 private:
  void SetTrust();
  [[nodiscard]] bool HasVerifiedChain() const;
  [[nodiscard]] ProbeOutcome JudgeHandshake(CURLcode code) const;
  [[nodiscard]] ProbeOutcome JudgeResponse() const;
  [[nodiscard]] bool HasResponse(CURLcode code) const;
  [[nodiscard]] long Status() const;
  [[nodiscard]] std::string Peer() const;
  // Where the answer sends the caller: nothing when nowhere, an empty host when that cannot be read.
  [[nodiscard]] std::optional<std::string> RedirectHost() const;

  static CURLcode PrepareContext(CURL* transfer, void* context, void* self);
  static std::size_t TakeHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t TakeBody(char* data, std::size_t size, std::size_t count, void* self);

  CURLM* transfers_;
  TlsTrust& trust_;
  bool secure_;
  Method method_;
  std::string host_;
  std::string url_;
  std::size_t headBytes_ = 0;
  bool bodyBegan_ = false;
  WFCurlListPtr addresses_;
  TriedSockets sockets_;
  WFCurlEasyPtr transfer_;
};

}  // namespace Wayfinding
