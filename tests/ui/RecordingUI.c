#define _POSIX_C_SOURCE 200809L

#include "ui/RecordingUI.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static RecordedDialog last;

static int Record(const char* dialog, const char* details) {
  free(last.details);
  last.details = strdup(details);
  last.dialog = dialog;
  last.calls++;
  return last.answer;
}

static int AddStore(const char* details) {
  return Record("addStore", details);
}
static int ReplaceStore(const char* details) {
  return Record("replaceStore", details);
}
static void ErrorMessage(const char* details) {
  Record("errorMessage", details);
}

static void* View(const char* details) {
  (void)details;
  return NULL;
}

static const SRUIProtocol entryPoints = {SRUI_PROTOCOL_VERSION, AddStore, ReplaceStore, ErrorMessage, View};

const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host) {
  last.terminationDescriptor = host->terminationDescriptor;
  last.terminalDescriptor = host->terminalDescriptor;
  last.withdrawalDescriptor = host->withdrawalDescriptor;
  const char* const first = host->desktop != NULL ? host->desktop[0] : NULL;
  snprintf(last.desktop, sizeof last.desktop, "%s", first != NULL ? first : "");
  return &entryPoints;
}

RecordedDialog* LastDialog(void) {
  return &last;
}
