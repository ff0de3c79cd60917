#include "MacConfiguration.h"

#include "DbgTrace.h"
#include "Files/ConfigurationFile.h"

CMacConfiguration::CMacConfiguration(bool perUser)
    : ConfigurationTree(Agent::ConfigurationFile::OfScope(perUser)) {}

bool CMacConfiguration::SetBinary(const std::wstring& /*key*/, const std::uint8_t* /*bytes*/,
                                  std::uint32_t /*size*/) const {
  CSRLog(2, "CMacConfiguration::SetBinary is not relevant on Mac and should never be called");
  return false;
}
