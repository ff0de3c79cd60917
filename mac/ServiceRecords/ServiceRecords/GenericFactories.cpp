#include "SRLib/Platform/GenericFactories.h"

#include "MacCSLibrary.h"
#include "MacConfiguration.h"

CGenericFactories& CGenericFactories::Instance() {
  static auto& instance =
      *new CGenericFactories(std::make_unique<CMacCSFactory>(), std::make_unique<CMacConfiguration>(true),
                             std::make_unique<CMacConfiguration>(false));
  return instance;
}
