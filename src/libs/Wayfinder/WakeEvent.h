#pragma once

namespace Wayfinding {

// A descriptor that becomes readable when any thread raises the event, and stays so until it is cleared.
class WakeEvent {
 public:
  // Throws std::system_error when there is no descriptor to be had.
  WakeEvent();
  ~WakeEvent();
  WakeEvent(const WakeEvent&) = delete;
  WakeEvent& operator=(const WakeEvent&) = delete;

  [[nodiscard]] int Descriptor() const { return descriptor_; }
  void Raise() const noexcept;
  void Clear() const noexcept;

 private:
  int descriptor_;
};

}  // namespace Wayfinding
