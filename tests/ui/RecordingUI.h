#ifndef TESTS_UI_RECORDING_UI_H
#define TESTS_UI_RECORDING_UI_H

#include "libs/SRUIProtocol/SRUIProtocol.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the recording module was last asked, and what it answers. */
typedef struct RecordedDialog {
  int answer;
  int calls;
  const char* dialog;
  char* details;
  int terminationDescriptor;
  int terminalDescriptor;
  int withdrawalDescriptor;
  char desktop[64]; /* its first variable; empty without one */
} RecordedDialog;

SRUI_EXPORT RecordedDialog* LastDialog(void);

#ifdef __cplusplus
}
#endif

#endif
