#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <stddef.h>

const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  (void)host;
  return NULL;
}
