#include "GenericFactories.h"

#include "MacCSLibrary.h"
#include "MacConfiguration.h"
#include "libs/Lifetime/NoDestructor.h"

CGenericFactories& CGenericFactories::Instance() {
  static Lifetime::NoDestructor<CGenericFactories> instance(std::make_unique<CMacCSFactory>(),
                                                            std::make_unique<CMacConfiguration>(true),
                                                            std::make_unique<CMacConfiguration>(false));
  return *instance;
}
