#define _POSIX_C_SOURCE 200809L

#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <stdlib.h>
#include <string.h>

static int Decline(const char* details) {
  (void)details;
  return 0;
}

static void Ignore(const char* details) {
  (void)details;
}

static void* View(const char* details) {
  (void)details;
  return NULL;
}

/* Lacks the entry point that INCOMPLETE_UI_WITHOUT names. */
const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  static SRUIProtocol entryPoints;
  const char* named = getenv("INCOMPLETE_UI_WITHOUT");
  const char* missing = named != NULL ? named : "";
  (void)host;
  entryPoints.version = SRUI_PROTOCOL_VERSION;
  entryPoints.addStore = strcmp(missing, "addStore") == 0 ? NULL : Decline;
  entryPoints.replaceStore = strcmp(missing, "replaceStore") == 0 ? NULL : Decline;
  entryPoints.errorMessage = strcmp(missing, "errorMessage") == 0 ? NULL : Ignore;
  entryPoints.SRStoreDetailsViewWithDetailsDictionary =
      strcmp(missing, "SRStoreDetailsViewWithDetailsDictionary") == 0 ? NULL : View;
  return &entryPoints;
}
