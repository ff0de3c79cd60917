#pragma once

#include "SRLib/Platform/GenericCS.h"

#include <memory>

namespace TestSupport {

// Manufactures recursive critical sections that know which thread is inside.
class FakeCriticalSectionFactory : public CGenericCSFactory {
 public:
  [[nodiscard]] std::unique_ptr<CGenericCS> ManufactureCriticalSection() override;
};

// Whether the calling thread is inside any section that such a factory made.
[[nodiscard]] bool InsideCriticalSection();

// How often the calling thread has entered such a section.
[[nodiscard]] int CriticalSectionEntries();

}  // namespace TestSupport
