#define _POSIX_C_SOURCE 200809L

#include "libs/SRUIProtocol/SRUIProtocol.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* Accepts everything, but for the dialog named in $SR_TEST_HANGS: that one writes a byte into the file
   $SR_TEST_DIALOGS/hanging and never returns. */
static int Answer(const char* dialog) {
  const char* hanging = getenv("SR_TEST_HANGS");
  if (hanging == NULL || strcmp(hanging, dialog) != 0) return 1;
  char file[4096] = "";
  strncat(file, getenv("SR_TEST_DIALOGS"), sizeof file - 16);
  strcat(file, "/hanging");
  const int noted = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  if (write(noted, "x", 1) != 1) abort();
  close(noted);
  for (;;) pause();
}

static int AddStore(const char* details) {
  (void)details;
  return Answer("addStore");
}
static int ReplaceStore(const char* details) {
  (void)details;
  return Answer("replaceStore");
}
static void ErrorMessage(const char* details) {
  (void)details;
  Answer("errorMessage");
}
static void* View(const char* details) {
  (void)details;
  return NULL;
}

static const SRUIProtocol entryPoints = {SRUI_PROTOCOL_VERSION, AddStore, ReplaceStore, ErrorMessage, View};

const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  (void)host;
  return &entryPoints;
}
