#pragma once

#include "libs/Transfer/CurlTransfer.h"

#include <memory>
#include <string>
#include <utility>

namespace Transfer {

// A GET of a document: up to 20 redirects, to http and https only and never from https to http. Where the
// system does not trust a server, nothing is sent to it. One thread.
class GetRequest {
 public:
  static constexpr long kOK = 200;

  // `url` is the text of an Address::SendingForm. Null when the library or memory is not to be had.
  [[nodiscard]] static std::unique_ptr<GetRequest> Make(const std::string& url,
                                                        const TransferLimits& limits = {});

  // Adds a header line behind "Accept", as AppendHeader does.
  [[nodiscard]] bool AddHeader(std::string line);

  // Blocks until the response or a time-out; once. The status of the response, 0 without one: that of a
  // transfer that broke off says nothing about the document, but an error (400 or above) with its header is
  // one however much of its body arrives.
  [[nodiscard]] long Perform();

  // The body of a response with the status 200, otherwise empty.
  [[nodiscard]] const std::string& Body() const { return body_; }
  // The last response's header fields as "Name: value", each ended by CR LF; those of the redirects before it
  // are not asked for.
  [[nodiscard]] std::string HeaderLines() const;
  // Where the last response came from; empty when no redirect was followed.
  [[nodiscard]] std::string RedirectedURL() const;

 private:
  explicit GetRequest(std::unique_ptr<CurlTransfer> transfer) : transfer_(std::move(transfer)) {}

  static std::size_t CollectBody(char* bytes, std::size_t one, std::size_t count, void* self) noexcept;

  CurlListPtr headers_;
  std::unique_ptr<CurlTransfer> transfer_;
  std::string body_;
};

}  // namespace Transfer
