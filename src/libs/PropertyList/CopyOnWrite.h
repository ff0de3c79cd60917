#pragma once

#include "libs/Lifetime/NoDestructor.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace PropertyList {

// A value whose copies are one value until one of them is changed. As with any value, one object is used by
// one thread at a time; copies of it may be with other threads.
template <class Content>
class CopyOnWrite {
 public:
  CopyOnWrite() = default;
  CopyOnWrite(const CopyOnWrite& other) noexcept : shared_(other.shared_) {
    if (shared_ != nullptr) shared_->holders.fetch_add(1, std::memory_order_relaxed);
  }
  CopyOnWrite(CopyOnWrite&& other) noexcept : shared_(std::exchange(other.shared_, nullptr)) {}
  CopyOnWrite& operator=(CopyOnWrite other) noexcept {
    std::swap(shared_, other.shared_);
    return *this;
  }
  ~CopyOnWrite() {
    if (shared_ != nullptr && shared_->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete shared_;
  }

  [[nodiscard]] const Content& Get() const {
    static const Lifetime::NoDestructor<Content> empty;
    return shared_ != nullptr ? shared_->content : *empty;
  }

  // For one change: nobody else holds what the result refers to, until the next copy is made.
  [[nodiscard]] Content& Change() {
    if (shared_ == nullptr) {
      shared_ = new Shared;
    } else if (shared_->holders.load(std::memory_order_acquire) != 1) {
      *this = CopyOnWrite(new Shared(shared_->content));
    }
    return shared_->content;
  }

 private:
  struct Shared {
    Shared() = default;
    explicit Shared(const Content& copied) : content(copied) {}
    std::atomic<std::uint32_t> holders = 1;
    Content content;
  };
  explicit CopyOnWrite(Shared* shared) : shared_(shared) {}

  Shared* shared_ = nullptr;
};

}  // namespace PropertyList
