#include "libs/Warden_SDK/MorvaneWarden.h"

/* The header serves a C compiler: its types and functions are used as such. */
uint32_t WardenActionInC(void);

uint32_t WardenActionInC(void) {
  const MorvaneWardenRoute route = {L"Gateway", L"https://gateway.example", 0, 1,
                                    MORVANE_WARDEN_MODE_REWRITE};
  MorvaneWardenConnection* connection = 0;
  MorvaneWardenRequestContext* context = 0;
  uint32_t action = 0;
  if (MorvaneWarden_Initialize() != MORVANE_WARDEN_OK) return 0;
  MorvaneWarden_CreateConnection(L"C", 0, 0, &connection);
  MorvaneWarden_CreateRequestContext(connection, L"https://store.example/", MORVANE_WARDEN_REQUEST_GET,
                                     &context);
  MorvaneWarden_ForceRoute(context, &route);
  MorvaneWarden_Prepare2(context, &action);
  MorvaneWarden_DestroyContext(context);
  MorvaneWarden_DestroyConnection(connection);
  MorvaneWarden_Uninitialize();
  return action;
}
